#include "Items.h"

#include <algorithm>
#include <limits>

namespace memory_host {

Holder* nearest(Kind kind, Holder* holder) {
    while (holder && holder->kind != kind)
        holder = holder->parent;
    return holder;
}

Holder* residueAround(const HostItem& item) {
    return nearest(Kind::Residue, item.parent);
}

namespace {

std::string residuePrefix(const HostItem& atom) {
    const Holder* residue = residueAround(atom);
    return residue ? residue->name.text() + ' ' : std::string();
}

} // namespace

std::string BondItem::GetName() const {
    if (!m_record.name.isEmpty() || !m_atoms[0])
        return m_record.name.text();
    const HostItem& a = HostItem::of(m_atoms[0]);
    const HostItem& b = HostItem::of(m_atoms[1]);
    if (residueAround(a) == residueAround(b))
        return residuePrefix(a) + a.name.text() + '-' + b.name.text();
    return residuePrefix(a) + a.name.text() + " - " + residuePrefix(b) + b.name.text();
}

AtomItem* BondItem::atom(int end) const {
    return static_cast<AtomItem*>(m_atoms[static_cast<std::size_t>(end)]);
}

int BondItem::endAt(const AtomItem* atom) const {
    return m_atoms[0] == atom ? 0 : 1;
}

BondItem* BondItem::next(const AtomItem* atom) const {
    return m_links[static_cast<std::size_t>(endAt(atom))].next;
}

void BondItem::connect(AtomItem* a, AtomItem* b) {
    m_atoms = {a, b};
    for (const int end : {0, 1}) {
        AtomItem* at = atom(end);
        Links& links = m_links[static_cast<std::size_t>(end)];
        links = {at->m_bonds, nullptr};
        if (at->m_bonds)
            at->m_bonds->m_links[static_cast<std::size_t>(at->m_bonds->endAt(at))].previous = this;
        at->m_bonds = this;
    }
    updateShown();
}

void BondItem::disconnect() {
    if (!m_atoms[0])
        return;
    for (const int end : {0, 1}) {
        AtomItem* at = atom(end);
        const Links& links = m_links[static_cast<std::size_t>(end)];
        if (links.next)
            links.next->m_links[static_cast<std::size_t>(links.next->endAt(at))].previous =
                links.previous;
        if (links.previous)
            links.previous->m_links[static_cast<std::size_t>(links.previous->endAt(at))].next =
                links.next;
        else
            at->m_bonds = links.next;
    }
    m_atoms = {};
}

namespace {

// Carries a change of the number of shown leaves from an item to all levels above it.
void countShown(const HostItem& item, std::int32_t change) {
    if (change == 0)
        return;
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] { holder->sum.shownLeaves += change; });
}

// Marks a leaf as shown or not; returns by how much that changes the number of shown leaves.
std::int32_t markShown(HostItem& leaf, bool shown) {
    if (leaf.has(HostItem::Shown) == shown)
        return 0;
    changeState(leaf, [&] { leaf.set(HostItem::Shown, shown); });
    return shown ? 1 : -1;
}

} // namespace

std::int32_t BondItem::markShown() {
    bool shown = m_record.has(HostItem::Visible);
    for (const int end : {0, 1})
        shown = shown && (!m_atoms[0] || atom(end)->IsVisible());
    return memory_host::markShown(m_record, shown);
}

void BondItem::updateShown() {
    countShown(m_record, markShown());
}

void BondItem::hide() {
    countShown(m_record, memory_host::markShown(m_record, false));
}

std::int32_t AtomItem::markShown() {
    const std::int32_t change = memory_host::markShown(
        m_record, m_record.has(HostItem::Visible) && !m_record.has(HostItem::OtherModel));
    if (change > 0)
        for (BondItem* bond = m_bonds; bond; bond = bond->next(this))
            bond->updateShown();
    if (change < 0)
        for (BondItem* bond = m_bonds; bond; bond = bond->next(this))
            bond->hide();
    return change;
}

void AtomItem::updateShown() {
    countShown(m_record, markShown());
}

void AtomItem::setValues(const AtomRecord& values) {
    // What can fail comes before the first change.
    m_record.type = Name(values.type);
    for (const std::size_t axis : {0, 1, 2})
        m_position[axis] = values.position[axis];
    m_record.set(HostItem::HasPosition, values.position.isValid());
    m_temperature = values.temperature;
    m_record.model = static_cast<std::uint16_t>(
        std::min<unsigned int>(values.model, std::numeric_limits<std::uint16_t>::max()));
    m_record.color = defaultColor(m_record).rgba();
}

ItemState stateOf(const HostItem& item) {
    return {isSelected(item), hasSelected(item), isVisible(item)};
}

bool isSelected(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        if (sum.atoms > 0)
            return sum.selectedAtoms == sum.atoms;
        if (sum.leaves > 0)
            return sum.selectedLeaves == sum.leaves;
    } else if (listsMembers(item)) {
        const auto& set = static_cast<const SetRecord&>(item);
        return set.selected == static_cast<std::int32_t>(set.memberCount());
    }
    return item.has(HostItem::Selected);
}

bool hasSelected(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        if (sum.leaves > 0)
            return sum.selectedLeaves > 0;
    } else if (listsMembers(item)) {
        return static_cast<const SetRecord&>(item).hasSelected > 0;
    }
    return item.has(HostItem::Selected);
}

