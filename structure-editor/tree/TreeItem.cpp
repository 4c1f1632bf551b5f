#include "TreeItem.h"

#include "CellText.h"
#include "Checks.h"
#include "Kinds.h"
#include "TreeModel.h"
#include "TreeView.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto notFound = static_cast<std::size_t>(-1);

unsigned int idOf(const TAVIK::Compound* c) {
    return c ? c->GetId() : 0;
}

QString yesNo(bool yes) {
    return yes ? QStringLiteral("Yes") : QStringLiteral("No");
}

template <class... Kinds> bool isOneOf(const TAVIK::Compound* c) {
    return (... || (dynamic_cast<const Kinds*>(c) != nullptr));
}

} // namespace

// There are millions of them.
static_assert(sizeof(TreeItem) <= 48);

TreeItem::Kind TreeItem::kindOf(const TAVIK::Compound* c) {
    if (isOneOf<TAVIK::Composite>(c))
        return Kind::Composite;
    const bool single = !c || isOneOf<TAVIK::Atom, TAVIK::Bond, TAVIK::Surface, TAVIK::Grid>(c);
    return single ? Kind::Single : Kind::Other;
}

TreeItem::TreeItem(TAVIK::Compound* c, Kind kind, int line)
    : RowNode(idOf(c)), m_selected(c && c->IsSelected()), m_marked(m_selected),
      m_elsewhere(kind == Kind::Other), m_composite(kind == Kind::Composite), m_Compound(c) {
    checkPtr(c, "TreeItem", line);
}

TreeItem::TreeItem(TreeView* parent, TAVIK::Compound* c) : TreeItem(c, kindOf(c), 43) {
    parent->rows()->insert(parent->rows()->root(), {this}, 1);
}

TreeItem::TreeItem(TreeItem* parent, TAVIK::Compound* c) : TreeItem(c, kindOf(c), 61) {
    parent->root()->model.insert(parent, {this}, 1);
}

const TreeRoot* TreeItem::root() const {
    const TreeItem* top = this;
    while (top->m_parent)
        top = top->m_parent;
    return top->m_isRoot ? static_cast<const TreeRoot*>(top) : nullptr;
}

void TreeItem::setup() {
    leavePlain();
    m_expandable = m_count >= 1;
    m_configured = true;
}

void TreeItem::setOpen(bool open) {
    if (m_open == open)
        return;
    leavePlain();
    m_open = open;
    if (open && m_count > 0)
        setup();
    emit root()->model.openChanged(this);
}

void TreeItem::commAdd() {
    TreeModel& model = root()->model;
    model.beginAdding();
    try {
        Batch batch;
        commAdd(batch);
    } catch (...) {
        model.endAdding();
        throw;
    }
    model.endAdding();
}

void TreeItem::commAdd(Batch& batch) {
    if (!m_composite)
        return;
    std::vector<TAVIK::Compound*> missing;
    std::size_t expected = 0;
    // Both ends are read anew at each step, because creating rows may run other code.
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
    // An item that is listed twice gets one row, as if rows were added one by one.
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

TreeItem* TreeItem::rowOf(const TAVIK::Compound* c) const {
    const std::size_t at = find(c, notFound);
    return at == notFound ? nullptr : m_children[at];
}

// Host children and rows are nearly always in the same order, so that the row is next to the
// previous one; otherwise it is searched by its id.
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
    const Told told(m_Compound);
    TAVIK::Compound** const begin = m_Compound->ChildBegin();
    TAVIK::Compound** const end = m_Compound->ChildEnd();
    reserve(static_cast<std::size_t>(end - begin));
    bool holdComposites = false;
    bool isInOrder = true;
    std::uint32_t lastId = 0;
    for (TAVIK::Compound** it = begin; it != end; ++it) {
        TreeItem* const below = build(*it, batch).release();
        append(below);
        m_marked |= below->m_marked;
        m_elsewhere |= below->m_elsewhere;
        holdComposites |= below->m_composite;
        isInOrder &= below->m_id > lastId;
        lastId = below->m_id;
    }
    sort();
    m_plain = !holdComposites;
    if (isInOrder)
        becomeWhole(told);
}

// Comparing addresses is enough to find rows of destroyed items: no items are made meanwhile.
void TreeItem::comeBack(Batch& batch) {
    ++batch.rows;
    if (m_open || m_expandable || m_configured || m_Dirty)
        m_open = m_expandable = m_configured = m_Dirty = false;
    if (!m_composite)
        return;
    TAVIK::Compound** item = m_Compound->ChildBegin();
    TAVIK::Compound** const end = m_Compound->ChildEnd();
    if (m_plain && showsAll(item, end)) {
        batch.rows += m_count;
        return;
    }
    bool holdComposites = false;
    leaveWhole();
    const Told told(m_Compound);
    keepOnly([&](TreeItem* row) {
        if (item == end || row->m_Compound != *item ||
            (row->m_composite && row->m_id != idOf(*item)))
            return false;
        ++item;
        holdComposites = holdComposites || row->m_composite;
        if (!row->m_composite)
            row->comeBack(batch);
        return true;
    });
    // After the deleted rows are out of the list: memory can run out from here on.
    for (std::uint32_t i = 0; holdComposites && i != m_count; ++i)
        if (m_children[i]->m_composite)
            m_children[i]->comeBack(batch);
    m_plain = !holdComposites;
    if (item == end) {
        becomeWhole(told);
        return;
    }
    // Some items have no row, or the order differs.
    batch.rows -= rowCount() - 1;
    deleteChildren();
    buildChildren(batch);
}

