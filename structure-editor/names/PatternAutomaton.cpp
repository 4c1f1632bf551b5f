#include "PatternAutomaton.h"

#include <algorithm>

namespace name_pattern {

namespace {
constexpr int decisionBits = 12;
}

Automaton::Automaton(Program program, std::shared_ptr<const Alphabet> alphabet,
                     const Bounds& bounds)
    : m_program(std::move(program)), m_alphabet(std::move(alphabet)), m_bounds(bounds),
      m_work(bounds.work), m_decisions(std::size_t(1) << decisionBits),
      m_now(m_program.code.size()), m_then(m_program.code.size()) {}

bool Automaton::matches(std::string_view name) {
    return endsWell(readFrom(firstState(), name));
}

Automaton::Place Automaton::start() {
    Place place;
    place.m_state = firstState();
    place.m_timesForgotten = m_timesForgotten;
    return place;
}

Automaton::Place Automaton::read(const Place& from, std::string_view text) {
    Place place;
    place.m_state = readFrom(from.m_state, text);
    place.m_timesForgotten = m_timesForgotten;
    return place;
}

std::optional<bool> Automaton::answerForAll(const Place& place) {
    if (place.m_state == Always || place.m_state == Never)
        return place.m_state == Always;
    return std::nullopt;
}

bool Automaton::matchesRest(const Place& from, std::string_view rest) {
    const Index state = from.m_state;
    if (state < 0 || rest.size() >= sizeof(std::uint64_t))
        return endsWell(readFrom(state, rest));
    std::uint64_t text = rest.size() << 56;
    for (std::size_t i = 0; i < rest.size(); ++i)
        text |= std::uint64_t(static_cast<unsigned char>(rest[i])) << 8 * i;
    const std::uint64_t mixed =
        (text ^ static_cast<std::uint64_t>(state) << 32) * 0x9E3779B97F4A7C15u;
    Decision& decision = m_decisions[mixed >> (64 - decisionBits)];
    if (decision.state != state || decision.text != text) {
        const bool answer = endsWell(readFrom(state, rest));
        // After a flush of the state cache the number means another state.
        if (!isKnown(from) || isExhausted())
            return answer;
        decision = {text, state, answer};
    }
    return decision.answer;
}

/// The state after a text, or one of the special values. Matching spends its time in this loop.
Automaton::Index Automaton::readFrom(Index state, std::string_view text) {
    if (state < 0)
        return state;
    if (isExhausted())
        return Never;
    m_work += m_bounds.workPerCharacter * static_cast<double>(text.size());
    const std::uint8_t* columnOf = m_alphabet->columnOf().data();
    const Index* table = m_table.data();
    for (const char c : text) {
        const Index column = columnOf[static_cast<unsigned char>(c)];
        Index next = table[state + column];
        if (next < 0) [[unlikely]] {
            if (next == Unknown) {
                next = follow(state, column);
                table = m_table.data();
            }
            if (next < 0)
                return next;
        }
        state = next;
    }
    return state;
}

bool Automaton::endsWell(Index state) {
    return (state < 0 ? state : step(state, m_alphabet->endColumn())) == Always;
}

Automaton::Index Automaton::firstState() {
    if (m_start == Unknown) {
        m_then.clear();
        const bool accepted = gather(m_then, m_program.start);
        m_start = accepted ? Index(Always) : stateOf(m_then.members(), NoCharacter);
    }
    return m_start;
}

/// Computes a transition and stores it in the table. A state is a set of places, one for each way
/// to match; a way that fails is dropped.
Automaton::Index Automaton::follow(Index from, Index column) {
    const State state = m_states[from / m_alphabet->columns()]; // a copy: a flush below may drop it
    const Before before = m_alphabet->isWord(column) ? Word : Anything;
    m_now.clear();
    m_then.clear();
    for (std::size_t i = state.begin; i < state.end; ++i)
        gather(m_now, m_members[i]);
    bool accepted = false;
    // The list grows in the loop: an assertion that holds adds the places after it.
    for (std::size_t i = 0; i < m_now.members().size() && !accepted && !isExhausted(); ++i) {
        const Instruction& instruction =
            m_program.code[static_cast<std::size_t>(m_now.members()[i])];
        if (instruction.kind == Instruction::Assert) {
            if (holds(static_cast<Condition>(instruction.other), state.before, column))
                accepted = gather(m_now, instruction.next);
        } else if (m_alphabet->isIn(column, instruction.other)) {
            accepted = gather(m_then, instruction.next);
        }
    }
    m_work -= static_cast<double>(m_now.members().size()) + 32;
    if (isExhausted())
        return Never;

    Index next = Never;
    const unsigned forgotten = m_timesForgotten;
    if (accepted)
        next = Always;
    else if (!m_then.members().empty() && column != m_alphabet->endColumn())
        next = stateOf(m_then.members(), before);
    if (forgotten == m_timesForgotten)
        m_table[from + column] = next;
    return next;
}

bool Automaton::holds(Condition condition, Before before, Index column) const {
    const bool isBoundary = (before == Word) != m_alphabet->isWord(column);
    switch (condition) {
    case Condition::AtStart:
        return before == NoCharacter;
    case Condition::AtEnd:
        return column == m_alphabet->endColumn();
    case Condition::WordBoundary:
        return isBoundary;
    case Condition::NoWordBoundary:
        break;
    }
    return !isBoundary;
}

/// Adds the epsilon closure of a place: the places reachable without consuming a character. Returns
/// true, and may stop early, when the closure accepts.
bool Automaton::gather(Gathering& into, Index from) {
    m_todo.assign(1, from);
    while (!m_todo.empty()) {
        const Index place = m_todo.back();
        m_todo.pop_back();
        if (!into.visit(place))
            continue;
        m_work -= 1;
        const Instruction& instruction = m_program.code[static_cast<std::size_t>(place)];
        if (instruction.kind == Instruction::Accept)
            return true;
        if (instruction.kind == Instruction::Split) {
            m_todo.push_back(instruction.other);
            m_todo.push_back(instruction.next);
        } else {
            into.keep(place);
        }
    }
    return false;
}

/// The state of these places, which are sorted; created if there is none yet.
Automaton::Index Automaton::stateOf(std::vector<Index>& places, Before before) {
    std::sort(places.begin(), places.end());
    std::size_t hash = before;
    for (const Index place : places)
        hash = (hash ^ static_cast<std::size_t>(place)) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
    const auto [first, last] = m_stateByHash.equal_range(hash);
    for (auto it = first; it != last; ++it) {
        const State& state = m_states[it->second / m_alphabet->columns()];
        if (state.before == before &&
            std::equal(places.begin(), places.end(), m_members.begin() + state.begin,
                       m_members.begin() + state.end))
            return it->second;
    }
    if (memory() + places.size() * sizeof(Index) > m_bounds.memory)
        forget();
    const auto row = static_cast<Index>(m_table.size());
    const std::size_t begin = m_members.size();
    m_members.insert(m_members.end(), places.begin(), places.end());
    m_states.push_back({begin, m_members.size(), before});
    m_table.resize(m_table.size() + m_alphabet->columns(), Unknown);
    m_stateByHash.emplace(hash, row);
    return row;
}

std::size_t Automaton::memory() const {
    constexpr std::size_t hashEntry = 48;
    return m_table.size() * sizeof(Index) + m_members.size() * sizeof(Index) +
           m_states.size() * (sizeof(State) + hashEntry);
}

void Automaton::forget() {
    m_table.clear();
    m_states.clear();
    m_members.clear();
    m_stateByHash.clear();
    m_start = Unknown;
    std::fill(m_decisions.begin(), m_decisions.end(), Decision());
    ++m_timesForgotten;
}

} // namespace name_pattern
