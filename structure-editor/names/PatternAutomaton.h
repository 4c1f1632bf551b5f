// Runs a Program over names as a lazily built deterministic automaton (DFA): a state is created
// when a name first needs it, so that a character costs one table look-up. Memory and the work of
// creating states are bounded, however many states a pattern has.
#pragma once

#include "PatternAlphabet.h"
#include "PatternProgram.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace name_pattern {

class Automaton {
    using Index = std::int32_t;

    /// Special values in place of a state: not computed yet, or decided whatever the rest of the
    /// name is. A state is the index at which its row of the table starts.
    enum : Index { Unknown = -1, Never = -2, Always = -3 };

public:
    /// Bounds that tests make small to reach them.
    struct Bounds {
        /// Bytes that the states may take; beyond that all are flushed and created anew.
        std::size_t memory = std::size_t(48) << 20;
        /// Steps that may be spent on creating states, for all names together: an initial budget,
        /// and what every character adds. The time for many names is thus linear in their length.
        double work = 2e8;
        double workPerCharacter = 20;
    };

    /// What has been read of a name.
    class Place {
        friend class Automaton;
        Index m_state = Unknown;
        unsigned m_timesForgotten = 0;
    };

    /// For a Program and the Alphabet of its pattern.
    Automaton(Program program, std::shared_ptr<const Alphabet> alphabet, const Bounds& bounds);

    /// Whether a match starts at the first character of `name`; false, but meaningless, when the
    /// bounds are exceeded.
    bool matches(std::string_view name);
    // For names with a common prefix, which is read once.

    /// The place before the first character of a name.
    Place start();
    /// The place after `text`, which begins at `from`.
    Place read(const Place& from, std::string_view text);
    /// Whether a place has been read and still means what it did: none does after a flush of the
    /// states.
    bool isKnown(const Place& place) const {
        return place.m_state != Unknown && place.m_timesForgotten == m_timesForgotten;
    }
    /// The answer for all names with this place, if the rest makes no difference.
    static std::optional<bool> answerForAll(const Place& place);
    /// The answer for the name that goes on with `rest`, and ends there.
    bool matchesRest(const Place& from, std::string_view rest);

    /// Whether the bounds are exceeded: from then on there are no answers.
    bool isExhausted() const { return m_work < 0; }
    /// How often the states were flushed because memory was full.
    unsigned timesForgotten() const { return m_timesForgotten; }

private:
    /// What is known of the character before a place, as far as assertions need it.
    enum Before : std::uint8_t { Anything, NoCharacter, Word };

    /// The set of places in the program that a state stands for, as a range of m_members.
    struct State {
        std::size_t begin;
        std::size_t end;
        Before before;
    };

    /// Places in the order in which they were reached, each once.
    class Gathering {
    public:
        explicit Gathering(std::size_t size) : m_stamps(size) {}
        void clear() {
            m_members.clear();
            ++m_stamp;
        }
        /// Whether the place is reached for the first time.
        bool visit(Index place) {
            return std::exchange(m_stamps[static_cast<std::size_t>(place)], m_stamp) != m_stamp;
        }
        void keep(Index place) { m_members.push_back(place); }
        std::vector<Index>& members() { return m_members; }

    private:
        std::vector<std::uint64_t> m_stamps;
        std::uint64_t m_stamp = 0;
        std::vector<Index> m_members;
    };

    Index firstState();
    Index readFrom(Index state, std::string_view text);
    bool endsWell(Index state);
    Index step(Index state, Index column) {
        const Index next = m_table[static_cast<std::size_t>(state + column)];
        return next == Unknown ? follow(state, column) : next;
    }
    Index follow(Index state, Index column);
    bool gather(Gathering& into, Index from);
    bool holds(Condition condition, Before before, Index column) const;
    Index stateOf(std::vector<Index>& members, Before before);
    std::size_t memory() const;
    void forget();

    Program m_program;
    std::shared_ptr<const Alphabet> m_alphabet;
    Bounds m_bounds;
    double m_work;

    /// The transition table: a row for each state, a column for each column of the alphabet.
    std::vector<Index> m_table;
    std::vector<State> m_states;
    std::vector<Index> m_members;
    std::unordered_multimap<std::size_t, Index> m_stateByHash;
    Index m_start = Unknown;
    unsigned m_timesForgotten = 0;

    /// A cache of answers by a state and the short text after it. Structures have a few hundred
    /// atom names, so that collisions are rare.
    struct Decision {
        std::uint64_t text = 0; ///< the length in the highest byte
        Index state = Unknown;
        bool answer = false;
    };
    std::vector<Decision> m_decisions;

    Gathering m_now;
    Gathering m_then;
    std::vector<Index> m_todo;
};

} // namespace name_pattern
