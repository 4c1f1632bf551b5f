// Atoms and the bonds between them.
#pragma once

#include "ItemClass.h"
#include "Kinds.h"
#include "Records.h"

#include <array>
#include <string>
#include <utility>

namespace memory_host {

class AtomItem;

/// A bond stands in a list of bonds at each of its atoms, so that an atom's end finds them all.
class BondItem : public LeafItem<TAVIK::Bond, Kind::Bond> {
public:
    struct Links {
        BondItem* next = nullptr;
        BondItem* previous = nullptr;
    };

    using LeafItem::LeafItem;
    std::string GetName() const override;

    AtomItem* atom(int end) const;
    /// Which end of the bond `atom` is; 1 unless it is the first.
    int endAt(const AtomItem* atom) const;
    /// The bond after this one in the list of `atom`, or null.
    BondItem* next(const AtomItem* atom) const;
    void connect(AtomItem* a, AtomItem* b);
    void disconnect();
    /// Brings the effective visibility in line with the own mark and with both atoms. The first
    /// leaves it to the caller to count the change, which it returns, in what holds the bond.
    std::int32_t markShown();
    void updateShown();
    /// The same when one of the atoms is known not to be shown.
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

    /// Takes all values but the name and marks.
    void setValues(const AtomRecord& values);
    /// Brings the effective visibility, and that of the bonds, in line with mark and model. The
    /// first leaves it to the caller to count the change, which it returns, in what holds the atom.
    std::int32_t markShown();
    void updateShown();

    BondItem* m_bonds = nullptr;
    std::array<float, 3> m_position{};
    float m_temperature = 0.0F;
};

/// An atom with a partial charge and a radius, for which the others have no room.
class ChargedAtomItem final : public AtomItem {
public:
    ChargedAtomItem(Name name, float charge, float radius)
        : AtomItem(std::move(name)), m_charge(charge), m_radius(radius) {}

    float m_charge; ///< elementary charges
    float m_radius; ///< Å
};

} // namespace memory_host
