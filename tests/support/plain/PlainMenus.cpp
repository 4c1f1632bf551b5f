#include "PlainMenus.h"

#include <algorithm>

namespace plain {

const std::vector<MenuEntry>& menuEntries() {
    static const std::vector<MenuEntry> all = {
        {.menu = "&File", .label = "Exit", .slot = "close()"},
        {.menu = "Select", .label = "Clear", .slot = "SelectedClear()"},
        {.menu = "Select", .label = "Invert", .slot = "SelectedToggle()"},
        {.menu = "Select", .label = "Full groups", .slot = "SelectGroups()"},
        {.menu = "Select", .label = "Within rad.", .slot = "SelectRadius()"},
        {.menu = "Select", .label = "All Fgroups", .slot = "SelectGroupsG()"},
        {.menu = "Select", .label = "Any w/ rad.", .slot = "SelectRadiusG()"},
        {.menu = "Select", .label = "Atoms by type", .slot = "SelectHydrogens()"},
        {.menu = "Select", .label = "Nearby Grids", .slot = "SelectGridBounds()"},
        {.menu = "Select", .label = "Query", .slot = "showQuery()"},
        {.menu = "Display", .label = "Hide", .slot = "SelectedHide()"},
        {.menu = "Display", .label = "Hide unselected", .slot = "UnselectedHide()"},
        {.menu = "Display", .label = "Hide All unsels", .slot = "UnselectedHideG()"},
        {.menu = "Display", .label = "Show", .slot = "SelectedShow()"},
        {.menu = "Display", .label = "Set color", .slot = "SelectedColor()"},
        {.menu = "Display", .label = "Color by Temp", .slot = "SelectedColorTemp()"},
        {.menu = "Display", .label = "Default color", .slot = "SelectedUnColor()"},
        {.menu = "Modify", .label = "FirstModel", .slot = "SelectedOrigModel()", .key = "F"},
        {.menu = "Modify", .label = "Prev Model", .slot = "SelectedPrevModel()", .key = "P"},
        {.menu = "Modify", .label = "Next Model", .slot = "SelectedNextModel()", .key = "N"},
        {.menu = "Modify", .label = "Colour Atoms by Residue", .slot = "SelectedColorGrp2Atom()"},
        {.menu = "Add", .label = "Rotamers", .slot = "SelectedRotamers()"},
        {.menu = "Add",
         .label = "ContourHi",
         .slot = "MakeContourHi()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add",
         .label = "ContourLo",
         .slot = "MakeContourLo()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add",
         .label = "ConnollySurface",
         .slot = "MakeSurface()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add",
         .label = "VdWaalsSurface",
         .slot = "MakeSurfaceVdW()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add",
         .label = "SolAccesSurface",
         .slot = "MakeSurfaceSolv()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add",
         .label = "SubSurface",
         .slot = "MakeSubSurface()",
         .plugin = "Create/SolidVolume"},
        {.menu = "Add", .label = "Define set", .slot = "MakeSet()"},
        {.menu = "Add", .label = "Cartesian", .slot = "MakeCartesian()"},
        {.menu = "Add",
         .label = "MapGrid2Surface",
         .slot = "MapGrid2Surf()",
         .plugin = "Calculate/Electrostatics"},
        {.menu = "Delete", .label = "Tree", .slot = "KillClump()"},
        {.menu = "Delete", .label = "Chain", .slot = "KillMolecules()"},
        {.menu = "Delete", .label = "Group", .slot = "KillGroups()"},
        {.menu = "Delete", .label = "Residue", .slot = "KillResidues()"},
        {.menu = "Delete", .label = "Atom", .slot = "KillAtoms()"},
        {.menu = "Delete", .label = "Bond", .slot = "KillBonds()"},
        {.menu = "Delete", .label = "Grid", .slot = "KillGrids()"},
        {.menu = "Delete", .label = "Surface", .slot = "KillSurfaces()"},
        {.menu = "Delete", .label = "All", .slot = "KillAll()"},
        {.menu = "Help", .label = "Show", .slot = "help()"},
    };
    return all;
}

std::string nameOf(const MenuEntry& entry) {
    return std::string(entry.menu) + " > " + entry.label;
}

const MenuEntry* findEntry(const std::vector<MenuEntry>& among, std::string_view name) {
    const auto found = std::find_if(among.begin(), among.end(),
                                    [name](const MenuEntry& each) { return nameOf(each) == name; });
    return found == among.end() ? nullptr : &*found;
}

} // namespace plain
