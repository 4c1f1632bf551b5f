#include "Items.h"

#include <cmath>
#include <limits>

namespace memory_host {

namespace {

// The residue around an item, or null.
Holder* residueAround(const HostItem& item) {
    Holder* holder = item.parent;
    while (holder && holder->kind != Kind::Residue)
        holder = holder->parent;
    return holder;
}

std::string residuePrefix(const HostItem& atom) {
    const Holder* residue = residueAround(atom);
    return residue ? nameText(residue->name) + ' ' : std::string();
}

} // namespace

std::string BondItem::GetName() const {
    if (m_record.name || !m_atoms[0])
        return nameText(m_record.name);
    const HostItem& a = HostItem::of(m_atoms[0]);
    const HostItem& b = HostItem::of(m_atoms[1]);
    if (residueAround(a) == residueAround(b))
        return residuePrefix(a) + nameText(a.name) + '-' + nameText(b.name);
    return residuePrefix(a) + nameText(a.name) + " - " + residuePrefix(b) + nameText(b.name);
}

AtomItem* BondItem::atom(int end) const {
    return static_cast<AtomItem*>(m_atoms[static_cast<std::size_t>(end)]);
}

int BondItem::endAt(const AtomItem* atom) const {
    return m_atoms[0] == atom ? 0 : 1;
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

// Counts a leaf, or an empty composite, as shown or not.
void countShown(HostItem& item, bool shown) {
    const std::int32_t change = shown ? 1 : -1;
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] { holder->sum.shownLeaves += change; });
}

void setShown(HostItem& leaf, bool shown) {
    if (leaf.has(HostItem::Shown) == shown)
        return;
    changeState(leaf, [&] { leaf.set(HostItem::Shown, shown); });
    countShown(leaf, shown);
}

} // namespace

void BondItem::updateShown() {
    bool shown = m_record.has(HostItem::Visible);
    for (const Compound* at : m_atoms)
        shown = shown && (!at || HostItem::of(at).has(HostItem::Shown));
    setShown(m_record, shown);
}

void AtomItem::updateShown() {
    const bool shown = m_record.has(HostItem::Visible) && !m_record.has(HostItem::OtherModel);
    if (shown == m_record.has(HostItem::Shown))
        return;
    setShown(m_record, shown);
    for (BondItem* bond = m_bonds; bond;
         bond = bond->m_links[static_cast<std::size_t>(bond->endAt(this))].next)
        bond->updateShown();
}

void AtomItem::setValues(const AtomRecord& values) {
    for (const std::size_t axis : {0, 1, 2})
        m_position[axis] = values.position[axis];
    m_record.set(HostItem::HasPosition, values.position.isValid());
    m_temperature = values.temperature;
    m_record.model = static_cast<std::uint16_t>(
        std::min<unsigned int>(values.model, std::numeric_limits<std::uint16_t>::max()));
    m_record.type = internName(values.type);
    m_record.color = defaultColor(m_record).rgba();
}

bool GridItem::GetNearest(const TAVIK::Vertex& point, int* ijk) const {
    constexpr double far = 1 << 30;
    bool inside = true;
    for (const std::size_t axis : {0, 1, 2}) {
        double index = 0.0;
        for (const std::size_t k : {0, 1, 2})
            index += m_inverse[axis][k] * (static_cast<double>(point[k]) - m_values.origin[k]);
        // The comparison is written so that what is no number goes far below.
        const double bounded = index >= -far ? std::min(index, far) : -far;
        ijk[axis] = static_cast<int>(std::lround(bounded));
        inside = inside && ijk[axis] >= 0 && ijk[axis] < m_points[axis];
    }
    return inside;
}

void GridItem::setValues(GridRecord&& values) {
    m_values = std::move(values);
    for (const std::size_t axis : {0, 1, 2}) {
        m_points[axis] = m_values.points[axis];
        m_lower[axis] = 0;
        m_upper[axis] = m_points[axis];
    }
    // Columns of the matrix are the steps; its inverse by cofactors.
    const auto& s = m_values.steps;
    const auto cofactor = [&](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return s[r1][c1] * s[r2][c2] - s[r1][c2] * s[r2][c1];
    };
    double determinant = 0.0;
    for (const std::size_t k : {0, 1, 2})
        determinant += s[0][k] * cofactor(0, k);
    for (const std::size_t axis : {0, 1, 2})
        for (const std::size_t k : {0, 1, 2})
            m_inverse[axis][k] = determinant != 0.0 ? cofactor(axis, k) / determinant : 0.0;
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
    } else if (item.kind == Kind::Set) {
        const auto& set = static_cast<const SetRecord&>(item);
        if (set.memberCount() > 0)
            return set.selected == static_cast<std::int32_t>(set.memberCount());
    }
    return item.has(HostItem::Selected);
}

bool hasSelected(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        if (sum.leaves > 0)
            return sum.selectedLeaves > 0;
    } else if (item.kind == Kind::Set) {
        const auto& set = static_cast<const SetRecord&>(item);
        if (set.memberCount() > 0)
            return set.hasSelected > 0;
    }
    return item.has(HostItem::Selected);
}

bool isVisible(const HostItem& item) {
    if (item.isHolder()) {
        const Contribution& sum = static_cast<const Holder&>(item).sum;
        return sum.leaves > 0 ? sum.shownLeaves > 0 : item.has(HostItem::Visible);
    }
    if (item.kind == Kind::Set) {
        const auto& set = static_cast<const SetRecord&>(item);
        return set.memberCount() > 0 ? set.visible > 0 : item.has(HostItem::Visible);
    }
    return item.has(HostItem::Shown);
}

