// Gathering what a journal holds, in pieces between which the program goes on.
#pragma once

#include "Compound.h"
#include "HostExport.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace memory_host {

/// What is in the data space, as bytes: for JournalFolder::write(), on any thread.
struct JournalState;
struct HOST_EXPORT JournalStateDeleter {
    void operator()(JournalState* state) const;
};
using JournalStatePtr = std::unique_ptr<JournalState, JournalStateDeleter>;

/// Goes over all items, on the GUI thread. When anything changes meanwhile, as subscribers are
/// told, or as it says itself, it can only be destroyed.
class HOST_EXPORT JournalGathering {
public:
    enum class Progress {
        More,
        Done,
        Disturbed ///< a change is under way, or was made without a guard, of which nobody is told:
                  ///< it is to be destroyed, and another one made later
    };

    /// `written` are the files beside the journal that are complete; they must outlive this.
    explicit JournalGathering(const std::set<std::string>& written);
    JournalGathering(const JournalGathering&) = delete;
    JournalGathering& operator=(const JournalGathering&) = delete;
    ~JournalGathering();

    /// Goes on for about that long. Throws std::bad_alloc, and can only be destroyed then.
    Progress advance(std::chrono::microseconds time);
    /// What was gathered, once that is done.
    JournalStatePtr take();

private:
    class Walk;
    std::unique_ptr<Walk> m_walk;
    std::uint64_t m_changes; ///< as they were counted when it began
};

} // namespace memory_host
