// The look of the structure tree: branch marks, widths of columns, scrolling.
#include "TreeView.h"

#include <QHeaderView>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOption>

// Each step of the indentation is a cell of its own: the last one before the row holds its branch
// mark, the others the lines that run down to later siblings of the rows above.
void TreeView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
    TreeItem* const row = TreeModel::itemOf(index);
    row->setupOnce();
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    int x = rect.left() + indentation() * level(row);
    for (const TreeItem* step = row; step && x > rect.left(); step = step->parent()) {
        x -= indentation();
        option.rect = QRect(x, rect.top(), indentation(), rect.height());
        option.state.setFlag(QStyle::State_Item, step == row);
        option.state.setFlag(QStyle::State_Children, step == row && row->isExpandable());
        option.state.setFlag(QStyle::State_Open, step == row && row->isOpen());
        option.state.setFlag(QStyle::State_Sibling, step->nextSibling() != nullptr);
        style()->drawPrimitive(QStyle::PE_IndicatorBranch, &option, painter, this);
    }
}

void TreeView::scrollContentsBy(int dx, int dy) {
    QTreeView::scrollContentsBy(dx, dy);
    if (dy != 0)
        fitColumns();
}

void TreeView::updateGeometries() {
    QTreeView::updateGeometries();
    fitColumns();
}

// The width of a column unless the user sets it. All but the names are short.
int TreeView::automaticWidth(int column) const {
    return std::max(header()->sectionSizeHint(column),
                    m_wantedWidth[static_cast<std::size_t>(column)]);
}

int TreeView::automaticWidthBesideNames() const {
    int width = 0;
    for (int column = 0; column != TreeModel::Columns; ++column)
        if (column != TreeModel::Object)
            width += automaticWidth(column);
    return width;
}

// The width of the names' column if an atom is called `name`.
int TreeView::widthOfNames(const QString& name) const {
    // Below the entry: chain, groups, residue, group, atom.
    constexpr int levels = 5;
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    return itemMargin() + levels * indentation() + fontMetrics().horizontalAdvance(name) +
           2 * margin;
}

int TreeView::usualWidth() const {
    return 2 * frameWidth() + verticalScrollBar()->sizeHint().width() +
           automaticWidthBesideNames() + widthOfNames(QStringLiteral("HD11"));
}

// Columns grow with their content on screen, and never shrink. Names are elided rather than push
// other columns out of sight; only if a row would be left without a name, the other columns have to
// be scrolled to. A width that the user chose stays. Rows off screen are not measured: there may be
// millions.
void TreeView::fitColumns() {
    if (m_fitting)
        return;
    const QScopedValueRollback fitting(m_fitting, true);
    // Measuring is slow, and most texts repeat, so that widths are cached. Not in a QHash, which
    // ends the program when memory runs out.
    constexpr std::size_t manyTexts = 10'000;
    if (m_measuredFont != font() || m_measuredStyle != style() || m_widths.size() > manyTexts)
        m_widths.clear();
    if (m_measuredFont != font() || m_measuredStyle != style())
        m_wantedWidth = {};
    m_measuredFont = font();
    m_measuredStyle = style();
    const TreeItem* row = itemAt({0, 0});
    const int height = row ? rectOf(row).height() : 0;
    for (int y = 0; row && height > 0 && y < viewport()->height() + height; y += height) {
        for (int column = 0; column != TreeModel::Columns; ++column) {
            int& width = m_wantedWidth[static_cast<std::size_t>(column)];
            const int before = column == TreeModel::Object ? indentation() * level(row) : 0;
            const QString text = row->text(column);
            auto measured = m_widths.find(text);
            if (measured == m_widths.end()) {
                const int measuredNow = sizeHintForIndex(m_rows->indexOf(row, column)).width();
                measured = m_widths.emplace(text, measuredNow).first;
            }
            width = std::max(width, before + itemMargin() + measured->second);
        }
        row = row->itemBelow();
    }
    const int room = viewport()->width() - automaticWidthBesideNames();
    for (int column = 0; column != TreeModel::Columns; ++column) {
        int width = automaticWidth(column);
        if (column == TreeModel::Object)
            width = std::min(width, std::max(room, widthOfNames(QStringLiteral("CA"))));
        if (!m_fixedWidth[static_cast<std::size_t>(column)] && width != columnWidth(column))
            setColumnWidth(column, width);
    }
}

// Scrolls up or down only as far as necessary to show all of `row`.
void TreeView::scrollToRow(const TreeItem* row) {
    const QRect rect = rectOf(row);
    if (!rect.isValid())
        return;
    const int beyond = rect.bottom() + 1 - viewport()->height();
    QScrollBar* const bar = verticalScrollBar();
    if (rect.top() < 0)
        bar->setValue(bar->value() + rect.top());
    else if (beyond > 0)
        bar->setValue(bar->value() + std::min(beyond, rect.top()));
}
