#include "PlainCommands.h"

#include "PlainWindow.h"

#include <QRegExp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

namespace {

constexpr const char* solidVolume = "Create/SolidVolume";
constexpr const char* electrostatics = "Calculate/Electrostatics";
constexpr const char* rotamer = "Create/Rotamer";

using Indices = std::array<long long, 3>;

QString typedIn(const Step& step) {
    return QString::fromStdString(step.text);
}

// Those that change the selection or the display of the item in the tree, and refresh the window.
void update(Model& model, Item* root, const std::function<void()>& apply) {
    model.change(root, Change::Update, [&] {
        apply();
        model.commUpdate();
    });
}

void selectFullGroups(Model& model, Item* root) {
    update(model, root, [&] {
        for (Item* group : Host::atOrBelow(root, Kind::Group, true))
            if (Host::hasSelected(*group))
                Host::setSelected(*group, true);
    });
}

void selectRadius(Model& model, Item* root, const char* kind, const Step& step) {
    model.change(root, Change::Update, [&] {
        const QString label =
            QStringLiteral("Enter (%1) selection radius").arg(QLatin1String(kind));
        if (!model.ask("Radius: " + label + ": 4 of 0 to 10000 with 3 decimals", step))
            return;
        const double radius = std::clamp(typedIn(step).toDouble(), 0.0, 10000.0);
        const double limit = radius * radius;
        const Items centres = Host::atOrBelow(root, Kind::Atom, false);
        Items near;
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true)) {
            if (atom->selected || !atom->hasPosition)
                continue;
            for (const Item* centre : centres) {
                const float x = atom->position[0] - centre->position[0];
                const float y = atom->position[1] - centre->position[1];
                const float z = atom->position[2] - centre->position[2];
                const float squares = x * x + y * y + z * z;
                if (limit >= double(squares)) {
                    near.push_back(atom);
                    break;
                }
            }
        }
        for (Item* atom : near)
            Host::setSelected(*atom, true);
        model.commUpdate();
    });
}

Indices nearestPoint(const Item& grid, const std::array<float, 3>& place) {
    Indices nearest{};
    for (const std::size_t k : {0, 1, 2}) {
        const double steps = std::round((double(place[k]) - grid.origin[k]) / grid.step[k]);
        nearest[k] = static_cast<long long>(std::clamp(steps, -1e9, 1e9));
    }
    return nearest;
}

void boundGrids(Model& model) {
    const Items atoms = Host::atOrBelow(model.host.space(), Kind::Atom, false);
    if (atoms.empty())
        return;
    constexpr float most = std::numeric_limits<float>::max();
    std::array<float, 3> low{most, most, most};
    std::array<float, 3> high{-most, -most, -most};
    for (const Item* atom : atoms)
        for (const std::size_t k : {0, 1, 2})
            if (atom->hasPosition) {
                low[k] = std::min(low[k], atom->position[k]);
                high[k] = std::max(high[k], atom->position[k]);
            }
    for (Item* grid : Host::below(model.host.space(), Kind::Grid, true)) {
        Indices a = nearestPoint(*grid, low);
        Indices b = nearestPoint(*grid, high);
        bool inside = true;
        for (const std::size_t k : {0, 1, 2}) {
            inside = inside && b[k] + 2 > -2;
            a[k] = std::max(a[k] - 2, 0LL);
            b[k] = std::min(b[k] + 4, static_cast<long long>(grid->points[k]));
            inside = inside && a[k] < grid->points[k];
        }
        for (const std::size_t k : {0, 1, 2})
            if (inside) {
                grid->lower[k] = int(a[k]);
                grid->upper[k] = int(b[k]);
            }
    }
}

void showSelected(Model& model, bool on) {
    Item* const root = model.root();
    update(model, root, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, false))
            Host::setVisible(*atom, on);
    });
}

void hideUnselected(Model& model, Item* root) {
    model.change(root, Change::Update, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true))
            if (!atom->selected)
                Host::setVisible(*atom, false);
    });
}

void forSelectedRows(Model& model, const std::function<void(Item&)>& use) {
    for (const Row* row : model.tree.all())
        if (Host::isSelected(*row->item))
            use(*row->item);
}

// Blue over white to red, in a hundred colours from 0 to 60.
std::uint32_t colorOfTemperature(float temperature) {
    const double part = std::clamp(double(temperature) / 60.0, 0.0, 1.0);
    const double at = std::round(part * 99) / 99;
    static const double stops[5][3] = {
        {0, 0, 255}, {128, 128, 255}, {255, 255, 255}, {255, 128, 128}, {255, 0, 0}};
    const int from = std::min(3, int(at * 4));
    std::uint32_t color = 0xff;
    for (int k = 0; k != 3; ++k)
        color = color << 8U |
                static_cast<std::uint32_t>(std::lround(
                    stops[from][k] + (at * 4 - from) * (stops[from + 1][k] - stops[from][k])));
    return color;
}

