// The host's help viewer.
#pragma once

#include "HostExport.h"

#include <QString>

class HOST_EXPORT HelpViewer {
public:
    /// Shows the help page of that name; if there is none, the viewer and the log say so.
    static void Show(const QString& page);
};
