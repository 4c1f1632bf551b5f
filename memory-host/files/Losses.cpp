#include "Losses.h"

#include "AlternativeLetters.h"
#include "Fields.h"
#include "MadeBonds.h"
#include "Relettering.h"

#include <algorithm>
#include <set>

namespace memory_host {

namespace {

/// A record of PDB files, and a category of mmCIF that says the same.
struct Counterpart {
    std::string_view record;
    std::string_view category;
};

constexpr auto counterparts = std::to_array<Counterpart>({
    {"HEADER", "_struct_keywords"},
    {"HEADER", "_entry"},
    {"HEADER", "_pdbx_database_status"},
    {"TITLE", "_struct"},
    {"KEYWDS", "_struct_keywords"},
    {"EXPDTA", "_exptl"},
    {"CRYST1", "_cell"},
    {"CRYST1", "_symmetry"},
    {"MTRIX1", "_struct_ncs_oper"},
    {"MTRIX2", "_struct_ncs_oper"},
    {"MTRIX3", "_struct_ncs_oper"},
    {"DBREF", "_struct_ref"},
    {"DBREF", "_struct_ref_seq"},
    {"DBREF1", "_struct_ref"},
    {"DBREF2", "_struct_ref"},
    {"SEQRES", "_entity_poly_seq"},
    {"HELIX", "_struct_conf"},
    {"SHEET", "_struct_sheet"},
    {"SHEET", "_struct_sheet_order"},
    {"SHEET", "_struct_sheet_range"},
    {"SHEET", "_pdbx_struct_sheet_hbond"},
    {"SSBOND", "_struct_conn"},
    {"LINK", "_struct_conn"},
    {"CONECT", "_struct_conn"},
    {"CISPEP", "_struct_mon_prot_cis"},
    {"REMARK", "_pdbx_struct_assembly"},
    {"REMARK", "_pdbx_struct_assembly_gen"},
    {"REMARK", "_pdbx_struct_assembly_prop"},
    {"REMARK", "_pdbx_struct_oper_list"},
    {"AUTHOR", "_audit_author"},
});

// What belongs to the atoms, or follows from what is written: gemmi leaves out an ORIGX that is the
// identity, and a SCALE that is the cell's.
// clang-format off
constexpr auto ofAtoms = std::to_array<std::string_view>({
    "ATOM", "HETATM", "ANISOU", "TER", "MODEL", "ENDMDL", "END", "NUMMDL", "MASTER", "CONECT",
    "ORIGX1", "ORIGX2", "ORIGX3", "SCALE1", "SCALE2", "SCALE3",
    "_atom_site", "_atom_site_anisotrop", "_atom_sites", "_atom_type", "_database_pdb_matrix",
    "_struct_asym", "_struct_conn_type", "_struct_conf_type"});
// clang-format on

bool hasRecord(std::string_view text, std::string_view record) {
    std::string line("\n");
    line.append(record);
    return text.starts_with(record) || text.find(line) != std::string_view::npos;
}

bool hasCategory(std::string_view text, std::string_view category) {
    // Tags are written as the dictionary has them: the names of kinds are in lower case.
    std::string tag("\n");
    tag.append(category).append(".");
    return std::search(text.begin(), text.end(), tag.begin(), tag.end(),
                       [](char a, char b) { return lowerCase(a) == b; }) != text.end();
}

bool arrives(std::string_view kind, std::string_view text, bool toMmcif) {
    if (std::ranges::find(ofAtoms, kind) != ofAtoms.end())
        return true;
    return std::ranges::any_of(counterparts, [&](const Counterpart& pair) {
        return toMmcif ? pair.record == kind && hasCategory(text, pair.category)
                       : pair.category == kind && hasRecord(text, pair.record);
    });
}

std::size_t countNotFoundAgain(const std::vector<SavedBond>& bonds, const SavedModel& model,
                               const std::vector<std::string>& names, const SaveReport& report) {
    if (bonds.empty())
        return 0;
    const auto again = bondsFoundAgain(model, names, report);
    return static_cast<std::size_t>(std::ranges::count_if(bonds, [&again](const SavedBond& bond) {
        return !std::ranges::binary_search(again, std::pair(bond.first, bond.second));
    }));
}

// Bonds of further models that reading the file does not bring back: it lists those of the first.
std::size_t countFurtherBonds(const SavedStructure& structure,
                              const std::vector<std::string>& names, const SaveReport& report) {
    std::set<std::string> listed;
    std::size_t lost = 0;
    if (structure.models.size() == 1)
        return lost;
    for (const SavedModel& model : structure.models) {
        std::vector<SavedBond> others;
        const std::vector<char> letters = alternativeLetters(model, names, report);
        for (const SavedBond& bond : model.bonds) {
            std::string key = namesOfBond(model, {bond.first, bond.second}, names, letters);
            if (&model == &structure.models.front())
                listed.insert(std::move(key));
            else if (!listed.contains(key) && !areApart(letters[bond.first], letters[bond.second]))
                others.push_back(bond);
        }
        lost += countNotFoundAgain(others, model, names, report);
    }
    return lost;
}

} // namespace

void remarkOnLostKinds(const SourceFacts& facts, std::string_view text, bool toMmcif,
                       SaveReport& report) {
    for (const auto& [kind, count] : facts.kinds) {
        const bool isRecord = kind.front() != '_';
        // Of remarks, some arrive as values of other categories; most of the prose does not.
        const bool isProse = isRecord && toMmcif && kind == "REMARK";
        // A file of the same format is written without an edit of its text.
        const bool isSame = isRecord != toMmcif;
        const bool isThere = isSame ? (isRecord ? hasRecord(text, kind) : hasCategory(text, kind))
                                    : arrives(kind, text, toMmcif);
        if (isThere && !isProse)
            continue;
        if (std::ranges::find(ofAtoms, kind) != ofAtoms.end())
            continue;
        std::string line = "the file's " + std::to_string(count);
        line.append(isRecord ? " record" : " row").append(count == 1 ? "" : "s");
        line.append(isRecord ? " of kind " : " of category ").append(kind);
        line.append(count == 1 ? " is" : " are").append(" not kept");
        if (isProse && hasCategory(text, "_pdbx_struct_assembly"))
            line.append(", but for what they say of assemblies");
        report.remark(line);
    }
}

void remarkOnLost(std::size_t count, const std::string& what, const std::string& noun,
                  SaveReport& report) {
    if (count != 0)
        report.remark(what + " of " + std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s") +
                      " are not kept");
}

void remarkOnLostValues(const SavedStructure& structure, const std::vector<std::string>& names,
                        SaveReport& report) {
    std::size_t charges = 0;
    for (const SavedModel& model : structure.models)
        charges += static_cast<std::size_t>(std::ranges::count_if(
            model.charges, [](const TAVIK::PartialCharge& charge) { return charge.isKnown; }));
    remarkOnLost(charges, "the partial charges and radii", "atom", report);
    if (const std::size_t bonds = countFurtherBonds(structure, names, report); bonds != 0)
        report.remark(std::to_string(bonds) + (bonds == 1 ? " bond" : " bonds") +
                      " of further models " + (bonds == 1 ? "is" : "are") +
                      " not kept, as the first model has none between these atoms");
}

void remarkOnAmbiguousBonds(const std::vector<SavedBond>& bonds, const SavedModel& model,
                            const std::vector<std::string>& names, SaveReport& report) {
    if (const std::size_t lost = countNotFoundAgain(bonds, model, names, report); lost != 0)
        report.remark(std::to_string(lost) + (lost == 1 ? " bond is" : " bonds are") +
                      " not kept, as the names do not tell the atoms from others");
}

void remarkOnJoinedBonds(const std::vector<SavedBond>& bonds, const SavedModel& model,
                         const std::vector<std::string>& names, SaveReport& report) {
    remarkOnSharedRecords({.joined = countNotFoundAgain(bonds, model, names, report)}, report);
}

} // namespace memory_host
