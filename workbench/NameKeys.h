// Short names as numbers, to compare a million of them quickly and without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace workbench {

class NameKeys {
public:
    using Key = std::uint64_t;
    /// The key of a name that no item has.
    static constexpr Key none = ~Key{0};

    /// The key of a name, which is made if there is none yet.
    Key add(std::string_view name);
    /// The key of a name; `none` if it was never added.
    Key find(std::string_view name) const;

private:
    static constexpr std::size_t longestPacked = 7;

    static Key pack(std::string_view name);
    static std::string upper(std::string_view name);

    /// Names that do not fit into a key.
    std::unordered_map<std::string, Key> m_long;
};

} // namespace workbench
