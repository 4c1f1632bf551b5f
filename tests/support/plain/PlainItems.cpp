#include "PlainItems.h"

#include <algorithm>
#include <set>

namespace plain {

namespace {

// What counts in and at an item: its leaves, which are the items that hold no others.
struct Count {
    int leaves = 0;
    int selected = 0;
    int atoms = 0;
    int selectedAtoms = 0;
    int shown = 0;
};

const Item* residueAround(const Item& item) {
    const Item* around = item.parent;
    while (around && around->kind != Kind::Residue)
        around = around->parent;
    return around;
}

bool isLeafShown(const Item& leaf) {
    bool shown = leaf.visible;
    if (leaf.kind == Kind::Bond)
        for (const Item* atom : leaf.parts)
            shown = shown && isLeafShown(*atom);
    const Item* const residue = residueAround(leaf);
    if (leaf.kind == Kind::Atom && leaf.model != 0 && residue)
        shown = shown && leaf.model == residue->model;
    return shown;
}

void count(const Item& item, Count& total) {
    const int before = total.leaves;
    for (const Item* child : item.children)
        count(*child, total);
    if (total.leaves != before || item.listsMembers())
        return;
    ++total.leaves;
    total.selected += item.selected;
    total.shown += isLeafShown(item);
    if (item.kind == Kind::Atom) {
        ++total.atoms;
        total.selectedAtoms += item.selected;
    }
}

Count count(const Item& item) {
    Count total;
    count(item, total);
    return total;
}

bool holdsLeaves(const Item& item) {
    return std::any_of(item.children.begin(), item.children.end(),
                       [](const Item* child) { return count(*child).leaves > 0; });
}

void forLeaves(Item& item, const std::function<void(Item&)>& use) {
    if (holdsLeaves(item))
        for (Item* child : item.children)
            forLeaves(*child, use);
    else if (!item.listsMembers())
        use(item);
}

std::set<unsigned int> modelsOf(const Item& item, const Item& residue) {
    std::set<unsigned int> models;
    if (item.kind == Kind::Atom && item.model != 0 && residueAround(item) == &residue)
        models.insert(item.model);
    for (const Item* child : item.children)
        models.merge(modelsOf(*child, residue));
    return models;
}

unsigned int firstModelIn(const Item& item, const Item& residue) {
    if (item.kind == Kind::Atom && item.model != 0 && residueAround(item) == &residue)
        return item.model;
    for (const Item* child : item.children)
        if (const unsigned int model = firstModelIn(*child, residue))
            return model;
    return 0;
}

} // namespace

std::string kindName(Kind kind) {
    static const char* const names[] = {"Space", "Composite", "Molecule", "Residue",
                                        "Group", "Atom",      "Bond",     "Surface",
                                        "Grid",  "PolyLine",  "Set"};
    return names[static_cast<int>(kind)];
}

Host::Host() {
    m_items.push_back(std::make_unique<Item>());
    space()->kind = Kind::Space;
}

Item* Host::find(unsigned int id) {
    for (const auto& item : m_items)
        if (item->id == id && item->kind != Kind::Space)
            return item.get();
    return nullptr;
}

Items Host::all() {
    Items found;
    const std::function<void(Item*)> visit = [&](Item* item) {
        for (Item* child : item->children) {
            found.push_back(child);
            visit(child);
        }
    };
    visit(space());
    return found;
}

Item* Host::enter(Kind kind, const std::string& name, unsigned int id) {
    m_items.push_back(std::make_unique<Item>());
    Item* item = m_items.back().get();
    item->kind = kind;
    item->name = name;
    item->id = id;
    item->type = "X";
    item->color = defaultColor(*item);
    return item;
}

void Host::attach(Item* item, Item* parent) {
    item->parent = parent;
    parent->children.push_back(item);
}

Item* Host::make(Item* parent, Kind kind, const std::string& name) {
    Item* item = enter(kind, asComponent(name), nextId++);
    attach(item, parent);
    settle();
    return item;
}

bool Host::nests(Kind kind, const Item* parent) {
    if (kind != Kind::Residue && kind != Kind::Group)
        return false;
    while (parent && parent->kind != kind)
        parent = parent->parent;
    return parent;
}

void Host::setAtom(Item& atom, const AtomValues& values) {
    atom.type = values.type;
    atom.position = values.position;
    atom.hasPosition = values.hasPosition;
    atom.temperature = values.temperature;
    atom.details = {};
    atom.model = values.model;
    atom.color = defaultColor(atom);
    settle();
}

void Host::moveAtom(Item& atom, const AtomValues& values) {
    atom.position = values.position;
    atom.hasPosition = values.hasPosition;
    atom.model = values.model;
    settle();
}

Item* Host::makeBond(Item* parent, Item* a, Item* b) {
    Item* bond = enter(Kind::Bond, {}, nextId++);
    bond->parts = {a, b};
    attach(bond, parent);
    settle();
    return bond;
}

Item* Host::makeSet(Item* parent, const std::string& name, const Items& members) {
    Item* set = enter(Kind::Set, asComponent(name), nextId++);
    // The members first: what the set counts for follows from them.
    for (Item* member : members)
        if (std::find(set->parts.begin(), set->parts.end(), member) == set->parts.end())
            set->parts.push_back(member);
    attach(set, parent);
    settle();
    return set;
}

Item* Host::boxAround(Item* item) {
    while (item->parent->kind != Kind::Space)
        item = item->parent;
    return item->isComposite() ? item : item->parent;
}

std::string Host::asComponent(std::string name) {
    for (char& c : name)
        if (c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = '_';
    return name;
}

std::string Host::bondName(const Item& a, const Item& b) {
    const auto prefix = [](const Item* residue) {
        return residue ? residue->name + ' ' : std::string();
    };
    const Item* const from = residueAround(a);
    const Item* const to = residueAround(b);
    return from == to ? prefix(from) + a.name + '-' + b.name
                      : prefix(from) + a.name + " - " + prefix(to) + b.name;
}

void Host::forget(Item* item) {
    while (!item->children.empty())
        forget(item->children.back());
    if (item->parent)
        std::erase(item->parent->children, item);
    Items bonds;
    for (const auto& other : m_items)
        if (std::erase(other->parts, item) > 0 && other->kind == Kind::Bond)
            bonds.push_back(other.get());
    for (Item* bond : bonds)
        forget(bond);
    std::erase_if(m_items, [item](const auto& other) { return other.get() == item; });
}

void Host::destroy(Item* item) {
    forget(item);
    settle();
}

void Host::settle() {
    for (const auto& item : m_items) {
        if (item->kind == Kind::Bond)
            item->name = bondName(*item->parts[0], *item->parts[1]);
        if (!item->isComposite())
            continue;
        const bool holds = holdsLeaves(*item);
        // What has just become empty starts with fresh marks.
        if (item->heldLeaves && !holds) {
            item->selected = false;
            item->visible = true;
        }
        item->heldLeaves = holds;
        if (item->kind != Kind::Residue)
            continue;
        const std::set<unsigned int> models = modelsOf(*item, *item);
        if (models.empty())
            item->model = 0;
        else if (!models.count(item->model))
            // The first that came to a residue without any; else the lowest that is left.
            item->model = item->model == 0 ? firstModelIn(*item, *item) : *models.begin();
    }
}

bool Host::isSelected(const Item& item) {
    if (item.listsMembers())
        return std::all_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return isSelected(*member); });
    const Count all = count(item);
    return all.atoms > 0 ? all.selectedAtoms == all.atoms : all.selected == all.leaves;
}

