#include "ContractTools.h"

namespace contract {

Chain::Chain(int count) : molecule(make(space(), "Molecule", "A")) {
    for (int i = 0; i != count; ++i) {
        residues.push_back(make(molecule, "Residue", "ALA " + std::to_string(i + 1)));
        Compound* const backbone = make(residues.back(), "Group", "Backbone");
        Compound* const side = make(residues.back(), "Group", "Side chain");
        groups.insert(groups.end(), {backbone, side});
        const std::size_t first = atoms.size();
        for (const char* name : {"N", "CA", "C"})
            atoms.push_back(atom(backbone, static_cast<float>(atoms.size()), name));
        atoms.push_back(atom(side, static_cast<float>(atoms.size()), "CB"));
        for (std::size_t k = first == 0 ? 1 : first; k != atoms.size(); ++k)
            bonds.push_back(TAVIK::DataMaker::makeBond(molecule, atoms[k - 1], atoms[k]));
    }
}

QString faults() {
    QStringList lines;
    for (const std::string& fault : host_under_test::faults())
        lines << QString::fromStdString(fault);
    return lines.join(u'\n');
}

} // namespace contract
