// Bonds that a file lists and that were destroyed, while their atoms are still there: what becomes
// of the records that list them.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace memory_host {

/// Finds lost bonds by the names that a record gives the atoms, in either order. A record may name
/// an atom without its alternative location, and so list several bonds, of which some are kept.
class LostBonds {
public:
    /// All names that a record may give an atom. The first tells its alternative location.
    using Names = std::vector<std::string>;

    /// `isFoundAgain` says whether the bond comes back without a record.
    void lose(const Names& first, const Names& second, bool isFoundAgain);
    /// Takes a bond that is kept, behind all that are lost.
    void keep(const Names& first, const Names& second);
    /// To be called after the last bond, and before of().
    void settle();
    bool areNone() const { return m_bonds.empty(); }

    struct Fate {
        bool isKept = true;
        std::size_t comingBack = 0; ///< lost bonds that a record brings back, as it has to stay
    };
    /// What becomes of a record that gives two atoms these names.
    Fate of(const std::string& first, const std::string& second) const;

private:
    using Keys = std::vector<std::string>;
    struct Bond {
        Keys keys;
        bool isFoundAgain;
    };
    static Keys keysOf(const Names& first, const Names& second);

    std::vector<Bond> m_bonds;
    std::unordered_map<std::string, Fate> m_fates;
    std::unordered_set<std::string> m_kept; ///< first keys of bonds that models share with others
};

} // namespace memory_host
