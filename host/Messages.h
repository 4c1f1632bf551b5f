// Messages: one line to the user about what a plug-in has done.
#pragma once

#include "HostExport.h"

#include <QString>

/// Receives every message as long as the observer exists, on the GUI thread.
///
/// An exception out of a handler is logged by the host and goes no further. Observers may be made
/// and destroyed inside a handler; a new one hears from the next message on.
class HOST_EXPORT MessageObserver {
public:
    MessageObserver();
    MessageObserver(const MessageObserver&) = delete;
    MessageObserver& operator=(const MessageObserver&) = delete;
    virtual ~MessageObserver();

    /// `text` is one line of plain text.
    virtual void messageShown(const QString& text) = 0;
};

class HOST_EXPORT Messages {
public:
    /// Shows one line of plain text, as "Surface of 1,213 atoms", and writes it to the log, in
    /// UTF-8. White space, line breaks too, becomes single blanks; a text of nothing else is left
    /// out. A handler may show another message; eight within each other, and further ones are only
    /// logged.
    static void Show(const QString& text);
};
