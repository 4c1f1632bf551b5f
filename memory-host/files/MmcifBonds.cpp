#include "MmcifBonds.h"

#include "MmcifAtoms.h"

#include <algorithm>

namespace memory_host::mmcif {

namespace {

// The tags of the first partner; those of the second have a 2 instead of the 1.
constexpr std::array<std::string_view, PartnerColumnCount> partnerTags = {
    "ptnr1_auth_asym_id",      "ptnr1_auth_seq_id",   "ptnr1_auth_comp_id",
    "ptnr1_auth_atom_id",      "ptnr1_label_asym_id", "ptnr1_label_seq_id",
    "ptnr1_label_comp_id",     "ptnr1_label_atom_id", "pdbx_ptnr1_label_alt_id",
    "pdbx_ptnr1_pdb_ins_code", "ptnr1_symmetry"};

ListedAtom partner(const BondRow& row, std::size_t which) {
    const auto value = [&](BondColumn column) {
        return contentOf(row[which * PartnerColumnCount + column]);
    };
    const auto authorOrLabel = [&](BondColumn author, BondColumn label) {
        return value(author).empty() ? value(label) : value(author);
    };
    ListedAtom atom;
    atom.chain = value(PartnerAuthChain);
    atom.number = value(PartnerAuthNumber);
    atom.insertion = value(PartnerInsertion);
    // The author's ids come first, because residues outside of a sequence have no label number.
    if (atom.chain.empty() || atom.number.empty()) {
        atom.chain = value(PartnerLabelChain);
        atom.number = value(PartnerLabelNumber);
        atom.insertion = {};
        atom.byLabel = true;
    }
    atom.residue = authorOrLabel(PartnerAuthResidue, PartnerLabelResidue);
    atom.name = authorOrLabel(PartnerAuthAtom, PartnerLabelAtom);
    atom.alternative = value(PartnerAlternative);
    return atom;
}

} // namespace

BondColumn bondColumnOf(std::string_view tag) {
    tag.remove_prefix(tag.find('.') + 1);
    if (tag.size() == 12 && startsWith(tag, "conn_type_id"))
        return BondType;
    std::string first(tag);
    const std::size_t number = first.find('2');
    std::size_t which = 0;
    if (number != std::string::npos) {
        first[number] = '1';
        which = 1;
    }
    const auto found = std::ranges::find_if(partnerTags, [&](std::string_view known) {
        return known.size() == first.size() && startsWith(first, known);
    });
    return found == partnerTags.end()
               ? NoBondColumn
               : static_cast<BondColumn>(which * PartnerColumnCount +
                                         static_cast<std::size_t>(found - partnerTags.begin()));
}

bool isBond(std::string_view type, std::string_view symmetry, std::string_view other) {
    return (startsWith(type, "covale") || startsWith(type, "disulf") ||
            startsWith(type, "metalc")) &&
           (symmetry.empty() || other.empty() || symmetry == other);
}

void addBond(const BondRow& row, std::size_t line, ListedBonds& bonds) {
    if (!isBond(contentOf(row[BondType]), contentOf(row[PartnerSymmetry]),
                contentOf(row[PartnerColumnCount + PartnerSymmetry])))
        return;
    const ListedAtom a = partner(row, 0);
    const ListedAtom b = partner(row, 1);
    if (a.chain.empty() || a.name.empty() || b.chain.empty() || b.name.empty())
        bonds.addIllegible(line);
    else
        bonds.add(a, b, line);
}

} // namespace memory_host::mmcif
