#include "SaveMmcif.h"

#include "CifEdit.h"
#include "MadeBonds.h"
#include "MmcifFates.h"
#include "MmcifRowText.h"
#include "ResidueNames.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

namespace memory_host {

namespace {

using cif::Category;
using cif::Change;
using mmcif::AddedAtom;
using mmcif::RowFate;
using mmcif::RowText;

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

// The atoms of a data block.
struct AtomsOfBlock {
    std::size_t category;
    std::size_t firstRow; ///< among those of the file
    std::optional<RowText> texts;
    bool isEmpty = true; ///< no atom is left
};

class MmcifEdit {
public:
    MmcifEdit(std::string_view text, const SavedContent& content, SaveReport& report)
        : m_text(text), m_structures(content.structures), m_names(content.names), m_report(report),
          m_contents(cif::contentsOf(text)), m_fates(m_contents.categories.size()), m_edit(text) {}

    std::string make();

private:
    // What is changed at once: a loop, a tag with its value, or a whole block.
    struct Piece {
        std::size_t begin;
        std::size_t category; ///< `none` for a block
        std::size_t part;     ///< number of the pair, or of the block
    };
    // The rows of a category without a loop, as changes to the only one that it has.
    using PairRows = std::vector<std::vector<Change>>;

    const Category& category(std::size_t index) const { return m_contents.categories[index]; }
    AtomsOfBlock* atomsOf(std::size_t category);
    void findAtoms();
    void readRows(AtomsOfBlock& atoms);
    void checkRows() const;
    void planRows();
    mmcif::BlockChange changeOf(const AtomsOfBlock& atoms) const;
    void remarkOnRanges() const;
    void remarkOnBonds() const;
    std::vector<Piece> pieces() const;
    void write(const Piece& piece);
    void writeAtoms(AtomsOfBlock& atoms);
    void writeLoop(const Category& loop, const RowFate& fate);
    void writePair(const Piece& piece);
    PairRows pairRows(std::size_t category);
    PairRows atomPairRows(AtomsOfBlock& atoms);
    void changesOf(AtomsOfBlock& atoms, const cif::Rows& rows, std::size_t row,
                   std::vector<Change>& changes);
    const AddedAtom* takeAdded(std::size_t row);

