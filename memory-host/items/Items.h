// The items of the in-memory data space: the concrete class of every kind.
#pragma once

#include "Building.h"
#include "HostItem.h"
#include "Kinds.h"
#include "Lattice.h"
#include "Names.h"
#include "Slabs.h"
#include "Space.h"

#include <array>
#include <utility>
#include <vector>

namespace memory_host {

/// The operations that need only the record, for every kind of the interface.
template <class Interface, class Record> class Item : public Interface {
public:
    static void* operator new(std::size_t size) { return takeBlock(size); }
    static void operator delete(void* item, std::size_t size) noexcept { giveBlock(item, size); }

    std::string GetName() const override { return m_record.name.text(); }
    std::string GetType() const override { return kindName(m_record.kind); }
    TAVIK::Vertex GetPosition() const override { return {}; }
    void SetSelected(bool on) override { setSelected(m_record, on); }
    bool IsSelected() const override { return isSelected(m_record); }
    bool HasSelected() const override { return hasSelected(m_record); }
    void SetVisible(bool on) override { setVisible(m_record, this, on); }
    bool IsVisible() const override { return isVisible(m_record); }
    bool HasChildren() const override { return false; }
    Compound** ChildBegin() override { return nullptr; }
    Compound** ChildEnd() override { return nullptr; }
    void FirstModel() override {}
    void PrevModel() override {}
    void NextModel() override {}

protected:
    template <class... Arguments>
    explicit Item(Arguments&&... arguments) : m_record(std::forward<Arguments>(arguments)...) {}

    Record m_record;

private:
    HostItem& hostItem() final { return m_record; }
};

template <class Interface, Kind kind> class HolderItem : public Item<Interface, Holder> {
public:
    explicit HolderItem(Name name) : Item<Interface, Holder>(kind, std::move(name), this) {}
    bool HasChildren() const override { return this->m_record.childCount() > 0; }
    Compound** ChildBegin() override { return this->m_record.childBegin(); }
    Compound** ChildEnd() override { return this->m_record.childEnd(); }
};

template <class Interface, Kind kind> class LeafItem : public Item<Interface, HostItem> {
public:
    explicit LeafItem(Name name) : Item<Interface, HostItem>(kind, std::move(name)) {}
    bool IsSelected() const override { return this->m_record.has(HostItem::Selected); }
    bool HasSelected() const override { return this->m_record.has(HostItem::Selected); }
    bool IsVisible() const override { return this->m_record.has(HostItem::Shown); }
};

using CompositeItem = HolderItem<TAVIK::Composite, Kind::Composite>;
using SpaceItem = HolderItem<TAVIK::Space, Kind::Space>;
using MoleculeItem = HolderItem<TAVIK::Molecule, Kind::Molecule>;
using GroupItem = HolderItem<TAVIK::Group, Kind::Group>;
using SurfaceItem = LeafItem<TAVIK::Surface, Kind::Surface>;

class ResidueItem : public HolderItem<TAVIK::Residue, Kind::Residue> {
public:
    using HolderItem::HolderItem;
    void FirstModel() override { switchModel(m_record, ModelStep::First); }
    void PrevModel() override { switchModel(m_record, ModelStep::Previous); }
    void NextModel() override { switchModel(m_record, ModelStep::Next); }
};

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

class GridItem : public LeafItem<TAVIK::Grid, Kind::Grid> {
public:
    using LeafItem::LeafItem;
    bool GetNearest(const TAVIK::Vertex& point, int* ijk) const override;
    void setValues(GridRecord&& values);

    GridRecord m_values;

private:
    Lattice m_lattice;
};

class PolyLineItem : public LeafItem<TAVIK::Compound, Kind::PolyLine> {
public:
    using LeafItem::LeafItem;
    std::vector<TAVIK::Vertex> m_points;
};

class SetItem : public Item<TAVIK::Compound, SetRecord> {
public:
    explicit SetItem(Name name) : Item(Kind::Set, std::move(name)) {}
};

/// A new, detached item; null for an unknown kind. The name is taken as it stands.
Compound* newItem(Kind kind, std::string_view name);
/// The kind of a class name, as "Molecule"; false when there is none.
bool kindOfName(const std::string& className, Kind& kind);
std::string kindName(Kind kind);

} // namespace memory_host
