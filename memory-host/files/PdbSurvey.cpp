#include "PdbSurvey.h"

#include "AtomNumbers.h"
#include "PdbColumns.h"
#include "PdbRows.h"
#include "TextLines.h"

#include <algorithm>

namespace memory_host::pdb {

namespace {

// What MASTER counts, and the first of its columns of each.
struct Counted {
    std::string_view record;
    std::size_t column;
};
constexpr std::array<Counted, 6> countedRecords = {
    {{"HET", 21}, {"HELIX", 26}, {"SHEET", 31}, {"TURN", 36}, {"SITE", 41}, {"CONECT", 61}}};
constexpr std::size_t atomsColumn = 51;
constexpr std::size_t endsColumn = 56;

} // namespace

bool isPartOfAtom(std::string_view line) {
    return line.starts_with("ANISOU") || line.starts_with("SIGATM") || line.starts_with("SIGUIJ");
}

void putCount(std::string& record, std::size_t first, std::size_t last, std::int64_t before,
              std::int64_t now) {
    const std::string text = std::to_string(now);
    const bool fits = text.size() <= last - first + 1;
    if (before != now && fits && field(record, first, last) == std::to_string(before))
        putRight(record, first, last, text);
}

void PdbCounts::add(std::string_view record) {
    const auto found = std::ranges::find_if(countedRecords, [record](const Counted& counted) {
        return isRecord(record, counted.record);
    });
    if (found != countedRecords.end())
        ++m_others[static_cast<std::size_t>(found - countedRecords.begin())];
}

void PdbCounts::update(std::string& master, const PdbCounts& before) const {
    const auto put = [&master](std::size_t column, std::int64_t old, std::int64_t now) {
        putCount(master, column, column + 4, old, now);
    };
    for (std::size_t i = 0; i != countedRecords.size(); ++i)
        put(countedRecords[i].column, before.m_others[i], m_others[i]);
    put(atomsColumn, before.atoms, atoms);
    put(endsColumn, before.ends, ends);
}

void PdbSurvey::look(std::string_view text, const SavedStructure& structure,
                     const Letters& letters) {
    placeAtoms(structure);
    readLines(text);
    findFates(structure, letters);
}

void PdbSurvey::placeAtoms(const SavedStructure& structure) {
    std::uint32_t count = 0;
    for (const SavedModel& model : structure.models)
        count = std::max(count, model.endRow);
    places.resize(count);
    for (std::uint32_t i = 0; i != structure.models.size(); ++i) {
        const std::vector<SavedAtom>& atoms = structure.models[i].atoms;
        for (std::uint32_t atom = 0; atom != atoms.size(); ++atom)
            if (const std::uint32_t row = atoms[atom].row; row != SavedAtom::newRow)
                places[row] = {i, atom};
    }
}

void PdbSurvey::readLines(std::string_view text) {
    rows.reserve(places.size());
    bool isFirst = true;
    for (TextLines lines(text); !lines.areDone();) {
        const TextLine line = lines.next();
        if (isFirst && !line.end.empty())
            lineEnd = line.end;
        isFirst = false;
        if (isAtomRecord(line.content))
            readAtom(line.content);
        else if (!isPartOfAtom(line.content))
            readOther(line.content);
    }
    readOther("ENDMDL");
    counts.atoms = static_cast<std::int64_t>(rows.size());
    places.resize(rows.size());
}

void PdbSurvey::readAtom(std::string_view line) {
    const std::string_view serial = serialNumberOf(line);
    const std::int32_t number = serialNumber(serial);
    lastSerial = std::max(lastSerial, number);
    areSerialsDecimal = areSerialsDecimal || (number > 99999 && serial.size() > 5);
    m_hasModelRows = true;
    m_isModelLeft = m_isModelLeft || (rows.size() < places.size() && places[rows.size()].isKept());
    rows.push_back(line);
}

void PdbSurvey::readOther(std::string_view line) {
    if (isRecord(line, "MODEL") || isRecord(line, "ENDMDL")) {
        models += m_hasModelRows ? 1 : 0;
        modelsLeft += m_isModelLeft ? 1 : 0;
        m_hasModelRows = m_isModelLeft = false;
    } else if (isRecord(line, "TER")) {
        ++counts.ends;
        lastSerial = std::max(lastSerial, serialNumber(field(line, 7, 11)));
    } else {
        counts.add(line);
        references.collect(line);
    }
}

// Calls use(model, bond, first, second) for each bond that the file lists and that is left.
template <class Use>
void PdbSurvey::forListed(const SavedStructure& structure, const Letters& letters,
                          const Use& use) const {
    for (std::size_t i = 0; i != structure.models.size(); ++i) {
        const SavedModel& model = structure.models[i];
        const auto atomAt = [&](std::uint32_t atom) {
            return References::BondAtom{rows[model.atoms[atom].row], letters[i][atom]};
        };
        for (const SavedBond& bond : model.bonds)
            if (bond.isListed)
                use(model, bond, atomAt(bond.first), atomAt(bond.second));
    }
}

// One record lists the bonds of all models, and of all alternative locations.
void PdbSurvey::findFatesOfBonds(const SavedStructure& structure, const Letters& letters) {
    bool isAnyLost = false;
    for (const SavedModel& model : structure.models)
        for (const LostBond& bond : model.lostBonds) {
            isAnyLost = true;
            if (!places[bond.first].isKept() || !places[bond.second].isKept())
                continue;
            const auto atomAt = [&](std::uint32_t row) {
                return References::BondAtom{rows[row],
                                            letters[places[row].model][places[row].atom]};
            };
            references.loseBond(atomAt(bond.first), atomAt(bond.second), bond.isFoundAgain);
            conect.loseBond(rows[bond.first], rows[bond.second]);
        }
    forListed(
        structure, letters,
        [&](const SavedModel& model, const SavedBond& bond, const auto& first, const auto& second) {
            if (!bond.isRelettered)
                return;
            references.reletterBond(first, second, bond);
            relisting.take(model, bond, first.row, second.row);
        });
    if (!isAnyLost && !references.haveBondsChanged())
        return;
    forListed(structure, letters,
              [&](const SavedModel&, const SavedBond&, const auto& first, const auto& second) {
                  references.keepBond(first, second);
                  conect.keepBond(first.row, second.row);
              });
}

// What is left of what records refer to. Models that are not saved do not count.
void PdbSurvey::findFates(const SavedStructure& structure, const Letters& letters) {
    const bool isWhole = std::ranges::all_of(places, &RowPlace::isKept);
    for (const SavedModel& model : structure.models)
        for (std::uint32_t row = isWhole ? model.endRow : model.firstRow; row != model.endRow;
             ++row) {
            const bool isKept = places[row].isKept();
            references.see(rows[row], isKept);
            if (!isKept)
                droppedAtoms.insert(columns(rows[row], 7, 27));
        }
    findFatesOfBonds(structure, letters);
    if (!isWhole)
        for (std::size_t row = 0; row != rows.size(); ++row)
            conect.see(rows[row], places[row].isKept());
    references.settle();
    conect.settle();
}

} // namespace memory_host::pdb
