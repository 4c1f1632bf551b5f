// The host's own record of every item: where it hangs, its identity, its marks and, for a
// composite, its children and the counters from which its state is read in constant time.
#pragma once

#include "Compound.h"
#include "Names.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace memory_host {

enum class Kind : std::uint8_t {
    Composite,
    Space,
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

struct Holder;

/// What a subtree adds to the counters of the composite that holds it. Sets add nothing while they
/// list something: that is counted where it stands.
struct Contribution {
    std::int32_t atoms = 0;
    std::int32_t selectedAtoms = 0;
    std::int32_t leaves = 0; ///< items that hold nothing, empty composites and sets included
    std::int32_t selectedLeaves = 0;
    std::int32_t shownLeaves = 0;

    Contribution operator-(const Contribution& other) const {
        return {atoms - other.atoms, selectedAtoms - other.selectedAtoms, leaves - other.leaves,
                selectedLeaves - other.selectedLeaves, shownLeaves - other.shownLeaves};
    }
    Contribution operator-() const { return Contribution{} - *this; }
    Contribution& operator+=(const Contribution& other) {
        atoms += other.atoms;
        selectedAtoms += other.selectedAtoms;
        leaves += other.leaves;
        selectedLeaves += other.selectedLeaves;
        shownLeaves += other.shownLeaves;
        return *this;
    }
    bool operator==(const Contribution&) const = default;
};

/// What others may ask of an item, in short.
struct ItemState {
    bool selected = false;
    bool hasSelected = false;
    bool visible = false;

    bool operator==(const ItemState&) const = default;
};

} // namespace memory_host

namespace TAVIK {

struct HostItem {
    enum Flag : std::uint8_t {
        Selected = 1,    ///< own mark; of a composite or a set only while it is empty
        Visible = 2,     ///< own mark, likewise
        Shown = 4,       ///< of a leaf: visible in effect, as it is counted
        OtherModel = 8,  ///< of an atom: it belongs to a model that is not active
        InSets = 16,     ///< some set lists the item
        HasPosition = 32 ///< of an atom
    };

    HostItem(memory_host::Kind ofKind, memory_host::Name itsName);

    /// The record of any item.
    static HostItem& of(const Compound* item) {
        return const_cast<Compound*>(item)
            ->hostItem(); // NOLINT: the record is the host's to change
    }

    bool has(Flag flag) const { return (flags & flag) != 0; }
    void set(Flag flag, bool on) {
        flags = static_cast<std::uint8_t>(on ? flags | flag : flags & ~flag);
    }
    bool isHolder() const { return kind <= memory_host::Kind::Group; }
    memory_host::Holder& asHolder();

    memory_host::Holder* parent = nullptr;
    std::uint32_t id;
    std::uint32_t color;        ///< packed as Color packs it
    std::uint32_t position = 0; ///< slot in the parent's vector
    memory_host::Name name;
    memory_host::Kind kind;
    std::uint8_t flags = Visible | Shown;
    std::uint16_t model = 0; ///< of an atom: its model; of a residue: the active one
    memory_host::Name type;  ///< of an atom: its symbol
};

} // namespace TAVIK

namespace memory_host {

using TAVIK::Compound;
using TAVIK::HostItem;

/// The record of a composite. Destroyed children leave holes in the vector, which are closed the
/// next time that the vector is read: destroying costs nothing by the number of siblings.
struct Holder : HostItem {
    Holder(Kind ofKind, Name itsName, Compound* item)
        : HostItem(ofKind, std::move(itsName)), self(item) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder();

    std::uint32_t childCount() const { return end - begin - holes; }
    Compound** childBegin() {
        if (holes)
            closeHoles();
        return children + begin;
    }
    Compound** childEnd() {
        if (holes)
            closeHoles();
        return children + end;
    }
    /// Appends to the vector alone; the counters are the caller's.
    void appendChild(Compound* child);
    /// Leaves a hole; the counters are the caller's.
    void removeChild(std::uint32_t slot);
    /// Gives back what the vector does not need.
    void shrink();

