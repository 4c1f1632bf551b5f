// The commands that add items: the window itself makes named sets and the Cartesian frame, and
// sends commands to other plug-ins for rotamers, surfaces and contours.
#include "Vuxo.h"

#include "DataMaker.h"
#include "Logger.h"
#include "PluginManager.h"
#include "Space.h"
#include "Traversal.h"
#include "VuxoDialogs.h"
#include "data/ItemRef.h"
#include "data/SelectedResidues.h"
#include "tree/TreeView.h"

#include <array>
#include <optional>
#include <vector>

void Vuxo::MakeSet() {
    if (!rootItem())
        return;
    attempt([this, slot = __func__] {
        const QPointer<Vuxo> window(this);
        const ItemRef shown(rootItem());
        const std::optional<QString> typed =
            askText(tr("Set"), tr("Enter name for Set"), QStringLiteral("Set"));
        if (!window || !typed)
            return;
        withGuard<DataAdder>(slot, stillShown(shown), [&typed](TAVIK::Compound* root) {
            const std::string name = typed->toLatin1().toStdString();
            std::vector<TAVIK::Compound*> members;
            TAVIK::GetSelected(root, members);
            Logger::Write("Defined set '" + name + "' with " + std::to_string(members.size()) +
                          " members.");
            const TAVIK::Compound* set = TAVIK::DataMaker::makeSet(root, name, members);
            // What holds nothing takes no set, either.
            return set ? Done{TAVIK::Changed(*set)} : Done{{}, Refresh::Everything, ""};
        });
    });
}

void Vuxo::MakeCartesian() {
    struct Axis {
        const char* name;
        TAVIK::Vertex end;
        Qt::GlobalColor color;
    };
    constexpr float length = 20.0F; // Å
    static const std::array<Axis, 3> axes = {{
        {"X", {length, 0.0F, 0.0F, true}, Qt::red},
        {"Y", {0.0F, length, 0.0F, true}, Qt::green},
        {"Z", {0.0F, 0.0F, length, true}, Qt::blue},
    }};
    change<DataAdder>(TAVIK::Space::instance(), [](TAVIK::Space* space) {
        TAVIK::Compound* frame = TAVIK::DataMaker::makeCore(space, "Cartesian", "Composite");
        const TAVIK::Vertex origin(0.0F, 0.0F, 0.0F, true);
        try {
            for (const Axis& axis : axes)
                TAVIK::DataMaker::makePolyLine(frame, axis.name, {origin, axis.end})
                    ->SetColor(Color(QColor(axis.color)));
        } catch (...) {
            TAVIK::DataMaker::Destroy(frame); // one or two axes are no frame
            throw;
        }
        return TAVIK::Changed(*frame);
    });
}

void AddRotamers(TAVIK::Compound* residue) {
    bool flag = true;
    PluginManager::Execute("Create", "Rotamer", "StructureEditor", "Rotamer", residue, &flag);
}

void Vuxo::SelectedRotamers() {
    // No guard: the other plug-in adds items under guards of its own. It may also destroy residues
    // that were collected here; only those that still exist are sent.
    attempt([this] {
        TAVIK::Compound* root = rootItem();
        if (!root)
            return;
        const QPointer<Vuxo> window(this);
        SelectedResidues residues(root);
        for (std::size_t i = 0; i != residues.size(); ++i)
            if (TAVIK::Compound* residue = residues.find(i))
                AddRotamers(residue);
        if (window)
            commUpdate();
    });
}

namespace {

// A command for a plug-in, and its argument.
struct Order {
    const char* type;
    const char* name;
    const char* command;
    const char* argument;
};

constexpr Order solidVolume(const char* command, const char* argument) {
    return {"Create", "SolidVolume", command, argument};
}

// Sends a command with the address of `value`, through the overload for writable or for const data.
template <class Value> void send(const Order& order, Value& value) {
    PluginManager::Command(order.type, order.name, "Vuxo", order.command, order.argument, &value);
}

} // namespace

// Other plug-ins do the work, and the window is told of their changes: only a repaint is left to do
// here, whether or not a command was sent.
template <class Tell> void Vuxo::tellPlugin(Tell tell, const char* slot) {
    attempt(
        [&, window = QPointer<Vuxo>(this)] {
            tell();
            if (window)
                m_Tree->triggerUpdate();
        },
        slot);
}

void Vuxo::MakeSurface() {
    makeSurface("Connolly", "Connolly");
}

void Vuxo::MakeSurfaceED() {
    makeSurface("AddSurfaceED", "ElectronDensity");
}

void Vuxo::MakeSurfaceGauss() {
    makeSurface("AddSurfaceG", "Gaussian");
}

void Vuxo::MakeSurfaceVdW() {
    makeSurface("AddSurfaceVdW", "VanderWaals");
}

void Vuxo::MakeSurfaceSolv() {
    makeSurface("AddSurfaceSolv", "SolventAccessible");
}

void Vuxo::makeSurface(const char* command, const char* argument, const char* slot) {
    tellPlugin(
        [=] {
            bool flag = false;
            send(solidVolume(command, argument), flag);
        },
        slot);
}

void Vuxo::MakeSubSurface() {
    // Command and argument are in the opposite order to the other surfaces.
    makeAtLevel(tr("Enter minimum contour value for surface"), "SubSurface", "AddSurface");
}

void Vuxo::MakeContourHi() {
    MakeContour(true);
}

void Vuxo::MakeContourLo() {
    MakeContour(false);
}

void Vuxo::MakeContour(bool high, const char* slot) {
    // A high contour has a least value, a low one a greatest.
    if (high)
        makeAtLevel(tr("Enter minimum contour value"), "AddContourHi", "ContourHigh", slot);
    else
        makeAtLevel(tr("Enter maximum contour value"), "AddContourLo", "ContourLow", slot);
}

void Vuxo::makeAtLevel(const QString& label, const char* command, const char* argument,
                       const char* slot) {
    tellPlugin(
        [&, window = QPointer<Vuxo>(this)] {
            std::optional<double> level = askLimit(label);
            if (window && level)
                send(solidVolume(command, argument), *level);
        },
        slot);
}

void Vuxo::MapGrid2Surf() {
    tellPlugin(
        [] {
            const bool flag = false;
            send({"Calculate", "Electrostatics", "MapGrid2Surf", "Map"}, flag);
        },
        __func__);
}
