#include "NamePattern.h"

namespace {

QString qualifiedName(const TAVIK::Compound* item) {
    return QString::fromLatin1(item->GetFQName());
}

bool matches(const TAVIK::Compound* atom, const QRegExp& re) {
    return re.indexIn(qualifiedName(atom), 0) == 0;
}

} // namespace

QString namePattern(const QString& chain, const QString& residue, const QString& atom) {
    return u'/' + chain + QStringLiteral("/Groups/") + residue + u'/' + atom + u'$';
}

QRegExp nameExpression(const TAVIK::Compound* root, const QString& pattern) {
    return QRegExp(qualifiedName(root) + pattern, Qt::CaseSensitive, QRegExp::RegExp);
}

bool SelectIf(TAVIK::Compound* atom, const QRegExp& re) {
    if (matches(atom, re))
        atom->SetSelected(true);
    return true;
}

bool UnSelectIf(TAVIK::Compound* atom, const QRegExp& re) {
    if (matches(atom, re))
        atom->SetSelected(false);
    return true;
}

bool UnSelectIfNot(TAVIK::Compound* atom, const QRegExp& re) {
    if (!matches(atom, re))
        atom->SetSelected(false);
    return true;
}
