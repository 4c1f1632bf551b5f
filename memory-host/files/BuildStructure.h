// From the plain tables of a structure file to items.
#pragma once

#include "AtomTable.h"
#include "EntrySource.h"
#include "Files.h"
#include "ResidueKinds.h"

namespace memory_host {

struct Destroy {
    void operator()(TAVIK::Compound* item) const;
};
/// An item outside of the data space, destroyed unless it is released.
using DetachedItem = std::unique_ptr<TAVIK::Compound, Destroy>;

/// Counts finished work, and reports progress from time to time.
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

/// The work of building a model, in steps of a ProgressCounter.
std::size_t workOf(const ModelTable& model);
/// How much memory the items of a model take, in bytes: an estimate.
std::size_t memoryOf(const ModelTable& model);
/// Buffers that are reused for all models of one entry.
struct BuildScratch {
    std::vector<NameFacts> facts;
    std::vector<unsigned int> conformers; ///< numbers by alternative location
};
/// Builds the items of one model: an entry called `name` with its chains, their groups and bonds.
/// Tells `source` which items are of which rows of the file.
DetachedItem buildModel(ModelTable model, const StructureTable& structure, const std::string& name,
                        EntrySource& source, BuildScratch& scratch, ProgressCounter& progress);

} // namespace memory_host
