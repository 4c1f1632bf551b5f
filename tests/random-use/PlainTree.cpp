#include "PlainTree.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace plain {

namespace {

std::pair<std::size_t, std::size_t> between(const Rows& rows, const Row* a, const Row* b) {
    const auto place = [&](const Row* row) {
        return static_cast<std::size_t>(std::find(rows.begin(), rows.end(), row) - rows.begin());
    };
    return std::minmax(place(a), place(b));
}

void clean(Row& row) {
    row.dirty = false;
    for (const auto& child : row.children)
        clean(*child);
}

} // namespace

void Tree::clear() {
    m_top.reset();
    current = anchor = pressed = nullptr;
    drag = Drag::None;
    typed.clear();
}

void Tree::populate(Item* item) {
    clear();
    m_top = std::make_unique<Row>();
    m_top->item = item;
    m_top->selected = Host::isSelected(*item);
    current = top();
    m_top->open = !item->children.empty();
    addBelow(*m_top);
}

void Tree::addBelow(Row& row) {
    for (Item* item : row.item->children) {
        auto found = std::find_if(row.children.begin(), row.children.end(),
                                  [&](const auto& child) { return child->item == item; });
        if (found == row.children.end()) {
            auto child = std::make_unique<Row>();
            child->item = item;
            child->parent = &row;
            child->selected = Host::isSelected(*item);
            found = row.children.insert(
                std::find_if(row.children.begin(), row.children.end(),
                             [&](const auto& other) { return other->item->id > item->id; }),
                std::move(child));
        }
        addBelow(**found);
    }
}

void Tree::addMissing() {
    if (!m_top)
        return;
    addBelow(*m_top);
    if (!m_top->children.empty())
        setOpen(top(), true);
}

void Tree::update() {
    for (Row* row : all())
        row->selected = Host::isSelected(*row->item);
}

void Tree::handOver() {
    const std::function<void(Row&)> visit = [&](Row& row) {
        if (row.dirty) {
            Host::setSelected(*row.item, row.selected);
            clean(row);
            return;
        }
        for (std::size_t i = 0; i != row.children.size(); ++i)
            visit(*row.children[descending ? row.children.size() - 1 - i : i]);
    };
    if (m_top)
        visit(*m_top);
}

Rows Tree::list(bool closedToo) const {
    Rows rows;
    const std::function<void(Row&)> visit = [&](Row& row) {
        rows.push_back(&row);
        if (!closedToo && !row.open)
            return;
        for (std::size_t i = 0; i != row.children.size(); ++i)
            visit(*row.children[descending ? row.children.size() - 1 - i : i]);
    };
    if (m_top)
        visit(*m_top);
    return rows;
}

Row* Tree::rowOf(const Item* item) const {
    for (Row* row : all())
        if (row->item == item)
            return row;
    return nullptr;
}

void Tree::select(Row* row, bool on) {
    if (row->selected == on)
        return;
    row->selected = on;
    row->dirty = true;
}

bool Tree::selectAll(bool on) {
    bool changed = false;
    for (Row* row : all()) {
        changed = changed || row->selected != on;
        select(row, on);
    }
    return changed;
}

// A row that stands for others is cleared with them: it goes to the host once more, as a whole.
static bool goesWhole(const Row& row) {
    return !row.children.empty() || row.item->listsMembers();
}

void Tree::selectRows(const Rows& rows, bool only) {
    for (Row* row : only ? all() : Rows())
        if (goesWhole(*row) || std::find(rows.begin(), rows.end(), row) == rows.end())
            select(row, false);
    for (Row* row : rows)
        select(row, true);
}

bool Tree::press(Row* row, Qt::KeyboardModifiers modifiers) {
    pressOther();
    drag = Drag::FromRow;
    if (modifiers & Qt::ShiftModifier) {
        extend(row);
        current = row;
        return true;
    }
    current = anchor = row;
    if (modifiers & Qt::ControlModifier)
        select(row, !row->selected);
    else if (row->selected)
        pressed = row; // the release over the same row selects it alone
    else
        selectRows({row}, true);
    return !pressed;
}

bool Tree::pressBelow(Qt::MouseButton button, Qt::KeyboardModifiers modifiers) {
    pressOther();
    if (button == Qt::LeftButton)
        drag = Drag::FromEmptyArea;
    return !(modifiers & Qt::ControlModifier) && selectAll(false);
}

void Tree::pressOther() {
    drag = Drag::None;
    pressed = nullptr;
}