void forSelectedResidues(Model& model, const std::function<void(Item&)>& use) {
    Item* const root = model.root();
    update(model, root, [&] {
        for (Item* residue : Host::atOrBelow(root, Kind::Residue, false))
            use(*residue);
    });
}

void switchModels(Model& model, Host::Switch way) {
    forSelectedResidues(model, [way](Item& residue) { Host::switchModel(residue, way); });
}

void applyPattern(Model& model, const std::function<void(Item&, bool matches)>& use) {
    Item* const root = model.treeOnly ? model.root() : model.host.space();
    if (!root)
        return;
    const QString pattern = QString::fromLatin1(Host::qualifiedName(*root)) + '/' +
                            model.fields[0] + "/Groups/" + model.fields[1] + '/' + model.fields[2] +
                            '$';
    const QRegExp expression(pattern, Qt::CaseSensitive, QRegExp::RegExp);
    update(model, root, [&] {
        for (Item* atom : Host::atOrBelow(root, Kind::Atom, true))
            use(*atom, expression.indexIn(QString::fromLatin1(Host::qualifiedName(*atom)), 0) == 0);
    });
}

// Commands for other plug-ins: a line in the log says what was sent, or that nobody is there.
void send(Model& model, const char* plugin, const char* command, const char* argument,
          const QString& value, const char* overload = "Command") {
    const QString target = QString::fromLatin1(plugin);
    if (model.plugins)
        model.said.log << QStringLiteral("%1 %2|Vuxo|%3|%4|%5")
                              .arg(QLatin1String(overload), QString(target).replace('/', '|'),
                                   QLatin1String(command), QLatin1String(argument), value);
    else
        model.said.log << QStringLiteral("Plug-in %1 is not loaded (%2 %3 from Vuxo)")
                              .arg(target, QLatin1String(command), QLatin1String(argument));
}

void makeSurface(Model& model, const char* command, const char* argument) {
    send(model, solidVolume, command, argument, QStringLiteral("false"));
}

void makeAtLevel(Model& model, const char* label, const char* command, const char* argument,
                 const Step& step) {
    if (!model.ask(QStringLiteral("Limit: %1: 0").arg(QLatin1String(label)), step))
        return;
    bool isNumber = false;
    const double level = typedIn(step).toDouble(&isNumber);
    if (isNumber)
        send(model, solidVolume, command, argument,
             QString::asprintf("%.17g", level)); // NOLINT: as the plug-in writes it
}

void makeCartesian(Model& model) {
    model.change(model.host.space(), Change::Add, [&] {
        Item* frame = model.host.make(model.host.space(), Kind::Composite, "Cartesian");
        const auto addAxis = [&](const char* name, std::uint32_t color, std::array<float, 3> end) {
            Item* axis = model.host.make(frame, Kind::PolyLine, name);
            axis->color = color;
            axis->corners = {{0, 0, 0}, end};
        };
        addAxis("X", 0xffff0000U, {20, 0, 0});
        addAxis("Y", 0xff00ff00U, {0, 20, 0});
        addAxis("Z", 0xff0000ffU, {0, 0, 20});
        model.commAdd();
    });
}

void makeSet(Model& model, const Step& step) {
    Item* const root = model.root();
    if (!root)
        return;
    const unsigned int id = root->id;
    const QString typed = typedIn(step);
    if (!model.ask(QStringLiteral("Set: Enter name for Set: Set"), step) || typed.isEmpty())
        return;
    // Whatever was destroyed meanwhile has emptied the tree.
    if (!model.root() || model.root()->id != id)
        return;
    model.change(root, Change::Add, [&] {
        const Items members = Host::topmostSelected(root);
        const std::string name = typed.toLatin1().toStdString();
        model.said.log << QString::fromLatin1("Defined set '" + name + "' with " +
                                              std::to_string(members.size()) + " members.");
        if (root->isComposite())
            model.host.makeSet(root, name, members);
        else
            model.said.messages << QString::fromLatin1("makeSet: \"" + root->name +
                                                       "\" holds no items, so that \"" + name +
                                                       "\" cannot be made in it");
        model.commAdd();
    });
}

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
         .run =
             [](Model& m, const Step& s) {
                 const auto count = unsigned(m.list.size());
                 m.listEvent(choose(listButtons, s.b), count ? int(s.target % count) : -1, s);
             }},
        {.slot = "Populate(int)",
         .isStep = true,
         .run = [](Model& m,
                   const Step& s) { m.populate(int(s.target % (m.topLevel().size() + 2)) - 1); }},
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
         .run =
             [](Model& m, const Step&) {
                 update(m, m.root(), [&] {
                     for (Item* atom : Host::atOrBelow(m.root(), Kind::Atom, true))
                         Host::setSelected(*atom, !atom->selected);
                 });
             }},
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
                     forSelectedRows(m, [&s](Item& item) { item.color = 0x80000000U | s.c; });
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
                 const Rows rows = m.tree.all();
                 if (!rows.empty())
                     m.killBranch(rows[s.target % rows.size()]->item, s);
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
