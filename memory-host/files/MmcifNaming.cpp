#include "MmcifNaming.h"

#include "Fields.h"

#include <algorithm>

namespace memory_host::mmcif {

namespace {

// What stands before and behind the name of a part in the names of the columns of one partner,
// apart from a "pdbx_" in front.
struct Affix {
    std::string_view before;
    std::string_view behind;
};

constexpr auto one = std::to_array<Affix>({{"", ""}});
constexpr auto oneAndNext = std::to_array<Affix>({{"", ""}, {"", "_2"}});
constexpr auto numbered = std::to_array<Affix>({{"", "_1"}, {"", "_2"}, {"", "_3"}});
constexpr auto partners = std::to_array<Affix>({{"ptnr1_", ""}, {"ptnr2_", ""}, {"ptnr3_", ""}});
constexpr auto ends = std::to_array<Affix>({{"beg_", ""}, {"end_", ""}});
constexpr auto strands = std::to_array<Affix>({{"range_1_", ""}, {"range_2_", ""}});
constexpr auto bases = std::to_array<Affix>({{"i_", ""}, {"j_", ""}});
constexpr auto steps =
    std::to_array<Affix>({{"i_", "_1"}, {"j_", "_1"}, {"i_", "_2"}, {"j_", "_2"}});
constexpr auto modified = std::to_array<Affix>({{"", ""}, {"modified_residue_", ""}});

struct CategoryNaming {
    std::string_view category;
    std::span<const Affix> partners;
    Loss loss = Loss::Meaning;
};

constexpr auto categories = std::to_array<CategoryNaming>({
    {"_ndb_struct_na_base_pair", bases},
    {"_ndb_struct_na_base_pair_step", steps},
    {"_pdbx_branch_scheme", one},
    {"_pdbx_distant_solvent_atoms", one},
    {"_pdbx_modification_feature", modified},
    {"_pdbx_nonpoly_scheme", one},
    {"_pdbx_poly_seq_scheme", one, Loss::Observation},
    {"_pdbx_struct_conn_angle", partners},
    {"_pdbx_struct_mod_residue", one},
    {"_pdbx_struct_sheet_hbond", strands},
    {"_pdbx_struct_special_symmetry", one},
    {"_pdbx_unobs_or_zero_occ_atoms", one},
    {"_pdbx_unobs_or_zero_occ_residues", one},
    {"_pdbx_validate_chiral", one},
    {"_pdbx_validate_close_contact", numbered},
    {"_pdbx_validate_main_chain_plane", one},
    {"_pdbx_validate_peptide_omega", numbered},
    {"_pdbx_validate_planes", one},
    {"_pdbx_validate_planes_atom", one},
    {"_pdbx_validate_polymer_linkage", numbered},
    {"_pdbx_validate_rmsd_angle", numbered},
    {"_pdbx_validate_rmsd_bond", numbered},
    {"_pdbx_validate_symm_contact", numbered},
    {"_pdbx_validate_torsion", one},
    {"_struct_conf", ends, Loss::Range},
    {"_struct_conn", partners},
    {"_struct_mon_prot_cis", oneAndNext},
    {"_struct_sheet_range", ends, Loss::Range},
    {"_struct_site", one},
    {"_struct_site_gen", one},
});

struct PartName {
    std::string_view name;
    Part part;
};

constexpr auto partNames = std::to_array<PartName>({
    {"auth_asym_id", PartAuthorChain},   {"pdb_strand_id", PartAuthorChain},
    {"pdb_asym_id", PartAuthorChain},    {"auth_seq_id", PartAuthorNumber},
    {"pdb_seq_num", PartAuthorNumber},   {"pdb_ins_code", PartInsertion},
    {"auth_ins_code", PartInsertion},    {"auth_comp_id", PartAuthorResidue},
    {"pdb_mon_id", PartAuthorResidue},   {"auth_atom_id", PartAuthorAtom},
    {"label_asym_id", PartLabelChain},   {"asym_id", PartLabelChain},
    {"label_seq_id", PartLabelNumber},   {"seq_id", PartLabelNumber},
    {"label_comp_id", PartLabelResidue}, {"mon_id", PartLabelResidue},
    {"label_atom_id", PartLabelAtom},    {"label_alt_id", PartLetter},
    {"pdb_model_num", PartModel},        {"model_number", PartModel},
});

constexpr auto links = std::to_array<RowLink>({
    {"_struct_sheet_order", {"sheet_id", "range_id_1"}, "_struct_sheet_range", {"sheet_id", "id"}},
    {"_struct_sheet_order", {"sheet_id", "range_id_2"}, "_struct_sheet_range", {"sheet_id", "id"}},
    {"_pdbx_struct_sheet_hbond",
     {"sheet_id", "range_id_1"},
     "_struct_sheet_range",
     {"sheet_id", "id"}},
    {"_pdbx_struct_sheet_hbond",
     {"sheet_id", "range_id_2"},
     "_struct_sheet_range",
     {"sheet_id", "id"}},
    {"_struct_site_gen", {"site_id", ""}, "_struct_site", {"id", ""}},
});

constexpr auto counts = std::to_array<RowCount>({
    {"_struct_sheet", "id", "number_strands", "_struct_sheet_range", "sheet_id"},
    {"_struct_site", "id", "pdbx_num_residues", "_struct_site_gen", "site_id"},
    {"_struct_site_gen", "site_id", "pdbx_num_res", "_struct_site_gen", "site_id"},
});

std::string_view withoutExtension(std::string_view column) {
    constexpr std::string_view extension = "pdbx_";
    if (startsWith(column, extension))
        column.remove_prefix(extension.size());
    return column;
}

// The part that a column gives for a partner; PartCount if none.
Part partOf(std::string_view column, const Affix& affix) {
    column = withoutExtension(column);
    if (column.size() < affix.before.size() + affix.behind.size() ||
        !startsWith(column, affix.before) || !endsWith(column, affix.behind))
        return PartCount;
    column.remove_prefix(affix.before.size());
    column.remove_suffix(affix.behind.size());
    const auto found = std::ranges::find_if(partNames, [column](const PartName& known) {
        return known.name.size() == column.size() && startsWith(column, known.name);
    });
    return found == partNames.end() ? PartCount : found->part;
}

// Models hold for all partners of a row.
bool isModel(std::string_view column) {
    return partOf(column, one.front()) == PartModel;
}

PartColumns columnsOf(const cif::Category& category, const Affix& affix) {
    PartColumns columns;
    columns.fill(category.columns.size());
    for (std::size_t i = 0; i != category.columns.size(); ++i) {
        const Part part =
            isModel(category.columns[i]) ? PartModel : partOf(category.columns[i], affix);
        if (part != PartCount && columns[part] == category.columns.size())
            columns[part] = i;
    }
    return columns;
}

} // namespace

std::optional<Naming> namingOf(const cif::Category& category) {
    const auto* const known =
        std::ranges::find(categories, std::string_view(category.name), &CategoryNaming::category);
    if (known == categories.end())
        return std::nullopt;
    Naming naming{known->loss, {}};
    for (const Affix& affix : known->partners)
        naming.partners.push_back(columnsOf(category, affix));
    return naming;
}

PartColumns atomColumns(const cif::Category& atoms) {
    return columnsOf(atoms, one.front());
}

std::span<const RowLink> rowLinks() {
    return links;
}

std::span<const RowCount> rowCounts() {
    return counts;
}

} // namespace memory_host::mmcif
