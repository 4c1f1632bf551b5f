// An entry of the list of top-level items: three characters of marks, and the item's name.
#pragma once

#include <QListWidgetItem>
#include <QString>

namespace TAVIK {
class Compound;
}

/// An entry that describes its marks in words for screen readers.
class ListEntry : public QListWidgetItem {
public:
    /// Characters before the name: whether the item is hidden, what of it is selected, a blank.
    static constexpr qsizetype markers = 3;

    /// The text of the entry of `item`; empty for null.
    static QString textOf(const TAVIK::Compound* item);
    /// The name in the text of an entry.
    static QString nameIn(const QString& text) { return text.mid(markers); }

    using QListWidgetItem::QListWidgetItem;

    QVariant data(int role) const override;
};
