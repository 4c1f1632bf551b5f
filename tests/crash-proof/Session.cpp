#include "Session.h"

#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Geometry.h"
#include "History.h"
#include "ItemOrigin.h"
#include "Space.h"
#include "Traversal.h"
#include "files/Saving.h"
#include "items/Building.h"

#include <QFile>

namespace crash_proof {

namespace {

using TAVIK::Compound;
using TAVIK::DataMaker;

Compound* space() {
    return TAVIK::Space::instance();
}

std::vector<Compound*> entries() {
    return {space()->ChildBegin(), space()->ChildEnd()};
}

std::vector<Compound*> atoms() {
    std::vector<Compound*> all;
    TAVIK::GetAtoms(space(), all, true);
    return all;
}

std::vector<Compound*> residues() {
    std::vector<Compound*> all;
    TAVIK::GetResidues(space(), all, true);
    return all;
}

TAVIK::SurfaceMesh meshOf(std::size_t vertices) {
    TAVIK::SurfaceMesh mesh;
    mesh.vertices.assign(vertices, {1, 2, 3});
    mesh.normals.assign(vertices, {0, 0, 1});
    mesh.triangles = {{0, 1, 2}};
    return mesh;
}

} // namespace

void Session::open(const std::string& path) {
    m_files.push_back(path);
    memory_host::openFile(path);
}

bool Session::change() {
    const int kind = upTo(20);
    if (kind < 3) {
        History::undo(static_cast<std::size_t>(1 + upTo(3)));
        return false;
    }
    if (kind == 3) {
        History::redo(1);
        return false;
    }
    if (kind == 4)
        return save();
    if (kind == 5 && entries().size() < 4) {
        memory_host::openFile(
            m_files[static_cast<std::size_t>(upTo(static_cast<int>(m_files.size())))]);
        return false;
    }
    const DataPointBase guard(nullptr, Publisher::Delete, "Change");
    if (!guard.m_good)
        return false;
    if (kind < 12)
        look(upTo(3) == 0 ? anyOf(entries()) : upTo(2) == 0 ? anyOf(residues()) : anyOf(atoms()));
    else if (kind < 15)
        edit();
    else if (kind < 17)
        destroy();
    else
        make();
    return false;
}

void Session::look(Compound* item) {
    if (!item)
        return;
    switch (upTo(4)) {
    case 0:
        item->ToggleSelected();
        break;
    case 1:
        item->ToggleVisible();
        break;
    case 2:
        TAVIK::ForAtoms(item, true, [this](Compound* atom) { atom->SetColor(Color(m_random())); });
        break;
    default:
        TAVIK::ForResidues(space(), true, [](Compound* residue) { residue->NextModel(); });
        break;
    }
}

void Session::edit() {
    auto* const atom = dynamic_cast<TAVIK::Atom*>(anyOf(atoms()));
    if (!atom)
        return;
    const auto model = static_cast<unsigned int>(upTo(4));
    const TAVIK::Vertex position(static_cast<float>(upTo(100)), 1.25F, 0.1F, upTo(10) != 0);
    switch (upTo(3)) {
    case 0:
        TAVIK::SetAtomModel(atom, model);
        break;
    case 1:
        TAVIK::SetAtomPosition(atom, position);
        break;
    default:
        memory_host::setAtom(atom, {.name = {},
                                    .type = upTo(2) == 0 ? "Fe" : "C",
                                    .position = position,
                                    .temperature = static_cast<float>(upTo(100)),
                                    .model = model});
        break;
    }
}

void Session::destroy() {
    const int what = upTo(10);
    DataMaker::Destroy(what == 0  ? anyOf(entries())
                       : what < 5 ? anyOf(residues())
                                  : anyOf(atoms()));
}

void Session::make() {
    Compound* const residue = anyOf(residues());
    Compound* const atom = anyOf(atoms());
    switch (upTo(6)) {
    case 0:
        DataMaker::makeSet(space(), "set", {residue, atom, anyOf(atoms())});
        break;
    case 1:
        DataMaker::makeSurface(space(), "surface",
                               meshOf(static_cast<std::size_t>(3 + upTo(5000))));
        break;
    case 2:
        if (Compound* const other = anyOf(atoms()); other && atom != other)
            DataMaker::makeBond(space(), atom, other);
        break;
    case 3:
        if (Compound* const entry = DataMaker::makeCore(space(), "made", "Composite"))
            DataMaker::makeCore(DataMaker::makeCore(entry, "Z", "Molecule"), "LIG 1", "Residue");
        break;
    case 4:
        DataMaker::makeGrid(
            space(), "grid",
            {{3, 3, 3}, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, std::vector<float>(27, 1)})
            ->m_upper[0] = 2;
        break;
    default:
        if (residue)
            DataMaker::makeAtom(residue, {.name = "XX",
                                          .type = "C",
                                          .position = TAVIK::Vertex(1, 2, 3, true),
                                          .model = static_cast<unsigned int>(upTo(4))});
        break;
    }
}

bool Session::save() {
    Compound* const entry = anyOf(entries());
    const QString file = entry ? TAVIK::OriginOf(entry) : QString();
    if (file.isEmpty())
        return false;
    try {
        memory_host::saveFile(memory_host::entriesOfFile(entry),
                              QFile::encodeName(file).toStdString(), {.replaceChanged = true});
        return true;
    } catch (const memory_host::SaveError&) { // All of it may be gone.
        return false;
    }
}

} // namespace crash_proof
