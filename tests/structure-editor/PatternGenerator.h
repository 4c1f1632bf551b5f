// Makes name patterns and names from a seed: sound ones by a grammar of the pattern language,
// broken ones by damaging those.
#pragma once

#include <QString>
#include <QStringList>

#include <random>
#include <string>
#include <vector>

class PatternGenerator {
public:
    explicit PatternGenerator(unsigned seed) : m_random(seed) {}

    /// The text of one field: mostly a fragment that stands alone.
    QString field();
    /// A root's qualified name, often with characters that mean something in patterns.
    std::string rootName();
    /// An expression as the panel composes it for this root, fields that belong together included.
    QString expressionFor(const std::string& rootName);
    /// Names of atoms below a root, and names that only look like it.
    std::vector<std::string> namesBelow(const std::string& rootName, int count);

    /// An expression over few characters, so that it often matches some shortName().
    QString shortExpression();
    std::string shortName();

private:
    using Pool = const char16_t*;

    unsigned below(unsigned end) { return m_random() % end; }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <std::size_t n> QString pick(const char16_t* const (&list)[n]) {
        return QString::fromUtf16(list[below(n)]);
    }
    QString choice(int depth);
    QString sequence(int depth);
    QString atom(int depth);
    QString literal();
    QString characterClass();
    QString quantifier();
    QString damage(QString text);
    QString anyText();

    std::mt19937 m_random;
    bool m_short = false;
    unsigned m_assertions = 0; ///< in percent of the atoms, beside the usual ones
};
