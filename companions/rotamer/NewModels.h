// Rotamers as further alternative models of a residue.
#pragma once

#include "Conformation.h"

#include <span>
#include <string>
#include <vector>

namespace rotamer {

/// Makes models of one residue: for each its own copies of the atoms that its side chain moves and
/// of the first model's atoms, with all values and marks of these, and of the bonds. The atoms that
/// the side chain moves are the first model's own from then on; later models that have shared some
/// of them get copies. Made and used within one change of the data.
class NewModels {
public:
    /// Both live longer than this.
    NewModels(TAVIK::Compound* residue, const Conformation& conformation,
              const SideChain& sideChain);

    /// An atom elsewhere that the side chain is bonded to, so that it cannot turn; else null.
    const TAVIK::Compound* anchor() const;
    /// Adds a model for each rotamer, numbered from `first` on; a residue without models gets its
    /// side chain as model 1. The caller holds a good guard. What it throws has changed nothing.
    void add(std::span<const Rotamer* const> rotamers, unsigned int first);
    /// Takes away what add() has added.
    void undo() noexcept;

private:
    /// A bond of an atom of the conformation to another one, or to an atom elsewhere.
    struct Link {
        std::size_t atom;
        std::size_t inner; ///< of the conformation, or `none`
        TAVIK::Compound* outer;
        TAVIK::Bond* bond;
    };
    static constexpr auto none = static_cast<std::size_t>(-1);

    /// The atoms of one model: of each atom of the conformation its own copy, or the shared one;
    /// null where the model has another one.
    struct Atoms {
        std::vector<TAVIK::Atom*> items;
        std::vector<bool> areNew;
    };

    void readBonds();
    bool isShared(std::size_t atom) const { return m_conformation.atoms[atom].model == 0; }
    void partFrom(unsigned int model);
    void addModel(const Rotamer& rotamer, unsigned int model);
    void addBonds(const Atoms& atoms, unsigned int model);
    TAVIK::Atom* addCopy(std::size_t atom, const Point& place, unsigned int model);
    bool isShown(const ConformationAtom& atom) const;

    TAVIK::Compound* m_residue;
    const Conformation& m_conformation;
    const SideChain& m_sideChain;
    std::vector<bool> m_areShown; ///< the atoms of the conformation, whichever model is active
    std::vector<Link> m_links;    ///< an inner one once, from its first atom
    std::vector<TAVIK::Compound*> m_made;
};

} // namespace rotamer
