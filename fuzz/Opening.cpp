#include "Opening.h"

#include "DataMaker.h"
#include "DataPointBase.h"
#include "Space.h"
#include "Traversal.h"
#include "files/FileLimits.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/Invariants.h"

#include <algorithm>

namespace fuzzing {

namespace {

using TAVIK::Compound;

std::vector<Compound*> childrenOf(Compound* item) {
    return {item->ChildBegin(), item->ChildEnd()};
}

/// What was open before: an entry of two atoms, of which one is selected.
Compound* openBefore() {
    using memory_host::addAtom;
    static Compound* const entry = [] {
        const DataPointBase guard(nullptr, Publisher::Add);
        Compound* const made =
            TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "before", "Composite");
        addAtom(made, {"A", "C", TAVIK::Vertex(0, 0, 0, true), 0, 0})->SetSelected(true);
        addAtom(made, {"B", "C", TAVIK::Vertex(1, 0, 0, true), 0, 0});
        return made;
    }();
    return entry;
}

void requireAsBefore() {
    Compound* const entry = openBefore();
    require(childrenOf(TAVIK::Space::instance()) == std::vector<Compound*>{entry},
            "the space holds what it held before");
    const std::vector<Compound*> atoms = childrenOf(entry);
    require(atoms.size() == 2 && atoms[0]->IsSelected() && !atoms[1]->IsSelected(),
            "what was open is as it was");
    require(takeLog().empty(), "nothing is logged");
}

void requireRefusal(const memory_host::FileError& error, const InputFile& file) {
    const std::string_view line = error.what();
    requireLine(line, file.path() + ':');
    require(line.find("; accepted ") != std::string_view::npos, "a refusal says what is accepted",
            line);
    require(std::ranges::none_of(line, [](unsigned char c) { return c < 0x20 || c == 0x7f; }),
            "a refusal has no control characters", line);
    // These messages come from unexpected exceptions or lack of memory, and no input is large.
    // Quoted text is ignored, because it may be the input's.
    std::string own(line);
    if (const std::size_t quote = own.find('"'); quote != std::string::npos)
        own.erase(quote, own.rfind('"') - quote);
    require(own.find(": cannot be opened: ") == std::string::npos &&
                own.find("not enough memory") == std::string::npos &&
                own.find(" MB are free; ") == std::string::npos,
            "a refusal says what is wrong with the file", line);
    requireAsBefore();
}

/// Checks an item and all below it.
void inspect(Compound* item, const std::string& above) {
    const std::string name = item->GetName();
    require(!name.empty() && name.find('/') == std::string::npos &&
                std::ranges::none_of(name, [](unsigned char c) { return c < 0x20 || c == 0x7f; }),
            "a name can stand in a qualified name", name);
    const std::string qualified = item->GetFQName();
    require(qualified == above + '/' + name, "a qualified name tells the place", qualified);
    require(!item->GetType().empty(), "an item has a type", qualified);
    const std::size_t parts = static_cast<std::size_t>(item->PartEnd() - item->PartBegin());
    require(parts == (dynamic_cast<TAVIK::Bond*>(item) ? 2U : 0U), "a bond has two atoms",
            qualified);
    const bool isNamed = !dynamic_cast<TAVIK::Group*>(item);
    const std::vector<Compound*> children = childrenOf(item);
    require(item->HasChildren() == !children.empty(), "an item knows whether it has children",
            qualified);
    for (Compound* child : children)
        inspect(child, isNamed ? qualified : above);
}

void useGrid(TAVIK::Grid* grid) {
    std::size_t points = 1;
    for (const std::size_t axis : {0, 1, 2}) {
        require(grid->m_points[axis] >= 1 && grid->m_lower[axis] == 0 &&
                    grid->m_upper[axis] == grid->m_points[axis],
                "all of a new grid is shown");
        points *= static_cast<std::size_t>(grid->m_points[axis]);
    }
    require(TAVIK::GetGridValues(grid)->values.size() == points,
            "a grid has a value for each point");
    for (const float at : {0.0F, 1.0F, -1.0e30F, 7.5e9F}) {
        int place[3] = {};
        const bool isInside = grid->GetNearest(TAVIK::Vertex(at, -at, at, true), place);
        bool isIndex = true;
        for (const std::size_t axis : {0, 1, 2})
            isIndex = isIndex && place[axis] >= 0 && place[axis] < grid->m_points[axis];
        require(isInside == isIndex, "the nearest point is in the grid or outside of it");
    }
}

/// Selects, hides and switches models, as a user may do with anything that was opened.
void use(Compound* item) {
    const DataPointBase guard(nullptr, Publisher::Update);
    item->SetSelected(true);
    require(item->IsSelected() && item->HasSelected(), "what was selected is selected");
    item->SetVisible(false);
    require(!item->IsVisible(), "what was hidden is hidden");
    item->SetVisible(true);
    require(item->IsVisible(), "what was shown is shown");
    TAVIK::ForResidues(item, true, [](Compound* residue) {
        residue->PrevModel();
        residue->SetSelected(false);
        residue->NextModel();
        residue->NextModel();
        residue->SetVisible(false);
        residue->FirstModel();
    });
    if (auto* const grid = dynamic_cast<TAVIK::Grid*>(item))
        useGrid(grid);
    item->RestoreColor();
}

void requireRefusedNow(memory_host::ParsedFile& parsed, const InputFile& file) {
    try {
        memory_host::openParsed(parsed, {});
        require(false, "a file opens once");
    } catch (const memory_host::FileError& error) {
        requireLine(error.what(), file.path() + ':');
    }
}

void openAndDestroy(const InputFile& file) {
    Compound* const before = openBefore();
    requireAsBefore();
    memory_host::ParsedFilePtr parsed;
    memory_host::OpenedFile opened;
    try {
        parsed = memory_host::parseFile(file.path());
        requireAsBefore();
        opened = memory_host::openParsed(*parsed, {});
    } catch (const memory_host::FileError& error) {
        requireRefusal(error, file);
        return;
    }
    for (const std::string& remark : opened.remarks)
        requireLine(remark, file.path() + ':');
    std::vector<Compound*> expected = {before};
    expected.insert(expected.end(), opened.items.begin(), opened.items.end());
    require(!opened.items.empty() && childrenOf(TAVIK::Space::instance()) == expected,
            "the space holds what was opened, behind what it held before");
    requireInvariants();
    requireRefusedNow(*parsed, file);
    for (Compound* item : opened.items) {
        inspect(item, {});
        use(item);
    }
    requireInvariants();
    {
        const DataPointBase guard(nullptr, Publisher::Delete);
        for (Compound* item : opened.items)
            TAVIK::DataMaker::Destroy(item);
    }
    requireAsBefore();
    requireInvariants();
}

} // namespace

void requireInvariants() {
    const std::vector<std::string> faults = memory_host::checkInvariants();
    require(faults.empty(), "the data space agrees with itself",
            faults.empty() ? std::string() : faults.front());
}

void openInput(const InputFile& file, std::string_view content) {
    // A packed input may grow a thousandfold, but not beyond this limit.
    memory_host::FileLimits& limits = memory_host::fileLimits();
    limits.bytes = std::size_t{8} << 20;
    const bool isPacked = content.starts_with("\x1f\x8b");
    const std::size_t bytes =
        isPacked ? std::min(1032 * content.size(), limits.bytes) : content.size();
    file.write(content);
    openBefore();
    const Budget budget(bytes, {.seconds = 5.0e-6, .memory = 200.0});
    openAndDestroy(file);
    budget.check();
}

} // namespace fuzzing
