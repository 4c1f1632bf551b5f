// From the plain tables of a structure file to items.
#pragma once

#include "AtomTable.h"
#include "Files.h"
#include "ResidueKinds.h"

namespace memory_host {

struct Destroy {
    void operator()(TAVIK::Compound* item) const;
};
/// An item outside of the data space, destroyed unless it is released.
using DetachedItem = std::unique_ptr<TAVIK::Compound, Destroy>;

/// Counts work that is done, and tells how far it is from time to time.
class ProgressCounter {
public:
    /// `whole` is the amount of all the work.
    ProgressCounter(const Progress& progress, std::string stage, std::size_t whole)
        : m_progress(progress), m_stage(std::move(stage)), m_whole(whole) {}
    void step() {
        if (++m_done == m_next)
            tell();
    }

private:
    void tell();

    const Progress& m_progress;
    std::string m_stage;
    std::size_t m_whole;
    std::size_t m_done = 0;
    std::size_t m_next = 1;
};

/// What building a model counts as.
std::size_t workOf(const ModelTable& model);
/// How much memory the items of a model take, in bytes: an estimate.
std::size_t memoryOf(const ModelTable& model);
/// What building the models of one entry needs, and each leaves ready for the next one.
struct BuildScratch {
    std::vector<NameFacts> facts;
    std::vector<unsigned int> conformers; ///< numbers by alternative location
};
/// Builds the items of one model: an entry called `name` with its chains, their groups and bonds.
DetachedItem buildModel(ModelTable model, const StructureTable& structure, const std::string& name,
                        BuildScratch& scratch, ProgressCounter& progress);

} // namespace memory_host
