#include "PlainSpace.h"

#include "Kinds.h"
#include "Traversal.h"
#include "items/Building.h"

#include <algorithm>
#include <set>

namespace plain {

Space::Space(Compound* root) : m_root(root) {
    add(root, Item::Holder, nullptr, {}, 0);
}

void Space::add(Compound* made, Item::Kind kind, Compound* parent,
                const std::vector<Compound*>& parts, unsigned int model) {
    auto item = std::make_unique<Item>();
    item->kind = kind;
    item->model = model;
    for (Compound* part : parts)
        item->parts.push_back(&entry(part));
    m_hostItems[item.get()] = made;
    m_items[made] = std::move(item);
    if (parent)
        attach(made, parent);
}

bool Space::nests(Item::Kind kind, Compound* parent) const {
    const Item* around = &of(parent);
    while (around && around->kind != kind)
        around = around->parent;
    return around && (kind == Item::Residue || kind == Item::Group);
}

void Space::attach(Compound* detached, Compound* parent) {
    Item& item = entry(detached);
    item.parent = &entry(parent);
    item.parent->children.push_back(&item);
    settle();
}

void Space::forget(Item* item) {
    while (!item->children.empty())
        forget(item->children.back());
    if (item->parent)
        std::erase(item->parent->children, item);
    std::vector<Item*> bonds;
    for (const auto& [host, other] : m_items) {
        const bool lists = std::erase(other->parts, item) > 0;
        if (lists && other->kind == Item::Bond)
            bonds.push_back(other.get());
    }
    for (Item* bond : bonds)
        forget(bond);
    Compound* const host = m_hostItems.at(item);
    m_hostItems.erase(item);
    m_items.erase(host);
}

void Space::destroy(Compound* item) {
    forget(&entry(item));
    settle();
}

void Space::settle() {
    for (const auto& [host, item] : m_items) {
        if (!item->holds())
            continue;
        const std::vector<const Item*> leaves = leavesOf(*item);
        const bool hasLeaves = leaves.size() != 1 || leaves.front() != item.get();
        if (item->hadLeaves && !hasLeaves) {
            item->selected = false;
            item->visible = true;
        }
        item->hadLeaves = hasLeaves;
        if (item->kind != Item::Residue)
            continue;
        const std::vector<unsigned int> models = modelsOf(*item);
        if (std::find(models.begin(), models.end(), item->model) != models.end())
            continue;
        // The first one that comes to a residue without any; else, when the active one is gone, the
        // lowest that is left.
        if (models.empty())
            item->model = 0;
        else
            item->model =
                item->model == 0 ? models.front() : *std::min_element(models.begin(), models.end());
    }
}

void Space::leavesOf(const Item& item, std::vector<const Item*>& leaves) {
    const std::size_t before = leaves.size();
    for (const Item* child : item.children)
        leavesOf(*child, leaves);
    if (leaves.size() == before && !item.listsMembers())
        leaves.push_back(&item);
}

std::vector<const Item*> Space::leavesOf(const Item& item) {
    std::vector<const Item*> leaves;
    leavesOf(item, leaves);
    return leaves;
}

bool Space::isSelected(const Item& item) {
    if (item.listsMembers())
        return std::all_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return isSelected(*member); });
    std::vector<const Item*> leaves = leavesOf(item);
    const auto isAtom = [](const Item* leaf) { return leaf->kind == Item::Atom; };
    if (std::any_of(leaves.begin(), leaves.end(), isAtom))
        std::erase_if(leaves, [&](const Item* leaf) { return !isAtom(leaf); });
    return std::all_of(leaves.begin(), leaves.end(),
                       [](const Item* leaf) { return leaf->selected; });
}

bool Space::hasSelected(const Item& item) {
    if (item.listsMembers())
        return std::any_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return hasSelected(*member); });
    const std::vector<const Item*> leaves = leavesOf(item);
    return std::any_of(leaves.begin(), leaves.end(),
                       [](const Item* leaf) { return leaf->selected; });
}

bool Space::isVisible(const Item& item) {
    if (item.listsMembers())
        return std::any_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return isVisible(*member); });
    const std::vector<const Item*> leaves = leavesOf(item);
    return std::any_of(leaves.begin(), leaves.end(),
                       [](const Item* leaf) { return isLeafVisible(*leaf); });
}

bool Space::isLeafVisible(const Item& leaf) {
    bool visible = leaf.visible;
    if (leaf.kind == Item::Bond)
        for (const Item* atom : leaf.parts)
            visible = visible && isLeafVisible(*atom);
    const Item* const residue = residueAround(leaf);
    if (leaf.kind == Item::Atom && leaf.model != 0 && residue)
        visible = visible && leaf.model == residue->model;
    return visible;
}

