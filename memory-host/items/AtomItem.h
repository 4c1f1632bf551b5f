// Atoms and the bonds between them.
#pragma once

#include "AtomDetails.h"
#include "ItemClass.h"
#include "Kinds.h"

#include <array>
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
    using LeafItem::LeafItem;
    std::string GetType() const override { return m_record.type.text(); }
    TAVIK::Vertex GetPosition() const override {
        return {m_position[0], m_position[1], m_position[2], m_record.has(HostItem::HasPosition)};
    }
    std::string GetModelNumber() const override { return std::to_string(m_record.model); }
    float GetTemperature() const override { return m_temperature; }

    HostItem& record() { return m_record; }

    /// Takes all values but the name, the partial charge and marks.
    void setValues(const TAVIK::AtomValues& values);
    /// A position that is not finite counts as none.
    void setPosition(const TAVIK::Vertex& position);
    /// The residue's counts are the caller's.
    void setModel(unsigned int model);
    /// Recomputes the effective visibility from mark and model, and that of the bonds. markShown()
    /// returns the change in shown leaves, which the caller adds to the counters above the atom.
    std::int32_t markShown();
    void updateShown();

    BondItem* m_bonds = nullptr;
    std::array<float, 3> m_position{};
    float m_temperature = 0.0F;
    TAVIK::AtomDetails m_details;
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
