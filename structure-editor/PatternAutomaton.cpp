#include "PatternAutomaton.h"

#include <algorithm>

namespace name_pattern {

Automaton::Automaton(Program program, std::shared_ptr<const Alphabet> alphabet,
                     const Bounds& bounds)
    : m_program(std::move(program)), m_alphabet(std::move(alphabet)), m_bounds(bounds),
      m_work(bounds.work), m_mayForget(m_program.lookAheads.empty()),
      m_threads(static_cast<Index>(m_program.code.size())), m_now(m_program.code.size()),
      m_then(m_program.code.size()) {
    m_start.fill(Unknown);
    constexpr std::size_t leastMemory = std::size_t(1) << 18;
    Bounds less = bounds;
    less.memory = std::min(bounds.memory, std::max(bounds.memory / 4, leastMemory));
    for (LookAhead& ahead : m_program.lookAheads) {
        m_lookAheads.emplace_back(std::move(ahead.body), m_alphabet, less);
        m_lookAheads.back().m_mayForget = false;
    }
}

bool Automaton::matches(std::string_view name) {
    return endsWell(read(start(NoCharacter), name));
}

void Automaton::setBeginning(std::string_view beginning) {
    m_beginning = beginning;
    m_behindBeginning = read(start(NoCharacter), beginning);
}

std::optional<bool> Automaton::answerForAll() const {
    if (m_behindBeginning == Always || m_behindBeginning == Never)
        return m_behindBeginning == Always;
    return std::nullopt;
}

bool Automaton::matchesRest(std::string_view rest) {
    if (m_behindBeginning == Unknown)
        m_behindBeginning = read(start(NoCharacter), m_beginning);
    return endsWell(read(m_behindBeginning, rest));
}

/// The state behind a text, or what stands for one: this loop is what matching costs.
Automaton::Index Automaton::read(Index state, std::string_view text) {
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

Automaton::Index Automaton::start(Before before) {
    if (m_start[before] == Unknown) {
        m_then.clear();
        const bool accepted = gather(m_then, m_program.start, before);
        const Index state = accepted ? Index(Always) : stateOf(m_then.members(), before);
        m_start[before] = state; // behind stateOf(), which may forget the other starts
    }
    return m_start[before];
}

/// Finds what a state and a column lead to, for the table. A state has one thread for each way to
/// match; a thread that dies is just not kept.
Automaton::Index Automaton::follow(Index from, Index column) {
    const State state = m_states[from / m_alphabet->columns()]; // a copy: it may be forgotten below
    const Before before = m_alphabet->isWord(column) ? Word : Anything;
    m_now.clear();
    m_then.clear();
    for (std::size_t i = state.begin; i < state.end; ++i)
        gather(m_now, m_members[i], state.before);
    bool accepted = false;
    // The list grows on the way: a condition that holds adds what stands behind it.
    for (std::size_t i = 0; i < m_now.members().size() && !accepted && !isExhausted(); ++i) {
        const Index thread = m_now.members()[i];
        const Instruction& instruction = m_program.code[m_threads.place(thread)];
        if (instruction.kind == Instruction::Assert) {
            if (holds(static_cast<Condition>(instruction.other), state.before, column))
                accepted = gather(m_now, m_threads.thread(instruction.next, m_threads.open(thread)),
                                  state.before);
            continue;
        }
        const bool isOver = instruction.kind == Instruction::Accept; // but for open look-aheads
        if (!isOver && !m_alphabet->isIn(column, instruction.other))
            continue;
        if (const std::optional<Index> open = advanced(m_threads.open(thread), column))
            accepted =
                gather(m_then,
                       m_threads.thread(isOver ? m_threads.place(thread) : instruction.next, *open),
                       before);
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

/// Adds the threads that one becomes without taking a character. Returns true, and may stop, when
/// one of them ends a match. Stops, too, when the bounds are exceeded: where look-aheads are open
/// there can be any number of threads at one place.
bool Automaton::gather(Gathering& into, Index from, Before before) {
    m_todo.assign(1, from);
    while (!m_todo.empty() && !isExhausted()) {
        const Index thread = m_todo.back();
        m_todo.pop_back();
        if (!into.visit(thread))
            continue;
        m_work -= 1;
        if (m_threads.memory() > m_bounds.memory)
            m_work = -1;
        const Index open = m_threads.open(thread);
        const Instruction& instruction = m_program.code[m_threads.place(thread)];
        switch (instruction.kind) {
        case Instruction::Split:
            m_todo.push_back(m_threads.thread(instruction.other, open));
            m_todo.push_back(m_threads.thread(instruction.next, open));
            break;
        case Instruction::Look:
            if (const auto opened = withLookAhead(open, instruction.other, before))
                m_todo.push_back(m_threads.thread(instruction.next, *opened));
            break;
        case Instruction::Accept:
            if (open == Threads::noneOpen)
                return true;
            into.keep(thread);
            break;
        default:
            into.keep(thread);
            break;
        }
    }
    return false;
}

/// The open look-aheads with one more, that starts here; nothing when it fails at once.
std::optional<Automaton::Index> Automaton::withLookAhead(Index open, Index lookAhead,
                                                         Before before) {
    // QRegExp hands it the rest of the name only: a word boundary does not see what is before, but
    // "^" still knows where the name starts.
    const Index state = m_lookAheads[lookAhead].start(before == Word ? Anything : before);
    return settled(open, {{lookAhead, state}});
}

/// The open look-aheads behind a character or the end; nothing when one of them has failed.
std::optional<Automaton::Index> Automaton::advanced(Index open, Index column) {
    if (open == Threads::noneOpen)
        return open;
    std::vector<Threads::Open> set = m_threads.openSet(open);
    for (Threads::Open& each : set)
        each.state = m_lookAheads[each.lookAhead].step(each.state, column);
    return settled(Threads::noneOpen, std::move(set));
}

/// Adds look-aheads to open ones, but for those that are decided already.
std::optional<Automaton::Index> Automaton::settled(Index open, std::vector<Threads::Open> added) {
    std::vector<Threads::Open> set = m_threads.openSet(open);
    m_work -= static_cast<double>(set.size() + added.size());
    for (const Threads::Open& each : added) {
        if (m_lookAheads[each.lookAhead].isExhausted())
            m_work = -1;
        const bool isNegative = m_program.lookAheads[each.lookAhead].negative;
        if (each.state >= 0)
            set.push_back(each);
        else if ((each.state == Always) == isNegative)
            return std::nullopt;
    }
    return m_threads.numberOf(std::move(set));
}

/// The state of these threads, which are put in order; made if there is none yet.
Automaton::Index Automaton::stateOf(std::vector<Index>& threads, Before before) {
    std::sort(threads.begin(), threads.end());
    std::size_t hash = before;
    for (const Index thread : threads)
        hash = (hash ^ static_cast<std::size_t>(thread)) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
    const auto [first, last] = m_stateByHash.equal_range(hash);
    for (auto it = first; it != last; ++it) {
        const State& state = m_states[it->second / m_alphabet->columns()];
        if (state.before == before &&
            std::equal(threads.begin(), threads.end(), m_members.begin() + state.begin,
                       m_members.begin() + state.end))
            return it->second;
    }
    if (memory() + threads.size() * sizeof(Index) > m_bounds.memory) {
        if (m_mayForget)
            forget();
        else
            m_work = -1;
    }
    const auto row = static_cast<Index>(m_table.size());
    const std::size_t begin = m_members.size();
    m_members.insert(m_members.end(), threads.begin(), threads.end());
    m_states.push_back({begin, m_members.size(), before});
    m_table.resize(m_table.size() + m_alphabet->columns(), Unknown);
    m_stateByHash.emplace(hash, row);
    return row;
}

std::size_t Automaton::memory() const {
    constexpr std::size_t hashEntry = 48;
    return m_table.size() * sizeof(Index) + m_members.size() * sizeof(Index) +
           m_states.size() * (sizeof(State) + hashEntry) + m_threads.memory();
}

void Automaton::forget() {
    m_table.clear();
    m_states.clear();
    m_members.clear();
    m_stateByHash.clear();
    m_start.fill(Unknown);
    m_behindBeginning = Unknown;
    ++m_timesForgotten;
}

} // namespace name_pattern
