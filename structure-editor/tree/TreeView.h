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
/// Which rows are selected is a mark in the rows, never Qt's selection model: that one carries the
/// current row alone. Marks that the user sets are announced with selectionChanged(), once a
/// gesture, and handed to the host by whoever listens.
///
/// The right button changes what the cell under it shows, or opens the host's menu, as a key does
/// for the current row; the middle one asks for the deletion of a row. All are are the host's
/// changes: the view learns of them, as of all others, when it is told to update.
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
    /// Makes `row` current, and changes nothing else: neither the selection nor its anchor nor what
    /// is scrolled to. Null does nothing.
    void setCurrentItem(TreeItem* row);
    /// Deletes all rows, and gives their memory back. Emits nothing.
    void clear();
    /// clear(), for rows that come at once and stand in the same memory; trimMemory() gives back
    /// what they leave of it.
    void clearForOthers();
    static void trimMemory() { TreeRoot::trimMemory(); }
    /// clear(), for showAgain() of the same item. While rows are aside, items are destroyed only.
    void setAside();
    /// Shows the row of `c`, and those below it, if they were set aside: as new ones, in much less
    /// time than it takes to make them. Else null.
    TreeItem* showAgain(TAVIK::Compound* c);
    /// Deletes what was set aside, and gives its memory back.
    void dropAside();
    /// All rows take the host's selection over.
    void UpdateSelection();
    /// Whether the rows are as UpdateSelection() left them, and the host's selection is what it was
    /// then: what they are marked is what their items answer.
    bool isInStep() const;
    /// Width that a column keeps free left of its content, in pixels.
    int itemMargin() const { return 1; }
    /// The width in pixels in which all columns are in sight, and short names at the depth of an
    /// atom.
    int usualWidth() const;

    TreeModel* rows() const { return m_rows; }

    /// Lets the screen show the host's present state.
    Q_SLOT virtual void triggerUpdate();
    /// Makes a row that was opened the current one.
    Q_SLOT void Expansion(const QModelIndex& index);

signals:
    /// The user selected or unselected rows; see TreeItem::isDirty().
    void selectionChanged();
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
    void timerEvent(QTimerEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect,
                      const QModelIndex& index) const override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

private:
    /// Where a drag goes on when the mouse rests outside.
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
    std::array<int, TreeModel::Columns> m_wantedWidth{}; ///< for all that came on screen
    std::unordered_map<QString, int> m_widths; ///< of texts, in the font and style that follow
    QFont m_measuredFont;
    const QStyle* m_measuredStyle = nullptr;
};
