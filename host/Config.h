// The host's configuration: settings by section and key.
#pragma once

#include "HostExport.h"

#include <string>

/// The value of one setting.
class HOST_EXPORT Setting {
public:
    /// A setting that is not there.
    Setting() = default;
    explicit Setting(const std::string& text) : m_text(text), m_exists(true) {}
    ~Setting() = default;

    /// The value as text; empty when the setting is not there. `ok` may be null, else it says
    /// whether the setting is there.
    std::string ToString(bool* ok) const {
        if (ok)
            *ok = m_exists;
        return m_text;
    }

private:
    std::string m_text;
    bool m_exists = false;
};

class HOST_EXPORT Config {
public:
    /// The setting as it stands now.
    static Setting GetSetting(const std::string& section, const std::string& key);
};
