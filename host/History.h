// Taking changes back, and doing them again.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <string>
#include <vector>

/// Is told, on the GUI thread, whenever there may be other steps than before, as long as the
/// observer exists.
///
/// An exception out of a handler is logged by the host and goes no further. Observers may be made
/// and destroyed inside a handler.
class HOST_EXPORT HistoryObserver {
public:
    HistoryObserver();
    HistoryObserver(const HistoryObserver&) = delete;
    HistoryObserver& operator=(const HistoryObserver&) = delete;
    virtual ~HistoryObserver();

    virtual void historyChanged() = 0;
};

/// A change that can be taken back or done again.
struct HistoryStep {
    std::string label;        ///< the guard's, in Latin-1: "Delete 100 residues"; may be empty
    bool onlySelects = false; ///< selects or unselects, and does nothing else
};

/// The changes of the data space, each with a guard, whoever made them. The host keeps as many as
/// fit its memory for them; the oldest go first. A change after some were taken back forgets these.
class HOST_EXPORT History {
public:
    /// The changes that can be taken back, the last one first; at most `most` of them.
    static std::vector<HistoryStep> undoable(std::size_t most = static_cast<std::size_t>(-1));
    /// The changes that were taken back and can be done again, the next one first.
    static std::vector<HistoryStep> redoable(std::size_t most = static_cast<std::size_t>(-1));
    /// How many changes to take back so that the last one that does more than to select is among
    /// them; 0 if there is none.
    static std::size_t toLastOfData();

    /// Takes back the last changes, or does again those that were taken back last: the data are
    /// then exactly as they were. Observers and subscribers are told as of any change, only once
    /// for all of them: of a deletion, then of an addition, and always of an update, as what holds
    /// the items that come or go may be selected or shown otherwise. Nothing changes, and false is
    /// returned, while a guard is open or its subscribers are being told, while the space is
    /// locked, while a modal window or a menu is open, and when there are not that many.
    static bool undo(std::size_t steps = 1);
    static bool redo(std::size_t steps = 1);
};
