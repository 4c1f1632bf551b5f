// Interned names of a file: valid as components of qualified names, and numbered.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace memory_host {

/// Makes a file's text valid as a component of a qualified name, which is Latin-1. UTF-8 characters
/// of Latin-1 are converted, and other bytes beyond ASCII are taken as Latin-1; "/", control
/// characters and characters outside of Latin-1 become "_".
std::string asLatin1Component(std::string_view text);

/// Numbers names; 0 is the empty one. Equal texts have equal numbers.
class FileNames {
public:
    FileNames();
    FileNames(const FileNames&) = delete;
    FileNames& operator=(const FileNames&) = delete;

    std::uint32_t number(std::string_view text);
    /// The name of a number, as a component.
    const std::string& text(std::uint32_t number) const { return m_names[number].text; }
    std::size_t size() const { return m_names.size(); }
    /// Whether the name was written differently in the file.
    bool isChanged(std::uint32_t number) const { return m_names[number].isChanged; }
    bool hasChanged() const { return m_hasChanged; }
    /// The name as the file has it.
    const std::string& written(std::uint32_t number) const { return m_names[number].written; }

private:
    struct Name {
        std::string written;
        std::string text;
        bool isChanged = false;
    };
    struct Recent {
        std::uint64_t key = 0;
        std::uint32_t number = 0;
    };

    std::uint32_t find(std::string_view text);

    std::deque<Name> m_names;
    std::unordered_map<std::string_view, std::uint32_t> m_numbers;
    /// A cache of short names by their bytes: a structure repeats a few hundred of them a million
    /// times. It starts small, because a file may have many small entries.
    std::vector<Recent> m_recent;
    bool m_hasChanged = false;
};

} // namespace memory_host
