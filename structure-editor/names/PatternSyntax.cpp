#include "PatternSyntax.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

namespace name_pattern {

namespace {

/// QRegExp's largest count in braces.
constexpr int largestCount = 1024;
constexpr int largestOctal = 0377;

template <class Predicate> CharSet setOf(Predicate predicate) {
    CharSet set;
    for (unsigned c = 0; c < set.size(); ++c)
        set[c] = predicate(QChar(c));
    return set;
}

const CharSet& digits() {
    static const CharSet set = setOf([](QChar c) { return c.isDigit(); });
    return set;
}

const CharSet& spaces() {
    static const CharSet set = setOf([](QChar c) { return c.isSpace(); });
    return set;
}

/// An escape sequence, after its backslash.
struct Escape {
    enum Kind { Single, Class, Boundary, Reference };
    Kind kind;
    char16_t character = 0;
    CharSet set;
    Condition condition = Condition::WordBoundary;
    int group = 0; ///< number of the group that a reference names
};

class Parser {
public:
    explicit Parser(const QString& pattern) : m_text(pattern) {}

    Syntax parse() {
        m_result.wellFormed = parseAll();
        return std::move(m_result);
    }

private:
    enum class GroupKind { Plain, Ahead, NotAhead };

    /// A group that is open, or the whole pattern.
    struct Group {
        GroupKind kind = GroupKind::Plain;
        bool hasOperand = false; ///< in the alternative that is being read
        bool hasChoice = false;  ///< an alternative was completed before it
    };

    struct Count {
        int least;
        int most;
    };

    bool atEnd() const { return m_at == m_text.size(); }
    char16_t here() const { return m_text[m_at].unicode(); }
    bool hereIs(char16_t c) const { return !atEnd() && here() == c; }
    bool skip(char16_t c) {
        if (!hereIs(c))
            return false;
        ++m_at;
        return true;
    }

    void add(NodeKind kind, int first = 0, int last = 0) {
        m_result.nodes.push_back({kind, first, last});
    }

    void addCharacter(const CharSet& set) {
        const auto [found, isNew] =
            m_setIndex.try_emplace(set, static_cast<int>(m_result.sets.size()));
        if (isNew)
            m_result.sets.push_back(set);
        add(NodeKind::Character, found->second);
    }

    void addSingle(char16_t c) {
        CharSet set;
        if (c < set.size())
            set.set(c);
        addCharacter(set);
    }

    void addClass(const CharSet& set) {
        ++m_result.classes;
        addCharacter(set);
    }

    void addAssertion(Condition condition) {
        add(NodeKind::Assertion, static_cast<int>(condition));
    }

    bool parseAll() {
        m_open.emplace_back();
        while (!atEnd()) {
            const char16_t c = here();
            ++m_at;
            if (c == u'(') {
                if (!openGroup())
                    return false;
            } else if (c == u')') {
                if (m_open.size() == 1)
                    return false;
                closeGroup();
                if (!endOperand())
                    return false;
            } else if (c == u'|') {
                endAlternative();
            } else if (!parseAtom(c) || !endOperand()) {
                return false;
            }
        }
        endAlternative();
        return m_open.size() == 1;
    }

    bool openGroup() {
        Group group;
        if (skip(u'?')) {
            if (hereIs(u'=') || hereIs(u'!')) {
                group.kind = hereIs(u'=') ? GroupKind::Ahead : GroupKind::NotAhead;
                m_result.hasLookAheads = true;
            } else if (!hereIs(u':')) {
                return false;
            }
            ++m_at;
        } else {
            ++m_result.captures;
        }
        m_open.push_back(group);
        m_result.depth = std::max(m_result.depth, static_cast<int>(m_open.size()) - 1);
        return true;
    }

    void closeGroup() {
        endAlternative();
        const GroupKind kind = m_open.back().kind;
        if (kind != GroupKind::Plain)
            add(NodeKind::LookAhead, kind == GroupKind::NotAhead);
        m_open.pop_back();
    }