    std::string_view m_text;
    std::span<const SavedStructure> m_structures;
    const std::vector<std::string>& m_names;
    SaveReport& m_report;
    cif::Contents m_contents;
    std::vector<AtomsOfBlock> m_atoms;
    std::vector<std::string_view> m_letters;  ///< of alternative locations, by row of atoms
    bool m_haveSeveralNames = false;          ///< some residues
    std::vector<std::string_view> m_residues; ///< names, by row of atoms, if some have several
    std::optional<mmcif::RowPlan> m_plan;
    std::size_t m_nextAdded = 0; ///< of the plan
    std::size_t m_nextLetter = 0;
    std::vector<RowFate> m_fates; ///< by category
    std::map<std::size_t, PairRows> m_pairRows;
    cif::Edit m_edit;
};

AtomsOfBlock* MmcifEdit::atomsOf(std::size_t category) {
    const auto found = std::ranges::lower_bound(m_atoms, category, {}, &AtomsOfBlock::category);
    return found == m_atoms.end() || found->category != category ? nullptr : &*found;
}

void MmcifEdit::findAtoms() {
    for (std::size_t i = 0; i != m_contents.categories.size(); ++i) {
        if (category(i).name != "_atom_site" || category(i).rowCount == 0)
            continue;
        m_atoms.push_back({i, m_letters.size(), {}});
        readRows(m_atoms.back());
    }
}

void MmcifEdit::readRows(AtomsOfBlock& atoms) {
    const Category& rowsOf = category(atoms.category);
    const std::size_t letter = rowsOf.column("label_alt_id");
    const std::size_t id = rowsOf.column("id");
    const std::size_t author = rowsOf.column("auth_comp_id");
    const std::size_t residue =
        author < rowsOf.columns.size() ? author : rowsOf.column("label_comp_id");
    std::uint64_t largest = 0;
    m_letters.reserve(m_letters.size() + rowsOf.rowCount);
    cif::Rows rows(m_text, rowsOf);
    while (rows.next()) {
        m_letters.push_back(letter < rowsOf.columns.size() ? mmcif::contentOf(rows[letter])
                                                           : std::string_view());
        if (m_haveSeveralNames)
            m_residues.push_back(residue < rowsOf.columns.size() ? mmcif::contentOf(rows[residue])
                                                                 : std::string_view());
        if (id < rowsOf.columns.size())
            largest = std::max(largest, static_cast<std::uint64_t>(
                                            std::max(0, serialNumber(mmcif::contentOf(rows[id])))));
    }
    atoms.texts.emplace(rowsOf, m_names, largest + 1);
}

// The tables were made of this text.
void MmcifEdit::checkRows() const {
    for (const SavedStructure& structure : m_structures)
        for (const SavedModel& model : structure.models)
            for (const SavedAtom& atom : model.atoms)
                if (structure.block >= m_atoms.size() ||
                    (atom.row != SavedAtom::newRow && atom.row >= m_letters.size()))
                    m_report.refuse("cannot be saved: its text has fewer atoms than were read",
                                    "accepted is saving in another format");
}

void MmcifEdit::planRows() {
    std::vector<std::uint32_t> lastRows;
    for (const AtomsOfBlock& atoms : m_atoms)
        lastRows.push_back(
            static_cast<std::uint32_t>(atoms.firstRow + category(atoms.category).rowCount - 1));
    m_plan.emplace(m_structures, m_letters, lastRows);
    for (AtomsOfBlock& atoms : m_atoms) {
        const std::span<const SavedAtom* const> rows(m_plan->atoms().data() + atoms.firstRow,
                                                     category(atoms.category).rowCount);
        atoms.isEmpty = std::ranges::all_of(rows, [](const SavedAtom* atom) { return !atom; });
    }
    for (const AddedAtom& added : m_plan->added())
        std::prev(std::ranges::upper_bound(m_atoms, std::size_t{added.behind}, {},
                                           &AtomsOfBlock::firstRow))
            ->isEmpty = false;
}

mmcif::BlockChange MmcifEdit::changeOf(const AtomsOfBlock& atoms) const {
    mmcif::BlockChange change{atoms.category, {}, {}, {}};
    change.isKept.resize(category(atoms.category).rowCount);
    for (std::size_t row = 0; row != change.isKept.size(); ++row)
        change.isKept[row] = m_plan->atoms()[atoms.firstRow + row] != nullptr;
    const auto firstRow = static_cast<std::uint32_t>(atoms.firstRow);
    const auto atomAt = [&](std::uint32_t row) {
        return mmcif::BondAtom{row - firstRow, m_plan->letterOf(row)};
    };
    const auto block = static_cast<std::uint32_t>(&atoms - m_atoms.data());
    auto structure = std::ranges::lower_bound(m_structures, block, {}, &SavedStructure::block);
    for (; structure != m_structures.end() && structure->block == block; ++structure) {
        for (const SavedModel& model : structure->models) {
            for (const LostBond& bond : model.lostBonds)
                if (m_plan->atoms()[bond.first] && m_plan->atoms()[bond.second])
                    change.lost.push_back({.first = atomAt(bond.first),
                                           .second = atomAt(bond.second),
                                           .isFoundAgain = bond.isFoundAgain});
            for (const SavedBond& bond : model.bonds)
                if (bond.isListed)
                    change.kept.push_back({.first = atomAt(model.atoms[bond.first].row),
                                           .second = atomAt(model.atoms[bond.second].row),
                                           .left = &bond});
        }
    }
    return change;
}

// A helix or a strand is not known any more when a residue at its end is gone.
void MmcifEdit::remarkOnRanges() const {
    for (std::size_t i = 0; i != m_fates.size(); ++i)
        if (const std::size_t count = m_fates[i].cutRanges; count != 0)
            m_report.remark(std::to_string(count) + (count == 1 ? " row" : " rows") + " of " +
                            category(i).name + (count == 1 ? " is" : " are") +
                            " not kept, as a residue at one end is gone and others are not");
}

void MmcifEdit::remarkOnBonds() const {
    std::size_t count = 0;
    for (const SavedStructure& structure : m_structures)
        for (const SavedModel& model : structure.models)
            count += static_cast<std::size_t>(std::ranges::count_if(model.bonds, isToBeListed));
    if (count != 0)
        m_report.remark(std::to_string(count) +
                        (count == 1 ? " bond that was made or stretched is"
                                    : " bonds that were made or stretched are") +
                        " not saved, as the distance of the atoms does not tell them");
    BondsOfSharedRecords shared;
    std::size_t ambiguous = 0;
    std::size_t unlisted = 0;
    for (const RowFate& fate : m_fates) {
        ambiguous += fate.ambiguous;
        unlisted += fate.unlisted;
        shared.comingBack += fate.comingBack;
        shared.joined += fate.joined;
    }
    remarkOnSharedRecords(shared, m_report);
    remarkOnAmbiguous(ambiguous, m_report);
    remarkOnUnkept(unlisted, "an atom is in another alternative location than the file lists",
                   m_report);
}

std::vector<MmcifEdit::Piece> MmcifEdit::pieces() const {
    std::vector<Piece> pieces;
    for (const AtomsOfBlock& atoms : m_atoms)
        if (const std::size_t block = category(atoms.category).block; atoms.isEmpty)
            pieces.push_back({m_contents.blocks[block], none, block});
    for (std::size_t i = 0; i != m_contents.categories.size(); ++i) {
        if (category(i).isLoop())
            pieces.push_back({category(i).place.begin, i, none});
        for (std::size_t pair = 0; pair != category(i).pairs.size(); ++pair)
            pieces.push_back({category(i).pairs[pair].tag.begin, i, pair});
    }
    std::ranges::stable_sort(pieces, {}, &Piece::begin);
    return pieces;
}

void MmcifEdit::changesOf(AtomsOfBlock& atoms, const cif::Rows& rows, std::size_t row,
                          std::vector<Change>& changes) {
    changes.clear();
    atoms.texts->change(rows, *m_plan->atoms()[row], changes);
    const auto& letters = m_plan->newLetters();
    while (m_nextLetter != letters.size() && letters[m_nextLetter].row < row)
        ++m_nextLetter;
    if (m_nextLetter != letters.size() && letters[m_nextLetter].row == row)
        atoms.texts->setLetter(letters[m_nextLetter].letter, changes);
}

// The next atom to be added behind a row; null if there is none.
const AddedAtom* MmcifEdit::takeAdded(std::size_t row) {
    const auto& added = m_plan->added();
    while (m_nextAdded != added.size() && added[m_nextAdded].behind < row)
        ++m_nextAdded;
    const bool isNext = m_nextAdded != added.size() && added[m_nextAdded].behind == row;
    return isNext ? &added[m_nextAdded++] : nullptr;
}

void MmcifEdit::writeAtoms(AtomsOfBlock& atoms) {
    constexpr std::size_t rowsAtOnce = 16384;
    std::vector<Change> changes;
    cif::Rows rows(m_text, category(atoms.category));
    for (std::size_t row = atoms.firstRow; rows.next(); ++row) {
        if (!m_plan->atoms()[row]) {
            m_edit.dropRow(rows.places());
        } else {
            changesOf(atoms, rows, row, changes);
            if (!changes.empty())
                m_edit.setValues(rows.places(), changes);
        }
        while (const AddedAtom* added = takeAdded(row))
            m_edit.addRow(rows.places(), rows.places(), atoms.texts->added(rows, *added));
        if (row % rowsAtOnce == 0)
            m_report.advance(static_cast<double>(row) / static_cast<double>(m_letters.size()));
    }
}

void MmcifEdit::writeLoop(const Category& loop, const RowFate& fate) {
    if (fate.dropCount == 0 && fate.updates.empty())
        return;
    if (fate.dropCount == loop.rowCount) {
        m_edit.dropLoop(loop);
        m_edit.dropSeparator(loop);
        return;
    }
    auto update = fate.updates.begin();
    std::vector<Change> changes;
    cif::Rows rows(m_text, loop);
    for (std::size_t row = 0; rows.next(); ++row) {
        changes.clear();
        for (; update != fate.updates.end() && update->row == row; ++update)
            changes.push_back(update->change);
        if (fate.drops(row))
            m_edit.dropRow(rows.places());
        else if (!changes.empty())
            m_edit.setValues(rows.places(), changes);
    }
}

MmcifEdit::PairRows MmcifEdit::atomPairRows(AtomsOfBlock& atoms) {
    PairRows result;
    cif::Rows rows(m_text, category(atoms.category));
    rows.next();
    if (m_plan->atoms()[atoms.firstRow])
        changesOf(atoms, rows, atoms.firstRow, result.emplace_back());
    while (const AddedAtom* added = takeAdded(atoms.firstRow))
        result.push_back(atoms.texts->added(rows, *added));
    return result;
}

MmcifEdit::PairRows MmcifEdit::pairRows(std::size_t index) {
    if (AtomsOfBlock* const atoms = atomsOf(index))
        return atomPairRows(*atoms);
    const RowFate& fate = m_fates[index];
    if (fate.dropCount != 0)
        return {};
    PairRows rows(1);
    for (const RowFate::Update& update : fate.updates)
        rows.front().push_back(update.change);
    return rows;
}

void MmcifEdit::writePair(const Piece& piece) {
    const auto [known, isNew] = m_pairRows.try_emplace(piece.category);
    if (isNew)
        known->second = pairRows(piece.category);
    const PairRows& rows = known->second;
    const Category& pairs = category(piece.category);
    const Category::Pair& pair = pairs.pairs[piece.part];
    if (rows.size() == 1) {
        for (const Change& change : rows.front())
            if (change.column == piece.part)
                m_edit.setValue(pair.value, change.value);
    } else if (piece.part == 0 && !rows.empty()) {
        m_edit.makeLoop(pairs, rows);
    } else {
        m_edit.dropPair(pair);
        if (rows.empty() && piece.part + 1 == pairs.pairs.size())
            m_edit.dropSeparator(pairs);
    }
}

void MmcifEdit::write(const Piece& piece) {
    if (piece.category == none) {
        const bool isLast = piece.part + 1 == m_contents.blocks.size();
        m_edit.replace({piece.begin, isLast ? m_text.size() : m_contents.blocks[piece.part + 1]},
                       {});
    } else if (piece.part != none) {
        writePair(piece);
    } else if (AtomsOfBlock* const atoms = atomsOf(piece.category)) {
        writeAtoms(*atoms);
    } else {
        writeLoop(category(piece.category), m_fates[piece.category]);
    }
}

std::string MmcifEdit::make() {
    m_haveSeveralNames = std::ranges::any_of(m_structures, [this](const SavedStructure& structure) {
        return haveSeveralNames(structure, m_names);
    });
    findAtoms();
    checkRows();
    planRows();
    if (std::ranges::all_of(m_atoms, &AtomsOfBlock::isEmpty))
        m_report.refuse("cannot be saved: it has no atoms left", "accepted are entries with atoms");
    for (const AtomsOfBlock& atoms : m_atoms)
        if (!atoms.isEmpty)
            mmcif::findFates(m_text, m_contents, changeOf(atoms), m_fates);
    remarkOnRanges();
    remarkOnBonds();
    if (m_haveSeveralNames)
        for (const SavedStructure& structure : m_structures)
            remarkOnLostNames(
                structure, m_names, [this](std::uint32_t row) { return m_residues[row]; },
                m_report);
    std::size_t copied = 0; // A block that is dropped is dropped with all that it holds.
    for (const Piece& piece : pieces()) {
        if (piece.begin < copied)
            continue;
        write(piece);
        if (piece.category == none)
            copied = piece.part + 1 == m_contents.blocks.size() ? m_text.size()
                                                                : m_contents.blocks[piece.part + 1];
    }
    std::size_t lost = 0;
    for (const AtomsOfBlock& atoms : m_atoms)
        lost += atoms.texts->lostCount();
    if (lost != 0)
        m_report.remark("something of " + std::to_string(lost) + (lost == 1 ? " atom" : " atoms") +
                        " that " + (lost == 1 ? "was" : "were") +
                        " made or changed is not saved, as the file has no column for it");
    return m_edit.take();
}

} // namespace

std::string editMmcif(const SavedContent& content, SaveReport& report) {
    const std::shared_ptr<const Bytes> text = content.structures.front().source->unpack();
    return MmcifEdit(text->text(), content, report).make();
}

} // namespace memory_host
