// The menu bar: one table, in the order of the menus.
#include "Vuxo.h"

#include "Checks.h"
#include "HelpViewer.h"
#include "PluginManager.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include <initializer_list>

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
    int key = 0;
    const Needed* needed = nullptr; ///< the plug-in without which there is no such entry
};

struct Menu {
    const char* title;
    std::initializer_list<Entry> entries;
};

const std::initializer_list<Menu> menus = {
    {"&File", {{"Exit", SLOT(close())}}},
    {"Select",
     {{"Clear", SLOT(SelectedClear())},
      {"Invert", SLOT(SelectedToggle())},
      {"Full groups", SLOT(SelectGroups())},
      {"Within rad.", SLOT(SelectRadius())},
      {"All Fgroups", SLOT(SelectGroupsG())},
      {"Any w/ rad.", SLOT(SelectRadiusG())},
      {"Atoms by type", SLOT(SelectHydrogens())},
      {"Nearby Grids", SLOT(SelectGridBounds())},
      {"Query", SLOT(showQuery())}}},
    {"Display",
     {{"Hide", SLOT(SelectedHide())},
      {"Hide unselected", SLOT(UnselectedHide())},
      {"Hide All unsels", SLOT(UnselectedHideG())},
      {"Show", SLOT(SelectedShow())},
      {"Set color", SLOT(SelectedColor())},
      {"Color by Temp", SLOT(SelectedColorTemp())},
      {"Default color", SLOT(SelectedUnColor())}}},
    {"Modify",
     {{"FirstModel", SLOT(SelectedOrigModel()), Qt::Key_F},
      {"Prev Model", SLOT(SelectedPrevModel()), Qt::Key_P},
      {"Next Model", SLOT(SelectedNextModel()), Qt::Key_N},
      {"Colour Atoms by Residue", SLOT(SelectedColorGrp2Atom())}}},
    {"Add",
     {{"Rotamers", SLOT(SelectedRotamers())},
      {"ContourHi", SLOT(MakeContourHi()), 0, &solidVolume},
      {"ContourLo", SLOT(MakeContourLo()), 0, &solidVolume},
      {"ConnollySurface", SLOT(MakeSurface()), 0, &solidVolume},
      {"VdWaalsSurface", SLOT(MakeSurfaceVdW()), 0, &solidVolume},
      {"SolAccesSurface", SLOT(MakeSurfaceSolv()), 0, &solidVolume},
      {"SubSurface", SLOT(MakeSubSurface()), 0, &solidVolume},
      {"Define set", SLOT(MakeSet())},
      {"Cartesian", SLOT(MakeCartesian())},
      {"MapGrid2Surface", SLOT(MapGrid2Surf()), 0, &electrostatics}}},
    {"Delete",
     {{"Tree", SLOT(KillClump())},
      {"Chain", SLOT(KillMolecules())},
      {"Group", SLOT(KillGroups())},
      {"Residue", SLOT(KillResidues())},
      {"Atom", SLOT(KillAtoms())},
      {"Bond", SLOT(KillBonds())},
      {"Grid", SLOT(KillGrids())},
      {"Surface", SLOT(KillSurfaces())},
      {"All", SLOT(KillAll())}}},
    {"Help", {{"Show", SLOT(help())}}},
};

} // namespace

void Vuxo::CreateMenubar() {
    QMenuBar* bar = menuBar();
    checkPtr(bar, source, __LINE__);
    // Each plug-in is asked for once, here: what comes or goes later leaves the menu as it is.
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

void Vuxo::help() {
    attempt([] { HelpViewer::Show(helpSetting()); });
}
