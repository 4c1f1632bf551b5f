#include "PlainTree.h"

#include <algorithm>
#include <functional>
#include <set>
#include <utility>

namespace plain {

namespace {

std::pair<std::size_t, std::size_t> between(const Rows& rows, const Row* a, const Row* b) {
    const auto place = [&](const Row* row) {
        return static_cast<std::size_t>(std::find(rows.begin(), rows.end(), row) - rows.begin());
    };
    return std::minmax(place(a), place(b));
}

bool isAbove(const Row* above, const Row* row) {
    for (row = row->parent; row && row != above;)
        row = row->parent;
    return row;
}

using Extent = std::set<const Item*>;

void collectBelow(const Item* item, Extent& into) {
    into.insert(item);
    for (const Item* child : item->children)
        collectBelow(child, into);
}

// Each of the items, with all that it holds; of a set also what its members are, and so on.
Extent extentOf(const Items& items) {
    Extent all;
    Extent done;
    const std::function<void(const Item*)> collect = [&](const Item* item) {
        if (!done.insert(item).second)
            return;
        collectBelow(item, all);
        for (const Item* member : item->listsMembers() ? item->parts : Items())
            collect(member);
    };
    for (const Item* item : items)
        collect(item);
    return all;
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

int Tree::addBelow(Row& row) {
    int added = 0;
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
            ++added;
        }
        added += addBelow(**found);
    }
    return added;
}

int Tree::addMissing() {
    return m_top ? addBelow(*m_top) : 0;
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
    leaveShared(rows);
}

void Tree::leaveShared(const Rows& wanted) {
    Items items;
    for (const Row* row : wanted)
        items.push_back(row->item);
    const Extent kept = extentOf(items);
    for (Row* row : all()) {
        if (row->selected || !row->dirty)
            continue;
        const auto holds = [row](const Row* each) { return isAbove(row, each); };
        const auto isHeld = [row](const Row* each) { return row == each || isAbove(each, row); };
        if (std::any_of(wanted.begin(), wanted.end(), isHeld))
            continue;
        const Extent own = extentOf({row->item});
        if (std::any_of(wanted.begin(), wanted.end(), holds) ||
            std::any_of(own.begin(), own.end(), [&](const Item* i) { return kept.count(i) > 0; }))
            row->dirty = false;
    }
}

bool Tree::press(Row* row, Qt::KeyboardModifiers modifiers) {
    pressOther();
    drag = Drag::FromRow;
    if (modifiers & Qt::ShiftModifier)
        return dragOver(row);
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

void Tree::pressMark(Row* row, Qt::KeyboardModifiers modifiers) {
    pressOther();
    if (!(modifiers & Qt::ShiftModifier))
        anchor = row;
    setOpen(row, !row->open);
}

Rows Tree::crossed(Row* row, bool currentIsOnScreen) const {
    const Rows rows = shown();
    if (drag == Drag::None || !current)
        return {};
    if (!row && drag == Drag::FromRow)
        row = rows.back();
    if (!row || row == current)
        return {};
    if (!currentIsOnScreen)
        return {row};
    const auto [first, last] = between(rows, current, row);
    Rows way(rows.begin() + std::ptrdiff_t(first), rows.begin() + std::ptrdiff_t(last + 1));
    if (way.back() != row)
        std::reverse(way.begin(), way.end());
    way.erase(way.begin());
    return way;
}

bool Tree::dragOver(Row* row) {
    if (anchor)
        extend(row);
    current = row;
    return anchor;
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
    const auto [top, bottom] = between(rows, anchor, to);
    const auto [old, same] = between(rows, current, current);
    // What held the range goes with all that it holds, also behind the range.
    for (std::size_t i = old; i < top; ++i)
        for (std::size_t k = bottom + 1; k < rows.size(); ++k)
            if (rows[i]->selected && isAbove(rows[i], rows[top]) && isAbove(rows[i], rows[k]) &&
                std::none_of(rows.begin() + std::ptrdiff_t(top),
                             rows.begin() + std::ptrdiff_t(bottom + 1),
                             [&](const Row* each) { return isAbove(each, rows[k]); }))
                select(rows[k], false);
    if (old < top)
        for (std::size_t i = old; i < top; ++i)
            select(rows[i], false);
    for (std::size_t i = bottom + 1; i <= same; ++i)
        select(rows[i], false);
    if (goesWhole(*rows[bottom]))
        select(rows[bottom], false);
    for (std::size_t i = top; i <= bottom; ++i)
        select(rows[i], true);
    leaveShared({rows.begin() + std::ptrdiff_t(top), rows.begin() + std::ptrdiff_t(bottom + 1)});
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
    // What is typed may be the next character of a name.
    const QString text = key == Qt::Key_Space   ? QStringLiteral(" ")
                         : key == Qt::Key_Plus  ? QStringLiteral("+")
                         : key == Qt::Key_Minus ? QStringLiteral("-")
                                                : QString();
    if (Row* const row = text.isEmpty() ? nullptr : goOn(text))
        return moveTo(row, {});
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
        if (!current->open && hasChildren) {
            setOpen(current, true);
            return moveTo(current, modifiers);
        }
        return key == Qt::Key_Right && hasChildren && moveTo(*std::next(at), modifiers);
    case Qt::Key_Minus:
    case Qt::Key_Left:
        if (current->open) {
            setOpen(current, false);
            return moveTo(current, modifiers);
        }
        return key == Qt::Key_Left && moveTo(current->parent, modifiers);
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
    const bool shift = modifiers & Qt::ShiftModifier;
    if (!shift || !anchor)
        anchor = row;
    if (!shift) {
        if (!control)
            selectRows({row}, true);
        return !control;
    }
    // An anchor in a closed branch stands for the row that hides it.
    const Row* start = anchor;
    for (const Row* above = start->parent; above; above = above->parent)
        if (!above->open)
            start = above;
    const Rows rows = shown();
    const auto [first, last] = between(rows, start, row);
    selectRows({rows.begin() + std::ptrdiff_t(first), rows.begin() + std::ptrdiff_t(last + 1)},
               !control);
    return true;
}

Row* Tree::find(const Row* from, std::size_t further, const QString& prefix) const {
    const Rows rows = shown();
    const auto start =
        static_cast<std::size_t>(std::find(rows.begin(), rows.end(), from) - rows.begin());
    for (std::size_t i = 0; i != rows.size(); ++i) {
        Row* row = rows[(start + further + i) % rows.size()];
        if (QString::fromLatin1(row->item->name).startsWith(prefix, Qt::CaseInsensitive))
            return row;
    }
    return nullptr;
}

Row* Tree::goOn(const QString& text) {
    Row* const row = typed.isEmpty() ? nullptr : find(current, 0, typed + text);
    if (row)
        typed += text;
    return row;
}

bool Tree::type(const QString& text) {
    drag = Drag::None;
    if (!current)
        return false;
    // First all that was typed lately, from the current row on; else the last text, below it.
    Row* row = goOn(text);
    if (!row && (row = find(current, 1, text)))
        typed = text;
    return moveTo(row, Qt::NoModifier);
}

void Tree::clickHeader(int column) {
    descending = column == sortColumn && !descending;
    sortColumn = column;
}

} // namespace plain
