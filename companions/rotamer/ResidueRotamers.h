// One residue, and the rotamers that it gets.
#pragma once

#include "NearAtoms.h"
#include "NewModels.h"

#include <QString>

#include <vector>

namespace rotamer {

/// Made and used while the data do not change. All but judge() is for the thread that may touch
/// items.
class ResidueRotamers {
public:
    explicit ResidueRotamers(TAVIK::Residue* residue);

    /// Why there are no rotamers; else empty.
    QString fault() const;
    /// Å. An atom farther from centre() clashes with no rotamer.
    static constexpr double reach = 13;
    /// Where CA is. There is no fault.
    const Point& centre() const;
    /// Finds the clashes of each rotamer with what `near` has within reach. Touches no item.
    void judge(const NearAtoms& near);
    /// Adds the models; the caller holds a good guard. What it throws has changed nothing.
    void add();
    /// Takes away what add() has added.
    void undo() noexcept { m_models.undo(); }

    std::string name() const { return m_residue->GetName(); }
    std::size_t count() const { return m_candidates.size(); }
    /// Of judged rotamers: a line on how they fit in, and one with all of them.
    QString report() const;
    QString details() const;

private:
    /// A rotamer that becomes a model, and how it fits in.
    struct Candidate {
        const Rotamer* rotamer;
        Clashes clashes{};
        const TAVIK::Compound* worst = nullptr; ///< the other atom of the worst clash
    };

    bool isThere(const std::vector<Point>& points) const;
    unsigned int firstNew() const { return m_conformation.lastModel() + 1; }
    QString told(const Candidate& candidate) const;
    QString nearest() const;

    TAVIK::Residue* m_residue;
    Conformation m_conformation;
    SideChain m_sideChain;
    NewModels m_models;
    std::vector<Ball> m_balls; ///< one an atom of the conformation, wherever it is
    std::vector<const TAVIK::Compound*> m_bonded;
    std::vector<Candidate> m_candidates; ///< those that are not among the models
};

} // namespace rotamer