bool Host::hasSelected(const Item& item) {
    if (item.listsMembers())
        return std::any_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return hasSelected(*member); });
    return count(item).selected > 0;
}

bool Host::isVisible(const Item& item) {
    if (item.listsMembers())
        return std::any_of(item.parts.begin(), item.parts.end(),
                           [](const Item* member) { return isVisible(*member); });
    return count(item).shown > 0;
}

void Host::setSelected(Item& item, bool on) {
    if (item.listsMembers())
        for (Item* member : item.parts)
            setSelected(*member, on);
    else
        forLeaves(item, [on](Item& leaf) { leaf.selected = on; });
}

void Host::setVisible(Item& item, bool on) {
    if (item.listsMembers())
        for (Item* member : item.parts)
            setVisible(*member, on);
    else
        forLeaves(item, [on](Item& leaf) { leaf.visible = on; });
}

std::string Host::qualifiedName(const Item& item) {
    if (item.kind == Kind::Space)
        return {};
    std::string name = '/' + item.name;
    for (const Item* above = item.parent; above && above->kind != Kind::Space;
         above = above->parent)
        if (above->kind != Kind::Group)
            name = '/' + above->name + name;
    return name;
}

std::uint32_t Host::defaultColor(const Item& item) {
    if (item.kind != Kind::Atom)
        return 0xffffffffU;
    static const std::map<std::string, std::uint32_t> byElement = {
        {"H", 0xffffffffU}, {"C", 0xffc8c8c8U}, {"N", 0xff8f8fffU},
        {"O", 0xfff00000U}, {"S", 0xffffc832U}, {"Cu", 0xffa52a2aU}};
    const auto found = byElement.find(item.type);
    return found == byElement.end() ? 0xffff1493U : found->second;
}

void Host::switchModel(Item& residue, Switch way) {
    const std::set<unsigned int> models = modelsOf(residue, residue);
    if (models.empty())
        return;
    const auto here = models.find(residue.model);
    if (way == Switch::First)
        residue.model = *models.begin();
    else if (way == Switch::Next)
        residue.model = std::next(here) == models.end() ? *models.begin() : *std::next(here);
    else
        residue.model = here == models.begin() ? *models.rbegin() : *std::prev(here);
}

Items Host::atOrBelow(Item* root, Kind kind, bool all) {
    if (root->kind == kind)
        return all || isSelected(*root) ? Items{root} : Items{};
    Items found;
    for (Item* child : root->children) {
        const Items inChild = atOrBelow(child, kind, all);
        found.insert(found.end(), inChild.begin(), inChild.end());
    }
    return found;
}

Items Host::below(Item* root, Kind kind, bool all) {
    Items found;
    if (!all && !hasSelected(*root))
        return found;
    for (Item* child : root->isComposite() ? root->children : root->parts) {
        if (child->kind == kind) {
            if (all || isSelected(*child))
                found.push_back(child);
        } else if (child->isComposite()) {
            const Items inChild = below(child, kind, all);
            found.insert(found.end(), inChild.begin(), inChild.end());
        }
    }
    return found;
}

Items Host::topmostSelected(Item* root) {
    Items found;
    for (Item* child : root->children) {
        if (child->kind != Kind::Set && isSelected(*child)) {
            found.push_back(child);
        } else {
            const Items inChild = topmostSelected(child);
            found.insert(found.end(), inChild.begin(), inChild.end());
        }
    }
    return found;
}

} // namespace plain
