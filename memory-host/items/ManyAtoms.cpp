#include "ManyAtoms.h"

#include "AtomItem.h"
#include "Selection.h"
#include "Slabs.h"

#include <bit>
#include <cstddef>

namespace TAVIK {

using namespace memory_host;

namespace {

class PlaceWalk {
public:
    PlaceWalk(bool selected, AtomPlaceVisitor& visitor)
        : m_selected(selected), m_visitor(visitor) {}

    void walk(Holder& holder) {
        const Contribution& sum = holder.sum;
        if ((m_selected ? sum.selectedAtoms : sum.atoms - sum.selectedAtoms) == 0)
            return;
        Compound** const first = holder.childBegin();
        Compound** const last = holder.childEnd();
        if (holder.directAtoms == holder.childCount()) {
            SelectedChildren told;
            if (m_selected && holder.tellSelected(told))
                for (; told.marks != 0; told.marks &= told.marks - 1)
                    add(static_cast<AtomItem&>(*first[std::countr_zero(told.marks)]));
            else
                for (Compound** child = first; child != last; ++child)
                    add(static_cast<AtomItem&>(**child));
            return;
        }
        for (Compound** child = first; child != last; ++child) {
            HostItem& record = HostItem::of(*child);
            if (record.isHolder())
                walk(record.asHolder());
            else if (record.kind == Kind::Atom)
                add(static_cast<AtomItem&>(**child));
        }
    }
    void add(AtomItem& atom) {
        prefetchAfter(&atom);
        if (atom.record().has(HostItem::Selected) != m_selected)
            return;
        m_atoms[m_count] = &atom;
        m_places[m_count] = {atom.m_position, atom.record().has(HostItem::HasPosition)};
        if (++m_count == batch)
            visit();
    }
    void visit() {
        if (m_count == 0)
            return;
        const std::size_t count = m_count;
        m_count = 0;
        m_visitor.Visit({m_atoms.data(), count}, {m_places.data(), count});
    }

private:
    // Few enough to be in the processor's cache still when the visitor selects them.
    static constexpr std::size_t batch = AtomPlaceVisitor::most;

    bool m_selected;
    AtomPlaceVisitor& m_visitor;
    std::size_t m_count = 0;
    std::array<Compound*, batch> m_atoms;
    std::array<AtomPlace, batch> m_places;
};

} // namespace

void VisitAtomPlaces(Compound* root, bool selected, AtomPlaceVisitor& visitor) {
    if (!root)
        return;
    HostItem& record = HostItem::of(root);
    PlaceWalk walk(selected, visitor);
    if (record.isHolder())
        walk.walk(record.asHolder());
    else if (record.kind == Kind::Atom)
        walk.add(static_cast<AtomItem&>(*root));
    walk.visit();
}

void GetLooks(std::span<Compound* const> items, std::span<ItemLook> looks) {
    // The items may lie anywhere: the one that comes soon is fetched while this one is read.
    constexpr std::size_t ahead = 12;
    for (std::size_t i = 0; i != items.size(); ++i) {
        if (i + ahead < items.size())
            __builtin_prefetch(items[i + ahead]);
        ItemLook& look = looks[i];
        look = {};
        Compound* const item = items[i];
        if (!item)
            continue;
        const HostItem& record = HostItem::of(item);
        look.rgba = record.color;
        if (record.kind == Kind::Atom) {
            look.place = {static_cast<const AtomItem*>(item)->m_position,
                          record.has(HostItem::HasPosition)};
        } else if (record.kind != Kind::Bond) {
            look.isVisible = item->IsVisible();
            look.isSelected = item->IsSelected();
            continue;
        }
        look.isVisible = record.has(HostItem::Shown);
        look.isSelected = record.has(HostItem::Selected);
    }
}

void SelectAtoms(std::span<Compound* const> atoms, bool on) {
    selectAtoms(atoms, on);
}

} // namespace TAVIK
