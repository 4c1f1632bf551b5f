// The structure tree: the item that the window shows, with all that it holds, in four columns.
#pragma once

#include "TreeItemIterator.h"
#include "TreeModel.h"
#include "TreeSelection.h"
#include "TypeAhead.h"

#include <QBasicTimer>
#include <QFont>
#include <QString>
#include <QTreeView>

#include <array>
#include <unordered_map>
#include <vector>

/// A tree of TreeItem rows.
///
/// Which rows are selected is a mark in the rows, and never in Qt's selection model, which has only
/// the current row. selectionChanged() announces the user's changes once a gesture; the listener
/// hands them to the host.
///
/// The right button changes what the cell under it shows, or opens the host's menu, as a key does
/// for the current row; the middle button asks to delete a row. All these are changes of the host's
/// data, of which the view learns when it is told to update.
class TreeView : public QTreeView {
    Q_OBJECT
public:
    /// `name`, which may be null, becomes the object name.
    explicit TreeView(QWidget* parent = nullptr, const char* name = nullptr);
    ~TreeView() override;

    /// The first top-level row; null in an empty tree.
    TreeItem* firstChild() const;
    /// The row at the height of `viewportPos`, also right of the last column; null below the rows.
    TreeItem* itemAt(const QPoint& viewportPos) const;
    TreeItem* currentItem() const;
    /// Makes `row` current, and changes neither the selection nor its anchor nor the scroll
    /// position. Null does nothing.
    void setCurrentItem(TreeItem* row);
    /// Opens the rows above `row`, makes it current, and scrolls it into the middle unless it is in
    /// sight; the selection stays.
    void showRow(TreeItem* row);
    /// Deletes all rows, and frees their memory. Emits nothing.
    void clear();
    /// clear(), but keeps the memory for rows that follow at once; trimMemory() then frees what is
    /// left of it.
    void clearForOthers();
    static void trimMemory() { TreeRoot::trimMemory(); }
    /// clear(), for showAgain() of the same item. Meanwhile items may be destroyed but not made.
    void setAside();
    /// Shows the row of `c`, and those below it, if they were set aside: like new rows, in much
    /// less time than making them. Returns null otherwise.
    TreeItem* showAgain(TAVIK::Compound* c);
    /// Deletes the rows that were set aside, and frees their memory.
    void dropAside();
    /// Copies the host's selection to all rows.
    void UpdateSelection();
    /// Whether neither the rows nor the host's selection have changed since UpdateSelection(), so
    /// that the marks of the rows are the answers of their items.
    bool isInStep() const;
    /// Margin to the left of a column's content, in pixels.
    int itemMargin() const { return 1; }
    /// The width in pixels that shows all columns, and short names at the depth of an atom.
    int usualWidth() const;

    TreeModel* rows() const { return m_rows; }

    /// Repaints the host's present state.
    Q_SLOT virtual void triggerUpdate();
    /// Makes a row that was opened the current one.
    Q_SLOT void Expansion(const QModelIndex& index);

signals:
    /// The user selected or unselected rows; see TreeItem::isDirty().
    void selectionChanged();
    /// Another row is current, or the user points to the one that is: by a double click, or Enter.
    void currentRowChanged(bool isPointedTo);
    /// The user asks to delete the item of a row. The row may be gone after the signal.
    void killBranch(TreeItem* item);

protected:
    using QTreeView::selectionChanged;

    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void timerEvent(QTimerEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

private:
    /// Where a drag continues while the mouse rests outside.
    enum class Drag { None, FromRow, FromEmptyArea };

    void leftPress(TreeItem* row, const QPoint& pos, Qt::KeyboardModifiers modifiers);
    void rightPress(TreeItem* row, const QPoint& pos);
    static void changeItem(TAVIK::Compound* item, const char* deed,
                           void (*change)(TAVIK::Compound* item));
    void pressBelowRows(QMouseEvent* event);
    void dragTo(const QPoint& pos);
    std::vector<TreeItem*> crossed(TreeItem* from, TreeItem* to) const;
    void endDrag();
    void forgetRows();
    bool isOnMark(const TreeItem* row, const QPoint& pos) const;
    int level(const TreeItem* row) const { return row->depth() + (rootIsDecorated() ? 1 : 0); }
    void rowClosed(const QModelIndex& index);
    void sortByClick(int column);

    bool goOnTyping(TreeItem* row, const QKeyEvent& event);
    void showMenuByKey(TreeItem* row);
    bool openByKey(TreeItem* row, int key);
    TreeItem* rowByKey(TreeItem* row, int key) const;
    TreeItem* lastShown() const;
    TreeItem* page(TreeItem* row, bool down) const;
    void moveTo(TreeItem* row, Qt::KeyboardModifiers modifiers);
    void tellSelection();

    QRect rectOf(const TreeItem* row) const { return visualRect(m_rows->indexOf(row)); }
    void scrollToRow(const TreeItem* row);
    void fitColumns();
    int automaticWidth(int column) const;
    int automaticWidthBesideNames() const;
    int widthOfNames(const QString& name) const;

    TreeModel* m_rows;
    TreeSelection m_selection;
    TypeAhead m_typeAhead;
    Drag m_drag = Drag::None;
    QPoint m_dragPos;
    QBasicTimer m_dragTimer;
    bool m_ignoreDoubleClick = false;
    int m_sortColumn = TreeModel::Object;
    bool m_fitting = false;
    std::array<bool, TreeModel::Columns> m_fixedWidth{}; ///< the user has set it
    std::array<int, TreeModel::Columns> m_wantedWidth{}; ///< the widest content that was on screen
    std::unordered_map<QString, int> m_widths; ///< cache of text widths in the font and style below
    QFont m_measuredFont;
    const QStyle* m_measuredStyle = nullptr;
};
