// The data space once more, in the plainest way: no counters, every answer counted anew. The random
// test does everything twice, here and in the host, and compares.
#pragma once

#include "Compound.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace plain {

using TAVIK::Compound;

struct Item {
    enum Kind { Holder, Residue, Group, Atom, Bond, Set, Other };

    Kind kind = Other;
    Item* parent = nullptr;
    std::vector<Item*> children; ///< of a holder or a residue
    std::vector<Item*> parts;    ///< atoms of a bond, members of a set
    bool selected = false;       ///< marks of an item without leaves in it
    bool visible = true;
    unsigned int model = 0; ///< of an atom its own, of a residue the active one
    bool hadLeaves = false;

    bool holds() const { return kind <= Group; }
    /// A set that has members stands for them, and counts nowhere.
    bool listsMembers() const { return kind == Set && !parts.empty(); }
};

class Space {
public:
    /// A space that holds `root` alone.
    explicit Space(Compound* root);

    /// Enters `made` under the `parent`, which may be null for a detached item.
    void add(Compound* made, Item::Kind kind, Compound* parent, const std::vector<Compound*>& parts,
             unsigned int model);
    void attach(Compound* detached, Compound* parent);
    void destroy(Compound* item);
    void setSelected(Compound* item, bool on) { setSelected(entry(item), on); }
    void setVisible(Compound* item, bool on) { setVisible(entry(item), on); }
    void setModel(Compound* atom, unsigned int model);
    /// -1: the previous model, 0: the first, 1: the next.
    void switchModel(Compound* residue, int step);

    bool isSelected(Compound* item) const { return isSelected(of(item)); }
    bool hasSelected(Compound* item) const { return hasSelected(of(item)); }
    bool isVisible(Compound* item) const { return isVisible(of(item)); }

    /// Whether an item of that kind under `parent` would stand in one of its own kind that allows
    /// of none.
    bool nests(Item::Kind kind, Compound* parent) const;

    const Item& of(Compound* item) const { return *m_items.at(item); }
    bool knows(Compound* item) const { return m_items.count(item) != 0; }
    /// All items, each before what it holds.
    std::vector<Compound*> inOrder() const;
    /// Compares everything that the host says with what is known here. Returns a line for each
    /// difference.
    std::vector<std::string> differences() const;

private:
    Item& entry(Compound* item) { return *m_items.at(item); }
    Compound* hostOf(const Item* item) const { return m_hostItems.at(item); }

    static void leavesOf(const Item& item, std::vector<const Item*>& leaves);
    static std::vector<const Item*> leavesOf(const Item& item);
    static bool isSelected(const Item& item);
    static bool hasSelected(const Item& item);
    static bool isVisible(const Item& item);
    static bool isLeafVisible(const Item& leaf);
    static const Item* residueAround(const Item& item);
    static std::vector<unsigned int> modelsOf(const Item& residue);
    void setSelected(Item& item, bool on);
    void setVisible(Item& item, bool on);
    void forget(Item* item);
    /// What follows of every change of structure: marks of what has become empty, active models.
    void settle();
    void compare(const Item& item, std::vector<std::string>& differences) const;
    void compareWalks(std::vector<std::string>& differences) const;

    std::map<Compound*, std::unique_ptr<Item>> m_items;
    std::map<const Item*, Compound*> m_hostItems;
    Compound* m_root;
};

} // namespace plain
