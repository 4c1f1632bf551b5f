// Handles Qt's messages while the application starts: its warnings there say nothing to a user, and
// its fatal error without a display becomes one line and exit status 1.
#pragma once

#include <QtGlobal>

namespace workbench {

class StartMessages {
public:
    StartMessages();
    ~StartMessages();
    StartMessages(const StartMessages&) = delete;
    StartMessages& operator=(const StartMessages&) = delete;

private:
    QtMessageHandler m_before;
};

} // namespace workbench
