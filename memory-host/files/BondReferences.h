// What becomes of the records that list bonds when bonds are destroyed, or when their atoms get
// other alternative locations or further ones beside them.
#pragma once

#include "SavedTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace memory_host {

/// Finds the changed bonds that a record lists, by the names that it gives the atoms, in either
/// order. A record may name an atom without its alternative location, and so list several bonds, of
/// which some are as they were.
class BondReferences {
public:
    struct Atom {
        /// All names that a record may give it. The first tells the location that the file has.
        std::vector<std::string> names;
        std::string letter; ///< of the location that it has now, or empty
    };

    /// Takes a bond that is gone, while its atoms are still there. `isFoundAgain` says whether it
    /// comes back without a record.
    void lose(const Atom& first, const Atom& second, bool isFoundAgain);
    /// Takes a bond that is left, of which SavedBond::isRelettered holds. It outlives this.
    void reletter(const Atom& first, const Atom& second, const SavedBond& bond);
    bool areNone() const { return m_known.empty(); }
    /// Takes any bond that is left, behind all that changed.
    void keep(const Atom& first, const Atom& second);
    /// To be called after the last bond, and before of().
    void settle();

    struct Fate {
        bool isKept = true;
        /// The letters that the record is to give both atoms; none where they stay.
        std::array<std::optional<std::string>, 2> letters;
        std::size_t comingBack = 0;    ///< lost bonds that the record brings back, as it is
        std::size_t comingBackToo = 0; ///< the same with these letters
        std::size_t joined = 0;        ///< further bonds that are read from the record, as it is
        std::size_t joinedToo = 0;     ///< the same with these letters
    };
    /// What becomes of a record that gives two atoms these names.
    Fate of(const std::string& first, const std::string& second) const;

    /// Takes a record that is left: the names that it gave two atoms, and the letters that it gives
    /// them now, or empty ones.
    void list(const std::string& first, const std::string& second,
              const std::array<std::string_view, 2>& letters);
    /// The relettered bonds that none of these lists. Left out are those that come back without a
    /// record, or that no record brings back.
    std::vector<const SavedBond*> unlisted() const;

private:
    /// The letters of one atom of the bonds that a record lists and that are left.
    struct Letters {
        std::optional<std::string> first;
        bool areSeveral = false;

        void add(const std::string& letter);
        bool areOne() const { return first && !areSeveral; }
    };
    /// A name of both atoms; ordered, and whether that is the other order.
    struct Key {
        std::string text;
        bool isSwapped;
    };
    /// A relettered bond that needs a record.
    struct Needed {
        const SavedBond* bond;
        std::array<std::string, 2> letters;
        bool isListed = false;

        bool isNamed(std::size_t atom, std::string_view letter) const {
            return letter.empty() ? !bond->needsLetter[atom] : letter == letters[atom];
        }
    };
    /// Its place among them, and whether the key has its atoms in the other order.
    struct NeededPlace {
        std::size_t index;
        bool isSwapped;
    };
    struct Known {
        std::vector<NeededPlace> needed;
        bool isLost = false;
        bool isKept = false;
        std::array<Letters, 2> letters; ///< in the order of the key
        Fate fate;
    };
    struct Lost {
        std::vector<Key> keys;
        std::array<std::string, 2> letters;
        bool isFoundAgain;
    };
    static Key keyOf(const std::string& first, const std::string& second);
    static std::vector<Key> keysOf(const Atom& first, const Atom& second);
    static bool excludes(const Known& known, const Lost& bond, bool isSwapped);

    std::vector<Lost> m_lost;
    std::vector<Needed> m_needed;
    std::unordered_map<std::string, Known> m_known;
    std::unordered_set<std::string> m_kept; ///< first keys of bonds that models share with others
};

} // namespace memory_host
