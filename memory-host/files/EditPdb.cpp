#include "EditPdb.h"

#include "AlternativeLetters.h"
#include "MadeBonds.h"
#include "PdbBonds.h"
#include "PdbColumns.h"
#include "PdbInsertions.h"
#include "PdbRows.h"
#include "PdbSurvey.h"
#include "ResidueNames.h"
#include "TextLines.h"

#include <algorithm>
#include <unordered_map>

namespace memory_host {

namespace {

using namespace pdb;

constexpr std::uint32_t none = SavedAtom::newRow;

class PdbEditor {
public:
    PdbEditor(const SavedContent& content, SaveReport& report)
        : m_content(content), m_structure(content.structures.front()), m_report(report) {}

    std::string run();

private:
    void write(std::string_view text);
    void writeLine(const TextLine& line);
    void writeAtom(const TextLine& line);
    void writePartOfAtom(const TextLine& line);
    void writeOther(const TextLine& line);
    void writeEndOfChain(const TextLine& line);
    void writeModel(const TextLine& line);
    bool dropEmptyModel();
    void writeMaster(const TextLine& line);
    void collectSite(const TextLine& line);
    void writeSite();
    void writeBonds();
    void insert(std::string_view next, bool isAtEnd);
    void insertResidue(const Insertion& insertion);
    void copy(const TextLine& line) { add(line.content, line.end); }
    void add(std::string_view content, std::string_view end);
    void addNew(std::string_view content);
    void addRow(const std::string& row, std::string_view end, const WrittenAtom& atom);
    std::string serialOfAtom(const RowPlace& place) const;
    WrittenAtom written(const RowPlace& place) const {
        return {m_structure.models[place.model].atoms[place.atom],
                m_letters[place.model][place.atom]};
    }
    std::string_view rowLike(const Insertion& insertion, std::uint32_t atom, std::string& made);

    const SavedContent& m_content;
    const SavedStructure& m_structure;
    SaveReport& m_report;
    std::vector<std::vector<char>> m_letters; ///< by model and atom
    std::vector<Insertion> m_insertions;

    PdbSurvey m_file;

