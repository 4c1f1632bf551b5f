// The set algebra on the selection: set A is what is selected, set B the atoms whose qualified
// names an expression matches. As predicates on one atom, and for all atoms of a root at once.
#pragma once

#include "Changed.h"
#include "Compound.h"

#include <QRegExp>
#include <QString>

/// The pattern of three regular-expression fragments, one for each component of an atom's name
/// below its top-level item. The fragments are not escaped.
QString namePattern(const QString& chain, const QString& residue, const QString& atom);

/// The expression that `pattern` means below `root`. The root's own name is not escaped: special
/// characters in it keep their meaning.
QString nameExpression(const TAVIK::Compound* root, const QString& pattern);

// An atom matches when the first match in its qualified name begins at the first character; an
// expression that is not valid matches nothing. All three return true.

/// Selects an atom that matches.
bool SelectIf(TAVIK::Compound* atom, QRegExp re);
/// Unselects an atom that matches.
bool UnSelectIf(TAVIK::Compound* atom, QRegExp re);
/// Unselects an atom that does not match.
bool UnSelectIfNot(TAVIK::Compound* atom, QRegExp re);

enum class SetOperation {
    Union,        ///< A | B: SelectIf for every atom
    Intersection, ///< A & B: UnSelectIfNot for the selected atoms
    Difference    ///< A - B: UnSelectIf for every atom
};

/// Does to the atoms at or below `root` what the operation's predicate does to each of them, many
/// times faster. The caller holds a change guard. An expression that cannot be answered in bounded
/// time and memory changes nothing: the result is a line for the log then, and empty otherwise.
/// `changed`, unless it is null, is given the atoms that the operation selects or unselects.
QString applySetOperation(TAVIK::Compound* root, SetOperation operation, const QString& expression,
                          TAVIK::Changed* changed = nullptr);
