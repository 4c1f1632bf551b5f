#include "Invariants.h"

#include "AtomItem.h"
#include "Holder.h"
#include "ItemOrigin.h"
#include "Origins.h"
#include "Parking.h"
#include "Sets.h"
#include "Space.h"

#include <algorithm>
#include <unordered_map>

namespace memory_host {

namespace {

class Check {
public:
    std::vector<std::string> run() {
        holder(HostItem::of(TAVIK::Space::instance()).asHolder(), nullptr);
        origins(HostItem::of(TAVIK::Space::instance()).asHolder());
        return std::move(m_faults);
    }

private:
    void expect(bool condition, const HostItem& item, const char* what) {
        if (!condition)
            m_faults.push_back("item " + std::to_string(item.id) + " (" + kindName(item.kind) +
                               "): " + what);
    }

    void holder(Holder& record, const Holder* parent) {
        expect(record.parent == parent, record, "has another parent than the one that holds it");
        if (record.kind == Kind::Residue || record.kind == Kind::Group)
            expect(!nearest(record.kind, record.parent), record, "stands in one of its own kind");
        if (record.restored)
            record.childBegin();
        Contribution sum;
        std::uint32_t holes = 0;
        std::uint32_t directLeaves = 0;
        std::uint32_t directAtoms = 0;
        std::uint32_t lastId = 0;
        std::uint64_t selected = 0;
        for (std::uint32_t slot = record.begin; slot != record.end; ++slot) {
            Compound* child = record.children[slot];
            if (!child) {
                ++holes;
                continue;
            }
            HostItem& item = HostItem::of(child);
            expect(item.position == slot, item, "does not stand where it believes to stand");
            expect(item.id > lastId || record.kind == Kind::Space, item,
                   "stands behind a younger one");
            lastId = item.id;
            if (item.isHolder())
                holder(item.asHolder(), &record);
            else
                leaf(*child, item, record);
            directLeaves += item.isHolder() ? 0 : 1;
            directAtoms += item.kind == Kind::Atom ? 1 : 0;
            if (slot < TAVIK::SelectedChildren::most && item.has(HostItem::Selected))
                selected |= std::uint64_t{1} << slot;
            expect(item.kind != Kind::Set || record.has(HostItem::HeldSet), record,
                   "does not know of a set in it");
            expect(!Holder::holdsLarge(item) || record.has(HostItem::HeldLarge), record,
                   "does not know what large items are in it");
            sum += contributionOf(item);
            marks(item);
        }
        if (record.kind == Kind::Residue) {
            const std::uint32_t counted = m_modelAtoms[&record];
            expect(counted == record.modelAtoms, record, "miscounts the atoms of its model");
            expect(counted > 0 || record.model == 0, record, "has a model without atoms");
        }
        expect(holes == record.holes, record, "miscounts its holes");
        expect(directLeaves == record.directLeaves && directAtoms == record.directAtoms, record,
               "miscounts its children");
        expect(sum == record.sum, record, "miscounts what it holds");
        const bool holdsOthers =
            directLeaves != record.childCount() || record.has(HostItem::HeldSet);
        expect(holdsOthers || selected == record.marks, record,
               "is wrong about its children's marks");
    }

    void leaf(Compound& item, const HostItem& record, const Holder& parent) {
        expect(record.parent == &parent, record, "has another parent than the one that holds it");
        bool shown = record.has(HostItem::Visible);
        if (record.kind == Kind::Atom) {
            shown = shown && !record.has(HostItem::OtherModel);
            model(record);
            const auto& atom = static_cast<AtomItem&>(item);
            for (const BondItem* bond = atom.m_bonds; bond; bond = bond->next(&atom))
                expect(bond->m_atoms[0] == &atom || bond->m_atoms[1] == &atom, record,
                       "lists a bond that is not its own");
        } else if (record.kind == Kind::Bond) {
            auto& bond = static_cast<BondItem&>(item);
            for (const Compound* atom : bond.m_atoms)
                shown = shown && (!atom || HostItem::of(atom).has(HostItem::Shown));
            for (const int end : {0, 1})
                links(bond, end);
        } else if (record.kind == Kind::Set) {
            set(static_cast<SetRecord&>(HostItem::of(&item)));
        }
        expect(shown == record.has(HostItem::Shown), record, "is shown where it should be hidden");
    }

    void model(const HostItem& atom) {
        const Holder* const residue = residueAround(atom);
        const bool counts = residue && atom.model != 0;
        if (counts && atom.model == residue->model)
            ++m_modelAtoms[residue];
        expect(atom.has(HostItem::OtherModel) == (counts && atom.model != residue->model), atom,
               "is wrong about the active model");
    }

    void links(const BondItem& bond, int end) {
        const AtomItem* const atom = bond.atom(end);
        const HostItem& record = HostItem::of(&bond);
        expect((atom != nullptr) == (bond.atom(1 - end) != nullptr), record, "has one atom only");
        if (!atom)
            return;
        const auto& [next, previous] = bond.m_links[static_cast<std::size_t>(end)];
        expect((previous ? previous->next(atom) : atom->m_bonds) == &bond, record,
               "is not listed where it should be");
        expect(!next ||
                   next->m_links[static_cast<std::size_t>(next->endAt(atom))].previous == &bond,
               record, "is followed by a bond that does not know of it");
    }

    void set(SetRecord& record) {
        struct {
            std::int32_t selected = 0, hasSelected = 0, visible = 0;
        } counted;
        for (Compound* member : record.listed()) {
            const HostItem& item = HostItem::of(member);
            const auto sets = setsOf(item);
            expect(std::find(sets.begin(), sets.end(), &record) != sets.end(), record,
                   "lists a member that does not know of it");
            const ItemState state = stateOf(item);
            counted.selected += state.selected ? 1 : 0;
            counted.hasSelected += state.hasSelected ? 1 : 0;
            counted.visible += state.visible ? 1 : 0;
        }
        expect(counted.selected == record.selected && counted.hasSelected == record.hasSelected &&
                   counted.visible == record.visible,
               record, "miscounts its members");
    }

    /// Origins are kept only of items that exist, at the top level.
    void origins(const Holder& space) {
        std::size_t found = 0;
        for (std::uint32_t slot = space.begin; slot != space.end; ++slot)
            if (const Compound* child = space.children[slot])
                found += TAVIK::OriginOf(child).isEmpty() ? 0 : 1;
        expect(found + originsTakenOut() == originCount(), space,
               "does not hold all items that files are kept of");
    }

    void marks(const HostItem& item) {
        expect(item.has(HostItem::InSets) == !setsOf(item).empty(), item,
               "is wrong about being in sets");
    }

    std::unordered_map<const Holder*, std::uint32_t> m_modelAtoms; ///< of the active models
    std::vector<std::string> m_faults;
};

} // namespace

std::vector<std::string> checkInvariants() {
    return Check().run();
}

} // namespace memory_host
