// Rotamers of residues: further alternative models of them, each with another side chain.
#pragma once

#include "DestroyObserver.h"
#include "Kinds.h"

#include <QStringList>
#include <QTimer>

#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace rotamer {

/// What is said of added rotamers, in lines for the user.
struct Report {
    QStringList details; ///< of each residue that got some, all its new models
    /// Of each residue how many it got, and which of them clashes least; or why it got none. Behind
    /// those of several residues, one for all of them.
    QStringList lines;
};

/// Adds the rotamers of these residues to them as models after those that they have, in one change
/// of the data, or nothing. The side chain as it is becomes model 1 of a residue without models.
/// Rotamers that are among a residue's models already are not added again. Clashes are looked for
/// on other threads; until the change is made, the user can cancel it. Throws what memory that runs
/// out throws; the data are unchanged then.
Report addRotamers(std::span<TAVIK::Residue* const> residues);

/// Residues that wait for their rotamers. Commands for many residues come one after another, and
/// are one change for the user: it is due when no further one comes.
class WaitingResidues : private TAVIK::DestroyObserver {
public:
    /// `due` is called from the event loop.
    explicit WaitingResidues(std::function<void()> due);
    /// A residue that waits already does so once.
    void add(TAVIK::Residue* residue);
    /// Those that have not been destroyed meanwhile; none waits any more.
    std::vector<TAVIK::Residue*> take() { return std::exchange(m_residues, {}); }

private:
    void aboutToDestroy(TAVIK::Compound* item) override;

    std::vector<TAVIK::Residue*> m_residues;
    QTimer m_timer;
};

} // namespace rotamer
