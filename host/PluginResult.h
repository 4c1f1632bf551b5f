// What an entry point of a plug-in answers.
#pragma once

#include "HostExport.h"

#include <string>

/// A result code and text, owned by the host and written by the plug-in that it calls.
class HOST_EXPORT PluginResult {
public:
    enum ResultCode {
        Success = 0,
        Failure = 1,       ///< the command is known, and failed
        NotRecognized = 10 ///< the plug-in does not know the command
    };

    void SetResultCode(ResultCode code) { m_code = code; }
    void SetResultText(const std::string& text) { m_text = text; }
    ResultCode GetResultCode() const { return m_code; }
    const std::string& GetResultText() const { return m_text; }

private:
    ResultCode m_code = Success;
    std::string m_text;
};
