// gemmi's writers print with the C library's functions, instead of a third library's.
#define USE_STD_SNPRINTF
#define GEMMI_WRITE_IMPLEMENTATION
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
#include <gemmi/to_cif.hpp>
#include <gemmi/to_mmcif.hpp>

#include "AtomDetails.h"
#include "Contest.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "GemmiReading.h"
#include "History.h"
#include "RealStructures.h"
#include "Space.h"
#include "Works.h"
#include "files/Saving.h"

#include <QTemporaryDir>

#include <array>
#include <fstream>
#include <utility>
#include <vector>

namespace benchmarks {

namespace {

// Another entry: with it, the file is written from the items instead of its text.
TAVIK::Compound* makeAnotherEntry() {
    using TAVIK::DataMaker;
    const DataPointBase guard(nullptr, Publisher::Add);
    TAVIK::Compound* entry = DataMaker::makeCore(TAVIK::Space::instance(), "other", "Composite");
    DataMaker::makeAtom(entry, {.name = "C", .type = "C", .position = {0.0F, 0.0F, 0.0F, true}});
    return entry;
}

void findBonds(TAVIK::Compound* item, std::vector<TAVIK::Compound*>& bonds) {
    for (TAVIK::Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        if (dynamic_cast<TAVIK::Bond*>(*child))
            bonds.push_back(*child);
        else
            findBonds(*child, bonds);
}

void deleteBonds() {
    const DataPointBase guard(nullptr, Publisher::Delete);
    std::vector<TAVIK::Compound*> bonds;
    findBonds(TAVIK::Space::instance(), bonds);
    for (std::size_t i = 0; i < bonds.size(); i += 10)
        TAVIK::DataMaker::Destroy(bonds[i]);
}

// It is said which of them come back when the file is read, as their atoms are near each other.
void benchmarkBonds(const std::string& work, const std::vector<TAVIK::Compound*>& items,
                    const std::string& file, int turns) {
    deleteBonds();
    bool areDeleted = true;
    const auto restore = [&areDeleted] {
        if (std::exchange(areDeleted, false))
            History::undo();
    };
    const auto deleteAgain = [&areDeleted] {
        if (!std::exchange(areDeleted, true))
            History::redo();
    };
    std::array<std::size_t, 2> lines{};
    const auto save = [&](std::size_t which) {
        return [&, which] { lines[which] = memory_host::saveFile(items, file).size(); };
    };
    const auto told = [&lines](std::size_t which) {
        return [&lines, which] {
            return std::to_string(lines[which]) + (lines[which] == 1 ? " line" : " lines");
        };
    };
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
    run({.work = work,
         .size = atoms,
         .items = atoms,
         .itemName = "atom",
         .peer = "with all bonds",
         .target = "ratio at least 0.83",
         .ours = {.prepare = deleteAgain, .work = save(0), .outcome = told(0)},
         .theirs = {.prepare = restore, .work = save(1), .outcome = told(1)}},
        turns);
    restore();
}

} // namespace

void benchmarkSaving(const std::string& path, int turns) {
    const std::string edited = "saving the edited structure";
    const std::string made = "saving the structure from its items";
    const std::string bonds = "saving with every tenth bond deleted";
    if (!isWanted(edited) && !isWanted(made) && !isWanted(bonds))
        return;
    const QTemporaryDir folder;
    const std::string ours = folder.filePath("ours.cif").toStdString();
    const std::string theirs = folder.filePath("theirs.cif").toStdString();
    std::vector<TAVIK::Compound*> items = memory_host::openFile(path).items;
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
    if (isWanted(bonds))
        benchmarkBonds(bonds, items, ours, turns);
    {
        const DataPointBase guard(nullptr, Publisher::Delete);
        TAVIK::Compound* const groups = *(*items.front()->ChildBegin())->ChildBegin();
        TAVIK::DataMaker::Destroy(*groups->ChildBegin()); // a residue
    }
    const auto readAndWrite = [&] {
        const gemmi::Structure structure = gemmi_reading::readStructure(path);
        std::ofstream out(theirs);
        gemmi::cif::write_cif_to_stream(out, gemmi::make_mmcif_document(structure));
    };
    const auto contest = [&](const std::string& work) {
        run({.work = work,
             .size = atoms,
             .items = atoms,
             .itemName = "atom",
             .peer = "gemmi's reading and writing",
             .target = "ratio at least 1",
             .theirBytes = static_cast<double>(atoms) * 2600.0,
             .ours = {{}, [&] { memory_host::saveFile(items, ours); }},
             .theirs = {{}, readAndWrite}},
            turns);
    };
    if (isWanted(edited))
        contest(edited);
    items.push_back(makeAnotherEntry());
    if (isWanted(made))
        contest(made);
    emptySpace();
}

} // namespace benchmarks
