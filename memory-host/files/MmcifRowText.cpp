#include "MmcifRowText.h"

#include "AtomNumbers.h"

#include <algorithm>
#include <charconv>

namespace memory_host::mmcif {

namespace {

// At least a thousandth of what the number counts is written, and never more digits than a float
// has a use for.
constexpr std::size_t fewestDecimals = 3;
constexpr std::size_t mostDecimals = 12;

// How many digits a number has behind its point.
std::size_t decimalsOf(std::string_view number) {
    const std::size_t point = std::min(number.find('.'), number.size());
    const std::string_view behind = number.substr(std::min(point + 1, number.size()));
    const auto end = std::ranges::find_if_not(behind, isDigit);
    return static_cast<std::size_t>(end - behind.begin());
}

// A number with as many decimals as the one before it, or more if its value has more: columns of
// mmCIF have room for it.
std::string numberLike(std::string_view old, float value, std::size_t fewest = fewestDecimals) {
    std::array<char, 96> text{};
    char* const begin = text.data();
    char* const limit = begin + text.size();
    char* end = std::to_chars(begin, limit, value, std::chars_format::fixed).ptr;
    const std::size_t needed = std::max(decimalsOf(old), decimalsOf({begin, end}));
    end = std::to_chars(begin, limit, static_cast<double>(value), std::chars_format::fixed,
                        static_cast<int>(std::clamp(needed, fewest, mostDecimals)))
              .ptr;
    return {begin, end};
}

std::string upperCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

std::string chargeText(std::int8_t charge) {
    return charge == 0 ? "?" : std::to_string(charge);
}

} // namespace

RowText::RowText(const cif::Category& category, const std::vector<std::string>& names,
                 std::uint64_t nextId)
    : m_names(names), m_columnCount(category.columns.size()),
      m_entity(category.column("label_entity_id")), m_nextId(nextId) {
    m_columns.fill(m_columnCount);
    for (std::size_t i = 0; i != m_columnCount; ++i) {
        const std::string_view column = category.columns[i];
        if (const Column known = columnOf(column); known != Ignored)
            m_columns[known] = i;
        const bool isUncertainty = endsWith(column, "_esd");
        if (startsWith(column, "fract_") || (isUncertainty && startsWith(column, "Cartn_")))
            m_ofPosition.push_back(i);
        else if (isUncertainty || startsWith(column, "aniso_"))
            m_ofAtom.push_back(i);
    }
}

void RowText::setPosition(const cif::Rows& row, const SavedAtom& atom,
                          std::vector<cif::Change>& changes) const {
    constexpr std::array<Column, 3> axes = {X, Y, Z};
    for (std::size_t axis = 0; axis != axes.size(); ++axis)
        set(axes[axis],
            atom.hasPosition ? numberLike(text(row, axes[axis]), atom.position[axis]) : "?",
            changes);
    for (const std::size_t column : m_ofPosition)
        changes.push_back({column, "?"});
}

void RowText::change(const cif::Rows& row, const SavedAtom& atom,
                     std::vector<cif::Change>& changes) {
    const std::array<std::optional<float>, 3> old = {numberOf(text(row, X)), numberOf(text(row, Y)),
                                                     numberOf(text(row, Z))};
    const bool hadPosition =
        std::ranges::all_of(old, [](const auto& number) { return number.has_value(); });
    const bool hasMoved =
        hadPosition != atom.hasPosition ||
        (hadPosition &&
         !std::ranges::equal(old, atom.position, [](const auto& a, float b) { return *a == b; }));
    if (hasMoved)
        setPosition(row, atom, changes);

    // Each is compared with what was read of the row, which may be no number.
    bool isLost = false;
    const auto isOther = [&](Column column, bool is) {
        isLost = isLost || (is && lacks(column));
        return is;
    };
    const std::string_view temperature = text(row, Temperature);
    if (isOther(Temperature, numberOf(temperature).value_or(0.0F) != atom.temperature))
        set(Temperature, numberLike(temperature, atom.temperature, 2), changes);
    const std::string_view occupancy = rawText(row, Occupancy);
    if (isOther(Occupancy, numberOf(occupancy).value_or(1.0F) != atom.details.occupancy))
        set(Occupancy, numberLike(occupancy, atom.details.occupancy, 2), changes);
    const std::int8_t charge = atom.details.formalCharge;
    if (isOther(FormalCharge, formalCharge(text(row, FormalCharge)) != charge))
        set(FormalCharge, chargeText(charge), changes);
    m_lostCount += isLost ? 1 : 0;
}

void RowText::setLetter(std::string_view letter, std::vector<cif::Change>& changes) {
    m_lostCount += !letter.empty() && lacks(Alternative) ? 1 : 0;
    set(Alternative, letter.empty() ? "." : cif::written(letter), changes);
}

// A residue that has no rows yet. Its identity is in the author's columns, or where there are none
// in the label's.
void RowText::setResidue(const cif::Rows& row, const AddedAtom& added,
                         std::vector<cif::Change>& changes) const {
    const SavedResidue& residue = *added.residue;
    const std::string& chain = name(added.model->chains[residue.chain]);
    const std::string& labelChain = name(residue.labelChain);
    const auto label = [&](Column author, const std::string& ofAuthor, const std::string& ofLabel) {
        const bool isOnly = m_columns[author] == m_columnCount;
        return isOnly ? cif::written(ofAuthor) : ofLabel.empty() ? "." : cif::written(ofLabel);
    };
    if (m_entity < m_columnCount && text(row, LabelChain) != labelChain)
        changes.push_back({m_entity, "?"});
    set(AuthResidue, cif::written(name(residue.name)), changes);
    set(LabelResidue, cif::written(name(residue.name)), changes);
    set(AuthChain, cif::written(chain), changes);
    set(LabelChain, label(AuthChain, chain, labelChain), changes);
    set(AuthNumber, cif::written(name(residue.number)), changes);
    set(LabelNumber, label(AuthNumber, name(residue.number), name(residue.labelNumber)), changes);
    set(Insertion, cif::written(name(residue.insertion)), changes);
}

// Beside the letter.
bool RowText::losesValues(const AddedAtom& added) const {
    const SavedAtom& atom = *added.atom;
    return (atom.details.formalCharge != 0 && lacks(FormalCharge)) ||
           (atom.details.occupancy != 1.0F && lacks(Occupancy)) ||
           (atom.temperature != 0.0F && lacks(Temperature)) ||
           (!added.isInResidue && added.residue->insertion != 0 && lacks(Insertion));
}

std::vector<cif::Change> RowText::added(const cif::Rows& row, const AddedAtom& added) {
    const SavedAtom& atom = *added.atom;
    const std::string& element = name(atom.element);
    std::vector<cif::Change> changes;
    set(Group, atom.details.isHetero ? "HETATM" : "ATOM", changes);
    set(Id, std::to_string(m_nextId++), changes);
    set(Symbol, cif::written(upperCase(element)), changes);
    set(AuthAtom, cif::written(name(atom.name)), changes);
    set(LabelAtom, cif::written(name(atom.name)), changes);
    m_lostCount += losesValues(added) ? 1 : 0;
    setLetter(added.letter, changes);
    if (!added.isInResidue)
        setResidue(row, added, changes);
    setPosition(row, atom, changes);
    set(Occupancy, numberLike(text(row, Occupancy), atom.details.occupancy, 2), changes);
    set(Temperature, numberLike(text(row, Temperature), atom.temperature, 2), changes);
    set(FormalCharge, chargeText(atom.details.formalCharge), changes);
    for (const std::size_t column : m_ofAtom)
        changes.push_back({column, "?"});
    return changes;
}

} // namespace memory_host::mmcif