bool Tree::dragTo(Row* row) {
    if (drag == Drag::None || !current)
        return false;
    if (!row && drag == Drag::FromRow)
        row = shown().back();
    if (!row || row == current)
        return false;
    extend(row);
    current = row;
    return true;
}

bool Tree::release(Row* row) {
    drag = Drag::None;
    const Row* const waiting = std::exchange(pressed, nullptr);
    if (!row || row != waiting)
        return false;
    selectRows({row}, true);
    return true;
}

// What was selected from the anchor to the current row goes; then all from the anchor to `to` is
// selected, closed branches included.
void Tree::extend(Row* to) {
    const Rows rows = all();
    const auto [top, bottom] = between(rows, from(), to);
    const auto [old, same] = between(rows, current, current);
    if (old < top)
        for (std::size_t i = old; i < top; ++i)
            select(rows[i], false);
    for (std::size_t i = bottom + 1; i <= same; ++i)
        select(rows[i], false);
    if (goesWhole(*rows[bottom]))
        select(rows[bottom], false);
    for (std::size_t i = top; i <= bottom; ++i)
        select(rows[i], true);
}

void Tree::setOpen(Row* row, bool open) {
    if (row->open == open)
        return;
    row->open = open;
    if (open) {
        current = row;
        return;
    }
    for (const Row* above = current; above; above = above->parent)
        if (above == row)
            current = row;
}

bool Tree::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    drag = Drag::None;
    if (!current || key == Qt::Key_Delete || key == Qt::Key_Return)
        return false;
    typed.clear();
    const Rows rows = shown();
    const auto at = std::find(rows.begin(), rows.end(), current);
    const bool hasChildren = !current->children.empty();
    switch (key) {
    case Qt::Key_Space:
        select(current, !current->selected);
        anchor = current;
        return true;
    case Qt::Key_A:
        return selectAll(true);
    case Qt::Key_Plus:
    case Qt::Key_Right:
        if (!current->open && hasChildren)
            setOpen(current, true);
        else if (key == Qt::Key_Right && hasChildren)
            return moveTo(*std::next(at), modifiers);
        return false;
    case Qt::Key_Minus:
    case Qt::Key_Left:
        if (current->open)
            setOpen(current, false);
        else if (key == Qt::Key_Left)
            return moveTo(current->parent, modifiers);
        return false;
    case Qt::Key_Up:
        return moveTo(at == rows.begin() ? nullptr : *std::prev(at), modifiers);
    case Qt::Key_Down:
        return moveTo(std::next(at) == rows.end() ? nullptr : *std::next(at), modifiers);
    case Qt::Key_Home:
        return moveTo(rows.front(), modifiers);
    case Qt::Key_End:
        return moveTo(rows.back(), modifiers);
    default:
        return false;
    }
}

bool Tree::moveTo(Row* row, Qt::KeyboardModifiers modifiers) {
    if (!row)
        return false;
    current = row;
    const bool control = modifiers & Qt::ControlModifier;
    if (!(modifiers & Qt::ShiftModifier)) {
        anchor = row;
        if (!control)
            selectRows({row}, true);
        return !control;
    }
    // An anchor in a closed branch stands for the row that hides it.
    const Row* start = from();
    for (const Row* above = start->parent; above; above = above->parent)
        if (!above->open)
            start = above;
    const Rows rows = shown();
    const auto [first, last] = between(rows, start, row);
    selectRows({rows.begin() + std::ptrdiff_t(first), rows.begin() + std::ptrdiff_t(last + 1)},
               !control);
    return true;
}

bool Tree::type(const QString& text) {
    drag = Drag::None;
    if (!current)
        return false;
    const Rows rows = shown();
    const auto here =
        static_cast<std::size_t>(std::find(rows.begin(), rows.end(), current) - rows.begin());
    const auto find = [&](std::size_t start, const QString& prefix) -> Row* {
        for (std::size_t i = 0; i != rows.size(); ++i) {
            Row* row = rows[(start + i) % rows.size()];
            if (QString::fromLatin1(row->item->name).startsWith(prefix, Qt::CaseInsensitive))
                return row;
        }
        return nullptr;
    };
    // First all that was typed lately, from the current row on; else the last text, below it.
    Row* row = typed.isEmpty() ? nullptr : find(here, typed + text);
    if (row)
        typed += text;
    else if ((row = find(here + 1, text)))
        typed = text;
    return moveTo(row, Qt::NoModifier);
}

void Tree::clickHeader(int column) {
    descending = column == sortColumn && !descending;
    sortColumn = column;
}

} // namespace plain
