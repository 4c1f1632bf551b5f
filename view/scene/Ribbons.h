// The ribbons of what was read, made again only where they changed.
#pragma once

#include "Contents.h"
#include "Styles.h"
#include "ribbon/Ribbon.h"

#include <array>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <vector>

namespace view {

/// The atom that a ribbon passes in a residue of a polymer: CA of an amino acid, P of a nucleotide,
/// or C4' where there is none; of alternative atoms the one that is shown. noAtom without any.
std::uint32_t guideOf(const Contents& contents, const Marks& marks, std::size_t residue);

/// The atoms of one residue by role: of several the first one that is shown, else the first; noAtom
/// where there is none.
using AtomsByRole = std::array<std::uint32_t, roleCount>;

/// For one thread at a time.
class Ribbons {
public:
    /// A mesh for each chain, without colours and with the ids of the atoms that it passes: CA of
    /// amino acids, P of nucleotides, or C4' where there is none. A residue is shown where that
    /// atom is: the meshes are of all residues, and one more has the caps at those that are hidden.
    /// Of alternative atoms the shown ones count. Null after a stop request; what was made until
    /// then need not be made again.
    const std::vector<std::shared_ptr<const Mesh>>*
    meshes(const std::shared_ptr<const Contents>& contents, const Marks& marks,
           const Styles& styles, const std::stop_token& stop = {});

private:
    /// The atoms that decide on a residue's structure: N, CA, C, O; their indices.
    using Backbone = std::array<std::uint32_t, 4>;
    /// A residue with several atoms of one role, and the atoms that represent it, by role.
    struct Alternatives {
        std::uint32_t residue;
        AtomsByRole atoms;
    };

    /// Whether each residue that has alternative atoms is represented by the same ones as before.
    bool hasSameAtoms(const Contents& contents, const Marks& marks) const;
    /// Puts together m_meshes.
    void close(const Marks& marks);
    // These return false after a stop request.
    bool renew(const std::shared_ptr<const Contents>& contents, const Marks& marks,
               const Styles& styles, const RibbonStyle& style, const std::stop_token& stop);
    bool assign(const Contents& contents, const std::vector<Backbone>& backbones,
                const std::stop_token& stop);
    bool makeRibbons(const Marks& marks, const Styles& styles, const std::stop_token& stop);

    std::shared_ptr<const Contents> m_contents;
    std::vector<Backbone> m_backbones;            ///< of which the structures are
    std::vector<SecondaryStructure> m_structures; ///< one a residue of the contents
    RibbonStyle m_style;
    std::vector<std::vector<RibbonResidue>> m_chains;     ///< of which the meshes are, one by one
    std::vector<std::shared_ptr<const Ribbon>> m_ribbons; ///< of these chains
    std::vector<bool> m_isRibbon; ///< one a residue: whether it is in one of the chains
    std::vector<Alternatives> m_alternatives;
    /// The meshes of the ribbons that have any triangles, and their caps.
    std::vector<std::shared_ptr<const Mesh>> m_meshes;
};

} // namespace view
