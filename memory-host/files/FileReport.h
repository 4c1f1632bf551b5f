// The report on a file that is being read: one refusal, or remarks on what was read other than as
// written.
#pragma once

#include "Files.h"
#include "Formats.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host {

/// The text as part of one line: control characters become spaces, and a long text is cut.
std::string oneLine(std::string_view text, std::size_t longest = 200);
/// The text of a field as it is quoted in a message.
std::string inQuotes(std::string_view text);

/// Refusals and remarks on one file. Lines count from 1; line 0 stands for none.
class FileReport {
public:
    /// The subject of a remark. Of many remarks of one kind only a few are kept, and a count.
    enum class Kind {
        Coordinates,
        NoCoordinates,
        Temperature,
        Charge,
        Row,
        Name,
        Residue,
        Bonds,
        ListedBonds,
        Cut,
        Map
    };

    explicit FileReport(std::string path);

    /// Throws FileError with one line: file, line, what is wrong, what is accepted.
    [[noreturn]] void refuse(std::size_t line, const std::string& what,
                             const std::string& accepted) const;
    /// Refuses the file because memory has run out, with a line that was made before.
    [[noreturn]] void refuseForMemory() const;
    void remark(Kind kind, std::size_t line, const std::string& what) {
        remark(kind, line, [&] { return what; });
    }
    /// The same with a text that is made only if it is to be shown.
    template <class MakeText>
    requires requires(MakeText make) { std::string(make()); }
    void remark(Kind kind, std::size_t line, MakeText&& make) {
        Tally& tally = tallyOf(kind);
        if (++tally.count <= shownOfAKind)
            tally.lines.push_back(place(line) + oneLine(make()));
    }
    /// The remarks, grouped by kind.
    std::vector<std::string> remarks() const;

    const std::string& path() const { return m_path; }

private:
    static constexpr std::size_t shownOfAKind = 10;
    struct Tally {
        Kind kind;
        std::size_t count = 0;
        std::vector<std::string> lines;
    };

    std::string place(std::size_t line) const;
    FileError refusal(std::size_t line, const std::string& what, const std::string& accepted) const;
    Tally& tallyOf(Kind kind);

    std::string m_path;
    FileError m_noMemory;
    std::vector<Tally> m_tallies;
};

} // namespace memory_host
