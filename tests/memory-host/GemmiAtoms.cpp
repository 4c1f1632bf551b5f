// A second opinion on real files: gemmi's own readers.
#include "FileTesting.h"

#include <gemmi/cif.hpp>
#include <gemmi/gz.hpp>
#include <gemmi/mmcif.hpp>
#include <gemmi/pdb.hpp>

#include <algorithm>

namespace file_testing {

std::vector<std::vector<std::string>> gemmiAtoms(const std::string& path) {
    gemmi::MaybeGzipped file(path);
    const gemmi::Structure structure = file.basepath().ends_with(".cif")
                                           ? gemmi::make_structure(gemmi::cif::read(file))
                                           : gemmi::read_pdb(file);
    std::vector<std::vector<std::string>> models;
    for (const gemmi::Model& model : structure.models) {
        std::vector<std::string>& texts = models.emplace_back();
        for (const gemmi::Chain& chain : model.chains)
            for (const gemmi::Residue& residue : chain.residues)
                for (const gemmi::Atom& atom : residue.atoms)
                    texts.push_back(AtomText{chain.name, residue.seqid.str(), atom.name,
                                             atom.element.name(), static_cast<float>(atom.pos.x),
                                             static_cast<float>(atom.pos.y),
                                             static_cast<float>(atom.pos.z), atom.b_iso}
                                        .text());
        std::sort(texts.begin(), texts.end());
    }
    return models;
}

} // namespace file_testing
