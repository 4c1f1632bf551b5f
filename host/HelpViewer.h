// The host's help viewer.
#pragma once

#include "HostExport.h"

#include <QString>

class HOST_EXPORT HelpViewer {
public:
    /// Shows the help page of that name; a page that is not there is said in the viewer and the
    /// log.
    static void Show(const QString& page);
};
