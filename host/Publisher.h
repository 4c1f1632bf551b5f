// The kinds of changes that the host tells its subscribers of.
#pragma once

#include "HostExport.h"

/// Names what a change guard announces when it ends.
class HOST_EXPORT Publisher {
public:
    enum ActionType {
        Update = 0, ///< existing items changed: selection, visibility, colour, model
        Add = 1,    ///< items were created
        Delete = 2  ///< items were destroyed
    };
};
