#include "HostTwin.h"

#include "AtomDetails.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "items/Building.h"

#include <functional>
#include <map>

namespace plain {

using TAVIK::Compound;

namespace {

std::vector<unsigned int> idsOf(const Items& items) {
    std::vector<unsigned int> ids;
    for (const Item* item : items)
        ids.push_back(item->id);
    return ids;
}

std::vector<unsigned int> idsOf(Compound** begin, Compound** end) {
    std::vector<unsigned int> ids;
    for (; begin != end; ++begin)
        ids.push_back((*begin)->GetId());
    return ids;
}

std::vector<std::array<float, 3>> cornersOf(Compound* item) {
    std::vector<std::array<float, 3>> corners;
    const std::vector<TAVIK::Vertex>* const points = TAVIK::GetPolyLinePoints(item);
    if (!points)
        return corners;
    for (const TAVIK::Vertex& at : *points)
        if (at.isValid())
            corners.push_back({at[0], at[1], at[2]});
    return corners;
}

AtomDetails detailsOf(const TAVIK::Atom* atom) {
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
    return {details.occupancy, details.formalCharge, details.alternative, details.isHetero};
}

void enterGrid(Item& item, const TAVIK::Grid& grid) {
    const TAVIK::GridValues* const values = TAVIK::GetGridValues(&grid);
    item.origin = values->origin;
    for (const std::size_t k : {0, 1, 2}) {
        item.points[k] = grid.m_points[k];
        item.lower[k] = grid.m_lower[k];
        item.upper[k] = grid.m_upper[k];
        item.step[k] = values->steps[k][k];
    }
}

// Whether the item is of the class that a plug-in tells its kind by.
bool isOfItsClass(const Item& item, Compound* real) {
    const auto is = [&](Kind kind, const auto* found) { return (item.kind == kind) == !!found; };
    return is(Kind::Space, dynamic_cast<TAVIK::Space*>(real)) &&
           is(Kind::Molecule, dynamic_cast<TAVIK::Molecule*>(real)) &&
           is(Kind::Residue, dynamic_cast<TAVIK::Residue*>(real)) &&
           is(Kind::Group, dynamic_cast<TAVIK::Group*>(real)) &&
           is(Kind::Atom, dynamic_cast<TAVIK::Atom*>(real)) &&
           is(Kind::Bond, dynamic_cast<TAVIK::Bond*>(real)) &&
           is(Kind::Surface, dynamic_cast<TAVIK::Surface*>(real)) &&
           is(Kind::Grid, dynamic_cast<TAVIK::Grid*>(real)) &&
           item.isComposite() == (dynamic_cast<TAVIK::Composite*>(real) != nullptr);
}

void compareValues(Comparison& all, const Item& item, Compound* real) {
    all.same("type", item.kind == Kind::Atom ? item.type : kindName(item.kind), real->GetType());
    all.same("class", true, isOfItsClass(item, real));
    all.same("corners", item.corners, cornersOf(real));
    if (const auto* const atom = dynamic_cast<TAVIK::Atom*>(real)) {
        const TAVIK::Vertex at = real->GetPosition();
        all.same("details", true, item.details == detailsOf(atom));
        all.same("model", std::to_string(item.model), atom->GetModelNumber());
        all.same("temperature", item.temperature, atom->GetTemperature());
        all.same("has a position", item.hasPosition, at.isValid());
        for (const std::size_t k : {0, 1, 2})
            all.same("position", item.position[k], at[k]);
    } else if (const auto* const grid = dynamic_cast<TAVIK::Grid*>(real)) {
        for (const std::size_t k : {0, 1, 2}) {
            all.same("points", item.points[k], grid->m_points[k]);
            all.same("lower bound", item.lower[k], grid->m_lower[k]);
            all.same("upper bound", item.upper[k], grid->m_upper[k]);
        }
    }
    all.same("active model", item.kind == Kind::Residue ? item.model : 0,
             memory_host::activeModel(real));
}

} // namespace

Item* enterItem(Compound* real, Host& host, Item* parent) {
    std::map<Compound*, Item*> entered;
    const std::function<Item*(Compound*, Item*)> enter = [&](Compound* item, Item* holder) {
        int kind = 0;
        const auto* const atom = dynamic_cast<TAVIK::Atom*>(item);
        if (atom)
            kind = int(Kind::Atom);
        else
            while (kindName(Kind(kind)) != item->GetType())
                ++kind;
        Item* made = host.enter(Kind(kind), item->GetName(), item->GetId());
        entered[item] = made;
        if (atom) {
            const TAVIK::Vertex at = item->GetPosition();
            host.setAtom(*made, {item->GetType(),
                                 {at[0], at[1], at[2]},
                                 at.isValid(),
                                 atom->GetTemperature(),
                                 unsigned(std::stoi(atom->GetModelNumber()))});
            made->details = detailsOf(atom);
            made->serial = TAVIK::GetAtomDetails(atom).serial;
        } else if (const auto* const grid = dynamic_cast<TAVIK::Grid*>(item)) {
            enterGrid(*made, *grid);
        }
        for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
            enter(*child, made);
        for (Compound** part = item->PartBegin(); part != item->PartEnd(); ++part)
            made->parts.push_back(entered.at(*part));
        host.attach(made, holder);
        return made;
    };
    Item* const made = enter(real, parent);
    host.settle();
    return made;
}

void compareItem(Comparison& all, const Item& item, Compound* real) {
    if (all.isFull())
        return;
    all.lookAt("item", &item);
    if (item.kind != Kind::Space) {
        all.same("id", item.id, real->GetId());
        all.same("name", item.name, real->GetName());
        all.same("qualified name", Host::qualifiedName(item), real->GetFQName());
        all.same("colour", item.color, real->GetColor().rgba());
    }
    all.same("selected", Host::isSelected(item), real->IsSelected());
    all.same("has selected", Host::hasSelected(item), real->HasSelected());
    all.same("visible", Host::isVisible(item), real->IsVisible());
    all.same("has children", !item.children.empty(), real->HasChildren());
    all.same("parts", idsOf(item.parts), idsOf(real->PartBegin(), real->PartEnd()));
    const std::vector<unsigned int> children = idsOf(item.children);
    const std::vector<unsigned int> realChildren = idsOf(real->ChildBegin(), real->ChildEnd());
    all.same("children", children, realChildren);
    compareValues(all, item, real);
    if (children == realChildren)
        for (std::size_t i = 0; i != children.size(); ++i)
            compareItem(all, *item.children[i], real->ChildBegin()[i]);
}

void compareWalks(Comparison& all, Host& host) {
    Compound* const space = TAVIK::Space::instance();
    std::vector<Compound*> atoms;
    std::vector<Compound*> selectedAtoms;
    std::vector<Compound*> selected;
    TAVIK::GetAtoms(space, atoms, true);
    TAVIK::GetAtoms(space, selectedAtoms, false);
    TAVIK::GetSelected(space, selected);
    const auto idsIn = [](std::vector<Compound*>& items) {
        return idsOf(items.data(), items.data() + items.size());
    };
    all.lookAt("", nullptr);
    all.same("atoms", idsOf(Host::atOrBelow(host.space(), Kind::Atom, true)), idsIn(atoms));
    all.same("selected atoms", idsOf(Host::atOrBelow(host.space(), Kind::Atom, false)),
             idsIn(selectedAtoms));
    all.same("selected items", idsOf(Host::topmostSelected(host.space())), idsIn(selected));
}

} // namespace plain
