// Creating and destroying items, for plug-ins and for file readers.
#include "DataMaker.h"

#include "Items.h"
#include "Origins.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_set>

namespace memory_host {

namespace {

constexpr std::array<const char*, 11> kindNames = {"Composite", "Space",    "Molecule", "Residue",
                                                   "Group",     "Atom",     "Bond",     "Surface",
                                                   "Grid",      "PolyLine", "Set"};

// A name, which is Latin-1, as the warnings take it.
QByteArray utf8(const std::string& name) {
    return QString::fromLatin1(name).toUtf8();
}

// What cannot be done is said once, here, and makes nothing.
Holder* holderOf(Compound* parent, const char* what, const std::string& name) {
    if (!parent) {
        qWarning("%s: no parent for \"%s\"", what, utf8(name).constData());
        return nullptr;
    }
    HostItem& record = HostItem::of(parent);
    if (!record.isHolder()) {
        qWarning("%s: \"%s\" holds no items, so that \"%s\" cannot be made in it", what,
                 utf8(parent->GetName()).constData(), utf8(name).constData());
        return nullptr;
    }
    return &record.asHolder();
}

bool findKind(const std::string& className, const std::string& name, Kind& kind) {
    if (kindOfName(className, kind))
        return true;
    qWarning("makeCore: there is no kind \"%s\" for \"%s\"", className.c_str(), name.c_str());
    return false;
}

// What holds residues or groups is searched down to the first ones only, and a residue's models are
// those of all its atoms: neither stands in its own kind, at any depth.
constexpr std::array<Kind, 2> singleKinds = {Kind::Residue, Kind::Group};

void refuseNested(const char* what, Kind kind, const std::string& name, const Holder& parent) {
    const char* const word = kind == Kind::Residue ? "residue" : "group";
    qWarning("%s: \"%s\" cannot stand in \"%s\": no %s stands in a %s", what,
             utf8(name).constData(), utf8(parent.self->GetName()).constData(), word, word);
}

// Whether an item is of that kind or holds one that is.
bool isOrHolds(const HostItem& item, Kind kind) {
    if (item.kind == kind)
        return true;
    if (!item.isHolder())
        return false;
    const auto& holder = static_cast<const Holder&>(item);
    if (holder.directLeaves == holder.childCount())
        return false;
    return std::any_of(
        holder.children + holder.begin, holder.children + holder.end,
        [kind](const Compound* child) { return child && isOrHolds(HostItem::of(child), kind); });
}

// Owns an item until it is attached, also when something throws in between.
template <class ItemClass> ItemClass* attachNew(std::unique_ptr<ItemClass> item, Holder& parent) {
    attachTo(item.get(), parent);
    return item.release();
}

void freeItem(Compound* item);

void freeBond(BondItem* bond) {
    detach(bond);
    freeItem(bond);
}

// Frees a detached item and what it holds. Nothing in it is counted any more.
void freeItem(Compound* item) {
    HostItem& record = HostItem::of(item);
    leaveSets(record);
    switch (record.kind) {
    case Kind::Atom:
        while (BondItem* bond = static_cast<AtomItem*>(item)->m_bonds)
            freeBond(bond);
        break;
    case Kind::Bond:
        static_cast<BondItem*>(item)->disconnect();
        break;
    default:
        break;
    }
    if (record.isHolder()) {
        // Bonds in here may go before their turn, with an atom: their children are null then.
        Holder& holder = record.asHolder();
        for (std::uint32_t slot = holder.begin, end = holder.end; slot != end; ++slot) {
            if (Compound* child = holder.children[slot]) {
                HostItem::of(child).parent = nullptr;
                holder.removeChild(slot);
                freeItem(child);
            }
        }
    }
    delete item;
}

} // namespace

Compound* newItem(Kind kind, std::string_view text) {
    Name name = Name::component(text);
    switch (kind) {
    case Kind::Composite:
        return new CompositeItem(std::move(name));
    case Kind::Molecule:
        return new MoleculeItem(std::move(name));
    case Kind::Residue:
        return new ResidueItem(std::move(name));
    case Kind::Group:
        return new GroupItem(std::move(name));
    case Kind::Atom: {
        auto atom = std::make_unique<AtomItem>(std::move(name));
        atom->setValues({{}, "X", {}, 0.0F, 0});
        return atom.release();
    }
    case Kind::Bond:
        return new BondItem(std::move(name));
    case Kind::Surface:
        return new SurfaceItem(std::move(name));
    case Kind::Grid:
        return new GridItem(std::move(name));
    case Kind::PolyLine:
        return new PolyLineItem(std::move(name));
    case Kind::Set:
        return new SetItem(std::move(name));
    case Kind::Space:
        break;
    }
    return nullptr;
}

bool kindOfName(const std::string& className, Kind& kind) {
    for (std::size_t i = 0; i != kindNames.size(); ++i) {
        kind = static_cast<Kind>(i);
        // What needs more than a name has a maker of its own, and there is one space.
        const bool makable = kind != Kind::Space && kind < Kind::PolyLine;
        if (makable && className == kindNames[i])
            return true;
    }
    return false;
}

std::string kindName(Kind kind) {
    return kindNames[static_cast<std::size_t>(kind)];
}

Compound* makeDetached(const std::string& name, const std::string& className) {
    Kind kind{};
    return findKind(className, name, kind) ? newItem(kind, name) : nullptr;
}

void attach(Compound* detached, Compound* parent) {
    Holder* holder = detached ? holderOf(parent, "attach", detached->GetName()) : nullptr;
    if (!holder)
        return;
    const HostItem& record = HostItem::of(detached);
    const HostItem* root = holder;
    while (root->parent)
        root = root->parent;
    if (record.parent || record.kind == Kind::Space || root == &record) {
        qWarning("attach: \"%s\" is not detached from \"%s\"", detached->GetName().c_str(),
                 parent->GetName().c_str());
        return;
    }
    for (const Kind kind : singleKinds) {
        if (nearest(kind, holder) && isOrHolds(record, kind)) {
            refuseNested("attach", kind, detached->GetName(), *holder);
            return;
        }
    }
    struct Shrink {
        static void all(Holder& of) {
            of.shrink();
            for (std::uint32_t slot = of.begin; slot != of.end; ++slot) {
                HostItem& child = HostItem::of(of.children[slot]);
                if (child.isHolder())
                    all(child.asHolder());
            }
        }
    };
    if (HostItem::of(detached).isHolder())
        Shrink::all(HostItem::of(detached).asHolder());
    attachTo(detached, *holder);
}

TAVIK::Atom* addAtom(Compound* parent, const AtomRecord& values) {
    Holder* holder = holderOf(parent, "addAtom", std::string(values.name));
    if (!holder)
        return nullptr;
    Name name = Name::component(values.name);
    const TAVIK::PartialCharge& partial = values.partial;
    std::unique_ptr<AtomItem> atom =
        partial.isKnown
            ? std::make_unique<ChargedAtomItem>(std::move(name), partial.charge, partial.radius)
            : std::make_unique<AtomItem>(std::move(name));
    atom->setValues(values);
    return attachNew(std::move(atom), *holder);
}

void setAtom(Compound* item, const AtomRecord& values) {
    auto* const atom = dynamic_cast<AtomItem*>(item);
    if (!atom)
        return;
    // What can fail comes before the first change.
    const Name type(values.type);
    Holder* const residue = leaveModels(*atom);
    atom->setValues(values);
    HostItem::of(atom).set(HostItem::OtherModel, false);
    joinModels(*atom);
    settleModel(residue);
    atom->updateShown();
}

TAVIK::Bond* addBond(Compound* parent, Compound* a, Compound* b) {
    Holder* holder = holderOf(parent, "addBond", "bond");
    auto* const first = dynamic_cast<AtomItem*>(a);
    auto* const second = dynamic_cast<AtomItem*>(b);
    if (!holder || !first || !second || first == second)
        return nullptr;
    auto bond = std::make_unique<BondItem>(Name());
    BondItem* const made = bond.get();
    attachNew(std::move(bond), *holder);
    made->connect(first, second);
    return made;
}

TAVIK::Grid* addGrid(Compound* parent, const std::string& name, GridRecord&& values) {
    Holder* holder = holderOf(parent, "addGrid", name);
    if (!holder)
        return nullptr;
    auto grid = std::make_unique<GridItem>(Name::component(name));
    grid->setValues(std::move(values));
    return attachNew(std::move(grid), *holder);
}

void setGrid(Compound* item, GridRecord&& values) {
    if (auto* const grid = dynamic_cast<GridItem*>(item))
        grid->setValues(std::move(values));
}

unsigned int activeModel(Compound* residue) {
    const HostItem& record = HostItem::of(residue);
    return record.kind == Kind::Residue ? record.model : 0;
}

std::vector<TAVIK::Vertex> polyLinePoints(Compound* item) {
    const auto* const line = dynamic_cast<PolyLineItem*>(item);
    return line ? line->m_points : std::vector<TAVIK::Vertex>();
}

const std::vector<float>& gridValues(Compound* item) {
    static const std::vector<float> none;
    const auto* const grid = dynamic_cast<GridItem*>(item);
    return grid ? grid->m_values.values : none;
}

Compound* parentOf(Compound* item) {
    const Holder* parent = HostItem::of(item).parent;
    return parent ? parent->self : nullptr;
}

} // namespace memory_host

