#include "SavedRows.h"

#include "Ancestry.h"
#include "AtomDetails.h"
#include "GemmiReading.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Traversal.h"

#include <algorithm>
#include <cmath>

namespace random_use {

using plain::FileContent;
using plain::FileRow;
using TAVIK::Compound;

namespace {

template <class Kind> std::string nameAround(Compound* item) {
    while (item && !dynamic_cast<Kind*>(item))
        item = TAVIK::GetParent(item);
    return item ? item->GetName() : std::string();
}

FileRow rowOf(TAVIK::Atom* atom) {
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
    const TAVIK::Vertex at = atom->GetPosition();
    FileRow row;
    row.chain = nameAround<TAVIK::Molecule>(atom);
    row.residue = nameAround<TAVIK::Residue>(atom);
    row.name = atom->GetName();
    row.element = atom->GetType();
    row.hasPosition = at.isValid();
    row.position = {at[0], at[1], at[2]};
    row.temperature = atom->GetTemperature();
    row.details = {details.occupancy, details.formalCharge, details.alternative, details.isHetero};
    // Models are counted anew when a file is read; those of one letter are one.
    if ((details.alternative == '\0') != (atom->GetModelNumber() == "0"))
        row.details.letter = '?';
    return row;
}

std::vector<std::string> linesOf(Compound* entry) {
    if (auto* const grid = dynamic_cast<TAVIK::Grid*>(entry)) {
        const auto& points = TAVIK::GetGridValues(grid)->points;
        return {"map of " + std::to_string(points[0]) + ' ' + std::to_string(points[1]) + ' ' +
                std::to_string(points[2]) + " points"};
    }
    std::vector<Compound*> items;
    TAVIK::GetAtoms(entry, items, true);
    std::vector<TAVIK::Atom*> atoms;
    for (Compound* item : items)
        atoms.push_back(dynamic_cast<TAVIK::Atom*>(item));
    std::stable_sort(atoms.begin(), atoms.end(), [](const auto* a, const auto* b) {
        return TAVIK::GetAtomDetails(a).serial < TAVIK::GetAtomDetails(b).serial;
    });
    std::vector<std::string> lines;
    for (TAVIK::Atom* atom : atoms)
        lines.push_back(rowOf(atom).text());
    return lines;
}

FileRow rowOf(const gemmi::Chain& chain, const gemmi::Residue& residue, const gemmi::Atom& atom) {
    FileRow row;
    row.chain = chain.name.empty() ? "_" : chain.name;
    row.residue = residue.name;
    if (residue.seqid.num)
        row.residue += ' ' + residue.seqid.str();
    row.name = atom.name;
    row.element = atom.element.name();
    row.hasPosition = !std::isnan(atom.pos.x);
    if (row.hasPosition)
        row.position = {float(atom.pos.x), float(atom.pos.y), float(atom.pos.z)};
    row.temperature = atom.b_iso;
    row.details = {atom.occ, atom.charge, atom.altloc, residue.het_flag == 'H'};
    return row;
}

// "A/PRO,SER 22/CA": what stands at one place and has several names is not told apart.
bool hasSeveralNames(const std::string& line) {
    return line.substr(0, line.find(", ")).find(',') != std::string::npos;
}

void leaveOutResidueNames(std::vector<std::string>& lines) {
    for (std::string& line : lines) {
        const std::size_t begin = line.find('/') + 1;
        const std::size_t blank = line.rfind(' ', line.find('/', begin));
        if (blank != std::string::npos && blank > begin)
            line.erase(begin, blank + 1 - begin);
    }
}

QStringList differenceOf(std::vector<std::string> expected, std::vector<std::string> read,
                         bool isInOrder, const char* who) {
    if (std::any_of(expected.begin(), expected.end(), hasSeveralNames)) {
        leaveOutResidueNames(expected);
        leaveOutResidueNames(read);
    }
    if (!isInOrder) {
        std::sort(expected.begin(), expected.end());
        std::sort(read.begin(), read.end());
    }
    const auto [at, other] =
        std::mismatch(expected.begin(), expected.end(), read.begin(), read.end());
    if (at == expected.end() && other == read.end())
        return {};
    const auto shown = [](const auto& found, const auto& all) {
        return found == all.end() ? QStringLiteral("nothing") : QString::fromLatin1(found->c_str());
    };
    return {QStringLiteral("the saved line %1 of %2 is by %3 \"%4\" of %5, and was \"%6\"")
                .arg(at - expected.begin())
                .arg(expected.size())
                .arg(QLatin1String(who), shown(other, read))
                .arg(read.size())
                .arg(shown(at, expected))};
}

// For gemmi what is nowhere is at the origin, and all of a residue is HETATM or nothing.
std::vector<std::string> asForGemmi(std::vector<std::string> lines) {
    for (std::string& line : lines)
        for (const std::string_view word : {"nowhere ", "at ", "HETATM, ", "ATOM, "})
            if (const std::size_t at = line.find(word); at != std::string::npos)
                line.erase(at, word.size());
    return lines;
}

} // namespace

Lines rowsOf(const std::vector<Compound*>& entries) {
    Lines lines;
    for (Compound* entry : entries)
        lines.push_back(linesOf(entry));
    return lines;
}

QStringList differenceFrom(const FileContent& expected, Lines read) {
    if (expected.entries.size() != read.size())
        return {QStringLiteral("%1 entries were saved, and %2 are read")
                    .arg(expected.entries.size())
                    .arg(read.size())};
    QStringList all;
    for (std::size_t i = 0; i != read.size(); ++i) {
        // What only further models have may be numbered behind all that the first one has.
        const bool isFirst = i == 0 || expected.structures[i] != expected.structures[i - 1];
        all << differenceOf(expected.entries[i], std::move(read[i]), expected.isInOrder && isFirst,
                            "the host");
    }
    return all;
}

QStringList differenceByGemmi(const FileContent& expected, const std::string& path) {
    if (expected.structures.back() > 0 || path.ends_with(".ccp4"))
        return {};
    const gemmi::Structure structure = gemmi_reading::readStructure(path);
    if (structure.models.size() != expected.entries.size())
        return {QStringLiteral("gemmi reads %1 models").arg(structure.models.size())};
    QStringList all;
    for (std::size_t i = 0; i != expected.entries.size(); ++i) {
        std::vector<std::string> read;
        for (const gemmi::Chain& chain : structure.models[i].chains)
            for (const gemmi::Residue& residue : chain.residues)
                for (const gemmi::Atom& atom : residue.atoms)
                    read.push_back(rowOf(chain, residue, atom).text());
        all << differenceOf(asForGemmi(expected.entries[i]), asForGemmi(std::move(read)), false,
                            "gemmi");
    }
    return all;
}

} // namespace random_use
