// The report on a file that is being saved: one refusal, or remarks on what the file does not keep;
// and how far the work is.
#pragma once

#include "Saving.h"

#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

class SaveReport {
public:
    explicit SaveReport(std::string path, const Progress& progress = {}, std::stop_token stop = {})
        : m_path(std::move(path)), m_progress(progress), m_stop(std::move(stop)) {}

    /// Throws SaveError with one line: file, what is wrong, what is accepted.
    [[noreturn]] void refuse(const std::string& what, const std::string& accepted,
                             SaveError::Reason reason = SaveError::Reason::Other) const;
    /// Adds a line about one kind of thing that is lost: "12 surfaces are not saved".
    void remark(const std::string& what);
    /// Says how far the writing is (0 to 1); throws SaveError if it is to stop. To be called after
    /// each piece of work of some 10,000 rows.
    void advance(double fraction) const;

    const std::string& path() const { return m_path; }
    const std::vector<std::string>& remarks() const { return m_remarks; }

private:
    std::string m_path;
    Progress m_progress;
    std::stop_token m_stop;
    std::vector<std::string> m_remarks;
};

} // namespace memory_host
