#include "PlainCommands.h"

#include "CommandDeeds.h"

#include <algorithm>

namespace plain {

namespace {

constexpr const char* solidVolume = "Create/SolidVolume";
constexpr const char* electrostatics = "Calculate/Electrostatics";
constexpr const char* rotamer = "Create/Rotamer";

} // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> all = {
        {.slot = "help()",
         .repaints = 0,
         .run = [](Model& m,
                   const Step&) { m.said.asked << QStringLiteral("Help: Structure Editor"); }},
        {.slot = "MakeList()",
         .isStep = true,
         .repaints = 0,
         .run = [](Model& m, const Step&) { m.makeList(); }},
        {.slot = "UpdateList()",
         .isStep = true,
         .repaints = 0,
         .run = [](Model& m, const Step&) { m.updateList(); }},
        {.slot = "ListEvent(int,QListWidgetItem*,QPoint)",
         .needs = Needs::Entry,
         .repaints = 0,
         .run = [](Model& m, const Step& s) { m.listEvent(s.button, m.at, s); }},
        {.slot = "Populate(int)",
         .isStep = true,
         .run = [](Model& m, const Step&) { m.populate(m.at); }},
        {.slot = "showQuery()",
         .repaints = 0,
         .run = [](Model& m, const Step&) { m.panelShown = true; }},
        {.slot = "SelectGroups()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .run = [](Model& m, const Step&) { selectFullGroups(m, m.root()); }},
        {.slot = "SelectRadius()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .asks = Asks::InGuard,
         .run = [](Model& m, const Step& s) { selectRadius(m, m.root(), "local", s); }},
        {.slot = "SelectGroupsG()",
         .guard = Guard::Reported,
         .run = [](Model& m, const Step&) { selectFullGroups(m, m.host.space()); }},
        {.slot = "SelectHydrogens()",
         .guard = Guard::Reported,
         .asks = Asks::First,
         .run =
             [](Model& m, const Step& s) {
                 const QString typed = typedIn(s);
                 if (!m.ask("Select atoms: Enter single atom type (e.g. H, O, Cu): H", s) ||
                     typed.isEmpty())
                     return;
                 update(m, m.host.space(), [&] {
                     for (Item* atom : Host::atOrBelow(m.host.space(), Kind::Atom, true))
                         if (atom->type == typed.toLatin1().toStdString())
                             Host::setSelected(*atom, true);
                 });
             }},
        {.slot = "SelectRadiusG()",
         .guard = Guard::Reported,
         .asks = Asks::InGuard,
         .run = [](Model& m, const Step& s) { selectRadius(m, m.host.space(), "global", s); }},
        {.slot = "SelectGridBounds()",
         .guard = Guard::Reported,
         .repaints = 0,
         .run =
             [](Model& m, const Step&) {
                 m.change(m.host.space(), Change::Update, [&] { boundGrids(m); });
             }},
        {.slot = "SelectedHide()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .run = [](Model& m, const Step&) { showSelected(m, false); }},
        {.slot = "SelectedShow()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .run = [](Model& m, const Step&) { showSelected(m, true); }},
        {.slot = "SelectedClear()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .run =
             [](Model& m, const Step&) {
                 update(m, m.root(), [&] { Host::setSelected(*m.root(), false); });
             }},
        {.slot = "SelectedToggle()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "Vuxo::InvertSelection",
         .run = invertSelection},
        {.slot = "SelectedColor()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .asks = Asks::First,
         .line = "ProteinPage::SelectedColor()",
         .oddIsCancel = true,
         .run =
             [](Model& m, const Step& s) {
                 if (!m.ask("Color: #ffffffff", s))
                     return;
                 update(m, m.root(), [&] {
                     forSelectedRows(m, [&s](Item& item) { item.color = chosenColor(s); });
                 });
             }},
        {.slot = "SelectedColorTemp()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "ProteinPage::SelectedColorTemp()",
         .run =
             [](Model& m, const Step&) {
                 update(m, m.root(), [&] {
                     for (Item* atom : Host::atOrBelow(m.root(), Kind::Atom, false))
                         atom->color = colorOfTemperature(atom->temperature);
                 });
             }},
        {.slot = "SelectedUnColor()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "ProteinPage::RestoreColor()",
         .run =
             [](Model& m, const Step&) {
                 update(m, m.root(), [&] {
                     forSelectedRows(m, [](Item& item) { item.color = Host::defaultColor(item); });
                     Host::setSelected(*m.root(), false);
                 });
             }},
        {.slot = "SelectedRotamers()",
         .needs = Needs::ShownItem,
         .sendsTo = rotamer,
         .run =
             [](Model& m, const Step&) {
                 if (!m.root())
                     return;
                 const Items residues = Host::atOrBelow(m.root(), Kind::Residue, false);
                 for (std::size_t i = 0; i != residues.size(); ++i)
                     m.said.log << QStringLiteral(
                         "Plug-in Create/Rotamer is not loaded (Rotamer from StructureEditor)");
                 m.commUpdate();
             }},
        {.slot = "SelectedPrevModel()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "Change to previous model in selected Residues",
         .run = [](Model& m, const Step&) { switchModels(m, Host::Switch::Previous); }},
        {.slot = "SelectedNextModel()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "Change to next model in selected Residues",
         .run = [](Model& m, const Step&) { switchModels(m, Host::Switch::Next); }},
        {.slot = "SelectedOrigModel()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "Change to first model in selected Residues",
         .run = [](Model& m, const Step&) { switchModels(m, Host::Switch::First); }},
        {.slot = "SelectedColorGrp2Atom()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .line = "Color atoms by residue color",
         .run =
             [](Model& m, const Step&) {
                 // What another subscriber hears comes while the highlight is switched off.
                 const bool before = m.showSelection;
                 m.showSelection = false;
                 forSelectedResidues(m, [](Item& residue) {
                     for (Item* atom : Host::atOrBelow(&residue, Kind::Atom, true))
                         atom->color = residue.color;
                 });
                 m.showSelection = before;
             }},
        {.slot = "UnselectedHide()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .refreshes = false,
         .repaints = 0,
         .run = [](Model& m, const Step&) { hideUnselected(m, m.root()); }},
        {.slot = "UnselectedHideG()",
         .guard = Guard::Reported,
         .refreshes = false,
         .repaints = 0,
         .run = [](Model& m, const Step&) { hideUnselected(m, m.host.space()); }},
        {.slot = "MakeContourHi()",
         .asks = Asks::First,
         .sendsTo = solidVolume,
         .oddIsCancel = true,
         .run =
             [](Model& m, const Step& s) {
                 makeAtLevel(m, "Enter minimum contour value", "AddContourHi", "ContourHigh", s);
             }},
        {.slot = "MakeContourLo()",
         .asks = Asks::First,
         .sendsTo = solidVolume,
         .oddIsCancel = true,
         .run =
             [](Model& m, const Step& s) {
                 makeAtLevel(m, "Enter maximum contour value", "AddContourLo", "ContourLow", s);
             }},
        {.slot = "MakeSurface()",
         .sendsTo = solidVolume,
         .run = [](Model& m, const Step&) { makeSurface(m, "Connolly", "Connolly"); }},
        {.slot = "MakeSurfaceED()",
         .sendsTo = solidVolume,
         .run = [](Model& m, const Step&) { makeSurface(m, "AddSurfaceED", "ElectronDensity"); }},
        {.slot = "MakeSurfaceGauss()",
         .sendsTo = solidVolume,
         .run = [](Model& m, const Step&) { makeSurface(m, "AddSurfaceG", "Gaussian"); }},
        {.slot = "MakeSurfaceVdW()",
         .sendsTo = solidVolume,
         .run = [](Model& m, const Step&) { makeSurface(m, "AddSurfaceVdW", "VanderWaals"); }},
        {.slot = "MakeSurfaceSolv()",
         .sendsTo = solidVolume,
         .run = [](Model& m,
                   const Step&) { makeSurface(m, "AddSurfaceSolv", "SolventAccessible"); }},
        {.slot = "MakeSubSurface()",
         .asks = Asks::First,
         .sendsTo = solidVolume,
         .oddIsCancel = true,
         .run =
             [](Model& m, const Step& s) {
                 makeAtLevel(m, "Enter minimum contour value for surface", "SubSurface",
                             "AddSurface", s);
             }},
        {.slot = "MakeCartesian()",
         .guard = Guard::Reported,
         .run = [](Model& m, const Step&) { makeCartesian(m); }},
        {.slot = "MakeSet()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .asks = Asks::First,
         .run = makeSet},
        {.slot = "MapGrid2Surf()",
         .sendsTo = electrostatics,
         .run =
             [](Model& m, const Step&) {
                 send(m, electrostatics, "MapGrid2Surf", "Map", QStringLiteral("false"),
                      "CommandC");
             }},
        {.slot = "KillAll()",
         .guard = Guard::Silent,
         .run =
             [](Model& m, const Step&) {
                 m.change(
                     m.host.space(), Change::Delete,
                     [&] {
                         m.tree.clear();
                         while (!m.topLevel().empty())
                             m.host.destroy(m.topLevel().front());
                         m.makeList();
                     },
                     Refusal::Silent);
             }},
        {.slot = "KillGroups()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Group); }},
        {.slot = "KillResidues()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Residue); }},
        {.slot = "KillGrids()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Grid); }},
        {.slot = "KillSurfaces()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Surface); }},
        {.slot = "KillBonds()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Bond); }},
        {.slot = "KillAtoms()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Atom); }},
        {.slot = "KillMolecules()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run = [](Model& m, const Step&) { m.killSelected(Kind::Molecule); }},
        {.slot = "KillClump()",
         .needs = Needs::ShownItem,
         .guard = Guard::Silent,
         .run =
             [](Model& m, const Step&) {
                 if (!m.root() || !Host::isSelected(*m.root()))
                     return;
                 m.change(
                     m.root(), Change::Delete,
                     [&m, item = m.root()] {
                         m.tree.clear();
                         m.host.destroy(item);
                         m.makeList();
                     },
                     Refusal::Silent);
             }},
        {.slot = "KillItems()", .repaints = 0, .run = [](Model&, const Step&) {}},
        {.slot = "applySelect()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .isPrivate = true,
         .run =
             [](Model& m, const Step&) {
                 applyPattern(
                     m, [](Item& atom, bool matches) { atom.selected = atom.selected || matches; });
             }},
        {.slot = "applyMask()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .isPrivate = true,
         .run =
             [](Model& m, const Step&) {
                 applyPattern(
                     m, [](Item& atom, bool matches) { atom.selected = atom.selected && matches; });
             }},
        {.slot = "applyDiff()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .isPrivate = true,
         .run =
             [](Model& m, const Step&) {
                 applyPattern(m, [](Item& atom, bool matches) {
                     atom.selected = atom.selected && !matches;
                 });
             }},
        {.slot = "SelectionChanged()",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .isPrivate = true,
         .run = [](Model& m, const Step&) { m.selectionChanged(); }},
        {.slot = "KillBranch(TreeItem*)",
         .needs = Needs::ShownItem,
         .guard = Guard::Reported,
         .asks = Asks::First,
         .oddIsCancel = true,
         .isPrivate = true,
         .run =
             [](Model& m, const Step& s) {
                 if (m.at >= 0)
                     m.killBranch(m.tree.all()[std::size_t(m.at)]->item, s);
             }},
    };
    return all;
}

const Command* findCommand(const std::vector<Command>& among, std::string_view slot) {
    const auto found = std::find_if(among.begin(), among.end(),
                                    [slot](const Command& each) { return each.slot == slot; });
    return found == among.end() ? nullptr : &*found;
}

void runCommand(Model& model, std::string_view slot, const Step& step) {
    if (slot == "close()")
        return model.close();
    const Command& command = *findCommand(commands(), slot);
    if (command.line)
        model.say(command.line);
    command.run(model, step);
}

} // namespace plain