    // First, so that the change of an atom finds it beside the marks of the record.
    Contribution sum;               ///< of all children
    std::uint32_t directLeaves = 0; ///< children that are no composites
    Compound** children = nullptr;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;
    std::uint32_t holes = 0; ///< null children between begin and end
    std::uint32_t capacity = 0;
    std::uint32_t directAtoms = 0; ///< children that are atoms
    /// Of a residue: how many of its atoms belong to the active model.
    std::uint32_t modelAtoms = 0;
    Compound* self;

private:
    void closeHoles();
    void resize(std::uint32_t slotCount);
};

/// The record of a set: it counts the states of its members, which tell it of every change. Members
/// that are destroyed leave holes, closed when the parts are next read.
struct SetRecord : HostItem {
    using HostItem::HostItem;
    SetRecord(const SetRecord&) = delete;
    SetRecord& operator=(const SetRecord&) = delete;
    /// Ends the listings of all members.
    ~SetRecord();

    std::uint32_t memberCount() const { return static_cast<std::uint32_t>(members.size()) - holes; }
    std::vector<Compound*>& listed();

    std::vector<Compound*> members;
    std::uint32_t holes = 0;
    std::int32_t selected = 0; ///< number of members that are selected
    std::int32_t hasSelected = 0;
    std::int32_t visible = 0;
};

/// Lists `members`, which hold neither null nor repetitions, in a new set that is not attached yet.
void listMembers(SetRecord& set, const std::vector<Compound*>& members);
/// Takes an item out of every set that lists it.
void leaveSets(HostItem& item);
/// Whether the item is a set that stands for its members: what is done to all that a composite
/// holds passes such a set by.
inline bool listsMembers(const HostItem& item) {
    return item.kind == Kind::Set && static_cast<const SetRecord&>(item).memberCount() > 0;
}
/// Tells the sets that list `item` that its state was `before`.
void tellSets(const HostItem& item, ItemState before);
/// The sets that list `item`.
std::vector<SetRecord*> setsOf(const HostItem& item);

/// Counts the changes after which some item may answer IsSelected() or HasSelected() other than
/// before: an item's own mark, and items that come or go.
inline std::uint64_t selectionChanges = 0;

/// The state of any item, in constant time.
ItemState stateOf(const HostItem& item);
bool isSelected(const HostItem& item);
bool hasSelected(const HostItem& item);
bool isVisible(const HostItem& item);

/// Runs a change of one item's counters or marks, and tells the sets that list the item.
template <class Change> void changeState(HostItem& item, Change&& change) {
    if (!item.has(HostItem::InSets)) {
        change();
        return;
    }
    const ItemState before = stateOf(item);
    change();
    tellSets(item, before);
}

/// What `item` adds to its parent now.
Contribution contributionOf(const HostItem& item);
/// Carries a change of what the children of `holder` add up to through all levels.
void addContribution(Holder* holder, Contribution change);

/// Set the marks of an item and of all that it holds.
void setSelected(HostItem& item, bool on);
void setVisible(HostItem& item, Compound* self, bool on);

/// Makes a detached item the last child of `parent`, counters included.
void attachTo(Compound* child, Holder& parent);
/// Takes an item out of its parent, counters included.
void detach(Compound* child);
/// Tells those who keep pointers to items that this one, if it is in the data space, goes.
void tellBeforeDestroying(Compound* item);

/// The first composite of that kind among `holder`, which may be null, and those around it; or
/// null.
Holder* nearest(Kind kind, Holder* holder);
/// The residue around an item, or null.
Holder* residueAround(const HostItem& item);

/// Which model of a residue is to be shown: the first one that it has, or the one after or before.
enum class ModelStep { First, Next, Previous };
void switchModel(Holder& residue, ModelStep step);
/// Counts and marks the atoms at or in an item, which has just come into its place, for the models
/// of the residue around it. The first model that comes to a residue without any is active.
void joinModels(Compound& item);
/// Takes them out of the count before the item goes; returns the residue around it if that needs to
/// settle its model when the item is gone, else null.
Holder* leaveModels(Compound& item);
/// Makes the first model active that the residue has when there are no atoms of the active one any
/// more. `residue` may be null.
void settleModel(Holder* residue);

/// The colour that an item has from the start.
Color defaultColor(const HostItem& item);

} // namespace memory_host

inline memory_host::Holder& TAVIK::HostItem::asHolder() {
    return static_cast<memory_host::Holder&>(*this);
}
