// Saving what was opened, with a part of it deleted: the files are read again, and have the atoms
// that were kept.
#include "AtomDetails.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "Fuzzing.h"
#include "Kinds.h"
#include "Opening.h"
#include "Space.h"
#include "Traversal.h"
#include "files/FileLimits.h"
#include "files/Saving.h"
#include "history/Steps.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <random>

#include <unistd.h>

namespace {

using fuzzing::require;
using TAVIK::Compound;
using Items = std::vector<Compound*>;

// The same for the same input.
class Deletion {
public:
    explicit Deletion(std::string_view input)
        : m_random(static_cast<unsigned int>(std::hash<std::string_view>()(input))),
          m_oneOf(std::array{1U << 31U, 16U, 3U}[m_random() % 3]) {}

    void destroyIn(const Items& items) {
        const DataPointBase guard(nullptr, Publisher::Delete);
        for (Compound* const item : items)
            destroyBelow(item);
    }

private:
    void destroyBelow(Compound* item) {
        const Items children(item->ChildBegin(), item->ChildEnd());
        for (Compound* const child : children)
            if (m_random() % m_oneOf == 0)
                TAVIK::DataMaker::Destroy(child);
            else
                destroyBelow(child);
    }

    std::minstd_rand m_random;
    unsigned int m_oneOf;
};

// Where an atom stands below its entry. A residue has the name that its first row says, which may
// be gone: its number is what stays.
std::string placeOf(const TAVIK::Atom& atom) {
    const std::string name = atom.GetFQName();
    const std::size_t chain = name.find('/', 1);
    const std::size_t residue = name.rfind('/', name.rfind('/') - 1);
    const std::size_t number = name.rfind(' ', name.rfind('/'));
    if (number == std::string::npos || number < residue || residue <= chain)
        return name.substr(chain);
    return name.substr(chain, residue - chain) + name.substr(number);
}

std::string textOf(const TAVIK::Atom& atom) {
    const TAVIK::Vertex at = atom.GetPosition();
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(&atom);
    std::string text = placeOf(atom) + ' ' + atom.GetType();
    for (const std::size_t axis : {0, 1, 2})
        text += ' ' + (at.isValid() ? std::to_string(at[axis]) : "-");
    return text + ' ' + std::to_string(atom.GetTemperature()) + ' ' +
           std::to_string(details.occupancy) + ' ' + std::to_string(details.formalCharge) + ' ' +
           std::to_string(details.alternative) + ' ' + std::to_string(int{details.isHetero});
}

std::vector<std::string> atomsOf(const Items& items) {
    std::vector<std::string> texts;
    for (Compound* const item : items)
        TAVIK::ForAtoms(item, true, [&texts](Compound* atom) {
            texts.push_back(textOf(dynamic_cast<const TAVIK::Atom&>(*atom)));
        });
    std::ranges::sort(texts);
    return texts;
}

void destroy(const Items& items) {
    const DataPointBase guard(nullptr, Publisher::Delete);
    std::ranges::for_each(items, &TAVIK::DataMaker::Destroy);
}

// Null where an odd line of a PDB file, from above which the rows are gone, is how mmCIF begins.
std::optional<Items> reopen(const std::string& path) {
    try {
        return memory_host::openFile(path).items;
    } catch (const memory_host::FileError& error) {
        const std::string_view line = error.what();
        require(path.ends_with(".pdb") && line.find("mmCIF") != std::string_view::npos,
                "a saved file can be opened", line);
    }
    return std::nullopt;
}

// The atoms must be the same where the format is.
void saveAndCompare(const Items& items, const std::string& path, bool isSameFormat) {
    const std::vector<std::string> kept = atomsOf(items);
    try {
        for (const std::string& line : memory_host::saveFile(items, path))
            fuzzing::requireLine(line, path + ':');
    } catch (const memory_host::SaveError& error) {
        fuzzing::requireLine(error.what(), path + ':');
        return;
    }
    const std::optional<Items> again = reopen(path);
    if (!again)
        return;
    const std::vector<std::string> read = atomsOf(*again);
    require(read.size() == kept.size(), "a saved file has as many atoms as were kept",
            std::to_string(read.size()) + " of " + std::to_string(kept.size()));
    const auto other = std::ranges::mismatch(read, kept).in1;
    if (isSameFormat)
        require(other == read.end(), "a saved file has the atoms that were kept",
                other == read.end() ? std::string() : *other);
    destroy(*again);
    ::unlink(path.c_str());
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input");
    memory_host::fileLimits().bytes = std::size_t{8} << 20;
    const std::string_view input = fuzzing::textOf(data, size);
    (void)fuzzing::takeLog();
    const bool isCif = input.find("_atom_site") != std::string_view::npos;
    if (input.starts_with("\x1f\x8b"))
        return 0;
    file.write(input);
    const fuzzing::Budget budget(size, {.seconds = 60.0e-6, .memory = 3000.0});
    Items items;
    try {
        items = memory_host::openFile(file.path()).items;
    } catch (const memory_host::FileError&) { // This is for other targets.
        return 0;
    }
    Deletion(input).destroyIn(items);
    fuzzing::requireInvariants();
    for (const bool asCif : {isCif, !isCif})
        saveAndCompare(items, file.path() + (asCif ? ".cif" : ".pdb"), asCif == isCif);
    destroy(items);
    fuzzing::requireInvariants();
    memory_host::forgetHistory();
    budget.check();
    return 0;
}
