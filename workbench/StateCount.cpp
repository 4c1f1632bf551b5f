#include "StateCount.h"

#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <string>
#include <utility>

namespace workbench {

namespace {

using TAVIK::Compound;

constexpr std::size_t atomsOfStep = 100'000;

/// Spreads the bits of a number (the finalizer of MurmurHash3), so that sums of few numbers differ.
std::uint64_t mixed(std::uint64_t x) {
    x = (x ^ x >> 33) * 0xFF51AFD7ED558CCDULL;
    x = (x ^ x >> 33) * 0xC4CEB9FE1A85EC53ULL;
    return x ^ x >> 33;
}

const std::string sharedModel = "0";

std::string modelOf(const Compound* atom) {
    return static_cast<const TAVIK::Atom*>(atom)->GetModelNumber();
}

QString say(const char* text) {
    return QCoreApplication::translate("Status", text);
}

/// "1 atom", "1,213 atoms".
QString several(std::size_t count, const char* one, const char* many) {
    static const QLocale plain(QLocale::English, QLocale::UnitedStates);
    return plain.toString(static_cast<qulonglong>(count)) + u' ' + say(count == 1 ? one : many);
}
QString atoms(std::size_t count) {
    return several(count, "atom", "atoms");
}
QString others(std::size_t count) {
    return several(count, "other item", "other items");
}

/// "+915 atoms selected", "-3 atoms selected"; nothing where the counts are the same.
void addDifference(QStringList& out, std::size_t before, std::size_t after,
                   QString (*what)(std::size_t), const QString& state) {
    if (after > before)
        out << u'+' + what(after - before) + state;
    else if (after < before)
        out << QChar(0x2212) + what(before - after) + state;
}

} // namespace

QString stateText(const StateCount& state) {
    if (state.entries == 0)
        return say("nothing is open");
    QStringList selected;
    if (state.selectedAtoms > 0)
        selected << atoms(state.selectedAtoms)
                 << several(state.selectedResidues, "residue", "residues")
                 << several(state.selectedChains, "chain", "chains");
    if (state.selectedOthers > 0)
        selected << others(state.selectedOthers);
    const QString text = selected.isEmpty()
                             ? say("nothing selected")
                             : selected.join(QStringLiteral(", ")) + say(" selected");
    const std::size_t hidden = state.hiddenAtoms + state.hiddenOthers;
    return hidden == 0 ? text : text + QStringLiteral("; ") + several(hidden, "hidden", "hidden");
}

QString changeText(const StateCount& before, const StateCount& after) {
    QStringList done;
    const auto entries = [](std::size_t count) { return several(count, "entry", "entries"); };
    addDifference(done, before.entries, after.entries, entries, QString());
    addDifference(done, before.atoms, after.atoms, &atoms, QString());
    addDifference(done, before.selectedAtoms, after.selectedAtoms, &atoms, say(" selected"));
    addDifference(done, before.selectedOthers, after.selectedOthers, &others, say(" selected"));
    addDifference(done, before.hiddenAtoms, after.hiddenAtoms, &atoms, say(" hidden"));
    addDifference(done, before.hiddenOthers, after.hiddenOthers, &others, say(" hidden"));
    if (!done.isEmpty())
        return done.join(QStringLiteral(", "));
    if (before.selection != after.selection)
        return say("others are selected");
    if (before.visibility != after.visibility)
        return say("others are shown");
    if (before.colors != after.colors)
        return say("colours changed");
    return say("nothing changed");
}

StateCounter::StateCounter() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    for (Compound** entry = space->ChildBegin(); entry != space->ChildEnd(); ++entry) {
        if (!*entry)
            continue;
        ++m_count.entries;
        gather(*entry);
    }
}

void StateCounter::gather(Compound* item) {
    if (!dynamic_cast<TAVIK::Composite*>(item)) {
        if (dynamic_cast<TAVIK::Atom*>(item))
            m_pieces.push_back(item);
        else
            countOther(item);
        return;
    }
    // What holds leaves may hold a million bonds: it is not looked through, but asked for atoms.
    Compound** const first = item->ChildBegin();
    if (dynamic_cast<TAVIK::Molecule*>(item) || dynamic_cast<TAVIK::Residue*>(item) ||
        first == item->ChildEnd() || !dynamic_cast<TAVIK::Composite*>(*first)) {
        m_pieces.push_back(item);
        return;
    }
    for (Compound** child = first; child != item->ChildEnd(); ++child)
        if (*child)
            gather(*child);
}

// Bonds and sets stand for atoms, which are counted.
void StateCounter::countOther(const Compound* item) {
    if (item->GetType() == "Set" || dynamic_cast<const TAVIK::Bond*>(item))
        return;
    if (item->IsSelected()) {
        ++m_count.selectedOthers;
        m_count.selection += mixed(item->GetId());
    }
    if (item->IsVisible())
        m_count.visibility += mixed(item->GetId());
    else
        ++m_count.hiddenOthers;
    m_count.colors += mixed(std::uint64_t{item->GetColor().rgba()} << 32 | item->GetId());
}

bool StateCounter::step() {
    const std::size_t end = m_count.atoms + atomsOfStep;
    while (m_next != m_pieces.size() && m_count.atoms < end)
        countPiece(m_pieces[m_next++]);
    return m_next == m_pieces.size();
}

void StateCounter::countPiece(Compound* piece) {
    const std::size_t before = m_count.selectedAtoms;
    m_residues.clear();
    TAVIK::GetResidues(piece, m_residues, true);
    std::size_t inResidues = 0;
    for (Compound* const residue : m_residues) {
        m_items.clear();
        TAVIK::GetAtoms(residue, m_items, true);
        inResidues += m_items.size();
        countAtoms(m_items);
        if (residue->HasSelected())
            ++m_count.selectedResidues;
    }
    m_items.clear();
    TAVIK::GetAtoms(piece, m_items, true);
    if (m_items.size() != inResidues) {
        std::vector<Compound*> counted;
        for (Compound* const residue : m_residues)
            TAVIK::GetAtoms(residue, counted, true);
        std::sort(counted.begin(), counted.end());
        std::erase_if(m_items, [&counted](Compound* atom) {
            return std::binary_search(counted.begin(), counted.end(), atom);
        });
        countAtoms(m_items);
    }
    if (m_count.selectedAtoms != before && dynamic_cast<TAVIK::Molecule*>(piece))
        ++m_count.selectedChains;
}

// Of one residue, or of none: an atom of an alternative model counts as hidden where its model is
// the active one.
void StateCounter::countAtoms(const std::vector<Compound*>& atoms) {
    m_count.atoms += atoms.size();
    bool isAlternateHidden = false;
    for (const Compound* const atom : atoms) {
        const std::uint32_t id = atom->GetId();
        if (atom->IsSelected()) {
            ++m_count.selectedAtoms;
            m_count.selection += mixed(id);
        }
        if (atom->IsVisible())
            m_count.visibility += mixed(id);
        else if (modelOf(atom) == sharedModel)
            ++m_count.hiddenAtoms;
        else
            isAlternateHidden = true;
        m_count.colors += mixed(std::uint64_t{atom->GetColor().rgba()} << 32 | id);
    }
    if (!isAlternateHidden)
        return;
    // The active model is the one of which something is shown or, where all is hidden, the first.
    std::string active(1, '1');
    for (const Compound* const atom : atoms)
        if (std::string model = modelOf(atom); model != sharedModel && atom->IsVisible())
            active = std::move(model);
    for (const Compound* const atom : atoms)
        if (!atom->IsVisible() && modelOf(atom) == active)
            ++m_count.hiddenAtoms;
}

} // namespace workbench
