// The structure tree as lists of lists, with the rules of its gestures written down in the simplest
// way: every gesture goes through lists of all rows.
#pragma once

#include "PlainItems.h"

#include <QString>
#include <Qt>

#include <memory>
#include <vector>

namespace plain {

struct Row {
    Item* item = nullptr;
    Row* parent = nullptr;
    std::vector<std::unique_ptr<Row>> children; ///< by rising id
    bool selected = false;
    bool dirty = false; ///< the user changed it since it was last handed to the host
    bool open = false;

    int depth() const { return parent ? parent->depth() + 1 : 0; }
};

using Rows = std::vector<Row*>;

class Tree {
public:
    /// What a drag that goes on began with.
    enum class Drag { None, FromRow, FromEmptyArea };

    void clear();
    /// Shows `item`, opened.
    void populate(Item* item);
    /// Adds the rows that are missing. Returns how many.
    int addMissing();
    /// Takes the host's selection over.
    void update();
    /// Hands what the user changed to the host.
    void handOver();

    Row* top() const { return m_top.get(); }
    /// Every row, or those of open branches, in the order shown.
    Rows all() const { return list(true); }
    Rows shown() const { return list(false); }
    Row* rowOf(const Item* item) const;

    // The gestures. Those that return something say whether the selection is to be told of.
    bool press(Row* row, Qt::KeyboardModifiers modifiers);
    void pressMark(Row* row, Qt::KeyboardModifiers modifiers);
    bool pressBelow(Qt::MouseButton button, Qt::KeyboardModifiers modifiers);
    /// A press that does no more than end what went on.
    void pressOther();
    /// The rows that a drag to `row` meets, one after the other; null is below all rows. A mouse
    /// that starts off screen meets none on the way.
    Rows crossed(Row* row, bool currentIsOnScreen) const;
    bool dragOver(Row* row);
    bool release(Row* row);
    void setOpen(Row* row, bool open);
    bool key(Qt::Key key, Qt::KeyboardModifiers modifiers);
    /// A key led the view to this row; null when it led nowhere.
    bool moveTo(Row* row, Qt::KeyboardModifiers modifiers);
    bool type(const QString& text);
    void clickHeader(int column);

    Row* current = nullptr;
    Row* anchor = nullptr; ///< null: nothing was pressed yet
    Row* pressed = nullptr;
    Drag drag = Drag::None;
    bool descending = false;
    int sortColumn = 0;
    QString typed;

private:
    Rows list(bool closedToo) const;
    static int addBelow(Row& row);
    void select(Row* row, bool on);
    bool selectAll(bool on);
    /// Selects these rows; `only`: and unselects all others.
    void selectRows(const Rows& rows, bool only);
    void extend(Row* to);
    /// What shares items with `wanted`, above them or through sets, does not count as unselected.
    void leaveShared(const Rows& wanted);
    /// The row that all that was typed lately leads to with `text`; null when there is none.
    Row* goOn(const QString& text);
    Row* find(const Row* from, std::size_t further, const QString& prefix) const;

    std::unique_ptr<Row> m_top;
};

} // namespace plain
