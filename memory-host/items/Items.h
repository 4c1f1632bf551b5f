// The concrete class of every kind of item.
#pragma once

#include "AtomItem.h"
#include "Geometry.h"
#include "GridItem.h"
#include "ItemClass.h"
#include "Kinds.h"
#include "Models.h"
#include "Sets.h"
#include "Space.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace memory_host {

using CompositeItem = HolderItem<TAVIK::Composite, Kind::Composite>;
using SpaceItem = HolderItem<TAVIK::Space, Kind::Space>;
using MoleculeItem = HolderItem<TAVIK::Molecule, Kind::Molecule>;
using GroupItem = HolderItem<TAVIK::Group, Kind::Group>;

class ResidueItem : public HolderItem<TAVIK::Residue, Kind::Residue> {
public:
    using HolderItem::HolderItem;
    void FirstModel() override { switchModel(m_record, ModelStep::First); }
    void PrevModel() override { switchModel(m_record, ModelStep::Previous); }
    void NextModel() override { switchModel(m_record, ModelStep::Next); }

    Name m_labelChain;
    Name m_labelNumber;
};

class SurfaceItem : public LeafItem<TAVIK::Surface, Kind::Surface> {
public:
    using LeafItem::LeafItem;
    /// Called when the mesh is another, or has other colours.
    void noteMesh() { m_meshVersion = ++lastMeshVersion; }

    std::unique_ptr<TAVIK::SurfaceMesh> m_mesh;
    std::uint32_t m_meshVersion = 0; ///< unlike that of any other mesh
    static inline std::uint32_t lastMeshVersion = 0;
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
} // namespace memory_host
