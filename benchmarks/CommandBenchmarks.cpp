#include "Contest.h"
#include "History.h"
#include "Peer.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Works.h"
#include "data/NamePredicates.h"
#include "files/Files.h"
#include "history/Steps.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFrame>
#include <QLineEdit>
#include <QTimer>

#include <gemmi/model.hpp>
#include <gemmi/neighbor.hpp>

#include <array>
#include <random>

namespace benchmarks {

namespace {

// Accepts the dialog that the command opens, and starts the clock there.
void acceptDialog() {
    QTimer::singleShot(0, [] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        startClock();
        dialog->accept();
    });
}

// The same atoms in the competitor's data model.
gemmi::Structure asStructure(const std::vector<TAVIK::Compound*>& atoms) {
    gemmi::Structure structure;
    structure.models.emplace_back("1");
    structure.models[0].chains.emplace_back("A");
    // Residues of about the usual size: the competitor counts atoms within a residue by 16 bits.
    gemmi::Residue* residue = nullptr;
    for (const TAVIK::Compound* atom : atoms) {
        auto& residues = structure.models[0].chains[0].residues;
        if (!residue || residue->atoms.size() == 16) {
            residues.emplace_back();
            residue = &residues.back();
        }
        const TAVIK::Vertex at = atom->GetPosition();
        gemmi::Atom copy;
        copy.pos = gemmi::Position(static_cast<double>(at[0]), static_cast<double>(at[1]),
                                   static_cast<double>(at[2]));
        residue->atoms.push_back(copy);
    }
    return structure;
}

class Commands {
public:
    Commands(const std::string& path, int turns) : m_turns(turns), m_path(path) {
        memory_host::openFile(path);
        m_item = *TAVIK::Space::instance()->ChildBegin();
        TAVIK::GetAtoms(m_item, m_atoms, true);
        m_window.Populate(0);
        m_window.show();
        QApplication::processEvents();
    }

