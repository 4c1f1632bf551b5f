// Another program's selection by names, as a competitor: PyMOL, driven through a pipe.
#pragma once

#include <QProcess>

#include <cstddef>
#include <string>

namespace benchmarks {

/// A process that holds the same structure file and selects in it.
class SelectPeer {
public:
    /// Loads `path`, which takes a while.
    explicit SelectPeer(const std::string& path);
    ~SelectPeer();

    /// Whether the program is there and has loaded the file.
    bool isThere() const { return m_atoms > 0; }
    /// Selects by an expression in that program's language; returns the number of atoms.
    std::size_t select(const std::string& expression);

private:
    std::size_t answer();

    QProcess m_process;
    std::size_t m_atoms = 0;
};

} // namespace benchmarks
