// What others do to the data of the host for real; see also PlainEdits.cpp.
#include "Ancestry.h"
#include "Driver.h"

#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "History.h"
#include "Kinds.h"
#include "PluginResult.h"
#include "Space.h"
#include "TestSupport.h"
#include "files/Files.h"
#include "items/Building.h"

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>

extern "C" void CommandC(const char* name, const void* data, PluginResult* result);

namespace random_use {

using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

namespace {

void collect(Compound* holder, std::vector<Compound*>& items) {
    for (Compound** child = holder->ChildBegin(); child != holder->ChildEnd(); ++child) {
        items.push_back(*child);
        collect(*child, items);
    }
}

// The item, or the composite that holds it.
Compound* boxOf(Compound* item) {
    Compound* box = item ? item : Space::instance();
    return dynamic_cast<TAVIK::Composite*>(box) ? box : TAVIK::GetParent(box);
}

// The top-level composite around an item, or else the space.
Compound* boxAround(Compound* item) {
    while (TAVIK::GetParent(item) != Space::instance())
        item = TAVIK::GetParent(item);
    return boxOf(item);
}

TAVIK::AtomValues recordOf(const plain::AtomValues& values, const char* name) {
    const auto& at = values.position;
    return {name, values.type, TAVIK::Vertex(at[0], at[1], at[2], values.hasPosition),
            values.temperature, values.model};
}

void addLeaf(Compound* parent, const Edit& edit) {
    const Kind kind = addedKind(edit);
    if (kind == Kind::Surface) {
        DataMaker::makeCore(parent, "leaf", "Surface");
    } else if (kind == Kind::PolyLine) {
        DataMaker::makePolyLine(parent, "leaf", {});
    } else {
        const GridValues values(leafValue(edit));
        TAVIK::GridValues record;
        record.points = values.points;
        record.origin = values.origin;
        for (const std::size_t axis : {0, 1, 2})
            record.steps[axis][axis] = values.step[axis];
        record.values.resize(std::size_t(values.points[0] * values.points[1] * values.points[2]));
        DataMaker::makeGrid(parent, "leaf", std::move(record));
    }
}

// Whether a residue, or a group, would stand in one.
bool isIn(Compound* box, const std::string& kind) {
    if (kind != "Residue" && kind != "Group")
        return false;
    while (box && box->GetType() != kind)
        box = TAVIK::GetParent(box);
    return box;
}

void setAtom(Compound* item, const TAVIK::AtomValues& values) {
    auto* const atom = dynamic_cast<TAVIK::Atom*>(item);
    if (TAVIK::GetAtomDetails(atom).serial == TAVIK::AtomDetails::noSerial)
        return memory_host::setAtom(item, values);
    TAVIK::SetAtomPosition(atom, values.position);
    TAVIK::SetAtomModel(atom, values.model);
}

void changeItem(Compound* item, const Edit& edit) {
    if (edit.kind == EditKind::Select)
        item->SetSelected(turnsOn(edit));
    else if (edit.kind == EditKind::Show)
        item->SetVisible(turnsOn(edit));
    else if (edit.kind == EditKind::Paint)
        item->SetColor(Color(paintedColor(edit)));
    else if (edit.kind == EditKind::SetAtom)
        setAtom(item, recordOf(madeAtom(edit.value), ""));
    else if (modelSwitch(edit) == Host::Switch::First)
        item->FirstModel();
    else if (modelSwitch(edit) == Host::Switch::Previous)
        item->PrevModel();
    else
        item->NextModel();
}

void addItem(const Edited<Compound>& edited, const Edit& edit) {
    Compound* const item = edited.item;
    const Kind kind = addedKind(edit);
    Compound* const box = boxOf(addsToSpace(edit) ? nullptr : item);
    if (kind == Kind::Bond) {
        memory_host::addBond(addsToSpace(edit) ? box : boxAround(item), item, edited.second);
    } else if (kind == Kind::Set) {
        DataMaker::makeSet(box, "set", edited.members);
    } else if (kind == Kind::Atom) {
        memory_host::addAtom(box, recordOf(madeAtom(edit.value), madeName(edit.value)));
        if (edit.kind == EditKind::AddAmong && item)
            item->SetSelected(turnsOn(edit));
    } else if (kind > Kind::Group) {
        addLeaf(box, edit);
    } else {
        // A kind that cannot stand here gives way to one that can stand anywhere.
        const std::string name = kindName(kind);
        DataMaker::makeCore(box, edit.kind == EditKind::AddTop ? "top" : "box",
                            isIn(box, name) ? "Composite" : name);
    }
}

void destroyItem(Compound* item, const Edit& edit) {
    DataMaker::Destroy(item);
    if (edit.kind == EditKind::Swap)
        DataMaker::makeCore(Space::instance(), "swapped", "Composite");
}

} // namespace

namespace {

void travel(const Edit& edit) {
    if (edit.kind == EditKind::Undo)
        History::undo(changesOf(edit, History::undoable().size()));
    else if (edit.kind == EditKind::Redo)
        History::redo(changesOf(edit, History::redoable().size()));
    else
        History::undo(History::toLastOfData());
}

} // namespace

void editData(Subscriber* who, const Edit& edit) {
    Compound* const space = Space::instance();
    std::vector<Compound*> all;
    collect(space, all);
    const Edited<Compound> edited(edit, all, {space->ChildBegin(), space->ChildEnd()});
    Compound* const item = edited.item;
    switch (edit.kind) {
    case EditKind::None:
        return;
    case EditKind::Highlight:
        return Space::SetShowSelection(!Space::GetShowSelection());
    case EditKind::Throw:
        if (who)
            throw std::runtime_error(complaint);
        return;
    case EditKind::Kill: {
        PluginResult result;
        return CommandC("Kill", nullptr, &result);
    }
    case EditKind::Undo:
    case EditKind::Redo:
    case EditKind::UndoData:
        return travel(edit);
    case EditKind::Look:
    case EditKind::Command:
    case EditKind::Entry:
        return; // see Driver
    case EditKind::Select:
    case EditKind::Show:
    case EditKind::Paint:
    case EditKind::Model:
    case EditKind::SetAtom:
        if (item) {
            const DataPoint<Compound> guard(who, item);
            if (guard.m_good)
                changeItem(item, edit);
        }
        return;
    case EditKind::Destroy:
    case EditKind::Swap:
        if (item) {
            const DataDelete<Compound> guard(who, item);
            if (guard.m_good)
                destroyItem(item, edit);
        }
        return;
    case EditKind::AddBond:
        if (!item || item == edited.second || !dynamic_cast<TAVIK::Atom*>(item) ||
            !dynamic_cast<TAVIK::Atom*>(edited.second))
            return;
        [[fallthrough]];
    default:
        const DataAdder<Space> guard(who, Space::instance());
        if (guard.m_good)
            addItem(edited, edit);
    }
}

void buildStructure(unsigned int seed) {
    std::mt19937 random(seed);
    const auto pick = [&random](unsigned int below) { return unsigned(random() % below); };
    static constexpr const char* entryNames[] = {"1abc", "2.b", "3[c", "x & y", "4+", "d\xE9j\xE0"};
    static constexpr const char* residueNames[] = {"MET 1", "ALA 2", "HOH 3", "A", "GLN 41A"};
    Compound* entry = memory_host::makeDetached(choose(entryNames, pick(6)), "Composite");
    std::vector<Compound*> atoms;
    const auto addAtoms = [&](Compound* parent, unsigned int count) {
        for (unsigned int i = 0; i != count; ++i) {
            plain::AtomValues values = madeAtom(pick(5000));
            values.model = pick(2) ? 1 + pick(3) : 0;
            atoms.push_back(memory_host::addAtom(parent, recordOf(values, madeName(pick(7)))));
        }
    };
    for (unsigned int c = 0, chains = 1 + pick(2); c != chains; ++c) {
        Compound* chain = DataMaker::makeCore(entry, c ? "B" : "A", "Molecule");
        Compound* groups = DataMaker::makeCore(chain, "Groups", "Composite");
        for (unsigned int r = 0, residues = 1 + pick(4); r != residues; ++r) {
            Compound* residue =
                DataMaker::makeCore(groups, choose(residueNames, pick(5)), "Residue");
            for (unsigned int g = 0, count = pick(3); g != count; ++g)
                addAtoms(DataMaker::makeCore(residue, g ? "Side chain" : "Backbone", "Group"),
                         pick(4));
            addAtoms(residue, pick(3));
        }
        Compound* bonds = DataMaker::makeCore(chain, "Bonds", "Composite");
        for (std::size_t i = 1; i < atoms.size(); i += 1 + pick(2))
            memory_host::addBond(bonds, atoms[i - 1], atoms[i]);
    }
    const DataAdder<Space> guard(nullptr, Space::instance());
    if (guard.m_good)
        memory_host::attach(entry, Space::instance());
    else
        DataMaker::Destroy(entry);
}

bool openStructure(const std::string& path) {
    try {
        memory_host::openFile(path);
    } catch (const memory_host::FileError&) {
        return false; // the host refuses the file, or changes just now
    }
    return true;
}

} // namespace random_use
