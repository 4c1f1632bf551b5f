#include "Contest.h"
#include "GemmiReading.h"
#include "RealStructures.h"
#include "Space.h"
#include "Works.h"
#include "files/Files.h"

#include <optional>

namespace benchmarks {

void benchmarkFiles(const std::string& path, int turns) {
    MemoryLine memory;
    memory.work = "the opened structure, bonds included";
    if (!isWanted("opening the file") && !isWanted(memory.work))
        return;
    {
        const double before = heapBytes();
        memory_host::openFile(path);
        memory.ourBytes = heapBytes() - before;
    }
    const std::size_t atoms = atomCount(TAVIK::Space::instance());
    emptySpace();

    std::optional<gemmi::Structure> structure;
    const auto readWithGemmi = [&] { structure = gemmi_reading::readStructure(path); };
    // While it reads, the competitor keeps all values of the file in memory.
    const double theirBytes = static_cast<double>(atoms) * 1300.0;
    memory.theirBytes = -1.0;
    if (hasMemory(theirBytes)) {
        const double before = heapBytes();
        readWithGemmi();
        memory.theirBytes = heapBytes() - before;
        structure.reset();
    }

    run({.work = "opening the file",
         .size = atoms,
         .items = atoms,
         .itemName = "atom",
         .peer = "gemmi's reading",
         .target = "ratio at least 1",
         .theirBytes = theirBytes,
         .ours = {{}, [&] { memory_host::openFile(path); }, emptySpace},
         .theirs = {{}, readWithGemmi, [&] { structure.reset(); }}},
        turns);

    memory.size = memory.items = atoms;
    memory.itemName = "atom";
    memory.peer = "gemmi's structure, which has no bonds";
    memory.target = "at most 290 bytes"; // 40 of them for what saving needs
    add(memory);
}

} // namespace benchmarks
