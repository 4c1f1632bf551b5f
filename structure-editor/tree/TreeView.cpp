#include "TreeView.h"

#include "ChangeData.h"
#include "Changed.h"
#include "DataPoint.h"
#include "SelectionChanges.h"
#include "Space.h"
#include "TreeDelegate.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollBar>

namespace {

constexpr int dragInterval = 100; // ms between rows while the mouse rests outside

} // namespace

TreeView::TreeView(QWidget* parent, const char* name)
    : QTreeView(parent), m_rows(new TreeModel(this)), m_selection(*this) {
    if (name)
        setObjectName(QString::fromLatin1(name));
    setModel(m_rows);
    setItemDelegate(new TreeDelegate(this));
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setAutoScroll(false);
    setUniformRowHeights(true);
    setAnimated(false);
    setTextElideMode(Qt::ElideMiddle);
    setRootIsDecorated(false);
    setIndentation(20);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setContextMenuPolicy(Qt::PreventContextMenu);

    header()->setStretchLastSection(false);
    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(false);
    for (int column = 0; column != TreeModel::Columns; ++column)
        header()->resizeSection(column, header()->sectionSizeHint(column));

    connect(header(), &QHeaderView::sectionClicked, this, &TreeView::sortByClick);
    connect(header(), &QHeaderView::sectionResized, this, [this](int column) {
        if (!m_fitting)
            m_fixedWidth[static_cast<std::size_t>(column)] = true;
    });
    connect(m_rows, &TreeModel::openChanged, this,
            [this](TreeItem* row) { setExpanded(m_rows->indexOf(row), row->isOpen()); });
    connect(this, &QTreeView::expanded, this, &TreeView::Expansion);
    connect(this, &QTreeView::collapsed, this, &TreeView::rowClosed);
}

TreeView::~TreeView() = default;

TreeItem* TreeView::firstChild() const {
    return m_rows->root()->firstChild();
}

TreeItem* TreeView::itemAt(const QPoint& viewportPos) const {
    const int inTree = header()->sectionViewportPosition(TreeModel::Object);
    return TreeModel::itemOf(indexAt({inTree, viewportPos.y()}));
}

TreeItem* TreeView::currentItem() const {
    return TreeModel::itemOf(currentIndex());
}

void TreeView::setCurrentItem(TreeItem* row) {
    if (row)
        selectionModel()->setCurrentIndex(m_rows->indexOf(row), QItemSelectionModel::NoUpdate);
}

void TreeView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTreeView::currentChanged(current, previous);
    emit currentRowChanged(false);
}

void TreeView::showRow(TreeItem* row) {
    for (TreeItem* above = row->parent(); above; above = above->parent())
        above->setOpen(true);
    setCurrentItem(row);
    // Into the middle, with what is around it: longer names may yet bring a scroll bar below.
    const QRect rect = rectOf(row);
    if (!viewport()->rect().contains({0, rect.top(), 1, rect.height()}))
        verticalScrollBar()->setValue(verticalScrollBar()->value() + rect.center().y() -
                                      viewport()->rect().center().y());
    triggerUpdate();
}

void TreeView::clear() {
    clearForOthers();
    trimMemory();
}

void TreeView::clearForOthers() {
    forgetRows();
    m_rows->clear();
}

void TreeView::setAside() {
    forgetRows();
    m_rows->clear(true);
}

TreeItem* TreeView::showAgain(TAVIK::Compound* c) {
    return m_rows->root()->takeFromAside(c);
}

void TreeView::dropAside() {
    m_rows->root()->dropAside();
    trimMemory();
}

void TreeView::forgetRows() {
    endDrag();
    m_selection.forget();
    m_typeAhead.forget();
}

void TreeView::UpdateSelection() {
    TreeRoot* const root = m_rows->root();
    for (int i = 0; i != root->childCount(); ++i)
        root->child(i)->UpdateSelection();
    root->inStep = true;
    root->selectionTaken = TAVIK::SelectionChanges();
}

bool TreeView::isInStep() const {
    const TreeRoot* const root = m_rows->root();
    return root->inStep && root->selectionTaken == TAVIK::SelectionChanges();
}

void TreeView::triggerUpdate() {
    fitColumns();
    viewport()->update();
}

void TreeView::Expansion(const QModelIndex& index) {
    TreeItem* row = TreeModel::itemOf(index);
    row->setOpen(true);
    setCurrentItem(row);
}

void TreeView::rowClosed(const QModelIndex& index) {
    TreeItem* row = TreeModel::itemOf(index);
    row->setOpen(false);
    for (const TreeItem* above = currentItem(); above; above = above->parent())
        if (above == row)
            setCurrentItem(row);
}

