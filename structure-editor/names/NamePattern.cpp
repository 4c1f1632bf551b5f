#include "NamePattern.h"

#include <QElapsedTimer>

using namespace name_pattern;

namespace {

QString latin1(const std::string& text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

/// The expression in quotes, as a part of a log line: shortened, and without line breaks.
QString quoted(const QString& expression) {
    constexpr qsizetype most = 60;
    QString text = expression.left(most);
    for (QChar& c : text) {
        if (!c.isPrint())
            c = u'?';
    }
    if (expression.size() > most)
        text += QStringLiteral("...");
    return u'"' + text + u'"';
}

} // namespace

NamePattern::NamePattern(const QString& expression) : NamePattern(expression, Limits()) {}

NamePattern::NamePattern(const QString& expression, const Limits& limits)
    : m_expression(expression), m_limits(limits), m_secondsLeft(limits.seconds) {
    const Syntax syntax = parse(expression);
    if (!syntax.wellFormed) {
        m_valid = false;
        return;
    }
    m_cost = estimate(syntax);
    if (m_cost.tooManyLookAheads) {
        m_valid = false;
        return;
    }
    // QRegExp decides what is valid, wherever it can be run on the expression.
    if (m_cost.compilable) {
        m_regExp.emplace(expression);
        if (!m_regExp->isValid()) {
            m_valid = false;
            return;
        }
    }
    const bool isKnown = !syntax.hasBackReferences && !syntax.hasLookAheads;
    if (isKnown && m_cost.instructions <= m_limits.instructions) {
        m_automaton.emplace(translate(syntax), std::make_shared<Alphabet>(syntax),
                            m_limits.automaton);
        m_regExp.reset();
    } else if (!m_cost.compilable && isKnown) {
        m_refusal = QStringLiteral("with its repetitions written out it is longer than %1 "
                                   "characters")
                        .arg(m_limits.instructions, 0, 'f', 0);
    } else if (!m_cost.compilable) {
        m_refusal = QStringLiteral("it is too large for look-aheads or back-references");
    }
}

bool NamePattern::matches(std::string_view name) {
    if (isAnswered())
        return false;
    if (!m_automaton)
        return matchesSlowly(std::string(name));
    const bool answer = m_automaton->matches(name);
    checkWork();
    return answer;
}

void NamePattern::addPart(std::string_view part) {
    m_parts.push_back({m_prefix.size(), m_place});
    m_prefix += part;
    if (m_automaton && !isAnswered()) {
        m_place = m_automaton->isKnown(m_place) ? m_automaton->read(m_place, part)
                                                : m_automaton->read(m_automaton->start(), m_prefix);
        checkWork();
    }
}

void NamePattern::removePart() {
    m_prefix.resize(m_parts.back().begin);
    m_place = m_parts.back().place;
    m_parts.pop_back();
}

/// The place after the prefix, which is read again if the automaton has flushed its states.
const Automaton::Place& NamePattern::place() {
    if (!m_automaton->isKnown(m_place)) [[unlikely]]
        m_place = m_automaton->read(m_automaton->start(), m_prefix);
    return m_place;
}

std::optional<bool> NamePattern::answerForAll() {
    if (isAnswered())
        return false;
    return m_automaton ? Automaton::answerForAll(place()) : std::nullopt;
}

bool NamePattern::matchesRest(std::string_view rest) {
    if (isAnswered())
        return false;
    if (!m_automaton)
        return matchesSlowly(m_prefix + std::string(rest));
    const bool answer = m_automaton->matchesRest(place(), rest);
    checkWork();
    return answer;
}

void NamePattern::checkWork() {
    if (m_automaton->isExhausted())
        cutOff(QStringLiteral("its repetitions and alternatives leave too many possibilities"));
}

bool NamePattern::matchesSlowly(const std::string& name) {
    if (m_cost.shortest > static_cast<double>(name.size()))
        return false;
    if (!m_refusal.isEmpty()) {
        cutOff(m_refusal);
        return false;
    }
    const auto tooSlow = QStringLiteral("its look-aheads or back-references take too long");
    if (!(m_cost.matchSteps(name.size()) <= m_limits.matchSteps)) {
        cutOff(tooSlow);
        return false;
    }
    QElapsedTimer timer;
    timer.start();
    const bool answer = m_regExp->indexIn(latin1(name), 0) == 0;
    m_secondsLeft += m_limits.secondsPerName - static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    if (m_secondsLeft < 0)
        cutOff(tooSlow);
    return answer;
}

void NamePattern::cutOff(const QString& why) {
    m_cutOff = QStringLiteral("Name pattern %1 cut off: %2").arg(quoted(m_expression), why);
}
