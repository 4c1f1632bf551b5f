// Which qualified names does a name pattern match? Gives for every pattern and name what one
// QRegExp match gives, many times faster, and in bounded time and memory.
#pragma once

#include "PatternAutomaton.h"
#include "PatternCost.h"

#include <QRegExp>
#include <QString>

#include <optional>
#include <string>
#include <string_view>

/// A name matches when the expression, as a case-sensitive QRegExp, has its first match in the name
/// at the first character. An expression that QRegExp calls invalid matches nothing.
///
/// An expression that cannot be answered within bounds is cut off at the first name that shows it.
/// Answers mean nothing then, those already given included, so that a caller asks for all names
/// before it acts on any:
///
///     for (name : names) found.push_back(pattern.matches(name));
///     if (!pattern.cutOff().isEmpty()) { log(pattern.cutOff()); return; }
class NamePattern {
public:
    /// What one pattern may use. Tests make it small.
    struct Limits {
        /// Size of the expression with its repetitions written out.
        double instructions = 5e5;
        name_pattern::Automaton::Bounds automaton;
        /// Steps of a single QRegExp match, which cannot be interrupted; a step is a nanosecond or
        /// less, and most matches take few of those that are foretold.
        double matchSteps = 2e9;
        /// Time in QRegExp for all names: a start, and what every name adds.
        double seconds = 2;
        double secondsPerName = 20e-6;
    };

    explicit NamePattern(const QString& expression);
    NamePattern(const QString& expression, const Limits& limits);

    /// Whether QRegExp takes the expression for valid; true where that is not known because it is
    /// cut off.
    bool isValid() const { return m_valid; }
    /// Whether the Latin-1 name matches; false when the expression is invalid or cut off.
    bool matches(std::string_view name);

    // Many names that begin alike: their beginning is read once.

    /// Sets how the next names begin.
    void setBeginning(std::string_view beginning);
    /// The answer for all names that begin so, where that is clear already.
    std::optional<bool> answerForAll() const;
    /// Whether the name that has `rest` behind the beginning matches.
    bool matchesRest(std::string_view rest);

    /// Why the expression is cut off, in one line for the log; empty while all answers hold.
    const QString& cutOff() const { return m_cutOff; }
    /// Whether names are answered without QRegExp.
    bool isFast() const { return m_automaton.has_value(); }

private:
    bool isAnswered() const { return !m_valid || !m_cutOff.isEmpty(); }
    void checkWork();
    bool matchesSlowly(const std::string& name);
    void cutOff(const QString& why);

    QString m_expression;
    Limits m_limits;
    bool m_valid = true;
    QString m_cutOff;
    std::optional<name_pattern::Automaton> m_automaton;

    // For what the automaton does not know.
    std::string m_beginning;
    QString m_refusal; ///< why no name can be answered that is long enough to match
    std::optional<QRegExp> m_regExp;
    name_pattern::Cost m_cost;
    double m_secondsLeft = 0;
};