bool isVisible(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        return sum.leaves > 0 ? sum.shownLeaves > 0 : item.has(HostItem::Visible);
    }
    if (listsMembers(item))
        return static_cast<const SetRecord&>(item).visible > 0;
    return item.has(HostItem::Shown);
}

Contribution contributionOf(const HostItem& item) {
    if (listsMembers(item))
        return {};
    const std::int32_t selected = item.has(HostItem::Selected) ? 1 : 0;
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        return sum.leaves > 0
                   ? sum
                   : Contribution{0, 0, 1, selected, item.has(HostItem::Visible) ? 1 : 0};
    }
    const std::int32_t shown = item.has(HostItem::Shown) ? 1 : 0;
    if (item.kind == Kind::Atom)
        return {1, selected, 1, selected, shown};
    return {0, 0, 1, selected, shown};
}

void addContribution(Holder* holder, Contribution change) {
    if (change == Contribution{})
        return;
    for (; holder; holder = holder->parent) {
        if (holder->sum.leaves > 0 && holder->sum.leaves + change.leaves > 0) {
            // What is not empty, before or afterwards, counts as what it holds.
            changeState(*holder, [&] { holder->sum += change; });
            continue;
        }
        const Contribution before = contributionOf(*holder);
        changeState(*holder, [&] {
            holder->sum += change;
            if (holder->sum.leaves == 0) {
                // What has just become empty starts with fresh marks of its own.
                holder->set(HostItem::Selected, false);
                holder->set(HostItem::Visible, true);
            }
        });
        change = contributionOf(*holder) - before;
        if (change == Contribution{})
            return;
    }
}

namespace {

// Marks everything in a composite. The counters of the composites that are passed are set as a
// whole: a change that reaches millions of leaves climbs to the top but once.
void selectBelow(Holder& holder, bool on) {
    const std::int32_t wanted = on ? holder.sum.leaves : 0;
    if (holder.sum.selectedLeaves == wanted)
        return;
    ++selectionChanges;
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        if (record.isHolder() && record.asHolder().sum.leaves > 0)
            selectBelow(record.asHolder(), on);
        else if (record.has(HostItem::Selected) != on && !listsMembers(record))
            changeState(record, [&] { record.set(HostItem::Selected, on); });
    }
    changeState(holder, [&] {
        holder.sum.selectedLeaves = wanted;
        holder.sum.selectedAtoms = on ? holder.sum.atoms : 0;
    });
}

// Carries a change of the selection to all composites around an item.
void countSelected(const HostItem& item, std::int32_t leaves, std::int32_t atoms) {
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] {
            holder->sum.selectedLeaves += leaves;
            holder->sum.selectedAtoms += atoms;
        });
}

} // namespace

void setSelected(HostItem& item, bool on) {
    if (item.isHolder() && item.asHolder().sum.leaves > 0) {
        const Contribution before = item.asHolder().sum;
        selectBelow(item.asHolder(), on);
        const Contribution change = item.asHolder().sum - before;
        if (change != Contribution{})
            countSelected(item, change.selectedLeaves, change.selectedAtoms);
        return;
    }
    if (listsMembers(item)) {
        for (Compound* member : static_cast<SetRecord&>(item).listed())
            setSelected(HostItem::of(member), on);
        return;
    }
    if (item.has(HostItem::Selected) == on)
        return;
    ++selectionChanges;
    changeState(item, [&] { item.set(HostItem::Selected, on); });
    const std::int32_t change = on ? 1 : -1;
    countSelected(item, change, item.kind == Kind::Atom ? change : 0);
}

namespace {

// Marks everything in an item and counts it there; returns by how much the number of shown leaves
// changes for what holds the item. Bonds that follow their atoms count themselves.
std::int32_t showWithin(Compound& item, HostItem& record, bool on) {
    if (record.isHolder() && record.asHolder().sum.leaves > 0) {
        Holder& holder = record.asHolder();
        std::int32_t change = 0;
        Compound** const last = holder.childEnd();
        for (Compound** child = holder.childBegin(); child != last; ++child)
            if (HostItem& within = HostItem::of(*child); !listsMembers(within))
                change += showWithin(**child, within, on);
        if (change != 0)
            changeState(holder, [&] { holder.sum.shownLeaves += change; });
        return change;
    }
    if (record.has(HostItem::Visible) == on)
        return 0;
    changeState(record, [&] { record.set(HostItem::Visible, on); });
    if (record.kind == Kind::Atom)
        return static_cast<AtomItem&>(item).markShown();
    if (record.kind == Kind::Bond)
        return static_cast<BondItem&>(item).markShown();
    return record.isHolder() ? (on ? 1 : -1) : markShown(record, on);
}

} // namespace

void setVisible(HostItem& item, Compound* self, bool on) {
    if (listsMembers(item))
        for (Compound* member : static_cast<SetRecord&>(item).listed())
            setVisible(HostItem::of(member), member, on);
    else
        countShown(item, showWithin(*self, item, on));
}

void attachTo(Compound* child, Holder& parent) {
    HostItem& record = HostItem::of(child);
    ++selectionChanges;
    parent.appendChild(child);
    record.parent = &parent;
    addContribution(&parent, contributionOf(record));
    joinModels(*child);
}

void detach(Compound* child) {
    HostItem& record = HostItem::of(child);
    Holder* parent = record.parent;
    if (!parent)
        return;
    Holder* const residue = leaveModels(*child);
    parent->removeChild(record.position);
    record.parent = nullptr;
    addContribution(parent, -contributionOf(record));
    settleModel(residue);
}

} // namespace memory_host
