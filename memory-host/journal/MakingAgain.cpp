#include "MakingAgain.h"

#include "DataMaker.h"
#include "JournalFiles.h"
#include "Space.h"
#include "files/FileReport.h"
#include "items/Building.h"
#include "items/ElementColours.h"
#include "items/GeometryFaults.h"
#include "items/Items.h"

#include <algorithm>
#include <span>
#include <utility>

namespace memory_host {

namespace {

using TAVIK::DataMaker;

// All but the name.
TAVIK::AtomValues valuesOf(const JournalContent& content, const JournalContent::AtomValues& atom) {
    return {.name = {},
            .type = content.text(atom.type),
            .position = TAVIK::Vertex(atom.position[0], atom.position[1], atom.position[2],
                                      atom.hasPosition),
            .temperature = atom.temperature,
            .model = atom.model,
            .partial = atom.partial,
            .details = atom.details};
}

// Throws FileError.
TAVIK::GridValues gridValues(const std::string& folder, std::uint32_t id, std::uint32_t version,
                             MapCrystal& crystal) {
    const FileReport report(folder + '/' + gridFile(id, version));
    return readFramed(report, [&](std::string_view bytes) { return readGrid(bytes, crystal); });
}

class Maker {
public:
    Maker(const JournalContent& content, const std::string& folder, RecoveredItems& items)
        : m_content(content), m_folder(folder), m_items(items) {}

    /// Null if it cannot be made, or not yet.
    Compound* make(const JournalContent::Made& made) const;

private:
    Compound* makeAtom(Compound* parent, const JournalContent::Made& made) const;
    Compound* makeBond(Compound* parent, const JournalContent::Made& made) const;
    Compound* makeSurface(Compound* parent, const JournalContent::Made& made) const;
    Compound* makeGrid(Compound* parent, const JournalContent::Made& made) const;
    Compound* makeSet(Compound* parent, const JournalContent::Made& made) const;
    std::string name(const JournalContent::Made& made) const {
        return std::string(m_content.text(made.name));
    }

