#include "StateCount.h"

#include "Kinds.h"
#include "Space.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <string>
#include <utility>

namespace workbench {

namespace {

using TAVIK::Compound;

constexpr std::size_t itemsOfStep = 100'000;

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

/// Whether both atoms of a bond are shown: a bond of a hidden atom is hidden with it, and not
/// counted again.
bool areShown(Compound* bond) {
    return std::all_of(bond->PartBegin(), bond->PartEnd(),
                       [](const Compound* atom) { return atom->IsVisible(); });
}

/// "1 atom", "1,213 atoms".
QString several(std::size_t count, const char* one, const char* many) {
    static const QLocale plain(QLocale::English, QLocale::UnitedStates);
    return plain.toString(static_cast<qulonglong>(count)) + u' ' + say(count == 1 ? one : many);
}
QString atoms(std::size_t count) {
    return several(count, "atom", "atoms");
}
/// By OtherKind.
QString others(std::size_t count, std::size_t kind) {
    static constexpr const char* names[][2] = {
        {"bond", "bonds"}, {"set", "sets"},           {"surface", "surfaces"},
        {"grid", "grids"}, {"polyline", "polylines"}, {"other item", "other items"}};
    static_assert(std::size(names) == std::tuple_size_v<OtherCounts>);
    return several(count, names[kind][0], names[kind][1]);
}

/// "+915 atoms selected", "-3 atoms selected"; nothing where the counts are the same.
template <class What>
void addDifference(QStringList& out, std::size_t before, std::size_t after, const What& what,
                   const QString& state) {
    if (after > before)
        out << u'+' + what(after - before) + state;
    else if (after < before)
        out << QChar(0x2212) + what(before - after) + state;
}
void addDifferences(QStringList& out, const OtherCounts& before, const OtherCounts& after,
                    const QString& state) {
    for (std::size_t kind = 0; kind != before.size(); ++kind)
        addDifference(
            out, before[kind], after[kind],
            [kind](std::size_t count) { return others(count, kind); }, state);
}
void addOthers(QStringList& out, const OtherCounts& counts) {
    for (std::size_t kind = 0; kind != counts.size(); ++kind)
        if (counts[kind] > 0)
            out << others(counts[kind], kind);
}

/// "; 2 hidden", and nothing where nothing is.
QString hiddenText(const StateCount& state) {
    QStringList hidden;
    if (state.hiddenAtoms > 0)
        hidden << atoms(state.hiddenAtoms);
    const qsizetype kinds = hidden.size();
    addOthers(hidden, state.hiddenOthers);
    if (hidden.isEmpty())
        return {};
    const QString what = hidden.size() > kinds ? hidden.join(QStringLiteral(", ")) + say(" hidden")
                                               : several(state.hiddenAtoms, "hidden", "hidden");
    return QStringLiteral("; ") + what;
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
    addOthers(selected, state.selectedOthers);
    const QString text = selected.isEmpty()
                             ? say("nothing selected")
                             : selected.join(QStringLiteral(", ")) + say(" selected");
    return text + hiddenText(state);
}

QString changeText(const StateCount& before, const StateCount& after) {
    QStringList done;
    const auto entries = [](std::size_t count) { return several(count, "entry", "entries"); };
    addDifference(done, before.entries, after.entries, entries, QString());
    addDifference(done, before.atoms, after.atoms, &atoms, QString());
    addDifference(done, before.selectedAtoms, after.selectedAtoms, &atoms, say(" selected"));
    addDifferences(done, before.selectedOthers, after.selectedOthers, say(" selected"));
    addDifference(done, before.hiddenAtoms, after.hiddenAtoms, &atoms, say(" hidden"));
    addDifferences(done, before.hiddenOthers, after.hiddenOthers, say(" hidden"));
    if (!done.isEmpty())
        return done.join(QStringLiteral(", "));
    if (before.selection != after.selection)
        return say("other items are selected");
    if (before.visibility != after.visibility)
        return say("other items are shown");
    if (before.colors != after.colors)
        return say("colours changed");
    return say("nothing changed");
}

StateCounter::StateCounter() {
    TAVIK::Space* const space = TAVIK::Space::instance();
    Compound** const begin = space->ChildBegin();
    Compound** const end = space->ChildEnd();
    m_count.entries = static_cast<std::size_t>(
        std::count_if(begin, end, [](const Compound* entry) { return entry != nullptr; }));
    gather(begin, end);
}

StateCounter::Role StateCounter::roleOf(const Compound* item) {
    return m_roles.of(item, [](const Compound* one) {
        return dynamic_cast<const TAVIK::Atom*>(one)        ? Role::Atom
               : dynamic_cast<const TAVIK::Residue*>(one)   ? Role::Residue
               : dynamic_cast<const TAVIK::Molecule*>(one)  ? Role::Chain
               : dynamic_cast<const TAVIK::Composite*>(one) ? Role::Composite
                                                            : Role::Leaf;
    });
}

// A composite may hold a million bonds: not all that is in it is looked at, only where a piece
// begins.
void StateCounter::gather(Compound** begin, Compound** end) {
    constexpr std::ptrdiff_t longest = 10'000;
    while (begin != end) {
        const Role role = *begin ? roleOf(*begin) : Role::Leaf;
        if (role == Role::Composite) {
            gather((*begin)->ChildBegin(), (*begin)->ChildEnd());
            ++begin;
            continue;
        }
        Compound** const next = begin + (role == Role::Chain ? 1 : std::min(longest, end - begin));
        m_pieces.push_back({begin, next});
        begin = next;
    }
}

bool StateCounter::step() {
    const std::size_t end = m_done + itemsOfStep;
    while (m_next != m_pieces.size() && m_done < end) {
        const Piece& piece = m_pieces[m_next++];
        countAll(piece.begin, piece.end);
        countGathered();
    }
    return m_next == m_pieces.size();
}

void StateCounter::countAll(Compound** begin, Compound** end) {
    for (Compound** child = begin; child != end; ++child) {
        if (!*child)
            continue;
        switch (roleOf(*child)) {
        case Role::Atom:
            m_gathered.push_back(*child);
            break;
        case Role::Leaf:
            countOther(*child);
            break;
        case Role::Residue:
            countResidue(*child);
            break;
        case Role::Chain:
            countChain(*child);
            break;
        case Role::Composite:
            countAll((*child)->ChildBegin(), (*child)->ChildEnd());
            break;
        }
    }
}

void StateCounter::countChain(Compound* chain) {
    countGathered();
    const std::size_t before = m_count.selectedAtoms;
    countAll(chain->ChildBegin(), chain->ChildEnd());
    countGathered();
    if (m_count.selectedAtoms != before)
        ++m_count.selectedChains;
}

void StateCounter::countResidue(Compound* residue) {
    countGathered();
    countAll(residue->ChildBegin(), residue->ChildEnd());
    countGathered();
    if (residue->HasSelected())
        ++m_count.selectedResidues;
}

void StateCounter::countOther(Compound* item) {
    const OtherKind kind = m_kinds.of(item, [](const Compound* one) {
        return dynamic_cast<const TAVIK::Bond*>(one)      ? OtherKind::Bond
               : dynamic_cast<const TAVIK::Surface*>(one) ? OtherKind::Surface
               : dynamic_cast<const TAVIK::Grid*>(one)    ? OtherKind::Grid
               : one->GetType() == "Set"                  ? OtherKind::Set
               : one->GetType() == "PolyLine"             ? OtherKind::PolyLine
                                                          : OtherKind::Other;
    });
    ++m_done;
    if (item->IsSelected()) {
        ++m_count.selectedOthers[static_cast<std::size_t>(kind)];
        m_count.selection += mixed(item->GetId());
    }
    if (item->IsVisible())
        m_count.visibility += mixed(item->GetId());
    else if (kind != OtherKind::Bond || areShown(item))
        ++m_count.hiddenOthers[static_cast<std::size_t>(kind)];
    m_count.colors += mixed(std::uint64_t{item->GetColor().rgba()} << 32 | item->GetId());
}

// Of one residue, or of none: an atom of an alternative model counts as hidden where its model is
// the active one.
void StateCounter::countGathered() {
    m_done += m_gathered.size();
    m_count.atoms += m_gathered.size();
    bool isAlternateHidden = false;
    for (const Compound* const atom : m_gathered) {
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
    if (isAlternateHidden)
        countHiddenAlternates();
    m_gathered.clear();
}

// The active model is the one of which something is shown or, where all is hidden, the first.
void StateCounter::countHiddenAlternates() {
    std::string active(1, '1');
    for (const Compound* const atom : m_gathered)
        if (std::string model = modelOf(atom); model != sharedModel && atom->IsVisible())
            active = std::move(model);
    for (const Compound* const atom : m_gathered)
        if (!atom->IsVisible() && modelOf(atom) == active)
            ++m_count.hiddenAtoms;
}

} // namespace workbench