    /// Ends an alternative, so that the open group's alternatives up to here are one operand.
    void endAlternative() {
        Group& group = m_open.back();
        if (!group.hasOperand)
            add(NodeKind::Nothing);
        if (group.hasChoice)
            add(NodeKind::Choice);
        group.hasOperand = false;
        group.hasChoice = true;
    }

    /// Reads the quantifier after an operand, if any, and joins the operand to those before it.
    bool endOperand() {
        if (!atEnd()) {
            const char16_t c = here();
            if (c == u'*' || c == u'+' || c == u'?' || c == u'{') {
                ++m_at;
                const std::optional<Count> count = parseCount(c);
                if (!count)
                    return false;
                add(NodeKind::Repetition, count->least, count->most);
            }
        }
        Group& group = m_open.back();
        if (group.hasOperand)
            add(NodeKind::Sequence);
        group.hasOperand = true;
        return true;
    }

    bool parseAtom(char16_t c) {
        switch (c) {
        case u'*':
        case u'+':
        case u'?':
        case u'{':
        case u'}':
        case u']':
            return false;
        case u'^':
            addAssertion(Condition::AtStart);
            return true;
        case u'$':
            addAssertion(Condition::AtEnd);
            return true;
        case u'.':
            addClass(CharSet().set());
            return true;
        case u'[':
            return parseClass();
        case u'\\':
            return parseEscapedAtom();
        default:
            addSingle(c);
            return true;
        }
    }

    bool parseEscapedAtom() {
        const std::optional<Escape> escape = parseEscape();
        if (!escape)
            return false;
        switch (escape->kind) {
        case Escape::Single:
            addSingle(escape->character);
            break;
        case Escape::Class:
            addClass(escape->set);
            break;
        case Escape::Boundary:
            addAssertion(escape->condition);
            break;
        case Escape::Reference:
            add(NodeKind::BackReference);
            m_result.hasBackReferences = true;
            m_result.captures = std::max(m_result.captures, escape->group);
            break;
        }
        return true;
    }

    std::optional<Escape> parseEscape() {
        if (atEnd())
            return std::nullopt;
        const char16_t c = here();
        ++m_at;
        switch (c) {
        case u'a':
            return single(u'\a');
        case u'f':
            return single(u'\f');
        case u'n':
            return single(u'\n');
        case u'r':
            return single(u'\r');
        case u't':
            return single(u'\t');
        case u'v':
            return single(u'\v');
        case u'd':
            return characterClass(digits());
        case u'D':
            return characterClass(~digits());
        case u's':
            return characterClass(spaces());
        case u'S':
            return characterClass(~spaces());
        case u'w':
            return characterClass(wordCharacters());
        case u'W':
            return characterClass(~wordCharacters());
        case u'b':
            return boundary(Condition::WordBoundary);
        case u'B':
            return boundary(Condition::NoWordBoundary);
        case u'x':
            return single(parseNumber(16, 4));
        case u'0': {
            const char16_t value = parseNumber(8, 3);
            if (value > largestOctal)
                return std::nullopt;
            return single(value);
        }
        default:
            if (c < u'1' || c > u'9')
                return single(c);
            return reference(c - u'0');
        }
    }

    /// The rest of a reference whose first digit has been read.
    Escape reference(int group) {
        // Capped to avoid overflow: no pattern has so many groups.
        constexpr int largest = 100'000'000;
        for (; !atEnd() && here() >= u'0' && here() <= u'9'; ++m_at)
            group = std::min(group * 10 + (here() - u'0'), largest);
        Escape escape{Escape::Reference, 0, {}};
        escape.group = group;
        return escape;
    }

