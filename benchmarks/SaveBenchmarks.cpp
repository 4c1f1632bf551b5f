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
#include "RealStructures.h"
#include "Space.h"
#include "Works.h"
#include "files/Saving.h"

#include <QTemporaryDir>

#include <fstream>

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

} // namespace

void benchmarkSaving(const std::string& path, int turns) {
    const std::string edited = "saving the edited structure";
    const std::string made = "saving the structure from its items";
    if (!isWanted(edited) && !isWanted(made))
        return;
    const QTemporaryDir folder;
    const std::string ours = folder.filePath("ours.cif").toStdString();
    const std::string theirs = folder.filePath("theirs.cif").toStdString();
    std::vector<TAVIK::Compound*> items = memory_host::openFile(path).items;
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
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
