#include "SelectPeer.h"

namespace benchmarks {

SelectPeer::SelectPeer(const std::string& path) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The system's Python: that one has the packages of the system.
    m_process.start(QStringLiteral("/usr/bin/python3"),
                    {QStringLiteral(SELECT_PEER), QString::fromStdString(path)});
    m_atoms = answer();
}

SelectPeer::~SelectPeer() {
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

std::size_t SelectPeer::select(const std::string& expression) {
    m_process.write((expression + '\n').c_str());
    return answer();
}

std::size_t SelectPeer::answer() {
    while (!m_process.canReadLine())
        if (!m_process.waitForReadyRead(600'000))
            return 0;
    return m_process.readLine().trimmed().toULongLong();
}

} // namespace benchmarks
