// The host's own record of every item: its parent, its identity and its marks.
#pragma once

#include "Compound.h"
#include "ItemName.h"

#include <cstddef>
#include <cstdint>

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
inline constexpr std::size_t kindCount = 11;

/// The class name of a kind, as "Molecule".
std::string kindName(Kind kind);
/// The kind of a class name that makeCore() takes; false when there is none.
bool kindOfName(const std::string& className, Kind& kind);

struct Holder;

} // namespace memory_host

namespace TAVIK {

struct HostItem {
    enum Flag : std::uint8_t {
        Selected = 1,     ///< own mark; of a composite or a set only while it is empty
        Visible = 2,      ///< own mark; used in a composite or set only while it is empty
        Shown = 4,        ///< of a leaf: visible in effect, as it is counted
        OtherModel = 8,   ///< of a leaf: effective visibility, as it is counted
        InSets = 16,      ///< some set lists the item
        HasPosition = 32, ///< of an atom
        HeldSet = 64,     ///< of a composite: a set is or was among its children
        Edited = 64,      ///< of an atom: some value of it was changed, at some time
        Unlinked = 128,   ///< of a bond: its atoms do not list it, as it is to be taken back
        HeldLarge = 128   ///< of a composite: in it is or was what is neither atom nor bond
    };

    HostItem(memory_host::Kind ofKind, memory_host::Name itsName);

    /// The record of any item.
    static HostItem& of(const Compound* item) {
        return const_cast<Compound*>(item)
            ->hostItem(); // NOLINT: the record is the host's to change
    }

    /// The identifier that was given last; the next item gets the one after it.
    static std::uint32_t lastIdentifier();

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

} // namespace memory_host
