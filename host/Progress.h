// Long work of a plug-in: on a thread of its own, while the user sees how far it is and can cancel.
#pragma once

#include "HostExport.h"

#include <QString>

#include <functional>
#include <stop_token>

/// Says how far a work is. May be called from any thread, and as often as the work likes: the host
/// shows what a user can see.
class HOST_EXPORT ProgressReporter {
public:
    virtual ~ProgressReporter();

    /// What is being done, as "projecting the vertices", and how far all of the work is: 0 to 1, or
    /// negative where that is not known.
    virtual void report(const QString& stage, double fraction) = 0;
};

class HOST_EXPORT Progress {
public:
    /// Work on plain data: it touches no item, widget or other service of the host.
    using Work = std::function<void(ProgressReporter& reporter, std::stop_token stop)>;

    /// Runs `work` on another thread, and returns when it has returned. Meanwhile the space is
    /// locked, so that no change guard is good, and after half a second a window called `title`
    /// shows the progress; it has a button to cancel, which asks `stop` of the work. The GUI thread
    /// handles events, but no input to other windows. Called on the GUI thread, and below no guard.
    ///
    /// Returns false if the user has cancelled, whatever the work made of it. What the work throws
    /// is thrown here, unless it was cancelled. Where another work is in progress, this one is
    /// refused: false, and a line in the log.
    static bool Run(const QString& title, const Work& work);
};
