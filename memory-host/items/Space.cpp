// The data space itself, the operations that every item has, and the walks over the data.
#include "Space.h"

#include "Items.h"
#include "SelectionChanges.h"
#include "Traversal.h"

#include <algorithm>

namespace memory_host {

namespace {

bool showSelection = true;

// Appends what `wanted` says of each item, depth first; `enter` says which composites are looked
// into.
template <class Wanted, class Enter>
void collect(Compound* item, const Wanted& wanted, const Enter& enter,
             std::vector<Compound*>& out) {
    HostItem& record = HostItem::of(item);
    if (wanted(record)) {
        out.push_back(item);
        return;
    }
    if (!record.isHolder() || !enter(record.asHolder()))
        return;
    Holder& holder = record.asHolder();
    Compound** const last = holder.childEnd();
    for (Compound** child = holder.childBegin(); child != last; ++child)
        collect(*child, wanted, enter, out);
}

// The same for a kind of composites: what holds leaves alone is not entered.
template <Kind kind> void collectHolders(Compound* root, std::vector<Compound*>& out, bool all) {
    if (!root)
        return;
    collect(
        root,
        [all](const HostItem& item) { return item.kind == kind && (all || isSelected(item)); },
        [all](const Holder& holder) {
            // Neither groups nor residues stand inside their own kind, at any depth.
            return holder.kind != kind && holder.directLeaves != holder.childCount() &&
                   (all || hasSelected(holder));
        },
        out);
}

// The counters say where there are atoms, and composites that hold atoms alone are taken over as
// they are: most atoms are not looked at.
void collectAtoms(Holder& holder, std::vector<Compound*>& out, bool all) {
    const Contribution& sum = holder.sum;
    if ((all ? sum.atoms : sum.selectedAtoms) == 0)
        return;
    const bool everyAtom = all || sum.selectedAtoms == sum.atoms;
    Compound** const first = holder.childBegin();
    Compound** const last = holder.childEnd();
    if (everyAtom && holder.directAtoms == holder.childCount()) {
        out.insert(out.end(), first, last);
        return;
    }
    for (Compound** child = first; child != last; ++child) {
        HostItem& record = HostItem::of(*child);
        if (record.isHolder())
            collectAtoms(record.asHolder(), out, all);
        else if (record.kind == Kind::Atom && (everyAtom || record.has(HostItem::Selected)))
            out.push_back(*child);
    }
}

} // namespace

} // namespace memory_host

namespace TAVIK {

using namespace memory_host;

Compound::~Compound() = default;
Composite::~Composite() = default;
Space::~Space() = default;
Molecule::~Molecule() = default;
Residue::~Residue() = default;
Group::~Group() = default;
Atom::~Atom() = default;
Bond::~Bond() = default;
Surface::~Surface() = default;
Grid::~Grid() = default;

Space* Space::instance() {
    // Never destroyed: plug-ins and static objects may look at it until the process ends.
    static auto* const space = new SpaceItem(Name());
    return space;
}

bool Space::GetShowSelection() {
    return showSelection;
}

void Space::SetShowSelection(bool on) {
    showSelection = on;
}

std::uint64_t SelectionChanges() {
    return selectionChanges;
}

std::string Compound::GetFQName() const {
    const HostItem& record = HostItem::of(this);
    if (record.kind == Kind::Space)
        return {};
    const auto forEachHolder = [&record](auto use) {
        for (const Holder* holder = record.parent; holder; holder = holder->parent)
            if (holder->kind != Kind::Group && holder->kind != Kind::Space)
                use(holder->name.text());
    };
    // Written once, from its end: name patterns ask for a name for each group of atoms.
    const std::string own = GetName();
    std::size_t size = 1 + own.size();
    forEachHolder([&size](const std::string& component) { size += 1 + component.size(); });
    std::string name(size, '/');
    auto end = std::copy_backward(own.begin(), own.end(), name.end()) - 1;
    forEachHolder([&end](const std::string& component) {
        end = std::copy_backward(component.begin(), component.end(), end) - 1;
    });
    return name;
}

unsigned int Compound::GetId() const {
    return HostItem::of(this).id;
}

Compound** Compound::PartBegin() {
    HostItem& record = hostItem();
    if (record.kind == Kind::Set)
        return static_cast<SetRecord&>(record).listed().data();
    if (record.kind == Kind::Bond && static_cast<BondItem*>(this)->m_atoms[0])
        return static_cast<BondItem*>(this)->m_atoms.data();
    return nullptr;
}

Compound** Compound::PartEnd() {
    HostItem& record = hostItem();
    Compound** const begin = PartBegin();
    if (record.kind == Kind::Set)
        return begin + static_cast<SetRecord&>(record).memberCount();
    return begin ? begin + 2 : nullptr;
}

Color Compound::GetColor() const {
    return Color(HostItem::of(this).color);
}

void Compound::SetColor(const Color& color) {
    hostItem().color = color.rgba();
}

void Compound::RestoreColor() {
    HostItem& record = hostItem();
    record.color = defaultColor(record).rgba();
}

void Compound::ToggleSelected() {
    SetSelected(!IsSelected());
}

void Compound::ToggleVisible() {
    SetVisible(!IsVisible());
}

void GetAtoms(Compound* root, std::vector<Compound*>& out, bool all) {
    if (!root)
        return;
    HostItem& record = HostItem::of(root);
    if (record.isHolder()) {
        const Contribution& sum = record.asHolder().sum;
        const std::size_t needed =
            out.size() + static_cast<std::size_t>(all ? sum.atoms : sum.selectedAtoms);
        // Callers gather from many composites in turn: room is never made for one of them alone.
        if (needed > out.capacity())
            out.reserve(std::max(needed, 2 * out.capacity()));
        collectAtoms(record.asHolder(), out, all);
    } else if (record.kind == Kind::Atom && (all || isSelected(record))) {
        out.push_back(root);
    }
}

void GetGroups(Compound* root, std::vector<Compound*>& out, bool all) {
    collectHolders<Kind::Group>(root, out, all);
}

void GetResidues(Compound* root, std::vector<Compound*>& out, bool all) {
    collectHolders<Kind::Residue>(root, out, all);
}

void GetSelected(Compound* root, std::vector<Compound*>& out) {
    if (!root)
        return;
    const HostItem* const rootRecord = &HostItem::of(root);
    collect(
        root,
        [rootRecord](const HostItem& item) {
            // A set lists what stands elsewhere: there it is found.
            return &item != rootRecord && item.kind != Kind::Set && isSelected(item);
        },
        [](const Holder& holder) { return hasSelected(holder); }, out);
}

} // namespace TAVIK