Contribution contributionOf(const HostItem& item) {
    if (item.kind == Kind::Set)
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
    for (; holder && change != Contribution{}; holder = holder->parent) {
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
    }
}

void setSelected(HostItem& item, bool on) {
    if (item.isHolder()) {
        Holder& holder = item.asHolder();
        if (holder.sum.leaves > 0) {
            if (holder.sum.selectedLeaves == (on ? holder.sum.leaves : 0))
                return;
            Compound** const last = holder.childEnd();
            for (Compound** child = holder.childBegin(); child != last; ++child) {
                HostItem& record = HostItem::of(*child);
                if (record.kind != Kind::Set)
                    setSelected(record, on);
            }
            return;
        }
    } else if (item.kind == Kind::Set) {
        auto& set = static_cast<SetRecord&>(item);
        for (Compound* member : set.listed())
            setSelected(HostItem::of(member), on);
        if (set.memberCount() > 0)
            return;
    }
    if (item.has(HostItem::Selected) == on)
        return;
    changeState(item, [&] { item.set(HostItem::Selected, on); });
    if (item.kind == Kind::Set)
        return;
    const std::int32_t change = on ? 1 : -1;
    const std::int32_t atoms = item.kind == Kind::Atom ? change : 0;
    for (Holder* holder = item.parent; holder; holder = holder->parent)
        changeState(*holder, [&] {
            holder->sum.selectedLeaves += change;
            holder->sum.selectedAtoms += atoms;
        });
}

void setVisible(HostItem& item, Compound* self, bool on) {
    if (item.isHolder()) {
        Holder& holder = item.asHolder();
        if (holder.sum.leaves > 0) {
            Compound** const last = holder.childEnd();
            for (Compound** child = holder.childBegin(); child != last; ++child) {
                HostItem& record = HostItem::of(*child);
                if (record.kind != Kind::Set)
                    setVisible(record, *child, on);
            }
            return;
        }
    } else if (item.kind == Kind::Set) {
        auto& set = static_cast<SetRecord&>(item);
        for (Compound* member : set.listed())
            setVisible(HostItem::of(member), member, on);
        if (set.memberCount() > 0)
            return;
    }
    if (item.has(HostItem::Visible) == on)
        return;
    changeState(item, [&] { item.set(HostItem::Visible, on); });
    switch (item.kind) {
    case Kind::Atom:
        static_cast<AtomItem&>(*self).updateShown();
        break;
    case Kind::Bond:
        static_cast<BondItem&>(*self).updateShown();
        break;
    case Kind::Set:
        break;
    default:
        if (item.isHolder())
            countShown(item, on);
        else
            setShown(item, on);
    }
}

void updateModelOf(HostItem& atom) {
    Holder* residue = residueAround(atom);
    if (residue && atom.model != 0 && residue->model == 0)
        residue->model = atom.model;
    atom.set(HostItem::OtherModel, residue && atom.model != 0 && atom.model != residue->model);
}

namespace {

template <class Function> void forAtomsIn(Holder& holder, const Function& function) {
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        if (record.kind == Kind::Atom)
            function(static_cast<AtomItem&>(**child), record);
        else if (record.isHolder())
            forAtomsIn(record.asHolder(), function);
    }
}

} // namespace

void switchModel(Holder& residue, ModelStep step) {
    // 0 stands for "none": models count from 1.
    std::uint16_t first = 0, last = 0, next = 0, previous = 0;
    forAtomsIn(residue, [&](const AtomItem&, const HostItem& atom) {
        const std::uint16_t model = atom.model;
        if (model == 0)
            return;
        if (first == 0 || model < first)
            first = model;
        last = std::max(last, model);
        if (model > residue.model && (next == 0 || model < next))
            next = model;
        if (model < residue.model)
            previous = std::max(previous, model);
    });
    if (first == 0)
        return;
    residue.model = step == ModelStep::First  ? first
                    : step == ModelStep::Next ? (next ? next : first)
                                              : (previous ? previous : last);
    forAtomsIn(residue, [](AtomItem& atom, HostItem& record) {
        updateModelOf(record);
        atom.updateShown();
    });
}

void attachTo(Compound* child, Holder& parent) {
    HostItem& record = HostItem::of(child);
    parent.appendChild(child);
    record.parent = &parent;
    addContribution(&parent, contributionOf(record));
    const bool inResidue = parent.kind == Kind::Residue || residueAround(parent);
    if (!inResidue)
        return;
    const auto update = [](AtomItem& atom, HostItem& atomRecord) {
        if (atomRecord.model == 0)
            return;
        updateModelOf(atomRecord);
        atom.updateShown();
    };
    if (record.kind == Kind::Atom)
        update(static_cast<AtomItem&>(*child), record);
    else if (record.isHolder() && record.asHolder().sum.atoms > 0)
        forAtomsIn(record.asHolder(), update);
}

void detach(Compound* child) {
    HostItem& record = HostItem::of(child);
    Holder* parent = record.parent;
    if (!parent)
        return;
    parent->removeChild(record.position);
    record.parent = nullptr;
    addContribution(parent, -contributionOf(record));
}

} // namespace memory_host
