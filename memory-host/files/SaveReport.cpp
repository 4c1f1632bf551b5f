#include "SaveReport.h"

#include "FileReport.h"

namespace memory_host {

SaveError::~SaveError() = default;

void SaveReport::refuse(const std::string& what, const std::string& accepted,
                        SaveError::Reason reason) const {
    throw SaveError(oneLine(m_path, 4096) + ": " + oneLine(what, 400) + "; " + oneLine(accepted),
                    reason);
}

void SaveReport::remark(const std::string& what) {
    m_remarks.push_back(oneLine(m_path, 4096) + ": " + oneLine(what, 400));
}

void SaveReport::advance(double fraction) const {
    if (m_stop.stop_requested())
        refuse("saving it was cancelled", "accepted is saving it again");
    if (m_progress)
        m_progress("writing the file", fraction);
}

} // namespace memory_host
