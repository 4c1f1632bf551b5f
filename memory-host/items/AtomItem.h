// Atoms and the bonds between them.
#pragma once

#include "AtomDetails.h"
#include "ItemClass.h"
#include "Kinds.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>

namespace memory_host {

class AtomItem;

/// A bond is linked into a list at each of its atoms, so that a destroyed atom finds all its bonds.
class BondItem : public LeafItem<TAVIK::Bond, Kind::Bond> {
public:
    struct Links {
        BondItem* next = nullptr;
        BondItem* previous = nullptr;
    };

    using LeafItem::LeafItem;
    std::string GetName() const override;

    AtomItem* atom(int end) const;
    /// Which end of the bond `atom` is: 0 for the first atom, else 1.
    int endAt(const AtomItem* atom) const;
    /// The bond after this one in the list of `atom`, or null.
    BondItem* next(const AtomItem* atom) const;
    void connect(AtomItem* a, AtomItem* b);
    void disconnect();
    /// Takes the bond out of the lists of its atoms, which it keeps in mind; relink() puts it back
    /// where it stood, if whatever changed the lists since was taken back, too.
    void unlink();
    void relink();
    bool isUnlinked() const { return m_record.has(HostItem::Unlinked); }
    /// Recomputes the effective visibility from the bond's own mark and from both atoms.
    /// markShown() returns the change in shown leaves, which the caller adds to the counters above
    /// the bond.
    std::int32_t markShown();
    void updateShown();
    /// The same when one of the atoms is known to be hidden.
    void hide();

    std::array<Compound*, 2> m_atoms{};
    std::array<Links, 2> m_links{};
};

class AtomItem : public LeafItem<TAVIK::Atom, Kind::Atom> {
public:
    // The details are in the block's annex: commands walk all atoms and read none of them, and
    // what is left of an atom fills a cache line.
    static void* operator new(std::size_t size) { return takeBlock(size, Annex::Present); }
    static void operator delete(void* atom, std::size_t size) noexcept {
        giveBlock(atom, size, Annex::Present);
    }

    explicit AtomItem(Name name);
    std::string GetType() const override { return m_record.type.text(); }
    TAVIK::Vertex GetPosition() const override {
        return {m_position[0], m_position[1], m_position[2], m_record.has(HostItem::HasPosition)};
    }
    std::string GetModelNumber() const override { return std::to_string(m_record.model); }
    float GetTemperature() const override { return m_temperature; }

    HostItem& record() { return m_record; }

    /// Takes all values but the name, the partial charge and marks.
    void setValues(const TAVIK::AtomValues& values);
    /// Whether setValues() would leave everything but the colour as it is.
    bool hasValues(const TAVIK::AtomValues& values) const;
    /// The values that no other function sets.
    struct Description {
        Name type;
        float temperature = 0.0F;
        std::uint32_t color = 0;
        TAVIK::AtomDetails details;
    };
    void swapDescription(Description& other) noexcept;
    /// A position that is not finite counts as none.
    void setPosition(const TAVIK::Vertex& position);
    bool isAt(const TAVIK::Vertex& position) const;
    /// The residue's counts are the caller's.
    void setModel(unsigned int model);
    bool isInModel(unsigned int model) const;
    /// Recomputes the effective visibility from mark and model, and that of the bonds. markShown()
    /// returns the change in shown leaves, which the caller adds to the counters above the atom.
    std::int32_t markShown();
    void updateShown();

    const TAVIK::AtomDetails& details() const {
        return *static_cast<const TAVIK::AtomDetails*>(annexOf(this));
    }

    BondItem* m_bonds = nullptr;
    std::array<float, 3> m_position{};
    float m_temperature = 0.0F;
};

/// An atom with a partial charge and a radius; other atoms have no memory for them.
class ChargedAtomItem final : public AtomItem {
public:
    ChargedAtomItem(Name name, float charge, float radius)
        : AtomItem(std::move(name)), m_charge(charge), m_radius(radius) {}

    float m_charge; ///< elementary charges
    float m_radius; ///< Å
};

} // namespace memory_host