    const JournalContent& m_content;
    const std::string& m_folder;
    RecoveredItems& m_items;
};

Compound* Maker::make(const JournalContent::Made& made) const try {
    Compound* const parent = made.parent == 0 ? TAVIK::Space::instance() : m_items.at(made.parent);
    if (!parent)
        return nullptr;
    switch (made.kind) {
    case Kind::Atom:
        return makeAtom(parent, made);
    case Kind::Bond:
        return makeBond(parent, made);
    case Kind::Surface:
        return makeSurface(parent, made);
    case Kind::Grid:
        return makeGrid(parent, made);
    case Kind::Set:
        return makeSet(parent, made);
    case Kind::PolyLine:
        return DataMaker::makePolyLine(parent, name(made), m_content.madeLines[made.values[0]]);
    default:
        break;
    }
    Compound* const item = DataMaker::makeCore(parent, name(made), kindName(made.kind));
    if (item && made.kind == Kind::Residue)
        setLabelIds(item, {m_content.text(made.values[0]), m_content.text(made.values[1])});
    return item;
} catch (const FileError&) { // Its mesh or values are missing.
    return nullptr;
}

Compound* Maker::makeAtom(Compound* parent, const JournalContent::Made& made) const {
    TAVIK::AtomValues values = valuesOf(m_content, m_content.madeAtoms[made.values[0]]);
    values.name = m_content.text(made.name);
    return DataMaker::makeAtom(parent, values);
}

Compound* Maker::makeBond(Compound* parent, const JournalContent::Made& made) const {
    if (made.values[0] == 0)
        return DataMaker::makeCore(parent, name(made), "Bond");
    auto* const first = dynamic_cast<AtomItem*>(m_items.at(made.values[0]));
    auto* const second = dynamic_cast<AtomItem*>(m_items.at(made.values[1]));
    return first && second && first != second ? DataMaker::makeBond(parent, first, second)
                                              : nullptr;
}

Compound* Maker::makeSurface(Compound* parent, const JournalContent::Made& made) const {
    if (made.values[0] == 0)
        return DataMaker::makeCore(parent, name(made), "Surface");
    const FileReport report(m_folder + '/' + meshFile(made.id, made.values[0]));
    TAVIK::SurfaceMesh mesh = readFramed(report, readMesh);
    for (unsigned int& atom : mesh.atoms) {
        const Compound* const item = m_items.at(atom);
        atom = item ? item->GetId() : 0;
    }
    return DataMaker::makeSurface(parent, name(made), std::move(mesh));
}

Compound* Maker::makeGrid(Compound* parent, const JournalContent::Made& made) const {
    if (made.values[0] == 0)
        return DataMaker::makeCore(parent, name(made), "Grid");
    MapCrystal crystal;
    TAVIK::Grid* const grid = DataMaker::makeGrid(
        parent, name(made), gridValues(m_folder, made.id, made.values[1], crystal));
    setCrystal(grid, crystal);
    return grid;
}

Compound* Maker::makeSet(Compound* parent, const JournalContent::Made& made) const {
    const auto set =
        std::ranges::lower_bound(m_content.sets, made.id, {}, &JournalContent::Set::id);
    std::vector<Compound*> members;
    if (set != m_content.sets.end() && set->id == made.id)
        for (const std::uint32_t id : set->members)
            members.push_back(m_items.at(id));
    return DataMaker::makeSet(parent, name(made), members);
}

bool standsForOthers(const HostItem& item) {
    return item.isHolder() ? static_cast<const Holder&>(item).sum.leaves > 0 : listsMembers(item);
}

void lookAs(Compound& item, const JournalContent::Run& run) {
    const HostItem& record = HostItem::of(&item);
    if (!standsForOthers(record)) {
        if (const bool on = (run.look & journal_look::selected) != 0;
            record.has(HostItem::Selected) != on)
            item.SetSelected(on);
        if (const bool on = (run.look & journal_look::hidden) == 0;
            record.has(HostItem::Visible) != on)
            item.SetVisible(on);
    }
    if ((run.look & journal_look::coloured) == 0) {
        if (record.color != defaultColor(record).rgba())
            item.RestoreColor();
    } else if (record.color != run.color) {
        item.SetColor(Color(run.color));
    }
}

// All other residues show their first model.
void activateAgain(const JournalContent& content, const RecoveredItems& items) {
    const auto isListed = [&content](std::uint32_t id) {
        return std::ranges::binary_search(content.models, id, {}, &JournalContent::Model::id);
    };
    items.forAll([&](Compound& item, std::uint32_t id) {
        HostItem& record = HostItem::of(&item);
        if (record.kind == Kind::Residue && record.model > 1 && !isListed(id))
            chooseModel(record.asHolder(), 1);
    });
    for (const JournalContent::Model& model : content.models)
        if (Compound* const item = items.at(model.id);
            item && HostItem::of(item).kind == Kind::Residue)
            chooseModel(HostItem::of(item).asHolder(), model.model);
}

void boundAgain(const JournalContent& content, const RecoveredItems& items) {
    for (const JournalContent::Bounds& part : content.bounds) {
        auto* const grid = dynamic_cast<GridItem*>(items.at(part.id));
        if (!grid)
            continue;
        bool isIn = true;
        for (std::size_t axis = 0; axis != 3; ++axis)
            isIn = isIn && part.bounds[axis] >= 0 && part.bounds[axis] <= part.bounds[axis + 3] &&
                   part.bounds[axis + 3] <= grid->m_points[axis];
        if (isIn)
            grid->setBounds(part.bounds);
    }
}

// What moved only is moved only: that takes less to be taken back.
void changeAtom(AtomItem& atom, const TAVIK::AtomValues& values) {
    if (atom.GetType() != values.type || atom.m_temperature != values.temperature ||
        atom.details() != values.details) {
        setAtom(&atom, values);
        return;
    }
    TAVIK::SetAtomPosition(&atom, values.position);
    TAVIK::SetAtomModel(&atom, values.model);
}

void changeGrid(GridItem& grid, const std::string& folder,
                const JournalContent::ChangedGrid& changed, std::vector<std::string>& lines) {
    try {
        MapCrystal crystal;
        TAVIK::GridValues values = gridValues(folder, changed.id, changed.version, crystal);
        if (!isRefused(values, "setGrid", grid.GetName())) {
            setGrid(&grid, std::move(values));
            setCrystal(&grid, crystal);
            return;
        }
    } catch (const FileError&) { // It is missing, or damaged.
    }
    lines.push_back(grid.GetName() +
                    ": its values are not brought back, and are those of its file");
}

} // namespace

std::string describe(const LostItems& lost) {
    constexpr std::array<const char*, kindCount> words = {"composite", "space", "chain", "residue",
                                                          "group",     "atom",  "bond",  "surface",
                                                          "map",       "line",  "set"};
    std::string text;
    for (std::size_t kind = 0; kind != kindCount; ++kind)
        if (lost[kind] != 0)
            text += (text.empty() ? "" : ", ") + std::to_string(lost[kind]) + ' ' + words[kind] +
                    (lost[kind] == 1 ? "" : "s");
    return text;
}

void makeAgain(const JournalContent& content, const std::string& folder, RecoveredItems& items,
               LostItems& lost) {
    const Maker maker(content, folder, items);
    std::vector<std::size_t> waiting(content.made.size());
    for (std::size_t i = 0; i != waiting.size(); ++i)
        waiting[i] = i;
    // Almost always each item was made after what it needs.
    for (std::size_t before = waiting.size() + 1; waiting.size() < before;) {
        before = waiting.size();
        std::erase_if(waiting, [&](std::size_t i) {
            Compound* const item = maker.make(content.made[i]);
            items.addMade(i, item);
            return item != nullptr;
        });
    }
    for (const std::size_t i : waiting)
        ++lost[static_cast<std::size_t>(content.made[i].kind)];
}

void changeAgain(const JournalContent& content, const std::string& folder,
                 const RecoveredItems& items, std::vector<std::string>& lines) {
    for (const JournalContent::ChangedAtom& changed : content.changedAtoms)
        if (auto* const atom = dynamic_cast<AtomItem*>(items.at(changed.id)))
            changeAtom(*atom, valuesOf(content, changed.values));
    for (const JournalContent::ChangedGrid& changed : content.changedGrids)
        if (auto* const grid = dynamic_cast<GridItem*>(items.at(changed.id)))
            changeGrid(*grid, folder, changed, lines);
}

void lookAgain(const JournalContent& content, const RecoveredItems& items) {
    activateAgain(content, items);
    for (const JournalContent::Run& run : content.looks)
        items.forEach(run.first, run.length, [&run](Compound& item) { lookAs(item, run); });
    boundAgain(content, items);
}

} // namespace memory_host
