// Opens files one after another, without freezing the screen.
#pragma once

#include "files/Files.h"
#include "services/ProgressWindow.h"

#include <functional>
#include <future>
#include <string>
#include <vector>

namespace workbench {

class Opening {
public:
    /// Receives a line for each file that cannot be opened, and for each remark on a file that can.
    using Report = std::function<void(const std::string& line)>;

    explicit Opening(Report report);
    /// Waits for the threads of cancelled files that are still parsing.
    ~Opening();
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

    /// Opens the files that can be opened; the others are reported and leave nothing behind. When
    /// the user cancels, the current file and those after it are not opened. Returns the number of
    /// files that were opened. `opened`, which may be empty, hears of each as it is, by its index.
    std::size_t open(const std::vector<std::string>& files,
                     const std::function<void(std::size_t file)>& opened = {});

private:
    bool openOne(const std::string& file, memory_host::ProgressWindow& progress);
    memory_host::ParsedFilePtr parse(const std::string& file,
                                     memory_host::ProgressWindow& progress);

    Report m_report;
    /// Cancelled files whose threads still run: reading can be interrupted, but parsing cannot.
    std::vector<std::future<memory_host::ParsedFilePtr>> m_abandoned;
};

} // namespace workbench
