#include "PdbReferences.h"

#include "PdbBonds.h"
#include "PdbColumns.h"
#include "PdbRows.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace memory_host::pdb {

/// Where a record names a residue: the first columns of its name (of three columns), of its chain
/// (of two) and of its number with insertion code (of five).
struct ResiduePlace {
    std::size_t name = 0;
    std::size_t chain = 0;
    std::size_t number = 0;
};

/// What a record says of two residues, or of one.
struct RecordPlaces {
    enum class Meaning {
        Each, ///< means nothing when one of the residues is gone
        Range ///< means what lies from one to the other
    };

    std::string_view record;
    Meaning meaning;
    std::array<ResiduePlace, 2> residues;
    std::array<std::size_t, 2> atoms{}; ///< first columns of names of atoms, or 0
    std::string_view meant{};           ///< the atoms that are meant where none are named
};

namespace {

using Meaning = RecordPlaces::Meaning;

// After wwPDB's description of the format, version 3.3.
constexpr std::array<RecordPlaces, 10> table = {{
    {"SSBOND", Meaning::Each, {{{12, 15, 18}, {26, 29, 32}}}, {}, "SG   "},
    {"LINK", Meaning::Each, {{{18, 21, 23}, {48, 51, 53}}}, {13, 43}},
    {"LINKR", Meaning::Each, {{{18, 21, 23}, {48, 51, 53}}}, {13, 43}},
    {"SLTBRG", Meaning::Each, {{{18, 21, 23}, {48, 51, 53}}}, {13, 43}},
    {"CISPEP", Meaning::Each, {{{12, 15, 18}, {26, 29, 32}}}},
    {"MODRES", Meaning::Each, {{{13, 16, 19}, {}}}},
    {"HET", Meaning::Each, {{{8, 12, 14}, {}}}},
    {"HELIX", Meaning::Range, {{{16, 19, 22}, {28, 31, 34}}}},
    {"SHEET", Meaning::Range, {{{18, 21, 23}, {29, 32, 34}}}},
    {"TURN", Meaning::Range, {{{16, 19, 21}, {27, 30, 32}}}},
}};

constexpr std::array<std::size_t, 4> siteColumns = {19, 30, 41, 52};
constexpr std::size_t keyWidth = 10;
// The residues whose atoms tell how a strand lies beside the one before, and the columns of both.
constexpr std::array<ResiduePlace, 2> strandNeighbours = {{{46, 49, 51}, {61, 64, 66}}};
constexpr std::size_t neighboursFirst = 42;
constexpr std::size_t neighboursLast = 70;

const RecordPlaces* placesOf(std::string_view record) {
    const auto found = std::ranges::find_if(
        table, [record](const RecordPlaces& places) { return isRecord(record, places.record); });
    return found == table.end() ? nullptr : &*found;
}

std::string padded(std::string_view text, std::size_t width) {
    std::string columns(text);
    columns.resize(width, ' ');
    return columns;
}

// A residue as columns 18 to 27 of its atoms' rows name it.
std::string keyAt(std::string_view record, const ResiduePlace& place) {
    return padded(columns(record, place.name, place.name + 2), 3) +
           padded(columns(record, place.chain, place.chain + 1), 2) +
           padded(columns(record, place.number, place.number + 4), 5);
}

std::string_view keyOf(std::string_view row) {
    return columns(row, 18, 27);
}

// An atom as columns 13 to 17 of its row name it: the name, and the alternative location. In which
// columns the name begins goes by the element, of which a record need not know.
std::string atomAt(std::string_view record, std::size_t first) {
    return padded(field(record, first, first + 3), 4) +
           padded(columns(record, first + 4, first + 4), 1);
}

bool hasAlternative(std::string_view atom) {
    return atom.back() != ' ';
}

std::string withoutAlternative(std::string atom) {
    atom.back() = ' ';
    return atom;
}

std::string letterText(char letter) {
    return letter == '\0' ? std::string() : std::string(1, letter);
}

void putKey(std::string& record, const ResiduePlace& place, std::string_view key) {
    putRight(record, place.name, place.name + 2, key.substr(0, 3));
    putRight(record, place.chain, place.chain + 1, key.substr(3, 2));
    putRight(record, place.number, place.number + 4, key.substr(5, 5));
}

// Adds to a number in columns, if there is one.
void addTo(std::string& record, std::size_t first, std::size_t last, std::int64_t change) {
    const std::string text(field(record, first, last));
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const std::string sum = std::to_string(value + change);
    if (error == std::errc() && end == text.data() + text.size() && sum.size() <= last - first + 1)
        putRight(record, first, last, sum);
}

// An atom of a link; empty where the record is of residues.
std::string linkedAtom(std::string_view record, const RecordPlaces& places, std::size_t i) {
    return places.atoms[i] != 0 ? atomAt(record, places.atoms[i]) : std::string(places.meant);
}

std::string sheetOf(std::string_view record) {
    return std::string(field(record, 12, 14));
}

// Records name the atom of a row with or without its alternative location.
BondReferences::Atom referenceTo(const References::BondAtom& bonded) {
    const std::string residue(keyOf(bonded.row));
    const std::string atom = atomAt(bonded.row, 13);
    BondReferences::Atom reference{{atom + residue}, letterText(bonded.letter)};
    if (hasAlternative(atom))
        reference.names.push_back(withoutAlternative(atom) + residue);
    return reference;
}

} // namespace