    // While writing:
    std::string m_out;
    std::size_t m_rounded = 0; ///< atoms
    BondsOfSharedRecords m_shared;
    bool m_isLineOpen = false; ///< the output ends without a line end
    PdbCounts m_now;
    std::uint32_t m_row = 0;      ///< the next one
    std::size_t m_insertion = 0;  ///< likewise
    std::string_view m_lastRow;   ///< of the file, kept or not
    RowPlace m_lastPlace;         ///< of that row
    std::string m_lastWritten;    ///< the beginning of the last written row of the chain
    bool m_hasChainRows = false;  ///< the file has rows since the last TER
    std::size_t m_modelStart = 0; ///< in the output
    PdbCounts m_countsBeforeModel;
    bool m_isInModel = false;
    bool m_isModelWritten = false;
    bool m_hadModelRows = false;
    bool m_areBondsWritten = false;
    std::vector<std::string_view> m_site;
    std::string_view m_siteEnd;
    std::unordered_map<std::uint64_t, std::string> m_newSerials; ///< by model and atom
};

std::string PdbEditor::run() {
    const std::shared_ptr<const Bytes> bytes = m_structure.source->unpack();
    std::string_view text = bytes->text();
    constexpr std::string_view mark = "\xef\xbb\xbf";
    m_out.reserve(text.size() + text.size() / 64);
    if (text.starts_with(mark)) {
        m_out = mark;
        text.remove_prefix(mark.size());
    }
    for (const SavedModel& model : m_structure.models)
        m_letters.push_back(alternativeLetters(model, m_content.names, m_report));
    m_file.look(text, m_structure, m_letters);
    m_insertions = insertionsOf(m_structure);
    remarkOnLostNames(
        m_structure, m_content.names,
        [this](std::uint32_t row) { return field(m_file.rows[row], 18, 20); }, m_report);
    write(text);
    if (m_file.modelsLeft != m_file.models)
        m_report.remark("of the " + std::to_string(m_file.models) +
                        " models of the file that was read, it has the " +
                        std::to_string(m_file.modelsLeft) + " that are saved");
    remarkOnRounded(m_rounded, m_report);
    remarkOnSharedRecords(m_shared, m_report);
    return std::move(m_out);
}

void PdbEditor::write(std::string_view text) {
    constexpr std::size_t portion = std::size_t{1} << 20;
    std::size_t nextReport = 0;
    for (TextLines lines(text); !lines.areDone();) {
        const TextLine line = lines.next();
        writeLine(line);
        const auto done = static_cast<std::size_t>(line.content.data() - text.data());
        if (done >= nextReport) {
            m_report.advance(static_cast<double>(done) / static_cast<double>(text.size()));
            nextReport = done + portion;
        }
    }
    writeSite();
    insert({}, true);
    writeBonds();
    // Without its end, a row that is shorter than those that are left would be taken for cut.
    if (m_isLineOpen && !m_out.ends_with(text))
        m_out += m_file.lineEnd;
}

void PdbEditor::add(std::string_view content, std::string_view end) {
    // A last line without an end gets one when another follows.
    if (std::exchange(m_isLineOpen, end.empty()))
        m_out += m_file.lineEnd;
    m_out.append(content).append(end);
}

// A row that was not in the file, of which the columns may have no room for all digits.
void PdbEditor::addRow(const std::string& row, std::string_view end, const WrittenAtom& atom) {
    add(row, end);
    m_rounded += isUnchanged(row, atom) ? 0 : 1;
}

void PdbEditor::addNew(std::string_view content) {
    add(content, m_file.lineEnd);
}

void PdbEditor::writeLine(const TextLine& line) {
    if (isRecord(line.content, "SITE")) {
        collectSite(line);
        return;
    }
    writeSite();
    if (isAtomRecord(line.content)) {
        insert(line.content, false);
        writeAtom(line);
    } else if (isPartOfAtom(line.content)) {
        writePartOfAtom(line);
    } else {
        insert(line.content, false);
        writeOther(line);
    }
}

void PdbEditor::writeAtom(const TextLine& line) {
    m_lastPlace = m_file.places[m_row++];
    m_lastRow = line.content;
    m_hasChainRows = m_hadModelRows = true;
    if (!m_lastPlace.isKept())
        return;
    m_isModelWritten = true;
    ++m_now.atoms;
    m_lastWritten = columns(line.content, 1, 27);
    const WrittenAtom atom = written(m_lastPlace);
    if (isUnchanged(line.content, atom))
        copy(line);
    else
        addRow(changedRow(line.content, atom, m_report), line.end, atom);
}

// ANISOU and the like name their atom, and mostly follow it.
void PdbEditor::writePartOfAtom(const TextLine& line) {
    const std::string_view key = columns(line.content, 7, 27);
    const bool isOfLast = columns(m_lastRow, 7, 27) == key;
    if (isOfLast ? !m_lastPlace.isKept() : m_file.droppedAtoms.contains(key))
        return;
    const char before = line.content.size() < 17 ? ' ' : line.content[16];
    const char letter = isOfLast ? written(m_lastPlace).letter : '\0';
    if (!isOfLast || before == (letter ? letter : ' ')) {
        copy(line);
        return;
    }
    std::string changed(line.content);
    putRight(changed, 17, 17, std::string_view(&letter, letter ? 1 : 0));
    add(changed, line.end);
}

void PdbEditor::writeOther(const TextLine& line) {
    if (isRecord(line.content, "TER")) {
        writeEndOfChain(line);
    } else if (isRecord(line.content, "MODEL") || isRecord(line.content, "ENDMDL")) {
        writeModel(line);
    } else if (isRecord(line.content, "CONECT") && m_file.conect.hasChanges()) {
        const std::string updated = m_file.conect.update(line.content);
        if (!updated.empty()) {
            add(updated, line.end);
            m_now.add(updated);
            m_file.relisting.see(updated);
        }
    } else if (isRecord(line.content, "MASTER")) {
        writeBonds();
        writeMaster(line);
    } else if (isRecord(line.content, "NUMMDL")) {
        std::string record(line.content);
        putCount(record, 11, 14, m_file.models, m_file.modelsLeft);
        add(record, line.end);
    } else {
        if (isRecord(line.content, "END") && m_row == m_file.rows.size())
            writeBonds();
        const References::Outcome outcome = m_file.references.update(line.content);
        if (!outcome.isKept)
            return;
        m_shared.comingBack += outcome.comingBack;
        m_shared.joined += outcome.joined;
        m_now.add(line.content);
        if (isRecord(line.content, "CONECT"))
            m_file.relisting.see(line.content);
        add(outcome.changed.empty() ? line.content : outcome.changed, line.end);
    }
}

// The end of a chain names its last residue. It goes with the last atom of the chain.
void PdbEditor::writeEndOfChain(const TextLine& line) {
    const std::string before = std::move(m_lastWritten);
    m_lastWritten.clear();
    const bool hadRows = std::exchange(m_hasChainRows, false);
    if (hadRows && before.empty())
        return;
    ++m_now.ends;
    const std::string_view residue = field(m_lastRow, 18, 27);
    const std::string_view now = field(before, 18, 27);
    if (!hadRows || now == residue || field(line.content, 18, 27) != residue) {
        copy(line);
        return;
    }
    std::string changed(columns(line.content, 1, 17));
    changed += columns(before, 18, 17 + columns(line.content, 18, 27).size());
    if (line.content.size() > 27)
        changed += line.content.substr(27);
    else
        changed += trimmed(columns(before, changed.size() + 1, 27));
    add(changed, line.end);
}

// Takes back the model that was written last if nothing is left of it.
bool PdbEditor::dropEmptyModel() {
    const bool isEmpty = m_isInModel && m_hadModelRows && !m_isModelWritten;
    if (isEmpty) {
        m_out.resize(m_modelStart);
        m_now = m_countsBeforeModel;
    }
    m_isInModel = m_isModelWritten = m_hadModelRows = false;
    return isEmpty;
}

void PdbEditor::writeModel(const TextLine& line) {
    const bool isDropped = dropEmptyModel();
    m_lastWritten.clear();
    m_hasChainRows = false;
    if (!isRecord(line.content, "MODEL")) {
        if (!isDropped)
            copy(line);
        return;
    }
    m_isInModel = true;
    m_modelStart = m_out.size();
    m_countsBeforeModel = m_now;
    copy(line);
}

void PdbEditor::writeMaster(const TextLine& line) {
    std::string record(line.content);
    m_now.update(record, m_file.counts);
    add(record, line.end);
}

// The records of one site come together.
void PdbEditor::collectSite(const TextLine& line) {
    if (!m_site.empty() && columns(m_site.front(), 12, 14) != columns(line.content, 12, 14))
        writeSite();
    m_site.push_back(line.content);
    m_siteEnd = line.end;
}

void PdbEditor::writeSite() {
    if (m_site.empty())
        return;
    for (const std::string& record : m_file.references.updateSite(m_site)) {
        m_now.add(record);
        add(record, m_siteEnd);
    }
    m_site.clear();
}

// Inserts the new rows whose place is before the next line.
void PdbEditor::insert(std::string_view next, bool isAtEnd) {
    using Where = Insertion::Where;
    while (m_insertion != m_insertions.size() && m_insertions[m_insertion].rows <= m_row) {
        const Where where = m_insertions[m_insertion].where;
        const bool isHere = isAtEnd || where == Where::AfterRow ||
                            (where == Where::BeforeRow && isAtomRecord(next)) ||
                            (where == Where::AfterChain && !isRecord(next, "TER"));
        if (!isHere)
            return;
        insertResidue(m_insertions[m_insertion++]);
    }
}

// The row that tells residue and chain of a new atom: of the same alternative location, if there is
// one in the residue.
std::string_view PdbEditor::rowLike(const Insertion& insertion, std::uint32_t atom,
                                    std::string& made) {
    const SavedModel& model = m_structure.models[insertion.model];
    const std::vector<char>& letters = m_letters[insertion.model];
    const SavedResidue& residue = model.residues[insertion.residue];
    if (insertion.isResidueNew) {
        if (made.empty())
            made = rowBeginning(model, residue,
                                insertion.like == none ? std::string_view()
                                                       : m_file.rows[insertion.like],
                                m_content, m_report);
        return made;
    }
    std::string_view like;
    for (std::uint32_t i = residue.firstAtom; i != model.atomEnd(insertion.residue); ++i) {
        const std::uint32_t row = model.atoms[i].row;
        if (row != none && (like.empty() || letters[i] == letters[atom]))
            like = m_file.rows[row];
        if (row != none && letters[i] == letters[atom])
            break;
    }
    return like;
}

void PdbEditor::insertResidue(const Insertion& insertion) {
    const SavedModel& model = m_structure.models[insertion.model];
    std::string made;
    for (std::uint32_t i = model.residues[insertion.residue].firstAtom;
         i != model.atomEnd(insertion.residue); ++i) {
        if (model.atoms[i].row != none)
            continue;
        const RowPlace place{insertion.model, i};
        const std::string row = newRow(rowLike(insertion, i, made), written(place), m_content,
                                       ++m_file.lastSerial, m_file.areSerialsDecimal, m_report);
        addRow(row, m_file.lineEnd, written(place));
        ++m_now.atoms;
        m_isModelWritten = true;
        m_lastWritten = columns(row, 1, 27);
        m_newSerials[std::uint64_t{insertion.model} << 32 | i] =
            serialText(m_file.lastSerial, m_file.areSerialsDecimal);
    }
}

// The serial number in five columns; empty where there is none that a record can name.
std::string PdbEditor::serialOfAtom(const RowPlace& place) const {
    const std::uint32_t row = m_structure.models[place.model].atoms[place.atom].row;
    if (row != none)
        return serialOf(m_file.rows[row]) == noSerial
                   ? std::string()
                   : std::string(columns(m_file.rows[row], 7, 11));
    const auto found = m_newSerials.find(std::uint64_t{place.model} << 32 | place.atom);
    return found == m_newSerials.end() || found->second.size() != 5 ? std::string() : found->second;
}

// Bonds that were made, and those that records do not list by names any more.
void PdbEditor::writeBonds() {
    if (std::exchange(m_areBondsWritten, true))
        return;
    auto [bonds, nameless, ambiguous] =
        m_file.relisting.bonds(m_file.references.unlistedBonds(), m_file.rows);
    for (std::uint32_t i = 0; i != m_structure.models.size(); ++i) {
        for (const SavedBond& bond : m_structure.models[i].bonds) {
            if (!isToBeListed(bond))
                continue;
            std::string first = serialOfAtom({i, bond.first});
            std::string second = serialOfAtom({i, bond.second});
            if (first.empty() || second.empty())
                ++nameless;
            else
                bonds.emplace_back(std::move(first), std::move(second));
        }
    }
    for (const std::string& record : Conect::recordsOf(std::move(bonds))) {
        addNew(record);
        m_now.add(record);
    }
    remarkOnAmbiguous(ambiguous, m_report);
    if (nameless != 0)
        m_report.remark(std::to_string(nameless) + (nameless == 1 ? " bond is" : " bonds are") +
                        " not saved, as their atoms have no serial numbers of five columns");
}

} // namespace

std::string editPdb(const SavedContent& content, SaveReport& report) {
    return PdbEditor(content, report).run();
}

} // namespace memory_host
