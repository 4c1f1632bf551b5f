// The menu bar: one table, in the order of the menus; and what the commands' changes are called.
#include "Vuxo.h"

#include "Checks.h"
#include "HelpViewer.h"
#include "PluginManager.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <initializer_list>
#include <string_view>

namespace {

struct Needed {
    const char* type;
    const char* name;
};
constexpr Needed solidVolume{"Create", "SolidVolume"};
constexpr Needed electrostatics{"Calculate", "Electrostatics"};

struct Entry {
    const char* label;
    const char* slot;
    const char* deed = nullptr; ///< what its change is called: the entry's label, unless it says so
    int key = 0;
    const Needed* needed = nullptr; ///< the plug-in that the entry requires
};

struct Menu {
    const char* title;
    std::initializer_list<Entry> entries;
    const char* deed = nullptr; ///< the same for all its entries
};

const std::initializer_list<Menu> menus = {
    {"&File", {{"Exit", SLOT(close())}}},
    {"Select",
     {{"Clear", SLOT(SelectedClear()), "Clear selection in"},
      {"Invert", SLOT(SelectedToggle()), "Invert selection of"},
      {"Full groups", SLOT(SelectGroups()), "Select"},
      {"Within rad.", SLOT(SelectRadius()), "Select %1 within radius"},
      {"All Fgroups", SLOT(SelectGroupsG()), "Select"},
      {"Any w/ rad.", SLOT(SelectRadiusG()), "Select %1 within radius"},
      {"Atoms by type", SLOT(SelectHydrogens()), "Select %1 by type"},
      {"Nearby Grids", SLOT(SelectGridBounds()), "Fit %1 to the selection"},
      {"Query", SLOT(showQuery())}}},
    {"Display",
     {{"Hide", SLOT(SelectedHide())},
      {"Hide unselected", SLOT(UnselectedHide()), "Hide"},
      {"Hide All unsels", SLOT(UnselectedHideG()), "Hide"},
      {"Show", SLOT(SelectedShow())},
      {"Set color", SLOT(SelectedColor()), "Set color of"},
      {"Color by Temp", SLOT(SelectedColorTemp()), "Color %1 by temperature"},
      {"Default color", SLOT(SelectedUnColor()), "Default color of"}}},
    {"Modify",
     {{"FirstModel", SLOT(SelectedOrigModel()), "First model of", Qt::Key_F},
      {"Prev Model", SLOT(SelectedPrevModel()), "Previous model of", Qt::Key_P},
      {"Next Model", SLOT(SelectedNextModel()), "Next model of", Qt::Key_N},
      {"Colour Atoms by Residue", SLOT(SelectedColorGrp2Atom()), "Colour atoms of"}}},
    {"Add",
     {{"Rotamers", SLOT(SelectedRotamers())},
      {"ContourHi", SLOT(MakeContourHi()), nullptr, 0, &solidVolume},
      {"ContourLo", SLOT(MakeContourLo()), nullptr, 0, &solidVolume},
      {"ConnollySurface", SLOT(MakeSurface()), nullptr, 0, &solidVolume},
      {"VdWaalsSurface", SLOT(MakeSurfaceVdW()), nullptr, 0, &solidVolume},
      {"SolAccesSurface", SLOT(MakeSurfaceSolv()), nullptr, 0, &solidVolume},
      {"SubSurface", SLOT(MakeSubSurface()), nullptr, 0, &solidVolume},
      {"Define set", SLOT(MakeSet())},
      {"Cartesian", SLOT(MakeCartesian()), "Add"},
      {"MapGrid2Surface", SLOT(MapGrid2Surf()), nullptr, 0, &electrostatics}}},
    {"Delete",
     {{"Tree", SLOT(KillClump())},
      {"Chain", SLOT(KillMolecules())},
      {"Group", SLOT(KillGroups())},
      {"Residue", SLOT(KillResidues())},
      {"Atom", SLOT(KillAtoms())},
      {"Bond", SLOT(KillBonds())},
      {"Grid", SLOT(KillGrids())},
      {"Surface", SLOT(KillSurfaces())},
      {"All", SLOT(KillAll())}},
     "Delete"},
    {"Help", {{"Show", SLOT(help())}}},
};

// What is changed by other ways than the menu bar.
const std::initializer_list<Entry> otherChanges = {
    {"Union", SLOT(applySelect()), "Select %1 by name"},
    {"Intersection", SLOT(applyMask()), "Unselect %1 by name"},
    {"Difference", SLOT(applyDiff()), "Unselect %1 by name"},
    {"Select", SLOT(SelectionChanged())},
    {"Show or hide", SLOT(toggleVisible())},
    {"Delete", SLOT(killTopLevel())},
    {"Delete", SLOT(KillBranch(TreeItem*))},
};

// Whether `entry`, in which SLOT() wrote a digit before the name and a bracket behind it, is of it.
bool isOf(const Entry& entry, std::string_view slot) {
    return std::string_view(entry.slot).substr(1).starts_with(slot) &&
           entry.slot[1 + slot.size()] == '(';
}

} // namespace

void Vuxo::CreateMenubar() {
    QMenuBar* bar = menuBar();
    checkPtr(bar, source, __LINE__);
    // Each plug-in is looked for once, here: later changes do not affect the menu.
    const Needed* asked = nullptr;
    bool isThere = false;
    for (const Menu& menu : menus) {
        auto* popup = new QMenu(tr(menu.title), this);
        checkPtr(popup, source, __LINE__);
        bar->addMenu(popup);
        for (const Entry& entry : menu.entries) {
            if (entry.needed && entry.needed != asked) {
                asked = entry.needed;
                isThere = PluginManager::FindPlugin(asked->type, asked->name) != nullptr;
            }
            if (entry.needed && !isThere)
                continue;
            QAction* action = popup->addAction(tr(entry.label), this, entry.slot);
            if (entry.key)
                action->setShortcut(QKeySequence(entry.key));
        }
    }
}

Vuxo::ChangeLabel Vuxo::changeLabel(const char* slot) {
    for (const Menu& menu : menus)
        for (const Entry& entry : menu.entries)
            if (isOf(entry, slot))
                return {menu.deed ? menu.deed : entry.label, entry.deed  ? entry.deed
                                                             : menu.deed ? menu.deed
                                                                         : entry.label};
    for (const Entry& entry : otherChanges)
        if (isOf(entry, slot))
            return {entry.label, entry.deed ? entry.deed : entry.label};
    return {"", ""};
}

void Vuxo::help() {
    attempt([] { HelpViewer::Show(helpSetting()); });
}
