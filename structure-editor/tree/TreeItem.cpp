// How rows come and go, and the memory that they stand in.
#include "TreeItem.h"

#include "Checks.h"
#include "Kinds.h"
#include "RowPool.h"
#include "TreeModel.h"
#include "TreeView.h"

#include <algorithm>
#include <new>

namespace {

constexpr auto notFound = static_cast<std::size_t>(-1);

using Pool = RowPool<sizeof(TreeItem)>;

Pool& pool() {
    static Pool all;
    return all;
}

unsigned int idOf(const TAVIK::Compound* c) {
    return c ? c->GetId() : 0;
}

template <class... Kinds> bool isOneOf(const TAVIK::Compound* c) {
    return (... || (dynamic_cast<const Kinds*>(c) != nullptr));
}

} // namespace

TreeItem::Kind TreeItem::kindOf(const TAVIK::Compound* c) {
    if (isOneOf<TAVIK::Composite>(c))
        return Kind::Composite;
    const bool single = !c || isOneOf<TAVIK::Atom, TAVIK::Bond, TAVIK::Surface, TAVIK::Grid>(c);
    return single ? Kind::Single : Kind::Other;
}

void* TreeItem::operator new(std::size_t) {
    return pool().takeRow();
}

void TreeItem::operator delete(void* row) noexcept {
    pool().giveRow(row);
}

TreeItem::TreeItem(TAVIK::Compound* c, Kind kind, int line)
    : m_Compound(c), m_id(idOf(c)), m_selected(c && c->IsSelected()), m_marked(m_selected),
      m_elsewhere(kind == Kind::Other), m_composite(kind == Kind::Composite) {
    checkPtr(c, "TreeItem", line);
}

TreeItem::TreeItem(TreeView* parent, TAVIK::Compound* c) : TreeItem(c, kindOf(c), 43) {
    parent->rows()->insert(parent->rows()->root(), {this}, 1);
}

TreeItem::TreeItem(TreeItem* parent, TAVIK::Compound* c) : TreeItem(c, kindOf(c), 61) {
    parent->root()->model.insert(parent, {this}, 1);
}

TreeItem::~TreeItem() {
    deleteChildren();
    giveArray(m_children, m_capacity);
}

// The root's list outlives the rows, and the pool's memory does not.
TreeItem** TreeItem::takeArray(std::size_t capacity) const {
    const std::size_t bytes = capacity * sizeof(TreeItem*);
    return static_cast<TreeItem**>(m_isRoot ? ::operator new(bytes) : pool().takeArray(bytes));
}

void TreeItem::giveArray(TreeItem** array, std::size_t capacity) const noexcept {
    if (m_isRoot)
        ::operator delete(array);
    else
        pool().giveArray(array, capacity * sizeof(TreeItem*));
}

void TreeRoot::deleteRows() {
    if (pool().holdsOnly(rows)) {
        pool().dropAll();
        m_count = 0;
    } else {
        deleteChildren();
    }
    rows = 0;
}

void TreeRoot::setRowsAside() {
    if (m_count != 1)
        return;
    aside.reset(m_children[0]);
    m_count = 0;
    aside->m_parent = nullptr;
    std::swap(rows, rowsAside);
}

void TreeRoot::dropAside() noexcept {
    if (aside && pool().holdsOnly(rowsAside)) {
        pool().dropAll();
        aside.release(); // NOLINT: that was all there is
    }
    aside.reset();
    rowsAside = 0;
}

TreeItem* TreeRoot::takeFromAside(TAVIK::Compound* c) {
    if (!aside || aside->m_Compound != c || aside->m_id != idOf(c))
        return nullptr;
    Batch batch;
    aside->comeBack(batch);
    aside->UpdateSelection();
    model.insert(this, {aside.get()}, batch.rows);
    return aside.release(); // NOLINT: the tree's now
}

void TreeRoot::trimMemory() {
    pool().trim();
}

const TreeRoot* TreeItem::root() const {
    const TreeItem* top = this;
    while (top->m_parent)
        top = top->m_parent;
    return top->m_isRoot ? static_cast<const TreeRoot*>(top) : nullptr;
}

void TreeItem::setup() {
    m_expandable = m_count >= 1;
    m_configured = true;
}

void TreeItem::setOpen(bool open) {
    TreeModel& model = root()->model;
    model.view()->setExpanded(model.indexOf(this), open);
}

void TreeItem::commAdd() {
    Batch batch;
    commAdd(batch);
}

void TreeItem::commAdd(Batch& batch) {
    if (!m_composite)
        return;
    std::vector<TAVIK::Compound*> missing;
    std::size_t expected = 0;
    // Both ends are read at each step: making rows may lead anywhere.
    for (std::ptrdiff_t i = 0; i < m_Compound->ChildEnd() - m_Compound->ChildBegin(); ++i) {
        TAVIK::Compound* c = m_Compound->ChildBegin()[i];
        const std::size_t at = find(c, expected);
        if (at == notFound) {
            missing.push_back(c);
            continue;
        }
        expected = at + 1;
        m_children[at]->commAdd(batch);
    }
    if (missing.empty())
        return;
    // An item that is listed twice gets one row: its second turn would find the first one's.
    const auto byId = [](const TAVIK::Compound* a, const TAVIK::Compound* b) {
        return idOf(a) != idOf(b) ? idOf(a) < idOf(b) : std::less<>()(a, b);
    };
    if (!std::is_sorted(missing.begin(), missing.end(), byId))
        std::sort(missing.begin(), missing.end(), byId);
    missing.erase(std::unique(missing.begin(), missing.end()), missing.end());

    std::vector<Detached> made;
    std::vector<TreeItem*> rows;
    const std::size_t before = batch.rows;
    made.reserve(missing.size());
    rows.reserve(missing.size());
    for (TAVIK::Compound* c : missing)
        rows.push_back(made.emplace_back(build(c, batch)).get());
    root()->model.insert(this, std::move(rows), batch.rows - before);
}

