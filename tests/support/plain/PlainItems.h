// The data space in the plainest way: structs and loops, every answer counted anew. It shares no
// code with the host that it is compared with.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace plain {

enum class Kind {
    Space,
    Composite,
    Molecule,
    Residue,
    Group,
    Atom,
    Bond,
    Surface,
    Grid,
    PolyLine,
    Set
};

/// A kind as the host names it.
std::string kindName(Kind kind);

/// What files say of an atom beside its place.
struct AtomDetails {
    float occupancy = 1.0F;
    int charge = 0;
    char letter = '\0'; ///< of the alternative location that it had in its file
    bool isHetero = false;

    bool operator==(const AtomDetails&) const = default;
};

struct Item {
    Kind kind = Kind::Composite;
    std::string name;
    unsigned int id = 0;
    Item* parent = nullptr;
    std::vector<Item*> children;
    std::vector<Item*> parts; ///< the atoms of a bond, the members of a set
    bool selected = false;    ///< the own marks; they count for an item without leaves in it
    bool visible = true;
    bool heldLeaves = false;
    std::uint32_t color = 0xffffffffU; ///< as Color packs it
    unsigned int model = 0;            ///< of an atom its own, of a residue the active one
    unsigned int version = 0;          ///< of a top-level item's data; 0: as they came

    // Of an atom.
    std::string type;
    std::array<float, 3> position{};
    bool hasPosition = false;
    float temperature = 0.0F;
    AtomDetails details;
    int serial = -1; ///< in the file that it comes from

    // Of a grid; its axes are those of the coordinates.
    std::array<int, 3> points{};
    std::array<int, 3> lower{};
    std::array<int, 3> upper{};
    std::array<double, 3> origin{};
    std::array<double, 3> step{1, 1, 1};

    // Of a poly-line.
    std::vector<std::array<float, 3>> corners;

    bool isOfFile() const { return serial >= 0; }
    bool isComposite() const { return kind <= Kind::Group; }
    /// A set that has members stands for them, and counts nowhere.
    bool listsMembers() const { return kind == Kind::Set && !parts.empty(); }
};

using Items = std::vector<Item*>;

/// What can be set of an atom but its name.
struct AtomValues {
    std::string type;
    std::array<float, 3> position{};
    bool hasPosition = false;
    float temperature = 0.0F;
    unsigned int model = 0;
};

class Host {
public:
    Host();

    Item* space() { return m_items.front().get(); }
    Item* find(unsigned int id);
    /// All items but the space, each before what it holds.
    Items all();
    /// The id of the item that is made next.
    unsigned int nextId = 1;

    /// Makes an item the last child of `parent`, and gives it the next id.
    Item* make(Item* parent, Kind kind, const std::string& name);
    /// Enters an item of that id without a parent: see attach().
    Item* enter(Kind kind, const std::string& name, unsigned int id);
    void attach(Item* item, Item* parent);
    /// Whether an item of that kind in `parent` would stand in one of its own kind that allows of
    /// none.
    static bool nests(Kind kind, const Item* parent);
    void setAtom(Item& atom, const AtomValues& values);
    /// Gives an atom another place and model.
    void moveAtom(Item& atom, const AtomValues& values);
    Item* makeBond(Item* parent, Item* a, Item* b);
    /// Makes a set of those members, each once.
    Item* makeSet(Item* parent, const std::string& name, const Items& members);
    /// The top-level composite around `item`, or else the space.
    static Item* boxAround(Item* item);
    /// A name as it can stand in a qualified name.
    static std::string asComponent(std::string name);
    static std::string bondName(const Item& a, const Item& b);
    void destroy(Item* item);

    static bool isSelected(const Item& item);
    static bool hasSelected(const Item& item);
    static bool isVisible(const Item& item);
    static void setSelected(Item& item, bool on);
    static void setVisible(Item& item, bool on);
    static std::string qualifiedName(const Item& item);
    static std::uint32_t defaultColor(const Item& item);

    enum class Switch { First, Previous, Next };
    static void switchModel(Item& residue, Switch way);
    /// Brings own marks, active models and names of bonds in line after items came, went or changed
    /// their model.
    void settle();

    /// An item as it was once; it names others by their identifiers.
    struct Copied {
        Item item;
        unsigned int parent;
        std::vector<unsigned int> children;
        std::vector<unsigned int> parts;
    };
    using Copy = std::vector<Copied>;
    Copy copy() const;
    /// Gives the top-level items whose atoms or bonds are not those of the copy, from another
    /// version than they have now, the next version.
    void noteChanges(const Copy& before, unsigned int& lastVersion);
    /// Has the data be again as they were. Items that stay keep their addresses.
    void restore(const Copy& copy);

    // The walks over the data. `all` false: selected ones only.
    static Items atOrBelow(Item* root, Kind kind, bool all);
    static Items below(Item* root, Kind kind, bool all);
    static Items topmostSelected(Item* root);

private:
    void forget(Item* item);

    std::vector<std::unique_ptr<Item>> m_items; ///< the space comes first
};

} // namespace plain