// A new child is the last one, with a new id: as many children as before of which the last is the
// same are all the same, unless null stands for one that is gone.
bool TreeItem::showsAll(TAVIK::Compound** begin, TAVIK::Compound** end) const {
    if (end - begin != static_cast<std::ptrdiff_t>(m_count))
        return false;
    if (m_count == 0)
        return true;
    const TreeItem& last = *m_children[m_count - 1];
    return last.m_Compound == end[-1] && last.m_id == idOf(end[-1]) &&
           std::find(begin, end, nullptr) == end;
}

void TreeItem::markFor(std::span<TreeItem* const> rows) {
    m_plain = false;
    leaveWhole();
    if (m_parent)
        m_parent->leaveWhole();
    if (std::any_of(rows.begin(), rows.end(), [](const TreeItem* row) { return row->m_marked; }))
        expectSelection();
    if (std::any_of(rows.begin(), rows.end(), [](const TreeItem* row) { return row->m_elsewhere; }))
        for (TreeItem* above = this; above && !above->m_elsewhere; above = above->m_parent)
            above->m_elsewhere = true;
}

void TreeItem::addRows(TAVIK::Compound* c) {
    Batch batch;
    const Detached row = build(c, batch);
    root()->model.insert(this, {row.get()}, batch.rows);
}

// What cells say and look like, and the rows around one in the order shown.

QString TreeItem::text(int column) const {
    if (!m_Compound)
        return {};
    switch (column) {
    case TreeModel::Object:
        return QString::fromLatin1(m_Compound->GetName());
    case TreeModel::Show:
        return yesNo(m_Compound->IsVisible());
    case TreeModel::Select:
        return yesNo(m_Compound->IsSelected());
    case TreeModel::Partial:
        if (const auto* atom = dynamic_cast<const TAVIK::Atom*>(m_Compound))
            return QString::fromLatin1(atom->GetModelNumber());
        return yesNo(m_Compound->HasSelected());
    default:
        return {};
    }
}

QString TreeItem::spoken() const {
    if (!m_Compound)
        return {};
    return text(TreeModel::Object) + QStringLiteral(", ") +
           spokenState(m_Compound->IsVisible(), m_Compound->IsSelected(),
                       m_Compound->HasSelected());
}

QColor TreeItem::textColor(int column) const {
    static constexpr std::array<Qt::GlobalColor, 5> byDepth = {
        Qt::darkMagenta, Qt::magenta, Qt::darkGreen, Qt::darkBlue, Qt::red};
    const auto level = static_cast<std::size_t>(depth());
    return column == TreeModel::Object && level < byDepth.size() ? byDepth[level] : QColor();
}

QColor TreeItem::cellColor(int column) const {
    if (column != TreeModel::Show || !m_Compound)
        return {};
    // Opaque: the colour of a transparent item is to be seen in the cell.
    QColor color = m_Compound->GetColor().toQColor();
    color.setAlpha(255);
    return color;
}

QString TreeItem::key(int, bool) const {
    return QStringLiteral("%1").arg(m_id, 10);
}

int TreeItem::compare(const TreeItem* other, int column, bool ascending) const {
    if (!other) {
        qDebug("%s", "TreeItem::compare( QListViewItem )");
        return key(column, ascending).compare(QString()) > 0 ? 1 : 0;
    }
    return m_id == other->m_id ? 0 : m_id < other->m_id ? -1 : 1;
}

TreeItem* TreeItem::parent() const {
    return m_parent && !m_parent->m_isRoot ? m_parent : nullptr;
}

TreeItem* TreeItem::nextSibling() const {
    const bool descending = root()->descending;
    const std::uint32_t next = shownAt(descending) + 1;
    return next < m_parent->m_count ? m_parent->childAt(next, descending) : nullptr;
}

TreeItem* TreeItem::child(int index) const {
    if (index < 0 || index >= childCount())
        return nullptr;
    return childAt(static_cast<std::uint32_t>(index), root()->descending);
}

int TreeItem::depth() const {
    int depth = 0;
    for (const TreeItem* above = parent(); above; above = above->parent())
        ++depth;
    return depth;
}

int TreeItem::position() const {
    return static_cast<int>(shownAt(root()->descending));
}

TreeItem* TreeItem::itemBelow() const {
    if (m_open && m_count)
        return firstChild();
    for (const TreeItem* row = this; row; row = row->parent())
        if (TreeItem* next = row->nextSibling())
            return next;
    return nullptr;
}

TreeItem* TreeItem::itemAbove() const {
    const int at = position();
    if (at == 0)
        return parent();
    TreeItem* row = m_parent->child(at - 1);
    while (row->m_open && row->m_count)
        row = row->child(row->childCount() - 1);
    return row;
}

TreeItem* TreeItem::shownRow() {
    TreeItem* shown = this;
    for (TreeItem* above = parent(); above; above = above->parent())
        if (!above->m_open)
            shown = above;
    return shown;
}

bool FFF2(TAVIK::Compound* c, TreeItem* parent) {
    parent->addRows(c);
    return true;
}