// Host children and rows are nearly always in the same order, so that the row is where the one
// before was found; else it is found by its id.
std::size_t TreeItem::find(const TAVIK::Compound* c, std::size_t expected) const {
    const unsigned int id = idOf(c);
    const auto isIt = [&](std::size_t at) {
        return at < m_count && m_children[at]->m_Compound == c && m_children[at]->m_id == id;
    };
    if (isIt(expected))
        return expected;
    TreeItem* const* begin = m_children;
    TreeItem* const* found =
        std::lower_bound(begin, begin + m_count, id, [](const TreeItem* row, unsigned int wanted) {
            return row->m_id < wanted;
        });
    const auto at = static_cast<std::size_t>(found - begin);
    return isIt(at) ? at : notFound;
}

TreeItem::Detached TreeItem::build(TAVIK::Compound* c, Batch& batch) {
    Detached row(new TreeItem(c, batch.kindOf(c), 61));
    ++batch.rows;
    if (row->m_composite)
        row->buildChildren(batch);
    return row;
}

void TreeItem::buildChildren(Batch& batch) {
    TAVIK::Compound** const begin = m_Compound->ChildBegin();
    TAVIK::Compound** const end = m_Compound->ChildEnd();
    reserve(static_cast<std::size_t>(end - begin));
    for (TAVIK::Compound** it = begin; it != end; ++it) {
        TreeItem* const below = build(*it, batch).release();
        below->m_parent = this;
        below->m_position = m_count;
        m_children[m_count++] = below;
        m_marked |= below->m_marked;
        m_elsewhere |= below->m_elsewhere;
    }
    sortChildren();
}

void TreeItem::deleteChildren() {
    for (std::uint32_t i = 0; i != m_count; ++i)
        delete m_children[i];
    m_count = 0;
}

std::size_t TreeItem::rowCount() const {
    std::size_t count = 1;
    for (std::uint32_t i = 0; i != m_count; ++i)
        count += m_children[i]->rowCount();
    return count;
}

// A row whose item is gone is told by its address alone: nothing is made while rows are aside.
void TreeItem::comeBack(Batch& batch) {
    ++batch.rows;
    if (m_open || m_expandable || m_configured || m_Dirty)
        m_open = m_expandable = m_configured = m_Dirty = false;
    if (!m_composite)
        return;
    TAVIK::Compound** item = m_Compound->ChildBegin();
    TAVIK::Compound** const end = m_Compound->ChildEnd();
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i != m_count; ++i) {
        TreeItem* const row = m_children[i];
        const bool stays = item != end && row->m_Compound == *item &&
                           (!row->m_composite || row->m_id == idOf(*item));
        if (!stays) {
            delete row;
            continue;
        }
        ++item;
        if (row->m_position != kept)
            row->m_position = kept;
        m_children[kept++] = row;
        row->comeBack(batch);
    }
    m_count = kept;
    if (item == end)
        return;
    // There are items without rows, or they stand in another order.
    batch.rows -= rowCount() - 1;
    deleteChildren();
    buildChildren(batch);
}

void TreeItem::reserve(std::size_t capacity) {
    if (capacity <= m_capacity)
        return;
    TreeItem** const children = takeArray(capacity);
    std::copy(m_children, m_children + m_count, children);
    giveArray(m_children, m_capacity);
    m_children = children;
    m_capacity = static_cast<std::uint32_t>(capacity);
}

void TreeItem::makeRoom(std::size_t count) {
    if (m_count + count > m_capacity)
        reserve(std::max<std::size_t>(m_count + count, m_count + m_count / 2));
}

void TreeItem::insertChildren(std::uint32_t position, TreeItem* const* rows, std::uint32_t count) {
    if (std::any_of(rows, rows + count, [](const TreeItem* row) { return row->m_marked; }))
        expectSelection();
    TreeItem** const gap = m_children + position;
    std::copy_backward(gap, m_children + m_count, m_children + m_count + count);
    std::copy(rows, rows + count, gap);
    m_count += count;
    for (std::uint32_t i = position; i != m_count; ++i) {
        m_children[i]->m_parent = this;
        m_children[i]->m_position = i;
    }
    for (std::uint32_t i = 0; i != count; ++i)
        for (TreeItem* above = this; rows[i]->m_elsewhere && above && !above->m_elsewhere;
             above = above->m_parent)
            above->m_elsewhere = true;
}

void TreeItem::takeChildren(std::uint32_t position, std::uint32_t count) {
    TreeItem** const gap = m_children + position;
    for (std::uint32_t i = 0; i != count; ++i)
        gap[i]->m_parent = nullptr;
    std::copy(gap + count, m_children + m_count, gap);
    m_count -= count;
    for (std::uint32_t i = position; i != m_count; ++i)
        m_children[i]->m_position = i;
}

void TreeItem::sortChildren() {
    TreeItem** const end = m_children + m_count;
    const auto byId = [](const TreeItem* a, const TreeItem* b) { return a->m_id < b->m_id; };
    if (std::is_sorted(m_children, end, byId))
        return;
    std::stable_sort(m_children, end, byId);
    for (std::uint32_t i = 0; i != m_count; ++i)
        m_children[i]->m_position = i;
}

bool FFF2(TAVIK::Compound* c, TreeItem* parent) {
    TreeItem::Batch batch;
    const TreeItem::Detached row = TreeItem::build(c, batch);
    parent->root()->model.insert(parent, {row.get()}, batch.rows);
    return true;
}
