#include "PlainFiles.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace plain {

std::string FileRow::text() const {
    std::array<char, 128> numbers{};
    std::snprintf(numbers.data(), numbers.size(), "%.9g %.9g %.9g, %.9g, %.9g, %+d, %c",
                  double(position[0]), double(position[1]), double(position[2]),
                  double(temperature), double(details.occupancy), details.charge,
                  details.letter ? details.letter : '-');
    return chain + '/' + residue + '/' + name + ", " + element +
           (details.isHetero ? ", HETATM, " : ", ATOM, ") + (hasPosition ? "at " : "nowhere ") +
           numbers.data();
}

namespace {

// An atom that is saved; those with one run number stand in one residue of the file.
struct Saved {
    const Item* atom;
    FileRow row;
    int run;
};

// Walks over an entry. Each residue is one of the file, and so are atoms outside of residues that
// follow one another.
class Walk {
public:
    explicit Walk(const SaveChoice& choice) : m_choice(choice) {}

    std::vector<Saved> found;
    bool leavesOut = false;

    void visit(const Item& item, const std::string& chain, const Item* residue) {
        if (item.kind == Kind::Atom)
            return add(item, chain, residue);
        const bool bounds = item.kind == Kind::Molecule || item.kind == Kind::Residue;
        m_run += bounds;
        for (const Item* child : item.children)
            visit(*child, item.kind == Kind::Molecule ? item.name : chain,
                  item.kind == Kind::Residue ? &item : residue);
        m_run += bounds;
    }

private:
    void add(const Item& atom, const std::string& chain, const Item* residue) {
        const bool isActive = atom.model == 0 || !residue || atom.model == residue->model;
        if ((m_choice.onlySelected && !atom.selected) || (m_choice.onlyActive && !isActive)) {
            leavesOut = true;
            return;
        }
        FileRow row{chain,
                    residue ? residue->name : "UNL",
                    atom.name,
                    atom.type,
                    atom.position,
                    atom.hasPosition,
                    atom.temperature,
                    atom.details};
        if (!row.hasPosition)
            row.position = {};
        found.push_back({&atom, std::move(row), m_run});
    }