    void withinRadius(std::size_t centres, bool scattered) {
        // Fewer than 1000 centres for the small structure only, more for the others only.
        if (centres >= m_atoms.size() || (centres < 1000) != (m_atoms.size() < 10'000))
            return;
        const std::string work = "\"Any w/ rad.\" 4 Å around " + std::to_string(centres) +
                                 (scattered ? " atoms picked at random" : " atoms of one region");
        if (!isWanted(work))
            return;
        const auto chosen = choose(centres, scattered);
        constexpr double radius = 4.0; // what the dialog offers
        gemmi::Structure structure = asStructure(m_atoms);
        std::size_t found = 0;
        run({.work = work,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .peer = "gemmi's NeighborSearch",
             .target = "ratio at least 5",
             .ours = {[&] {
                          m_item->SetSelected(false);
                          for (const std::size_t i : chosen)
                              m_atoms[i]->SetSelected(true);
                          m_window.commUpdate();
                          QApplication::processEvents();
                      },
                      [&] {
                          acceptDialog();
                          m_window.SelectRadiusG();
                          QApplication::processEvents();
                      },
                      {}},
             .theirs = {{},
                        [&] {
                            gemmi::NeighborSearch search(structure.models[0], structure.cell,
                                                         radius);
                            search.populate();
                            for (const std::size_t i : chosen) {
                                const auto& atom =
                                    structure.models[0].chains[0].residues[i / 16].atoms[i % 16];
                                search.for_each(
                                    atom.pos, '\0', radius,
                                    [&](const gemmi::NeighborSearch::Mark&, float) { ++found; });
                            }
                        },
                        {}}},
            m_turns);
        if (found == 0)
            throw std::runtime_error("the competitor found no neighbours");
    }

    void byPattern(const QString& chain, const QString& residue, const QString& atom) {
        const QList<QLineEdit*> fields = m_window.findChildren<QLineEdit*>();
        fields.at(0)->setText(chain);
        fields.at(1)->setText(residue);
        fields.at(2)->setText(atom);
        const std::array<std::pair<const char*, const char*>, 3> operations = {
            {{"union", "applySelect"}, {"intersection", "applyMask"}, {"difference", "applyDiff"}}};
        for (const auto& [name, slot] : operations) {
            const bool all = QLatin1String(slot) != QLatin1String("applyMask");
            const bool isUnion = QLatin1String(slot) == QLatin1String("applySelect");
            // A union that selects nothing new would leave the window nothing to do.
            const auto prepare = [&] {
                m_item->SetSelected(!isUnion);
                m_window.commUpdate();
            };
            run({.work = std::string(name) + " by (" + chain.toStdString() + ", " +
                         residue.toStdString() + ", " + atom.toStdString() + ")",
                 .size = m_atoms.size(),
                 .items = m_atoms.size(),
                 .itemName = "atom",
                 .peer = "one QRegExp match an atom",
                 .target = isUnion ? "ratio at least 8" : "ratio at least 5",
                 .ours = {prepare,
                          [&, called = slot] {
                              QMetaObject::invokeMethod(&m_window, called);
                              QApplication::processEvents();
                          },
                          {}},
                 .theirs = {prepare,
                            [&, called = slot] {
                                const QRegExp re(
                                    nameExpression(m_item, namePattern(chain, residue, atom)));
                                const auto predicate =
                                    QLatin1String(called) == QLatin1String("applySelect") ? SelectIf
                                    : all ? UnSelectIf
                                          : UnSelectIfNot;
                                TAVIK::ForAtoms(m_item, all, [&](TAVIK::Compound* each) {
                                    predicate(each, re);
                                });
                                m_window.commUpdate();
                                QApplication::processEvents();
                            },
                            {}}},
                std::min(m_turns, 2));
        }
    }

    /// A union beside a selection that another program makes by the same names. Ours has the window
    /// to refresh, too.
    void unionBesidePeer(const QString& chain, const QString& residue, const QString& atom,
                         const std::string& expression) {
        const std::string work = "union by (" + chain.toStdString() + ", " + residue.toStdString() +
                                 ", " + atom.toStdString() + ") beside PyMOL";
        if (!isWanted(work))
            return;
        Peer peer("select-peer.py", m_path);
        const QList<QLineEdit*> fields = m_window.findChildren<QLineEdit*>();
        fields.at(0)->setText(chain);
        fields.at(1)->setText(residue);
        fields.at(2)->setText(atom);
        std::size_t theirs = 0;
        const auto prepare = [&] {
            m_item->SetSelected(false);
            m_window.commUpdate();
        };
        run({.work = work,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .peer = peer.isThere() ? "PyMOL's select " + expression : "",
             .target = "ratio at least 1",
             .ours = {prepare,
                      [&] {
                          QMetaObject::invokeMethod(&m_window, "applySelect");
                          QApplication::processEvents();
                      },
                      {}},
             .theirs = {{}, [&] { theirs = peer.ask(expression); }, {}}},
            std::max(m_turns, 3));
        std::vector<TAVIK::Compound*> ours;
        prepare();
        QMetaObject::invokeMethod(&m_window, "applySelect");
        TAVIK::GetAtoms(m_item, ours, false);
        if (peer.isThere() && theirs != ours.size())
            throw std::runtime_error("the competitor selected " + std::to_string(theirs) +
                                     " atoms by " + expression + ", ours are " +
                                     std::to_string(ours.size()));
    }

    // The items by whose number the time of a command is divided, and the target for one of them.
    struct Measure {
        std::size_t items;
        const char* itemName;
        const char* target;
    };

    void command(const std::string& name, void (Vuxo::*slot)(),
                 const std::function<void()>& prepare, bool asks = false) {
        command(name, slot, prepare, asks, {m_atoms.size(), "atom", "at most 60 ns"});
    }
    void command(const std::string& name, void (Vuxo::*slot)(),
                 const std::function<void()>& prepare, bool asks, const Measure& measure) {
        const auto toDo = [&] {
            prepare();
            m_window.commUpdate();
            QApplication::processEvents();
        };
        const auto toDoUnrecorded = [&] {
            memory_host::setHistoryBytes(0);
            toDo();
        };
        const auto toDoRecorded = [&] {
            toDoUnrecorded();
            memory_host::setHistoryBytes(memory_host::defaultHistoryBytes);
        };
        const auto work = [&] {
            if (asks)
                acceptDialog();
            (m_window.*slot)();
            QApplication::processEvents();
        };
        Contest contest{.work = name,
                        .size = m_atoms.size(),
                        .items = measure.items,
                        .itemName = measure.itemName,
                        .target = measure.target,
                        .ours = {toDoRecorded, work, {}}};
        run(contest, m_turns);

        if (History::undoable(1).empty())
            return; // Nothing changed, or nothing was run.
        // Both sides run in one thread: other processes shall not tip the ratio.
        contest.isProcessorTime = true;
        contest.work = name + ", so that it can be undone";
        contest.peer = "not so";
        contest.target = "ratio at least 0.83";
        contest.theirs = {toDoUnrecorded, work, {}};
        run(contest, m_turns);

        const auto go = [](bool (*goes)(std::size_t)) {
            return [goes] {
                if (!goes(1))
                    throw std::runtime_error("there is no step to take");
                QApplication::processEvents();
            };
        };
        contest.peer = "the command";
        contest.target = "ratio at least 0.5";
        contest.theirs = {toDoRecorded, work, {}};
        contest.work = "undo of " + name;
        const auto toUndo = [&] {
            toDoRecorded();
            work();
        };
        contest.ours = {toUndo, go(&History::undo), {}};
        run(contest, m_turns);
        contest.work = "redo of " + name;
        contest.ours = {[&] {
                            toUndo();
                            go (&History::undo)();
                        },
                        go(&History::redo),
                        {}};
        run(contest, m_turns);
    }

    void selectCommands() {
        const auto nothing = [this] { m_item->SetSelected(false); };
        const auto everything = [this] { m_item->SetSelected(true); };
        const auto everyTenth = [this] {
            m_item->SetSelected(false);
            for (std::size_t i = 0; i < m_atoms.size(); i += 10)
                m_atoms[i]->SetSelected(true);
        };
        command("\"Clear\" of everything", &Vuxo::SelectedClear, everything);
        command("\"Invert\" of nothing", &Vuxo::SelectedToggle, nothing);
        command("\"Invert\" of every tenth", &Vuxo::SelectedToggle, everyTenth);
        command("\"Full groups\" of every tenth", &Vuxo::SelectGroups, everyTenth);
        command("\"All Fgroups\" of every tenth", &Vuxo::SelectGroupsG, everyTenth);
        command("\"Atoms by type\"", &Vuxo::SelectHydrogens, nothing, true);
    }

    void displayCommands() {
        const auto selectAndShow = [this](bool select, bool show) {
            return [this, select, show] {
                m_item->SetSelected(select);
                m_item->SetVisible(show);
            };
        };
        const auto everything = selectAndShow(true, true);
        command("\"Hide\" of everything", &Vuxo::SelectedHide, everything);
        command("\"Show\" of everything", &Vuxo::SelectedShow, selectAndShow(true, false));
        command("\"Hide unselected\" of everything", &Vuxo::UnselectedHide,
                selectAndShow(false, true));
        // The commands unselect what they colour.
        const auto afterCommand = [this, everything](void (Vuxo::*slot)()) {
            return [this, everything, slot] {
                everything();
                (m_window.*slot)();
                everything();
            };
        };
        const auto uncoloured = afterCommand(&Vuxo::SelectedUnColor);
        const auto coloured = afterCommand(&Vuxo::SelectedColorTemp);
        command("\"Set color\" of everything", &Vuxo::SelectedColor, uncoloured, true);
        command("\"Color by Temp\" of everything", &Vuxo::SelectedColorTemp, uncoloured);
        command("\"Default color\" of everything", &Vuxo::SelectedUnColor, coloured);
        command("\"Colour Atoms by Residue\" of everything", &Vuxo::SelectedColorGrp2Atom,
                uncoloured);
        command("\"Next Model\" of every residue", &Vuxo::SelectedNextModel, everything, false,
                {m_atoms.size(), "atom", "at most 100 ns"});
    }

    void deleteCommands() {
        std::vector<TAVIK::Compound*> bonds;
        TAVIK::GetItems<TAVIK::Bond>(m_item, bonds, true, nullptr, true);
        const std::size_t bondCount = bonds.size() / 2;
        const std::size_t residueCount = largestChain().second;
        command("\"Atom\": every second one deleted", &Vuxo::KillAtoms,
                [this] {
                    reopen();
                    for (std::size_t i = 0; i < m_atoms.size(); i += 2)
                        m_atoms[i]->SetSelected(true);
                },
                false, {m_atoms.size() / 2, "atom deleted", "at most 300 ns"});
        command("\"Bond\": every second one deleted", &Vuxo::KillBonds,
                [&, this] {
                    reopen();
                    bonds.clear();
                    TAVIK::GetItems<TAVIK::Bond>(m_item, bonds, true, nullptr, true);
                    for (std::size_t i = 0; i < bonds.size(); i += 2)
                        bonds[i]->SetSelected(true);
                },
                false, {bondCount, "bond deleted", "at most 300 ns"});
        // The atoms, groups and bonds of the residues go, too.
        command("\"Residue\": all of the largest chain deleted", &Vuxo::KillResidues,
                [this] {
                    reopen();
                    largestChain().first->SetSelected(true);
                },
                false, {residueCount, "item deleted", "at most 300 ns"});
    }

    ~Commands() { m_window.KillAll(); }

private:
    std::vector<std::size_t> choose(std::size_t count, bool scattered) const {
        std::vector<std::size_t> chosen(m_atoms.size());
        for (std::size_t i = 0; i != chosen.size(); ++i)
            chosen[i] = i;
        if (scattered)
            std::shuffle(chosen.begin(), chosen.end(), std::mt19937(1));
        else
            chosen.erase(chosen.begin(), chosen.begin() + static_cast<std::ptrdiff_t>(
                                                              (m_atoms.size() - count) / 3));
        chosen.resize(count);
        return chosen;
    }

    // Opens the file anew, so that everything is as in the file.
    void reopen() {
        memory_host::forgetHistory();
        m_window.KillAll();
        memory_host::openFile(m_path);
        m_window.commAdd();
        m_window.Populate(0);
        m_item = *TAVIK::Space::instance()->ChildBegin();
        m_atoms.clear();
        TAVIK::GetAtoms(m_item, m_atoms, true);
    }
    // The chain with the most items in it, and their number.
    std::pair<TAVIK::Compound*, std::size_t> largestChain() const {
        std::vector<TAVIK::Compound*> chains;
        TAVIK::GetItems<TAVIK::Molecule>(m_item, chains, true, nullptr, false);
        std::pair<TAVIK::Compound*, std::size_t> largest{nullptr, 0};
        for (TAVIK::Compound* chain : chains)
            if (const std::size_t rows = rowCount(chain); rows > largest.second)
                largest = {chain, rows};
        return largest;
    }

    int m_turns;
    std::string m_path;
    TAVIK::Compound* m_item;
    std::vector<TAVIK::Compound*> m_atoms;
    Vuxo m_window;
};

} // namespace

void benchmarkCommands(const std::string& path, int turns) {
    Commands commands(path, turns);
    for (const std::size_t centres : {100, 10'000, 100'000})
        for (const bool scattered : {false, true})
            commands.withinRadius(centres, scattered);
    commands.byPattern(QStringLiteral("A.*"), QStringLiteral(".*"), QStringLiteral("CA"));
    commands.byPattern(QStringLiteral(".*"), QStringLiteral("(ALA|GLY) .*"), QStringLiteral("C.?"));
    // A chain that the ribosome has, unlike those with A.
    commands.byPattern(QStringLiteral("L.*"), QStringLiteral(".*"), QStringLiteral("CA"));
    commands.unionBesidePeer(QStringLiteral("A.*"), QStringLiteral(".*"), QStringLiteral("CA"),
                             "chain A* and name CA");
    commands.unionBesidePeer(QStringLiteral("L.*"), QStringLiteral(".*"), QStringLiteral("CA"),
                             "chain L* and name CA");
    commands.unionBesidePeer(QStringLiteral(".*"), QStringLiteral("(ALA|GLY) .*"),
                             QStringLiteral("C.?"), "resn ALA+GLY and name C*");
    commands.selectCommands();
    commands.displayCommands();
    commands.deleteCommands();
}

} // namespace benchmarks
