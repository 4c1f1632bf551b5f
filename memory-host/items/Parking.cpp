#include "Parking.h"

#include "Arrivals.h"
#include "AtomItem.h"
#include "Attaching.h"
#include "DataVersion.h"
#include "Destroying.h"
#include "FocusedItem.h"
#include "GridItem.h"
#include "ItemOrigin.h"
#include "Items.h"
#include "Models.h"
#include "Origins.h"
#include "Selection.h"
#include "Slabs.h"
#include "Step.h"

namespace memory_host {

namespace {

std::size_t originsOut = 0;

bool hasOrigin(const Compound& item) {
    return !TAVIK::OriginOf(&item).isEmpty();
}

bool isAtTop(const Compound& item) {
    return HostItem::of(&item).parent->kind == Kind::Space;
}

bool isIn(const HostItem& item, const HostItem& root) {
    const HostItem* at = &item;
    while (at && at != &root)
        at = at->parent;
    return at != nullptr;
}

const HostItem& topOf(const HostItem& item) {
    const HostItem* top = &item;
    while (top->parent && top->parent->kind != Kind::Space)
        top = top->parent;
    return *top;
}

// Runs `function(item, record)` on each leaf and composite at or in an item until it returns false.
template <class Function> bool forAllIn(Compound& item, const Function& function) {
    HostItem& record = HostItem::of(&item);
    if (record.isHolder()) {
        Holder& holder = record.asHolder();
        Compound** const last = holder.childEnd();
        for (Compound** child = holder.childBegin(); child != last; ++child)
            if (!forAllIn(**child, function))
                return false;
    }
    return function(item, record);
}

// Records and takes what ties an item to others that stay or that go with it by themselves.
class Loosening {
public:
    Loosening(Compound& root, Step& step)
        : m_root(HostItem::of(&root)), m_top(topOf(m_root)), m_step(step) {}

    bool loosen(Compound& item, HostItem& record) const {
        prefetchAfter(&record);
        if (record.has(HostItem::InSets) && !m_step.leaveSetsOf(&item))
            return false;
        if (record.kind == Kind::Grid)
            return m_step.recordBounds(static_cast<GridItem&>(item));
        if (record.kind == Kind::Atom)
            return loosenBonds(static_cast<AtomItem&>(item));
        return record.kind != Kind::Bond || unlink(static_cast<BondItem&>(item));
    }

private:
    // A bond that stands elsewhere goes with its atom.
    bool loosenBonds(AtomItem& atom) const {
        for (BondItem* bond = atom.m_bonds; bond;) {
            BondItem* const next = bond->next(&atom);
            HostItem& record = HostItem::of(bond);
            if (!isIn(record, m_root)) {
                prefetchAfter(bond);
                if (&topOf(record) != &m_top) // Else the atom says so.
                    noteDataChange(record);
                if (!m_step.leaveSetsOf(bond) || !m_step.reserve(1) || !m_step.reserveMove())
                    return false;
                m_step.add(Step::Write::Unlink, false, static_cast<Compound*>(bond));
                bond->unlink();
                m_step.addMove(Step::Write::Detach, bond, record.parent);
                detach(bond);
            }
            bond = next;
        }
        return true;
    }

    // A bond in here may join atoms that stay.
    bool unlink(BondItem& bond) const {
        if (!bond.m_atoms[0] || bond.isUnlinked() || joinsWithin(bond))
            return true;
        if (!m_step.record(Step::Write::Unlink, static_cast<Compound*>(&bond)))
            return false;
        bond.unlink();
        return true;
    }
    bool joinsWithin(const BondItem& bond) const {
        return isIn(HostItem::of(bond.m_atoms[0]), m_root) &&
               isIn(HostItem::of(bond.m_atoms[1]), m_root);
    }

