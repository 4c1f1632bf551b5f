#include "Selection.h"

#include "AtomItem.h"
#include "Holder.h"
#include "Recording.h"
#include "SelectedChildren.h"
#include "SelectionChanges.h"
#include "Sets.h"
#include "Slabs.h"

#include <cstdlib>

namespace memory_host {

namespace {

void mark(HostItem& item, bool on) {
    changeState(item, [&] { item.set(HostItem::Selected, on); });
    if (item.parent)
        item.parent->markChild(item.position, on);
}

// Marks everything in a composite. Each composite's counters are set once, and not for each of what
// may be millions of leaves.
// Records what changes in `step` if there is one.
void selectBelow(Holder& holder, bool on, Step* step) {
    const std::int32_t wanted = on ? holder.sum.leaves : 0;
    if (holder.sum.selectedLeaves == wanted)
        return;
    ++selectionChanges;
    if (step && holder.sum.selectedLeaves == holder.sum.leaves - wanted) {
        step->add(Step::Write::Select, on, static_cast<HostItem*>(&holder));
        step = nullptr;
    }
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        prefetchAfter(&record);
        if (record.isHolder() && record.asHolder().sum.leaves > 0)
            selectBelow(record.asHolder(), on, step);
        else if (record.has(HostItem::Selected) != on && !listsMembers(record)) {
            if (step)
                step->add(Step::Write::Select, on, &record);
            mark(record, on);
        }
    }
    changeState(holder, [&] {
        holder.sum.selectedLeaves = wanted;
        holder.sum.selectedAtoms = on ? holder.sum.atoms : 0;
    });
}

// Adds a change of the selection to the counters of all composites above an item.
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
        const std::int32_t wanted = on ? before.leaves : 0;
        Step* const step = stepFor(item);
        if (step &&
            !step->reserve(static_cast<std::size_t>(std::abs(wanted - before.selectedLeaves))))
            return;
        selectBelow(item.asHolder(), on, step);
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
    if (Step* const step = stepFor(item)) {
        if (!step->reserve(1))
            return;
        step->add(Step::Write::Select, on, &item);
    }
    ++selectionChanges;
    mark(item, on);
    const std::int32_t change = on ? 1 : -1;
    countSelected(item, change, item.kind == Kind::Atom ? change : 0);
}

namespace {

// Marks leaves one by one. What is above those that follow one another in a composite is counted
// once.
class LeafMarks {
public:
    explicit LeafMarks(bool on) : m_on(on), m_each(on ? 1 : -1) {}
    ~LeafMarks() { goOnIn(nullptr); }
    LeafMarks(const LeafMarks&) = delete;
    LeafMarks& operator=(const LeafMarks&) = delete;

    bool wouldChange(const HostItem& leaf) const { return leaf.has(HostItem::Selected) != m_on; }
    void add(HostItem& leaf) {
        ++selectionChanges;
        if (leaf.parent != m_around)
            goOnIn(leaf.parent);
        mark(leaf, m_on);
        ++m_within.leaves;
        m_within.atoms += leaf.kind == Kind::Atom ? 1 : 0;
    }
    void goOnIn(Holder* next) {
        if (m_around) {
            changeState(*m_around, [this] {
                m_around->sum.selectedLeaves += m_within.leaves * m_each;
                m_around->sum.selectedAtoms += m_within.atoms * m_each;
            });
            m_above.leaves += m_within.leaves;
            m_above.atoms += m_within.atoms;
            if (!next || next->parent != m_around->parent) {
                countSelected(*m_around, m_above.leaves * m_each, m_above.atoms * m_each);
                m_above = {};
            }
        }
        m_within = {};
        m_around = next;
    }

private:
    struct Count {
        std::int32_t leaves = 0;
        std::int32_t atoms = 0;
    };

    bool m_on;
    std::int32_t m_each;
    Holder* m_around = nullptr; ///< of the last one that changed
    Count m_within;             ///< changes that it has not counted yet
    Count m_above;              ///< changes that the composite above has not counted yet
};

} // namespace

void selectAtoms(std::span<Compound* const> atoms, bool on) {
    Step* const step = atoms.empty() ? nullptr : stepFor(HostItem::of(atoms.front()));
    if (step && !step->reserve(atoms.size()))
        return;
    LeafMarks marks(on);
    for (Compound* const atom : atoms) {
        HostItem& record = static_cast<AtomItem*>(atom)->record();
        if (!marks.wouldChange(record))
            continue;
        if (step)
            step->add(Step::Write::Select, on, &record);
        marks.add(record);
    }
}

void selectEach(std::span<void* const> records, bool on) {
    LeafMarks marks(on);
    for (void* const each : records) {
        auto& record = *static_cast<HostItem*>(each);
        if (record.isHolder() && record.asHolder().sum.leaves > 0) {
            marks.goOnIn(nullptr);
            setSelected(record, on);
        } else if (marks.wouldChange(record)) {
            marks.add(record);
        }
    }
}

} // namespace memory_host

std::uint64_t TAVIK::SelectionChanges() {
    return memory_host::selectionChanges;
}

bool TAVIK::GetSelectedChildren(Compound* composite, SelectedChildren& told) {
    HostItem& record = HostItem::of(composite);
    return record.isHolder() && record.asHolder().tellSelected(told);
}
