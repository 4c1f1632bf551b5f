// Takes what Qt writes while the application starts: its remarks there say nothing to a user, and
// its fatal end for want of a display becomes one line and exit status 1.
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
