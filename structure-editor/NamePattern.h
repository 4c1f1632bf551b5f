// Name patterns of the set algebra: which atoms a pattern means, by their qualified names.
#pragma once

#include "Compound.h"

#include <QRegExp>
#include <QString>

/// The pattern of three regular-expression fragments, one for each component of an atom's name
/// below its top-level item. The fragments are taken as they stand.
QString namePattern(const QString& chain, const QString& residue, const QString& atom);

/// The expression that `pattern` means below `root`. The root's own name stands in it as it is: a
/// character that means something in an expression keeps that meaning.
QRegExp nameExpression(const TAVIK::Compound* root, const QString& pattern);

// An atom matches when a match begins at the first character of its qualified name; an expression
// that is not valid matches nothing. All three return true.

/// Selects an atom that matches.
bool SelectIf(TAVIK::Compound* atom, const QRegExp& re);
/// Unselects an atom that matches.
bool UnSelectIf(TAVIK::Compound* atom, const QRegExp& re);
/// Unselects an atom that does not match.
bool UnSelectIfNot(TAVIK::Compound* atom, const QRegExp& re);