void TreeView::sortByClick(int column) {
    const bool reverse = column == m_sortColumn && !m_rows->root()->descending;
    m_sortColumn = column;
    m_rows->sort(column, reverse ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void TreeView::mousePressEvent(QMouseEvent* event) {
    if (!event)
        return;
    event->accept();
    const QPoint pos = event->position().toPoint();
    endDrag();
    m_selection.forgetPress();
    m_ignoreDoubleClick = false;
    TreeItem* row = itemAt(pos);
    if (!row)
        pressBelowRows(event);
    else if (event->button() == Qt::RightButton)
        rightPress(row, pos);
    else if (event->button() == Qt::LeftButton)
        leftPress(row, pos, event->modifiers());
    else if (event->button() == Qt::MiddleButton && row != firstChild())
        emit killBranch(row);
}

void TreeView::pressBelowRows(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_drag = Drag::FromEmptyArea;
    if (m_selection.pressNothing(event->modifiers()))
        tellSelection();
}

void TreeView::leftPress(TreeItem* row, const QPoint& pos, Qt::KeyboardModifiers modifiers) {
    if (isOnMark(row, pos)) {
        m_ignoreDoubleClick = true;
        m_selection.pressMark(row, modifiers);
        row->setOpen(!row->isOpen());
        return;
    }
    m_drag = Drag::FromRow;
    TreeItem* const current = currentItem();
    setCurrentItem(row);
    if (m_selection.press(row, current, modifiers))
        tellSelection();
}

// Whether `pos` is where the branch mark of `row` stands: the last step of its indentation.
bool TreeView::isOnMark(const TreeItem* row, const QPoint& pos) const {
    if (header()->logicalIndexAt(pos.x()) != TreeModel::Object || row->childCount() == 0)
        return false;
    const int x = pos.x() - header()->sectionViewportPosition(TreeModel::Object);
    const int end = indentation() * level(row);
    return x >= end - indentation() && x < end;
}

// Without an originator, so that the window is told like all others and refreshes the tree.
void TreeView::changeItem(TAVIK::Compound* item, const char* deed,
                          void (*change)(TAVIK::Compound* item)) {
    changeData(DataPoint<TAVIK::Space>(nullptr, TAVIK::Space::instance(), deed),
               [&](DataPointBase& guard) {
                   setLabel(guard, deed, TAVIK::Changed(*item));
                   change(item);
               });
}

void TreeView::rightPress(TreeItem* row, const QPoint& pos) {
    const int x = pos.x() + header()->offset();
    TAVIK::Compound* const item = row->compound();
    setCurrentItem(row);
    if (!item)
        return;
    switch (header()->logicalIndexAt(pos.x())) {
    case TreeModel::Object:
        if (indentation() * level(row) + itemMargin() >= x)
            return;
        triggerUpdate();
        item->ShowMenu(); // Row and item, and the view itself, may be gone now.
        return;
    case TreeModel::Show:
        changeItem(item, item->IsVisible() ? "Hide" : "Show",
                   [](TAVIK::Compound* c) { c->ToggleVisible(); });
        return;
    case TreeModel::Select:
        changeItem(item, item->IsSelected() ? "Unselect" : "Select",
                   [](TAVIK::Compound* c) { c->ToggleSelected(); });
        return;
    case TreeModel::Partial:
        changeItem(item, item->HasSelected() ? "Unselect" : "Select",
                   [](TAVIK::Compound* c) { c->SetSelected(!c->HasSelected()); });
        return;
    default:
        return;
    }
}

void TreeView::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
    if (m_drag == Drag::None || !(event->buttons() & Qt::LeftButton))
        return;
    m_dragPos = event->position().toPoint();
    const bool outside = m_dragPos.y() < 0 || m_dragPos.y() >= viewport()->height();
    if (!outside)
        m_dragTimer.stop();
    else if (!m_dragTimer.isActive())
        m_dragTimer.start(dragInterval, this);
    dragTo(m_dragPos);
}

void TreeView::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_dragTimer.timerId())
        dragTo(m_dragPos);
    else
        QTreeView::timerEvent(event);
}

void TreeView::dragTo(const QPoint& pos) {
    TreeItem* const current = currentItem();
    if (!current)
        return;
    // Outside of the view the drag advances one row at a time, after the previous row is on screen.
    const int y = std::clamp(pos.y(), -1, viewport()->height());
    TreeItem* row = itemAt({0, y});
    if (y < 0)
        row = verticalScrollBar()->value() > 0 ? row : firstChild();
    else if (!row && m_drag == Drag::FromRow)
        row = lastShown();
    if (!row || row == current)
        return;
    // Each row is announced before the next one is reached. Listeners may do anything, but rows are
    // deleted only after the end of the drag.
    const QPointer<TreeView> view(this);
    for (TreeItem* each : crossed(current, row)) {
        const bool selects = m_selection.extendTo(each, currentItem());
        setCurrentItem(each);
        scrollToRow(each);
        if (selects)
            tellSelection();
        if (!view || m_drag == Drag::None)
            return;
    }
}

// The rows that the mouse crosses on its way, including `to` but not `from`. If the drag starts off
// screen, only `to`.
std::vector<TreeItem*> TreeView::crossed(TreeItem* from, TreeItem* to) const {
    const QRect rect = rectOf(from);
    if (!rect.isValid() || rect.bottom() < 0 || rect.top() >= viewport()->height())
        return {to};
    std::vector<TreeItem*> rows;
    const bool down = isBefore(from, to);
    while (from != to) {
        from = down ? from->itemBelow() : from->itemAbove();
        rows.push_back(from);
    }
    return rows;
}

void TreeView::endDrag() {
    m_drag = Drag::None;
    m_dragTimer.stop();
}

void TreeView::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    endDrag();
    if (m_selection.release(itemAt(event->position().toPoint())))
        tellSelection();
}

void TreeView::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
    endDrag();
    if (event->button() != Qt::LeftButton || m_ignoreDoubleClick)
        return;
    TreeItem* row = itemAt(event->position().toPoint());
    if (row && (row->isOpen() || row->childCount() > 0))
        row->setOpen(!row->isOpen());
    if (row)
        emit currentRowChanged(true);
}

// The last step of every gesture: listeners may delete rows, so none may be used afterwards.
void TreeView::tellSelection() {
    viewport()->update();
    emit selectionChanged();
}