void References::collect(std::string_view record) {
    if (isRecord(record, "SITE")) {
        for (const std::size_t column : siteColumns)
            m_residues[keyAt(record, {column, column + 3, column + 5})];
        return;
    }
    const RecordPlaces* const places = placesOf(record);
    if (!places)
        return;
    for (const std::size_t i : {0, 1}) {
        if (places->residues[i].name == 0)
            continue;
        Residue& residue = m_residues[keyAt(record, places->residues[i])];
        if (std::string atom = linkedAtom(record, *places, i); !atom.empty())
            residue.atoms[std::move(atom)];
    }
    if (places->record != "SHEET")
        return;
    m_sheetRecords.push_back(record);
    for (const ResiduePlace& place : strandNeighbours)
        m_residues[keyAt(record, place)];
}

void References::see(std::string_view row, bool isKept) {
    if (m_residues.empty())
        return;
    const std::string_view key = keyOf(row);
    if (m_runs.empty() || m_runs.back().key != key) {
        m_runs.push_back({key, false});
        const auto found = m_residues.find(std::string(key));
        m_residue = found == m_residues.end() ? nullptr : &found->second;
        if (m_residue && m_residue->run == none)
            m_residue->run = static_cast<std::uint32_t>(m_runs.size() - 1);
    }
    m_runs.back().isKept = m_runs.back().isKept || isKept;
    if (!m_residue)
        return;
    const auto note = [isKept](State& state) { (isKept ? state.isKept : state.isDropped) = true; };
    note(m_residue->state);
    if (m_residue->atoms.empty())
        return;
    const std::string atom = atomAt(row, 13);
    if (const auto found = m_residue->atoms.find(atom); found != m_residue->atoms.end())
        note(found->second);
    // A record without a letter means all alternative locations.
    if (!hasAlternative(atom))
        return;
    if (const auto found = m_residue->atoms.find(withoutAlternative(atom));
        found != m_residue->atoms.end())
        note(found->second);
}

void References::loseBond(const BondAtom& first, const BondAtom& second, bool isFoundAgain) {
    if (!m_residues.empty())
        m_bonds.lose(referenceTo(first), referenceTo(second), isFoundAgain);
}

void References::reletterBond(const BondAtom& first, const BondAtom& second,
                              const SavedBond& bond) {
    if (!m_residues.empty())
        m_bonds.reletter(referenceTo(first), referenceTo(second), bond);
}

void References::keepBond(const BondAtom& first, const BondAtom& second) {
    if (haveBondsChanged())
        m_bonds.keep(referenceTo(first), referenceTo(second));
}

void References::settle() {
    for (const std::string_view record : m_sheetRecords)
        if (!updateRange(record, *placesOf(record)).isKept)
            ++m_lostStrands[sheetOf(record)];
    m_bonds.settle();
}

const References::Residue* References::find(std::string_view key) const {
    const auto found = m_residues.find(std::string(key));
    return found == m_residues.end() ? nullptr : &found->second;
}

bool References::isGone(std::string_view key) const {
    const Residue* const residue = find(key);
    return residue && residue->state.isGone();
}

bool References::isAtomGone(std::string_view key, std::string_view atom) const {
    const Residue* const residue = find(key);
    if (!residue)
        return false;
    const auto found = residue->atoms.find(std::string(atom));
    return found != residue->atoms.end() && found->second.isGone();
}

