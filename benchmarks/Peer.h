// Another program as a competitor: PyMOL, driven through a pipe.
#pragma once

#include <QProcess>

#include <cstddef>
#include <string>

namespace benchmarks {

/// A process that holds the same structure file, and does one kind of work with it.
class Peer {
public:
    /// Runs a script of the benchmarks' folder on `path`, and waits until it has loaded it.
    Peer(const std::string& script, const std::string& path);
    ~Peer();

    /// Whether the program is there and has loaded the file.
    bool isThere() const { return m_atoms > 0; }
    /// How many it has loaded, or whatever else the script counts.
    std::size_t atoms() const { return m_atoms; }
    /// Has the script do the work for a line of text, and returns the number with which it answers.
    std::size_t ask(const std::string& line);

private:
    std::size_t answer();

    QProcess m_process;
    std::size_t m_atoms = 0;
};

} // namespace benchmarks
