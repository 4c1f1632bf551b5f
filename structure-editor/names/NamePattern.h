// Matches qualified names with a name pattern. The answers are those of QRegExp for every pattern
// and name, many times faster, and in bounded time and memory.
#pragma once

#include "PatternAutomaton.h"
#include "PatternCost.h"

#include <QRegExp>
#include <QString>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A name matches when the expression, as a case-sensitive QRegExp, has its first match in the name
/// at the first character. An expression that QRegExp calls invalid matches nothing.
///
/// An expression that exceeds the limits is cut off at the first name that shows it. Then no answer
/// is valid, not even the earlier ones, so a caller asks for all names before it acts on any:
///
///     for (name : names) found.push_back(pattern.matches(name));
///     if (!pattern.cutOff().isEmpty()) { log(pattern.cutOff()); return; }
class NamePattern {
public:
    /// The resources that one pattern may use. Tests set low limits.
    struct Limits {
        /// Size of the expression with its repetitions unrolled.
        double instructions = 5e5;
        name_pattern::Automaton::Bounds automaton;
        /// Estimated steps of a single QRegExp match, which cannot be interrupted. A step is a
        /// nanosecond or less, and most matches take far fewer steps than estimated.
        double matchSteps = 2e9;
        /// Time in QRegExp for all names: an initial budget, and what every name adds.
        double seconds = 2;
        double secondsPerName = 20e-6;
    };

    explicit NamePattern(const QString& expression);
    NamePattern(const QString& expression, const Limits& limits);

    /// Whether QRegExp accepts the expression; true if that is unknown because the expression is
    /// cut off.
    bool isValid() const { return m_valid; }
    /// Whether the Latin-1 name matches; false when the expression is invalid or cut off.
    bool matches(std::string_view name);

    // For many names with a common prefix, which is read once.

    /// Appends a part to the prefix of the next names.
    void addPart(std::string_view part);
    /// Takes the last part off the prefix.
    void removePart();
    /// The answer for all names with this prefix, if the prefix decides it.
    std::optional<bool> answerForAll();
    /// Whether the name that consists of the prefix and `rest` matches.
    bool matchesRest(std::string_view rest);

    /// Why the expression is cut off, in one line for the log; empty while all answers are valid.
    const QString& cutOff() const { return m_cutOff; }
    /// Whether names are answered without QRegExp.
    bool isFast() const { return m_automaton.has_value(); }

private:
    bool isAnswered() const { return !m_valid || !m_cutOff.isEmpty(); }
    void checkWork();
    const name_pattern::Automaton::Place& place();
    bool matchesSlowly(const std::string& name);
    void cutOff(const QString& why);

    QString m_expression;
    Limits m_limits;
    bool m_valid = true;
    QString m_cutOff;
    std::optional<name_pattern::Automaton> m_automaton;

    /// Where a part of the prefix begins.
    struct Part {
        std::size_t begin;
        name_pattern::Automaton::Place place;
    };
    std::string m_prefix;
    std::vector<Part> m_parts;
    name_pattern::Automaton::Place m_place; ///< after the prefix

    // For patterns that the automaton does not support, or that are too large for it.
    QString m_refusal; ///< why names that are long enough to match get no answer
    std::optional<QRegExp> m_regExp;
    name_pattern::Cost m_cost;
    double m_secondsLeft = 0;
};
