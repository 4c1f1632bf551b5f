#include "NamePredicates.h"

#include "MatchingAtoms.h"

namespace {

QString qualifiedName(const TAVIK::Compound* item) {
    const std::string name = item->GetFQName();
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

/// An operation acts on an atom if the answer of the match equals `actsOn`, and selects or
/// unselects it.
struct Rule {
    bool actsOn;
    bool selects;
    bool allAtoms; ///< false: the selected ones only
};

constexpr Rule ruleOf(SetOperation operation) {
    switch (operation) {
    case SetOperation::Union:
        return {true, true, true};
    case SetOperation::Difference:
        return {true, false, true};
    case SetOperation::Intersection:
        break;
    }
    return {false, false, false};
}

bool applyPlainly(SetOperation operation, TAVIK::Compound* atom, const QRegExp& re) {
    const Rule rule = ruleOf(operation);
    const bool isMatch = re.indexIn(qualifiedName(atom), 0) == 0;
    if (isMatch == rule.actsOn)
        atom->SetSelected(rule.selects);
    return true;
}

} // namespace

QString namePattern(const QString& chain, const QString& residue, const QString& atom) {
    return u'/' + chain + QStringLiteral("/Groups/") + residue + u'/' + atom + u'$';
}

QString nameExpression(const TAVIK::Compound* root, const QString& pattern) {
    return qualifiedName(root) + pattern;
}

// Passed by value, because predicates are bound to an expression.
// NOLINTBEGIN(performance-unnecessary-value-param)
bool SelectIf(TAVIK::Compound* atom, QRegExp re) {
    return applyPlainly(SetOperation::Union, atom, re);
}

bool UnSelectIf(TAVIK::Compound* atom, QRegExp re) {
    return applyPlainly(SetOperation::Difference, atom, re);
}

bool UnSelectIfNot(TAVIK::Compound* atom, QRegExp re) {
    return applyPlainly(SetOperation::Intersection, atom, re);
}
// NOLINTEND(performance-unnecessary-value-param)

QString applySetOperation(TAVIK::Compound* root, SetOperation operation, const QString& expression,
                          TAVIK::Changed* changed) {
    const Rule rule = ruleOf(operation);
    NamePattern pattern(expression);
    MatchingAtoms atoms(pattern, rule.actsOn, rule.allAtoms);
    const std::vector<TAVIK::Compound*>& found = atoms.below(root);
    // All answers come before the first change: a pattern that is cut off changes nothing.
    if (!pattern.cutOff().isEmpty())
        return pattern.cutOff();
    for (TAVIK::Compound* atom : found)
        atom->SetSelected(rule.selects);
    if (changed)
        *changed = {"atom", found};
    return {};
}