const Item* Space::residueAround(const Item& item) {
    const Item* around = item.parent;
    while (around && around->kind != Item::Residue)
        around = around->parent;
    return around;
}

std::vector<unsigned int> Space::modelsOf(const Item& residue) {
    std::vector<unsigned int> models;
    for (const Item* leaf : leavesOf(residue))
        if (leaf->kind == Item::Atom && leaf->model != 0 && residueAround(*leaf) == &residue)
            models.push_back(leaf->model);
    return models;
}

void Space::setSelected(Item& item, bool on) {
    if (item.listsMembers()) {
        for (Item* member : item.parts)
            setSelected(*member, on);
        return;
    }
    for (const Item* leaf : leavesOf(item))
        const_cast<Item*>(leaf)->selected = on;
}

void Space::setVisible(Item& item, bool on) {
    if (item.listsMembers()) {
        for (Item* member : item.parts)
            setVisible(*member, on);
        return;
    }
    for (const Item* leaf : leavesOf(item))
        const_cast<Item*>(leaf)->visible = on;
}

void Space::setModel(Compound* atom, unsigned int model) {
    entry(atom).model = model;
    settle();
}

void Space::switchModel(Compound* residue, int step) {
    Item& item = entry(residue);
    const std::vector<unsigned int> listed = modelsOf(item);
    if (listed.empty())
        return;
    const std::set<unsigned int> models(listed.begin(), listed.end());
    if (step == 0) {
        item.model = *models.begin();
    } else if (step > 0) {
        const auto next = models.upper_bound(item.model);
        item.model = next == models.end() ? *models.begin() : *next;
    } else {
        const auto here = models.lower_bound(item.model);
        item.model = here == models.begin() ? *models.rbegin() : *std::prev(here);
    }
}

std::vector<Compound*> Space::inOrder() const {
    std::vector<Compound*> items{m_root};
    // The list grows while it is walked.
    for (std::size_t i = 0; i != items.size(); ++i)
        for (const Item* child : of(items[i]).children)
            items.push_back(hostOf(child));
    return items;
}

std::vector<std::string> Space::differences() const {
    std::vector<std::string> all;
    for (const auto& [host, item] : m_items)
        compare(*item, all);
    compareWalks(all);
    return all;
}

void Space::compare(const Item& item, std::vector<std::string>& differences) const {
    Compound* const host = hostOf(&item);
    const auto expect = [&](bool holds, const char* what) {
        if (!holds)
            differences.push_back(host->GetType() + " " + host->GetFQName() + ": " + what);
    };
    expect(host->IsSelected() == isSelected(item), "IsSelected");
    expect(host->HasSelected() == hasSelected(item), "HasSelected");
    expect(host->IsVisible() == isVisible(item), "IsVisible");
    expect(host->HasChildren() == !item.children.empty(), "HasChildren");
    expect(memory_host::activeModel(host) == (item.kind == Item::Residue ? item.model : 0),
           "activeModel");

    std::vector<Compound*> children;
    for (const Item* child : item.children)
        children.push_back(hostOf(child));
    expect(std::equal(host->ChildBegin(), host->ChildEnd(), children.begin(), children.end()),
           "children");
    std::vector<Compound*> parts;
    for (const Item* part : item.parts)
        parts.push_back(hostOf(part));
    expect(std::equal(host->PartBegin(), host->PartEnd(), parts.begin(), parts.end()), "parts");
    if (const auto* const atom = dynamic_cast<TAVIK::Atom*>(host))
        expect(atom->GetModelNumber() == std::to_string(item.model), "GetModelNumber");
}

void Space::compareWalks(std::vector<std::string>& differences) const {
    struct Walk {
        const Space& space;
        std::vector<Compound*> atoms, selectedAtoms, selected;

        void item(const Item& at, bool topmost) {
            Compound* const host = space.hostOf(&at);
            if (at.kind == Item::Atom)
                atoms.push_back(host);
            if (at.kind == Item::Atom && at.selected)
                selectedAtoms.push_back(host);
            const bool taken = topmost && at.parent && at.kind != Item::Set && isSelected(at);
            if (taken)
                selected.push_back(host);
            for (const Item* child : at.children)
                item(*child, topmost && !taken);
        }
    };
    Walk walk{*this, {}, {}, {}};
    walk.item(of(m_root), true);
    std::vector<Compound*> atoms, selectedAtoms, selected;
    TAVIK::GetAtoms(m_root, atoms, true);
    TAVIK::GetAtoms(m_root, selectedAtoms, false);
    TAVIK::GetSelected(m_root, selected);
    if (atoms != walk.atoms)
        differences.emplace_back("GetAtoms");
    if (selectedAtoms != walk.selectedAtoms)
        differences.emplace_back("GetAtoms of selected ones");
    if (selected != walk.selected)
        differences.emplace_back("GetSelected");
}

} // namespace plain
