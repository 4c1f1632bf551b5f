// Runs a Program over names: a deterministic automaton whose states are made when a name first
// needs them, so that a character costs one table look-up. Memory and the work of making states are
// bounded, however many states a pattern has.
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
public:
    /// Bounds that tests make small to reach them.
    struct Bounds {
        /// States are forgotten, and made anew, when they take more than that many bytes.
        std::size_t memory = std::size_t(48) << 20;
        /// Steps that may be spent on making states, for all names together: a start, and what
        /// every character adds. The time for many names is thus linear in their length.
        double work = 2e8;
        double workPerCharacter = 20;
    };

    /// For a Program and the Alphabet of its pattern.
    Automaton(Program program, std::shared_ptr<const Alphabet> alphabet, const Bounds& bounds);

    /// Whether a match starts at the first character of `name`. False, and without meaning, when
    /// the bounds are exceeded.
    bool matches(std::string_view name);
    /// Reads how several names begin.
    void setBeginning(std::string_view beginning);
    /// The answer for all names that begin so, where the rest makes no difference.
    std::optional<bool> answerForAll() const;
    /// The answer for the beginning with `rest` behind it.
    bool matchesRest(std::string_view rest);
    /// Whether the bounds are exceeded: from then on there are no answers.
    bool isExhausted() const { return m_work < 0; }
    /// How often the states were forgotten for want of memory.
    unsigned timesForgotten() const { return m_timesForgotten; }

private:
    using Index = std::int32_t;

    /// What can stand where a state is expected: that it is not known yet, or that the rest of the
    /// name makes no difference. A state is the start of its row in the table.
    enum : Index { Unknown = -1, Never = -2, Always = -3 };

    /// What is known of the characters before a place, as far as conditions ask for it.
    enum Before : std::uint8_t { Anything, NoCharacter, Word };

    /// The places in the program that a state stands at, as a range of m_members.
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

    Index read(Index state, std::string_view text);
    bool endsWell(Index state);
    Index start();
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

    /// A row for each state, a column for each of the alphabet.
    std::vector<Index> m_table;
    std::vector<State> m_states;
    std::vector<Index> m_members;
    std::unordered_multimap<std::size_t, Index> m_stateByHash;
    Index m_start = Unknown;
    unsigned m_timesForgotten = 0;

    std::string m_beginning;
    Index m_behindBeginning = Unknown; ///< a state that was not forgotten, or what stands for one

    /// What was decided for a state and a short text behind it. Structures have few hundred names
    /// of atoms, so that hardly two of them ever want one place.
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
