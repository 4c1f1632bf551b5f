#include "Contest.h"
#include "Files.h"
#include "NamePredicates.h"
#include "RealStructures.h"
#include "Space.h"
#include "Traversal.h"
#include "Vuxo.h"
#include "Works.h"

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

// Accepts the dialog that the command opens, and counts from there.
void acceptDialog() {
    QTimer::singleShot(0, [] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        startClock();
        dialog->accept();
    });
}

// The same atoms as the competitor holds them.
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

class Selecting {
public:
    Selecting(const std::string& path, int turns) : m_turns(turns) {
        memory_host::openFile(path);
        m_item = *TAVIK::Space::instance()->ChildBegin();
        TAVIK::GetAtoms(m_item, m_atoms, true);
        m_window.Populate(0);
        m_window.show();
        QApplication::processEvents();
    }

    void withinRadius(std::size_t centres, bool scattered) {
        if (centres >= m_atoms.size())
            return;
        const auto chosen = choose(centres, scattered);
        constexpr double radius = 4.0; // what the dialog offers
        gemmi::Structure structure = asStructure(m_atoms);
        std::size_t found = 0;
        run({.work = "\"Any w/ rad.\" 4 Å around " + std::to_string(centres) +
                     (scattered ? " atoms picked at random" : " atoms of one region"),
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .peer = "gemmi's NeighborSearch",
             .target = scattered ? "" : "ratio at least 3",
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
            run({.work = std::string(name) + " by (" + chain.toStdString() + ", " +
                         residue.toStdString() + ", " + atom.toStdString() + ")",
                 .size = m_atoms.size(),
                 .items = m_atoms.size(),
                 .itemName = "atom",
                 .peer = "one QRegExp match an atom",
                 .target = "ratio at least 5",
                 .ours = {[&] { m_item->SetSelected(true); },
                          [&, called = slot] {
                              QMetaObject::invokeMethod(&m_window, called);
                              QApplication::processEvents();
                          },
                          {}},
                 .theirs = {[&] { m_item->SetSelected(true); },
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

    void command(const std::string& name, void (Vuxo::*slot)(),
                 const std::function<void()>& prepare, bool asks = false) {
        run({.work = name,
             .size = m_atoms.size(),
             .items = m_atoms.size(),
             .itemName = "atom",
             .target = "at most 60 ns",
             .ours = {[&] {
                          prepare();
                          m_window.commUpdate();
                          QApplication::processEvents();
                      },
                      [&] {
                          if (asks)
                              acceptDialog();
                          (m_window.*slot)();
                          QApplication::processEvents();
                      },
                      {}}},
            m_turns);
    }

    void commands() {
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

    ~Selecting() { emptySpace(); }

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

    int m_turns;
    TAVIK::Compound* m_item;
    std::vector<TAVIK::Compound*> m_atoms;
    Vuxo m_window;
};

} // namespace

void benchmarkSelecting(const std::string& path, int turns) {
    Selecting selecting(path, turns);
    for (const std::size_t centres : {10'000, 100'000})
        for (const bool scattered : {false, true})
            selecting.withinRadius(centres, scattered);
    selecting.byPattern(QStringLiteral("A.*"), QStringLiteral(".*"), QStringLiteral("CA"));
    if (turns > 2)
        selecting.byPattern(QStringLiteral(".*"), QStringLiteral("(ALA|GLY) .*"),
                            QStringLiteral("C.?"));
    selecting.commands();
}

} // namespace benchmarks
