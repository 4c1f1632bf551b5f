// A second opinion on real files: gemmi's own readers.
#include "FileTesting.h"

#include <gemmi/gz.hpp>
#include <gemmi/mmread.hpp>

#include <algorithm>

namespace file_testing {

std::vector<std::vector<std::string>> gemmiAtoms(const std::string& path) {
    const gemmi::Structure structure = gemmi::read_structure(gemmi::MaybeGzipped(path));
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