    const HostItem& m_root;
    const HostItem& m_top; ///< the entry that it is in
    Step& m_step;
};

} // namespace

bool destroyRecorded(Compound& item, Step& step) noexcept {
    const Loosening loosening(item, step);
    if (!forAllIn(item,
                  [&](Compound& each, HostItem& record) { return loosening.loosen(each, record); }))
        return false;
    if (!step.reserveMove())
        return false;
    step.addMove(Step::Write::Detach, &item, HostItem::of(&item).parent);
    const bool isTop = isAtTop(item);
    detach(&item);
    originsOut += isTop && hasOrigin(item) ? 1 : 0;
    return true;
}

bool recordLinks(Compound& item, Step& step) noexcept {
    const HostItem& root = HostItem::of(&item);
    return forAllIn(item, [&](Compound& each, HostItem& record) {
        if (record.kind != Kind::Bond)
            return true;
        const auto& bond = static_cast<BondItem&>(each);
        const bool isWithin = !bond.m_atoms[0] || (isIn(HostItem::of(bond.m_atoms[0]), root) &&
                                                   isIn(HostItem::of(bond.m_atoms[1]), root));
        return isWithin || step.record(Step::Write::Link, &each);
    });
}

std::size_t originsTakenOut() {
    return originsOut;
}

void takeOut(Compound& item) noexcept {
    const FocusKeptAway away(&item);
    tellBeforeDestroying(&item);
    ++selectionChanges;
    const bool isTop = isAtTop(item);
    detach(&item);
    originsOut += isTop && hasOrigin(item) ? 1 : 0;
}

void putBack(Compound& item, Holder& parent) noexcept {
    HostItem& record = HostItem::of(&item);
    ++selectionChanges;
    originsOut -= parent.kind == Kind::Space && hasOrigin(item) ? 1 : 0;
    parent.restoreChild(&item);
    record.parent = &parent;
    addContribution(&parent, contributionOf(record));
    joinModels(item);
}

bool freeTakenOut(Compound* item, std::size_t& most) noexcept {
    HostItem& record = HostItem::of(item);
    if (most == 0 || (record.isHolder() && !freeChildren(record.asHolder(), most)))
        return false;
    most -= most != 0 ? 1 : 0;
    originsOut -= hasOrigin(*item) ? 1 : 0;
    freeDetached(item);
    return true;
}

void freeDetached(Compound* item) noexcept {
    forgetOrigin(HostItem::of(item));
    forgetArrival(HostItem::of(item));
    forgetDataVersion(HostItem::of(item));
    freeItem(item);
}

std::uint8_t ownMarksOf(const Holder* holder) {
    return holder ? holder->flags & (HostItem::Selected | HostItem::Visible) : 0;
}

void setOwnMarks(Holder& holder, std::uint32_t marks) {
    if (holder.sum.leaves != 0)
        return;
    const Contribution before = contributionOf(holder);
    changeState(holder, [&] {
        holder.set(HostItem::Selected, (marks & HostItem::Selected) != 0);
        holder.set(HostItem::Visible, (marks & HostItem::Visible) != 0);
    });
    addContribution(holder.parent, contributionOf(holder) - before);
}

std::size_t memoryOf(const TAVIK::SurfaceMesh& mesh) {
    const auto of = [](const auto& vector) { return vector.capacity() * sizeof(vector[0]); };
    return sizeof mesh + of(mesh.vertices) + of(mesh.normals) + of(mesh.triangles) +
           of(mesh.colors) + of(mesh.values) + of(mesh.atoms);
}

std::size_t memoryOf(const TAVIK::GridValues& grid) {
    return grid.values.capacity() * sizeof(float);
}

namespace {

constexpr std::size_t slot = sizeof(Compound*);
constexpr std::size_t atomBytes = sizeof(AtomItem) + annexSize + slot;
constexpr std::size_t bondBytes = sizeof(BondItem) + slot;

// All but atoms and bonds.
std::size_t largeIn(const Holder& holder) {
    std::size_t bytes = 0;
    for (std::uint32_t i = holder.begin; holder.has(HostItem::HeldLarge) && i != holder.end; ++i) {
        const Compound* const child = holder.children[i];
        if (!child)
            continue;
        HostItem& record = HostItem::of(child);
        if (record.isHolder())
            bytes += largeIn(record.asHolder());
        else if (Holder::holdsLarge(record))
            bytes += memoryOf(*child);
    }
    return bytes;
}

std::size_t memoryOf(const Holder& holder) {
    constexpr std::size_t composite = sizeof(ResidueItem) + slot;
    // Few composites hold fewer leaves.
    constexpr std::size_t leavesOfComposite = 8;
    const auto atoms = static_cast<std::size_t>(holder.sum.atoms);
    const auto leaves = static_cast<std::size_t>(holder.sum.leaves);
    return composite + atoms * atomBytes + (leaves - atoms) * bondBytes +
           leaves / leavesOfComposite * composite + largeIn(holder);
}

} // namespace

std::size_t memoryOf(const Compound& item) {
    const HostItem& record = HostItem::of(&item);
    switch (record.kind) {
    case Kind::Atom:
        return atomBytes;
    case Kind::Bond:
        return bondBytes;
    case Kind::Surface: {
        const auto& mesh = static_cast<const SurfaceItem&>(item).m_mesh;
        return sizeof(SurfaceItem) + (mesh ? memoryOf(*mesh) : 0);
    }
    case Kind::Grid:
        return sizeof(GridItem) + memoryOf(static_cast<const GridItem&>(item).m_values);
    case Kind::PolyLine:
        return sizeof(PolyLineItem) +
               static_cast<const PolyLineItem&>(item).m_points.capacity() * sizeof(TAVIK::Vertex);
    case Kind::Set:
        return sizeof(SetItem) + static_cast<const SetRecord&>(record).places.capacity() * 5 * slot;
    default:
        return memoryOf(static_cast<const Holder&>(record));
    }
}

} // namespace memory_host