    static Escape single(char16_t c) { return {Escape::Single, c, {}}; }
    static Escape characterClass(const CharSet& set) { return {Escape::Class, 0, set}; }
    static Escape boundary(Condition condition) { return {Escape::Boundary, 0, {}, condition}; }

    /// Reads at most `mostDigits` digits; without any the value is 0.
    char16_t parseNumber(int base, int mostDigits) {
        int value = 0;
        for (int i = 0; i < mostDigits && !atEnd(); ++i) {
            const int digit = digitValue(here());
            if (digit < 0 || digit >= base)
                break;
            value = value * base + digit;
            ++m_at;
        }
        return static_cast<char16_t>(value);
    }

    static int digitValue(char16_t c) {
        if (c >= u'0' && c <= u'9')
            return c - u'0';
        if (c >= u'a' && c <= u'f')
            return c - u'a' + 10;
        if (c >= u'A' && c <= u'F')
            return c - u'A' + 10;
        return -1;
    }

    std::optional<Count> parseCount(char16_t c) {
        switch (c) {
        case u'*':
            return Count{0, unlimited};
        case u'+':
            return Count{1, unlimited};
        case u'?':
            return Count{0, 1};
        default:
            break;
        }
        Count count{0, 0};
        if (!parseBound(count.least))
            return std::nullopt;
        count.most = count.least;
        if (skip(u',')) {
            count.most = unlimited;
            if (!parseBound(count.most))
                return std::nullopt;
        }
        if (!skip(u'}') || (count.most != unlimited && count.most < count.least))
            return std::nullopt;
        return count;
    }

    /// Reads a bound in braces; without a digit `bound` stays as it is.
    bool parseBound(int& bound) {
        if (atEnd() || here() < u'0' || here() > u'9')
            return true;
        bound = 0;
        while (!atEnd() && here() >= u'0' && here() <= u'9') {
            bound = std::min(bound * 10 + (here() - u'0'), largestCount + 1);
            ++m_at;
        }
        return bound <= largestCount;
    }

    /// Reads a character class after its "[". A "-" makes a range only between two single
    /// characters; the range may run backwards. A "]" in the first place is a member.
    bool parseClass() {
        const bool negated = skip(u'^');
        CharSet set;
        std::optional<char16_t> pending; // a single character that may become a range's start
        bool inRange = false;
        const auto flush = [&] {
            if (pending)
                insert(set, *pending, *pending);
            if (inRange)
                insert(set, u'-', u'-');
            pending.reset();
            inRange = false;
        };
        do {
            if (atEnd())
                return false;
            char16_t c = here();
            ++m_at;
            if (c == u'-' && pending && !inRange) {
                inRange = true;
                continue;
            }
            if (c == u'\\') {
                const std::optional<Escape> escape = parseEscape();
                if (!escape)
                    return false;
                if (escape->kind == Escape::Class) {
                    flush();
                    set |= escape->set;
                    continue;
                }
                if (escape->kind != Escape::Single)
                    return false;
                c = escape->character;
            }
            if (inRange) {
                insert(set, *pending, c);
                pending.reset();
                inRange = false;
            } else {
                flush();
                pending = c;
            }
        } while (!hereIs(u']'));
        ++m_at;
        flush();
        addClass(negated ? ~set : set);
        return true;
    }

    static void insert(CharSet& set, unsigned from, unsigned to) {
        if (from > to)
            std::swap(from, to);
        for (unsigned c = from; c <= to && c < set.size(); ++c)
            set.set(c);
    }

    const QString& m_text;
    qsizetype m_at = 0;
    std::vector<Group> m_open;
    std::unordered_map<CharSet, int> m_setIndex;
    Syntax m_result;
};

} // namespace

Syntax parse(const QString& pattern) {
    return Parser(pattern).parse();
}

const CharSet& wordCharacters() {
    static const CharSet set =
        setOf([](QChar c) { return c.isLetterOrNumber() || c.isMark() || c == u'_'; });
    return set;
}

} // namespace name_pattern
