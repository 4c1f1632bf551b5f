#include "CompareRows.h"

#include "Compound.h"
#include "tree/TreeItem.h"
#include "tree/TreeModel.h"
#include "tree/TreeView.h"

#include <QColor>

namespace plain {

namespace {

QString yesNo(bool yes) {
    return QLatin1String(yes ? "Yes" : "No");
}

QStringList cellsOf(const Item& item) {
    return {QString::fromLatin1(item.name), yesNo(Host::isVisible(item)),
            yesNo(Host::isSelected(item)),
            item.kind == Kind::Atom ? QString::number(item.model) : yesNo(Host::hasSelected(item))};
}

void compareRow(Comparison& all, const Row& row, const TreeView& view, const QModelIndex& index,
                bool descending) {
    if (all.isFull())
        return;
    const TreeItem* const real = TreeModel::itemOf(index);
    all.lookAt("row of", row.item);
    all.same("item", row.item->id, real->compound()->GetId());
    QStringList cells;
    for (int column = 0; column != 4; ++column)
        cells << index.siblingAtColumn(column).data().toString();
    all.same("cells", cellsOf(*row.item), cells);
    static const Qt::GlobalColor byDepth[] = {Qt::darkMagenta, Qt::magenta, Qt::darkGreen,
                                              Qt::darkBlue, Qt::red};
    const auto depth = std::size_t(row.depth());
    const QVariant textColor = index.data(Qt::ForegroundRole);
    all.same("colour of the text", depth < std::size(byDepth) ? QColor(byDepth[depth]).rgba() : 0U,
             textColor.isNull() ? 0U : textColor.value<QColor>().rgba());
    all.same("colour of the cell", row.item->color | 0xff000000U,
             index.siblingAtColumn(1).data(Qt::BackgroundRole).value<QColor>().rgba());
    all.same("selected", row.selected, real->isSelected());
    all.same("changed by the user", row.dirty, real->isDirty());
    all.same("open", row.open, real->isOpen());
    all.same("open in the view", row.open, view.isExpanded(index));
    const int count = index.model()->rowCount(index);
    all.same("number of rows", int(row.children.size()), count);
    if (count == int(row.children.size()))
        for (int i = 0; i != count; ++i)
            compareRow(all, *row.children[std::size_t(descending ? count - 1 - i : i)], view,
                       index.model()->index(i, 0, index), descending);
}

} // namespace

void compareTree(Comparison& all, const Tree& tree, const TreeView& view) {
    const QAbstractItemModel& rows = *view.model();
    all.same("number of top rows", tree.top() ? 1 : 0, rows.rowCount());
    if (!tree.top() || rows.rowCount() != 1)
        return;
    compareRow(all, *tree.top(), view, rows.index(0, 0), tree.descending);
    all.lookAt("", nullptr);
    const TreeItem* const current = view.currentItem();
    all.same("current row", tree.current ? tree.current->item->id : 0,
             current ? current->compound()->GetId() : 0);
}

} // namespace plain