namespace TAVIK {

using namespace memory_host;

PartialCharge GetPartialCharge(const Atom* atom) {
    const auto* const charged = dynamic_cast<const ChargedAtomItem*>(atom);
    return charged ? PartialCharge{charged->m_charge, charged->m_radius, true} : PartialCharge{};
}

Compound* DataMaker::makeCore(Compound* parent, const std::string& name, const std::string& kind) {
    Holder* holder = holderOf(parent, "makeCore", name);
    Kind wanted{};
    if (!holder || !findKind(kind, name, wanted))
        return nullptr;
    for (const Kind single : singleKinds) {
        if (wanted == single && nearest(single, holder)) {
            refuseNested("makeCore", single, name, *holder);
            return nullptr;
        }
    }
    return attachNew(std::unique_ptr<Compound>(newItem(wanted, name)), *holder);
}

Compound* DataMaker::makePolyLine(Compound* parent, const std::string& name,
                                  const std::vector<Vertex>& points) {
    Holder* holder = holderOf(parent, "makePolyLine", name);
    if (!holder)
        return nullptr;
    auto line = std::make_unique<PolyLineItem>(Name::component(name));
    line->m_points = points;
    return attachNew(std::move(line), *holder);
}

Compound* DataMaker::makeSet(Compound* parent, const std::string& name,
                             const std::vector<Compound*>& members) {
    Holder* holder = holderOf(parent, "makeSet", name);
    if (!holder)
        return nullptr;
    std::vector<Compound*> listed;
    std::unordered_set<Compound*> seen;
    listed.reserve(members.size());
    for (Compound* member : members)
        if (member && seen.insert(member).second)
            listed.push_back(member);
    auto set = std::make_unique<SetItem>(Name::component(name));
    listMembers(static_cast<SetRecord&>(HostItem::of(set.get())), listed);
    return attachNew(std::move(set), *holder);
}

void DataMaker::Destroy(Compound* item) {
    if (!item)
        return;
    if (HostItem::of(item).kind == Kind::Space) {
        qWarning("Destroy: the data space itself stays");
        return;
    }
    tellBeforeDestroying(item);
    ++selectionChanges;
    forgetOrigin(HostItem::of(item));
    detach(item);
    freeItem(item);
}

} // namespace TAVIK
