// What others do to the data of the host for real; see also PlainEdits.cpp.
#include "Driver.h"

#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
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
    return dynamic_cast<TAVIK::Composite*>(box) ? box : memory_host::parentOf(box);
}

// The top-level composite around an item, or else the space.
Compound* boxAround(Compound* item) {
    while (memory_host::parentOf(item) != Space::instance())
        item = memory_host::parentOf(item);
    return boxOf(item);
}

memory_host::AtomRecord recordOf(const plain::AtomValues& values, const char* name) {
    const auto& at = values.position;
    return {name, values.type, TAVIK::Vertex(at[0], at[1], at[2], values.hasPosition),
            values.temperature, values.model};
}

void addLeaf(Compound* parent, unsigned int value) {
    if (value % 4 == 0) {
        DataMaker::makeCore(parent, "leaf", "Surface");
    } else if (value % 4 == 2) {
        DataMaker::makePolyLine(parent, "leaf", {});
    } else {
        const GridValues values(value);
        memory_host::GridRecord record;
        record.points = values.points;
        record.origin = values.origin;
        for (const std::size_t axis : {0, 1, 2})
            record.steps[axis][axis] = values.step[axis];
        record.values.resize(std::size_t(values.points[0] * values.points[1] * values.points[2]));
        memory_host::addGrid(parent, "leaf", std::move(record));
    }
}

// Whether a residue, or a group, would stand in one.
bool isIn(Compound* box, const std::string& kind) {
    if (kind != "Residue" && kind != "Group")
        return false;
    while (box && box->GetType() != kind)
        box = memory_host::parentOf(box);
    return box;
}

constexpr const char* boxKinds[] = {"Composite", "Molecule", "Residue", "Group"};

void changeItem(Compound* item, const Edit& edit) {
    const unsigned int value = edit.value;
    if (edit.kind == EditKind::Select) {
        item->SetSelected(value % 2);
    } else if (edit.kind == EditKind::Show) {
        item->SetVisible(value % 2);
    } else if (edit.kind == EditKind::Paint) {
        item->SetColor(Color(0xff000000U | value));
    } else if (edit.kind == EditKind::SetAtom) {
        const plain::AtomValues values = madeAtom(value);
        memory_host::setAtom(item, recordOf(values, ""));
    } else if (value % 3 == 0) {
        item->FirstModel();
    } else if (value % 3 == 1) {
        item->PrevModel();
    } else {
        item->NextModel();
    }
}

void addItem(Compound* item, const std::vector<Compound*>& all, const Edit& edit) {
    const unsigned int value = edit.value;
    Compound* const space = Space::instance();
    if (edit.kind == EditKind::AddAtom) {
        const plain::AtomValues values = madeAtom(value);
        memory_host::addAtom(boxOf(item), recordOf(values, choose(madeNames, value)));
    } else if (edit.kind == EditKind::AddAmong) {
        const plain::AtomValues values = madeAtom(value);
        memory_host::addAtom(value % 4 ? space : boxOf(item),
                             recordOf(values, choose(madeNames, value)));
        if (item)
            item->SetSelected(value % 2);
    } else if (edit.kind == EditKind::AddBond) {
        memory_host::addBond(value % 4 ? boxAround(item) : space, item, all[value % all.size()]);
    } else if (edit.kind == EditKind::AddLeaf) {
        addLeaf(boxOf(item), value);
    } else if (edit.kind == EditKind::AddBox) {
        // A kind that cannot stand here gives way to one that can stand anywhere.
        Compound* const box = boxOf(item);
        const std::string kind = choose(boxKinds, value);
        DataMaker::makeCore(box, "box", isIn(box, kind) ? "Composite" : kind);
    } else if (edit.kind == EditKind::AddTop && value % 2) {
        DataMaker::makeCore(space, "top", choose(boxKinds, value / 2));
    } else if (edit.kind == EditKind::AddTop) {
        addLeaf(space, value / 2);
    } else {
        std::vector<Compound*> from = all;
        if (value % 6 == 0)
            from.assign(space->ChildBegin(), space->ChildEnd());
        std::vector<Compound*> members;
        for (unsigned int i = 0; i != value % 4 && !from.empty(); ++i)
            members.push_back(from[(edit.target + i * value) % from.size()]);
        DataMaker::makeSet(value % 3 ? boxOf(item) : space, "set", members);
    }
}

void destroyItem(Compound* item, const Edit& edit) {
    DataMaker::Destroy(item);
    if (edit.kind == EditKind::Swap)
        DataMaker::makeCore(Space::instance(), "swapped", "Composite");
}

} // namespace

void editData(Subscriber* who, const Edit& edit) {
    std::vector<Compound*> all;
    collect(Space::instance(), all);
    Compound* item = all.empty() ? nullptr : all[edit.target % all.size()];
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
        if (edit.kind == EditKind::Swap || edit.value < 4) {
            Compound** const first = Space::instance()->ChildBegin();
            const auto count = Space::instance()->ChildEnd() - first;
            item = count ? first[edit.target % unsigned(count)] : nullptr;
        }
        if (item) {
            const DataDelete<Compound> guard(who, item);
            if (guard.m_good)
                destroyItem(item, edit);
        }
        return;
    case EditKind::AddBond:
        if (!item || item == all[edit.value % all.size()] || !dynamic_cast<TAVIK::Atom*>(item) ||
            !dynamic_cast<TAVIK::Atom*>(all[edit.value % all.size()]))
            return;
        [[fallthrough]];
    default:
        const DataAdder<Space> guard(who, Space::instance());
        if (guard.m_good)
            addItem(item, all, edit);
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
            atoms.push_back(
                memory_host::addAtom(parent, recordOf(values, choose(madeNames, pick(7)))));
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

bool openStructure(Start::Kind which) {
    static const std::map<Start::Kind, const char*> files = {{Start::Ubiquitin, "1ubq.pdb"},
                                                             {Start::Crambin, "1ejg.pdb"},
                                                             {Start::Crabp, "1cbs.cif.gz"}};
    const QString path =
        which == Start::Sample ? QStringLiteral(SOURCE_DIR "/data/sample.pdb")
        : which == Start::Empty
            ? QStringLiteral("no such file.pdb")
            : test_support::TestCase::structure(QString::fromLatin1(files.at(which)));
    try {
        memory_host::openFile(path.toStdString());
    } catch (const memory_host::FileError&) {
        return false; // the host refuses the file, or changes just now
    }
    return true;
}

} // namespace random_use
