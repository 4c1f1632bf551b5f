// Opens the files of the command line, one after another, without freezing the screen.
#pragma once

#include "ProgressWindow.h"
#include "files/Files.h"

#include <functional>
#include <future>
#include <string>
#include <vector>

namespace workbench {

class Opening {
public:
    /// Hears one line for each file that cannot be opened and each remark on one that can.
    using Report = std::function<void(const std::string& line)>;

    explicit Opening(Report report);
    /// Waits until a file that is still being read after a cancel has been read.
    ~Opening();
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    /// Opens what can be opened; the rest is reported and leaves nothing behind. When the user
    /// cancels, the file in hand and those after it are not opened. Returns how many were.
    std::size_t open(const std::vector<std::string>& files);

private:
    bool openOne(const std::string& file, ProgressWindow& progress);
    memory_host::ParsedFilePtr parse(const std::string& file, ProgressWindow& progress);

    Report m_report;
    /// Parsing cannot be interrupted, only reading; what a cancel left running ends here.
    std::vector<std::future<memory_host::ParsedFilePtr>> m_abandoned;
};

} // namespace workbench
