// Where the windows of plug-ins are shown, for a program that gives them a place in a window of its
// own.
#pragma once

#include "BaseWindow.h"
#include "HostExport.h"

#include <QString>

namespace memory_host {

/// Takes in the windows of plug-ins, whenever they are shown. A window goes on belonging to its
/// plug-in: whoever takes it in lets it go before the parent that it was given is destroyed. All on
/// the GUI thread.
class HOST_EXPORT WindowPlaces {
public:
    virtual ~WindowPlaces();
    /// `window` is about to be shown, for the first time or again. It may be given a parent here,
    /// and is then shown in it. `plugin` is "type/name", and empty for a window of none.
    virtual void aboutToShow(BaseWindow& window, const QString& plugin) = 0;
    /// `window` was closed or hidden for itself, and not with its parent.
    virtual void wasHidden(BaseWindow& window) = 0;
};

/// Who takes in the windows from now on. Null, as in the beginning: each stands by itself.
HOST_EXPORT void setWindowPlaces(WindowPlaces* places);
/// Who does now; null for nobody.
HOST_EXPORT WindowPlaces* windowPlaces();

} // namespace memory_host