    const SaveChoice& m_choice;
    int m_run = 0;
};

// Gives each alternative model of a residue a letter: that of the file, or else the first free one.
void setLetters(std::vector<Saved>::iterator begin, std::vector<Saved>::iterator end) {
    std::map<unsigned int, char> letters;
    std::set<unsigned int> models;
    std::string taken;
    for (auto each = begin; each != end; ++each) {
        const char letter = each->atom->details.letter;
        const unsigned int model = each->atom->model;
        if (model == 0)
            continue;
        models.insert(model);
        if (letter && !letters.count(model) && taken.find(letter) == std::string::npos) {
            letters[model] = letter;
            taken += letter;
        }
    }
    for (const unsigned int model : models)
        for (const char letter : std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"))
            if (!letters.count(model) && taken.find(letter) == std::string::npos) {
                letters[model] = letter;
                taken += letter;
            }
    for (auto each = begin; each != end; ++each)
        each->row.details.letter = each->atom->model ? letters.at(each->atom->model) : '\0';
}

// What the file had comes first, in its order.
bool comesBefore(const Saved& a, const Saved& b) {
    return a.run < b.run || (a.run == b.run && a.atom->isOfFile() &&
                             (!b.atom->isOfFile() || a.atom->serial < b.atom->serial));
}

std::vector<Saved> savedAtoms(const Item& entry, const SaveChoice& choice, bool& leavesOut) {
    Walk walk(choice);
    walk.visit(entry, "_", nullptr);
    leavesOut = leavesOut || walk.leavesOut;
    std::vector<Saved> atoms = std::move(walk.found);
    std::stable_sort(atoms.begin(), atoms.end(), comesBefore);
    for (auto begin = atoms.begin(); begin != atoms.end();) {
        const auto end = std::find_if(
            begin, atoms.end(), [run = begin->run](const Saved& each) { return each.run != run; });
        setLetters(begin, end);
        begin = end;
    }
    return atoms;
}

std::string formatOf(std::string name) {
    if (name.ends_with(".gz"))
        name.resize(name.size() - 3);
    const std::size_t point = name.rfind('.');
    const std::string ending = point == std::string::npos ? "" : name.substr(point);
    return ending == ".pdb" || ending == ".cif" || ending == ".ccp4" ? ending : "";
}

// Of several names of a residue, new atoms have the first.
bool fits(const FileRow& row) {
    return (row.chain == "_" || row.chain.size() <= 2) &&
           row.residue.substr(0, row.residue.find_first_of(", ")).size() <= 3;
}

} // namespace

std::vector<FileRow> fileRows(const Item& entry, const SaveChoice& choice) {
    bool leavesOut = false;
    std::vector<FileRow> rows;
    for (Saved& each : savedAtoms(entry, choice, leavesOut))
        rows.push_back(std::move(each.row));
    return rows;
}

const FileContent* Files::at(const std::string& name) const {
    const auto found = m_contents.find(name);
    return found == m_contents.end() ? nullptr : &found->second;
}

std::vector<std::string> Files::names() const {
    std::vector<std::string> all;
    for (const auto& [name, content] : m_contents)
        all.push_back(name);
    return all;
}

const Files::Group* Files::groupOf(const Item& entry) const {
    const auto found = m_groups.find(entry.id);
    return found == m_groups.end() ? nullptr : found->second.get();
}

std::string Files::nameOf(const Item& entry) const {
    const Group* const group = groupOf(entry);
    return group ? group->file : std::string();
}

Items Files::together(Item* entry, const Items& topLevel) const {
    if (!groupOf(*entry))
        return {entry};
    Items found;
    for (Item* each : topLevel)
        if (groupOf(*each) == groupOf(*entry))
            found.push_back(each);
    return found;
}

bool Files::hasChanged(const Item& entry) const {
    const auto saved = m_saved.find(entry.id);
    return entry.version != (saved == m_saved.end() ? 0 : saved->second);
}

bool Files::isUnsaved(const Item& entry) const {
    const Group* const group = groupOf(entry);
    return hasChanged(entry) || (group && std::find(group->entries.begin(), group->entries.end(),
                                                    entry.id) == group->entries.end());
}

bool Files::isSavable(const Item& entry) const {
    return entry.kind == Kind::Grid || !entry.children.empty() || hasChanged(entry);
}

void Files::opened(const std::string& name, const Items& entries) {
    const auto group = std::make_shared<Group>(Group{name, {}, m_writings[name]});
    ++m_lastReading;
    // A file that was not saved has one structure.
    const FileContent* const content = at(name);
    for (std::size_t i = 0; i != entries.size(); ++i) {
        const unsigned int id = entries[i]->id;
        const bool isKnown = content && i < content->structures.size();
        group->entries.push_back(id);
        m_groups[id] = group;
        m_readings[id] = {m_lastReading, isKnown ? content->structures[i] : 0, formatOf(name)};
    }
}

// The text of a file is edited when all that is saved comes from it.
bool Files::editsText(const Items& entries, const SaveChoice& choice,
                      const std::string& format) const {
    std::set<unsigned int> readings;
    for (const Item* entry : entries) {
        const auto reading = m_readings.find(entry->id);
        const bool isOfFormat = reading != m_readings.end() && reading->second.format == format;
        if (!fileRows(*entry, choice).empty())
            readings.insert(isOfFormat ? reading->second.number : 0);
    }
    return readings.size() == 1 && *readings.begin() != 0;
}

Files::Draft Files::draftOf(const Items& entries, const std::string& format,
                            const SaveChoice& choice) const {
    Draft draft;
    draft.isMap = std::any_of(entries.begin(), entries.end(),
                              [](const Item* item) { return item->kind == Kind::Grid; });
    draft.hasPosition = draft.isMap;
    draft.content.isInOrder = !editsText(entries, choice, format);
    std::pair<unsigned int, int> last;
    for (const Item* entry : entries) {
        std::vector<std::string> lines;
        if (entry->kind == Kind::Grid)
            lines = {mapLine(*entry, draft)};
        for (const Saved& each : savedAtoms(*entry, choice, draft.leavesOut)) {
            lines.push_back(each.row.text());
            draft.hasPosition = draft.hasPosition || each.row.hasPosition;
            draft.fitsColumns = draft.fitsColumns && (each.atom->isOfFile() || fits(each.row));
        }
        if (lines.empty())
            continue;
        draft.content.entries.push_back(std::move(lines));
        const auto found = m_readings.find(entry->id);
        const Reading reading = found == m_readings.end() ? Reading() : found->second;
        const bool goesOn =
            reading.number != 0 && last == std::pair(reading.number, reading.structure);
        last = {reading.number, reading.structure};
        std::vector<int>& structures = draft.content.structures;
        structures.push_back(structures.empty() ? 0 : structures.back() + (goesOn ? 0 : 1));
    }
    return draft;
}

std::string Files::mapLine(const Item& grid, Draft& draft) {
    std::array<int, 3> points{};
    for (const std::size_t axis : {0, 1, 2})
        points[axis] = std::max(
            std::min(grid.upper[axis], grid.points[axis]) - std::max(grid.lower[axis], 0), 0);
    draft.leavesOut = points != grid.points;
    draft.isEmpty = points[0] * points[1] * points[2] == 0;
    return "map of " + std::to_string(points[0]) + ' ' + std::to_string(points[1]) + ' ' +
           std::to_string(points[2]) + " points";
}

// Before it is asked what the file would lose.
std::optional<Refused> Files::refusal(const Draft& draft, std::size_t entries,
                                      const std::string& format) {
    if (format.empty())
        return Refused::Ending;
    if (draft.isMap && entries != 1)
        return Refused::NotAlone;
    if (draft.content.entries.empty())
        return Refused::NoAtoms;
    if (!draft.hasPosition)
        return Refused::Nowhere;
    if (draft.isMap != (format == ".ccp4"))
        return draft.isMap ? Refused::Map : Refused::Structure;
    if (format == ".pdb" && draft.content.structures.back() > 0)
        return Refused::Several;
    return std::nullopt;
}

SaveOutcome Files::save(const Items& entries, const std::string& name, const SaveChoice& choice,
                        Refused& why) {
    const std::string format = formatOf(name);
    Draft draft = draftOf(entries, format, choice);
    if (const std::optional<Refused> refused = refusal(draft, entries.size(), format)) {
        why = *refused;
        return SaveOutcome::Refused;
    }
    std::shared_ptr<Group> group;
    std::vector<unsigned int> ids;
    for (const Item* entry : entries) {
        ids.push_back(entry->id);
        if (!group && nameOf(*entry) == name)
            group = m_groups.at(entry->id);
    }
    const bool isKnown = group != nullptr;
    if (!isKnown)
        group = std::make_shared<Group>(Group{name, {}, 0});
    const bool losesClosed =
        std::any_of(group->entries.begin(), group->entries.end(), [&ids](unsigned int id) {
            return std::find(ids.begin(), ids.end(), id) == ids.end();
        });
    if (losesClosed && !draft.leavesOut && !choice.dropClosed)
        return SaveOutcome::LosesClosed;
    if (draft.isEmpty || (format == ".pdb" && !draft.fitsColumns)) {
        why = draft.isEmpty ? Refused::Empty : Refused::Columns;
        return SaveOutcome::Refused;
    }
    if (isKnown && !choice.replaceChanged && group->writing != m_writings[name])
        return SaveOutcome::ChangedByOthers;
    m_contents[name] = std::move(draft.content);
    group->writing = ++m_writings[name];
    leaveOldFiles(*group, draft.leavesOut ? std::vector<unsigned int>() : ids);
    if (draft.leavesOut)
        return SaveOutcome::Saved;
    group->entries = ids;
    for (const Item* entry : entries) {
        m_groups[entry->id] = group;
        m_saved[entry->id] = entry->version;
    }
    return SaveOutcome::Saved;
}

// What the file held is in it no more, whether it is open or may come back, and what moved to it is
// in no other one.
void Files::leaveOldFiles(const Group& written, const std::vector<unsigned int>& moved) {
    for (const auto& [id, group] : m_groups) {
        if (group->file == written.file)
            group->entries.clear();
        for (const unsigned int gone : moved)
            std::erase(group->entries, gone);
    }
}

} // namespace plain