// Of two atoms, of which one may be gone, or the bond between them.
References::Outcome References::updateLink(std::string_view record, const RecordPlaces& places) {
    std::array<std::string, 2> names;
    for (const std::size_t i : {0, 1}) {
        const std::string key = keyAt(record, places.residues[i]);
        const std::string atom = linkedAtom(record, places, i);
        if (atom.empty())
            return {};
        if (isAtomGone(key, atom))
            return {.isKept = false, .changed = {}};
        names[i] = atom + key;
    }
    if (!areInOneCopy(record))
        return {};
    const BondReferences::Fate fate = m_bonds.of(names[0], names[1]);
    if (!fate.isKept)
        return {.isKept = false, .changed = {}};
    // SSBOND records have no letters.
    const auto hasPlace = [&](std::size_t i) {
        return !fate.letters[i] || fate.letters[i]->empty() || places.atoms[i] != 0;
    };
    Outcome outcome{
        .changed = std::string(record), .comingBack = fate.comingBackToo, .joined = fate.joinedToo};
    if (!hasPlace(0) || !hasPlace(1))
        outcome = {.changed = {}, .comingBack = fate.comingBack, .joined = fate.joined};
    std::array<std::string_view, 2> letters;
    for (const std::size_t i : {0, 1}) {
        if (const std::size_t place = places.atoms[i] + 4; places.atoms[i] != 0) {
            if (fate.letters[i])
                putRight(outcome.changed, place, place, *fate.letters[i]);
            letters[i] = field(outcome.changed, place, place);
        }
    }
    if (isLink(record))
        m_bonds.list(names[0], names[1], letters);
    return outcome;
}

References::Outcome References::trimmedRange(std::string_view record, const RecordPlaces& places,
                                             std::uint32_t first, std::uint32_t last) const {
    std::uint32_t begin = first;
    std::uint32_t end = last + 1;
    while (begin != end && !m_runs[begin].isKept)
        ++begin;
    while (begin != end && !m_runs[end - 1].isKept)
        --end;
    if (begin == end)
        return {.isKept = false, .changed = {}};
    Outcome outcome{true, std::string(record)};
    putKey(outcome.changed, places.residues[0], padded(m_runs[begin].key, keyWidth));
    putKey(outcome.changed, places.residues[1], padded(m_runs[end - 1].key, keyWidth));
    if (places.record == "HELIX")
        addTo(outcome.changed, 72, 76, -std::int64_t{begin - first} - (last + 1 - end));
    return outcome;
}

References::Outcome References::updateRange(std::string_view record,
                                            const RecordPlaces& places) const {
    const Residue* const first = find(keyAt(record, places.residues[0]));
    const Residue* const last = find(keyAt(record, places.residues[1]));
    const bool isWhole = !(first && first->state.isGone()) && !(last && last->state.isGone());
    if (isWhole || !first || !last)
        return {};
    if (first->run == none || last->run == none || first->run > last->run)
        return {first->state.isKept || last->state.isKept, {}};
    return trimmedRange(record, places, first->run, last->run);
}

// The number of strands, and the atoms by which this strand lies beside the one before.
void References::updateSheet(std::string_view record, Outcome& outcome) const {
    std::string changed = outcome.changed.empty() ? std::string(record) : outcome.changed;
    if (const auto lost = m_lostStrands.find(sheetOf(record)); lost != m_lostStrands.end())
        addTo(changed, 15, 16, -lost->second);
    if (std::ranges::any_of(strandNeighbours, [&](const ResiduePlace& place) {
            return isGone(keyAt(record, place));
        }))
        putRight(changed, neighboursFirst, neighboursLast, {});
    if (changed != record)
        outcome.changed = changed;
}

References::Outcome References::update(std::string_view record) {
    const RecordPlaces* const places = placesOf(record);
    if (!places)
        return {};
    if (places->meaning == Meaning::Range) {
        Outcome outcome = updateRange(record, *places);
        if (outcome.isKept && places->record == "SHEET")
            updateSheet(record, outcome);
        return outcome;
    }
    for (const ResiduePlace& place : places->residues)
        if (place.name != 0 && isGone(keyAt(record, place)))
            return {.isKept = false, .changed = {}};
    return updateLink(record, *places);
}

std::vector<std::string>
References::updateSite(const std::vector<std::string_view>& records) const {
    std::vector<std::string> left;
    std::int64_t gone = 0;
    for (const std::string_view record : records) {
        for (const std::size_t column : siteColumns) {
            std::string key = keyAt(record, {column, column + 3, column + 5});
            if (trimmed(key).empty())
                continue;
            if (isGone(key))
                ++gone;
            else
                left.push_back(std::move(key));
        }
    }
    if (gone == 0)
        return {records.begin(), records.end()};
    std::vector<std::string> made;
    for (std::size_t i = 0; i != left.size(); ++i) {
        const std::size_t slot = i % siteColumns.size();
        if (slot == 0) {
            made.push_back(padded(columns(records.front(), 1, 18), 18));
            addTo(made.back(), 8, 10, static_cast<std::int64_t>(made.size()) - 1);
            addTo(made.back(), 16, 17, -gone);
            made.back().resize(std::max<std::size_t>(records.front().size(), 61), ' ');
        }
        const std::size_t column = siteColumns[slot];
        putKey(made.back(), {column, column + 3, column + 5}, left[i]);
    }
    return made;
}

} // namespace memory_host::pdb
