#include "ListEntry.h"

#include "Compound.h"
#include "tree/CellText.h"

QString ListEntry::textOf(const TAVIK::Compound* item) {
    if (!item)
        return {};
    const char* const shown = item->IsVisible() ? " " : "O";
    const char* const selected = item->IsSelected() ? "X " : item->HasSelected() ? "/ " : "_ ";
    return QLatin1String(shown) + QLatin1String(selected) + QString::fromLatin1(item->GetName());
}

QVariant ListEntry::data(int role) const {
    if (role != Qt::AccessibleTextRole)
        return QListWidgetItem::data(role);
    const QString whole = text();
    if (whole.size() < markers)
        return whole;
    const bool isSelected = whole.at(1) == u'X';
    return QVariant(
        nameIn(whole) + QStringLiteral(", ") +
        spokenState(whole.at(0) != u'O', isSelected, isSelected || whole.at(1) == u'/'));
}
