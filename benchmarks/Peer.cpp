#include "Peer.h"

namespace benchmarks {

Peer::Peer(const std::string& script, const std::string& path) {
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // The system's Python: that one has the packages of the system.
    m_process.start(
        QStringLiteral("/usr/bin/python3"),
        {QString::fromStdString(PEERS_FOLDER "/" + script), QString::fromStdString(path)});
    m_atoms = answer();
}

Peer::~Peer() {
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

std::size_t Peer::ask(const std::string& line) {
    m_process.write((line + '\n').c_str());
    return answer();
}

std::size_t Peer::answer() {
    while (!m_process.canReadLine())
        if (!m_process.waitForReadyRead(600'000))
            return 0;
    return m_process.readLine().trimmed().toULongLong();
}

} // namespace benchmarks
