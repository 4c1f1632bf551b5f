// The settings file, as a user writes it:
//
//     # a comment; a line may also begin with ;
//     [Section]
//     key = value
//
// A value is the rest of its line, without blanks around it. Of two settings with the same section
// and key the last one holds.
#include "Settings.h"

#include "Config.h"
#include "Logger.h"
#include "TextFile.h"

#include <QFileInfo>

#include <map>
#include <utility>

namespace memory_host {

namespace {

/// Bounds the log for a file that is no settings file at all.
constexpr int mostReports = 10;

class SettingsFile {
public:
    /// Changes to another file, which is read when a setting is asked for.
    void setPath(const QString& path) { *this = SettingsFile(path); }
    Setting find(const std::string& section, const std::string& key) {
        refresh();
        const auto found = m_values.find({section, key});
        return found == m_values.end() ? Setting() : Setting(found->second);
    }

    SettingsFile() = default;

private:
    explicit SettingsFile(const QString& path) : m_path(path) {}

    /// Reads the file when it has changed, so that wrong lines are reported once for each change.
    void refresh() {
        TextFile file;
        if (!m_path.isEmpty() && QFileInfo::exists(m_path))
            file = readTextFile(m_path);
        if (file.bytes == m_bytes && file.problem == m_problem)
            return;
        m_values.clear();
        m_bytes = file.bytes;
        m_problem = file.problem;
        if (!m_problem.empty())
            report(": " + m_problem);
        std::string section;
        int wrong = 0;
        forEachLine(file.text(), [&](std::string_view line, int number) {
            const std::string problem = readLine(trimmed(line), section);
            if (!problem.empty() && ++wrong <= mostReports)
                report(", line " + std::to_string(number) + ": " + problem);
            return true;
        });
        if (const int more = wrong - mostReports; more > 0)
            report(": " + std::to_string(more) +
                   (more == 1 ? " more line is wrong" : " more lines are wrong"));
    }

    void report(const std::string& problem) const {
        Logger::Write("Settings file " + m_path.toStdString() + problem);
    }

    /// Reads one line; returns what is wrong with it.
    std::string readLine(std::string_view line, std::string& section) {
        if (line.empty() || line.front() == '#' || line.front() == ';')
            return {};
        if (line.front() == '[' && line.back() == ']') {
            section = latin1(trimmed(line.substr(1, line.size() - 2)));
            return {};
        }
        const std::size_t sign = line.find('=');
        const std::string_view key = trimmed(line.substr(0, sign));
        if (sign == std::string_view::npos || key.empty())
            return quoted(line) + " is neither [section], key = value nor a # comment";
        const QString value = decodeText(trimmed(line.substr(sign + 1)));
        m_values[{section, latin1(key)}] = value.toLatin1().toStdString();
        if (QString::fromLatin1(value.toLatin1()) != value)
            return "the value of " + quoted(key) + " has characters outside of Latin-1";
        return {};
    }

    static std::string latin1(std::string_view bytes) {
        return decodeText(bytes).toLatin1().toStdString();
    }

    QString m_path;
    QByteArray m_bytes;
    std::string m_problem;
    std::map<std::pair<std::string, std::string>, std::string> m_values;
};

SettingsFile& settingsFile() {
    static SettingsFile* const file = new SettingsFile;
    return *file;
}

SettingsFile& defaultSettingsFile() {
    static SettingsFile* const file = new SettingsFile;
    return *file;
}

} // namespace

void setSettingsFile(const QString& file) {
    settingsFile().setPath(file);
}

void setDefaultSettingsFile(const QString& file) {
    defaultSettingsFile().setPath(file);
}

} // namespace memory_host

Setting Config::GetSetting(const std::string& section, const std::string& key) {
    const Setting setting = memory_host::settingsFile().find(section, key);
    bool exists = false;
    setting.ToString(&exists);
    return exists ? setting : memory_host::defaultSettingsFile().find(section, key);
}
