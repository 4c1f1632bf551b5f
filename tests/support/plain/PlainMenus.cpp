// The entries of the menu bar, and the slots that they reach.
#include "PlainWindow.h"

#include <algorithm>

namespace plain {

void runCommand(Model& model, const char* signature, const Step& step) {
    if (qstrcmp(signature, "close()") == 0)
        return model.close();
    const auto found =
        std::find_if(commands().begin(), commands().end(), [signature](const Command& command) {
            return qstrcmp(command.signature, signature) == 0;
        });
    found->run(model, step);
}

const std::vector<MenuEntry>& menuEntries() {
    static const std::vector<MenuEntry> all = {
        {"&File", "Exit", "close()"},
        {"Select", "Clear", "SelectedClear()"},
        {"Select", "Invert", "SelectedToggle()"},
        {"Select", "Full groups", "SelectGroups()"},
        {"Select", "Within rad.", "SelectRadius()"},
        {"Select", "All Fgroups", "SelectGroupsG()"},
        {"Select", "Any w/ rad.", "SelectRadiusG()"},
        {"Select", "Atoms by type", "SelectHydrogens()"},
        {"Select", "Nearby Grids", "SelectGridBounds()"},
        {"Select", "Query", "showQuery()"},
        {"Display", "Hide", "SelectedHide()"},
        {"Display", "Hide unselected", "UnselectedHide()"},
        {"Display", "Hide All unsels", "UnselectedHideG()"},
        {"Display", "Show", "SelectedShow()"},
        {"Display", "Set color", "SelectedColor()"},
        {"Display", "Color by Temp", "SelectedColorTemp()"},
        {"Display", "Default color", "SelectedUnColor()"},
        {"Modify", "FirstModel", "SelectedOrigModel()"},
        {"Modify", "Prev Model", "SelectedPrevModel()"},
        {"Modify", "Next Model", "SelectedNextModel()"},
        {"Modify", "Colour Atoms by Residue", "SelectedColorGrp2Atom()"},
        {"Add", "Rotamers", "SelectedRotamers()"},
        {"Add", "ContourHi", "MakeContourHi()", true},
        {"Add", "ContourLo", "MakeContourLo()", true},
        {"Add", "ConnollySurface", "MakeSurface()", true},
        {"Add", "VdWaalsSurface", "MakeSurfaceVdW()", true},
        {"Add", "SolAccesSurface", "MakeSurfaceSolv()", true},
        {"Add", "SubSurface", "MakeSubSurface()", true},
        {"Add", "Define set", "MakeSet()"},
        {"Add", "Cartesian", "MakeCartesian()"},
        {"Add", "MapGrid2Surface", "MapGrid2Surf()", true},
        {"Delete", "Tree", "KillClump()"},
        {"Delete", "Chain", "KillMolecules()"},
        {"Delete", "Group", "KillGroups()"},
        {"Delete", "Residue", "KillResidues()"},
        {"Delete", "Atom", "KillAtoms()"},
        {"Delete", "Bond", "KillBonds()"},
        {"Delete", "Grid", "KillGrids()"},
        {"Delete", "Surface", "KillSurfaces()"},
        {"Delete", "All", "KillAll()"},
        {"Help", "Show", "help()"},
    };
    return all;
}

} // namespace plain
