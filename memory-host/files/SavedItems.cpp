#include "SavedItems.h"

#include "EntrySource.h"
#include "Fields.h"
#include "WriteMap.h"
#include "items/DataVersion.h"
#include "items/Items.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <typeinfo>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

constexpr std::uint32_t unread = std::numeric_limits<std::uint32_t>::max();
// The residue of atoms that are in none: PDB's name for an unknown ligand.
constexpr std::string_view unknownResidue = "UNL";
// What readers show for a blank name.
constexpr std::string_view blankName = "_";

/// The parts of a residue's label, as numbers of texts.
struct Label {
    std::uint32_t name = unread;
    std::uint32_t number = 0;
    std::uint32_t insertion = 0;
};

// The texts of the content: the items' interned names, each taken once.
class Texts {
public:
    explicit Texts(std::vector<std::string>& all) : m_all(all) {}

    std::uint32_t number(std::string_view text) {
        if (text.empty())
            return 0;
        m_all.emplace_back(text);
        return static_cast<std::uint32_t>(m_all.size() - 1);
    }
    std::uint32_t number(const Name& name) {
        if (name.isEmpty())
            return 0;
        std::uint32_t& known = entry(m_numbers, name, unread);
        return known != unread ? known : known = number(name.text());
    }
    /// Of a label as "MET 1" or "PRO,SER -22A".
    Label label(const Name& name) {
        Label& known = entry(m_labels, name, Label());
        return known.name != unread ? known : known = split(name.text());
    }

private:
    template <class T> static T& entry(std::vector<T>& all, const Name& name, const T& none) {
        if (name.number() >= all.size())
            all.resize(name.number() + 1, none);
        return all[name.number()];
    }

    Label split(std::string_view text) {
        const std::size_t blank = text.rfind(' ');
        const std::string_view place =
            blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1);
        const std::size_t sign = place.starts_with('-') ? 1 : 0;
        if (place.size() == sign || !isDigit(place[sign]))
            return {number(text), 0, 0};
        const std::size_t end = std::min(place.find_first_not_of("0123456789", sign), place.size());
        return {number(text.substr(0, blank)), number(place.substr(0, end)),
                number(place.substr(end))};
    }

    std::vector<std::string>& m_all;
    std::vector<std::uint32_t> m_numbers; ///< by the number of the interned name
    std::vector<Label> m_labels;          ///< likewise
};

// The rows of items, asked for in about the order of their identifiers.
class Rows {
public:
    explicit Rows(const EntrySource* source) {
        if (source)
            m_rows = source->atoms;
    }

    std::uint32_t of(std::uint32_t id) {
        if (m_next < m_rows.size() && m_rows[m_next].id == id)
            return m_rows[m_next++].row;
        const auto found = std::ranges::lower_bound(m_rows, id, {}, &EntrySource::Row::id);
        if (found == m_rows.end() || found->id != id)
            return SavedAtom::newRow;
        m_next = static_cast<std::size_t>(found - m_rows.begin()) + 1;
        return found->row;
    }

private:
    std::span<const EntrySource::Row> m_rows;
    std::size_t m_next = 0;
};

// What of the items a file cannot say as it is.
struct Oddities {
    std::size_t others = 0;    ///< surfaces, sets and the like
    std::size_t loose = 0;     ///< atoms that are in no residue
    std::size_t chainless = 0; ///< residues that are in no chain
    std::size_t nameless = 0;  ///< chains and atoms

    void add(const Oddities& more) {
        others += more.others;
        loose += more.loose;
        chainless += more.chainless;
        nameless += more.nameless;
    }
    void remark(SaveReport& report) const;
};

// Reads one top-level item.
class ModelReader {
public:
    ModelReader(Texts& texts, const SaveOptions& options, const EntrySource* source)
        : m_texts(texts), m_options(options), m_source(source), m_rows(source) {}

    SavedModel read(Compound& entry);
    const Oddities& oddities() const { return m_odd; }
    bool isInPart() const { return m_isInPart; }

private:
    void readItem(Compound& item, const Name* chain);
    void readChildren(Compound& item, const Name* chain);
    void readAtom(const AtomItem& atom, const HostItem& record, const Name* chain);
    void startResidue(const Name* chain);
    bool isWanted(const HostItem& atom) const {
        return !(m_options.onlySelected && !atom.has(HostItem::Selected)) &&
               !(m_options.onlyActiveModels && atom.has(HostItem::OtherModel));
    }
    /// What a file calls an item: files have no empty names.
    std::uint32_t nameOf(const Name& name) {
        m_odd.nameless += name.isEmpty() ? 1 : 0;
        return name.isEmpty() ? blank() : m_texts.number(name);
    }
    std::uint32_t blank() {
        if (m_blank == 0)
            m_blank = m_texts.number(blankName);
        return m_blank;
    }
    void readPlace();
    void readBonds();
    std::uint32_t atomOf(const Compound* atom) const;
    /// The lower one first.
    std::pair<std::uint32_t, std::uint32_t> atomsOf(const BondItem& bond) const {
        return std::minmax({atomOf(bond.m_atoms[0]), atomOf(bond.m_atoms[1])});
    }

    Texts& m_texts;
    const SaveOptions& m_options;
    const EntrySource* m_source;
    Rows m_rows;
    SavedModel m_model;
    const Name* m_chain = nullptr;          ///< of the last atom
    const ResidueItem* m_residue = nullptr; ///< that is being read
    bool m_hasResidue = false;              ///< the model's last residue is the one that is read
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_ids; ///< of the atoms, and their indices
    std::vector<const BondItem*> m_bonds;
    std::uint32_t m_blank = 0; ///< the number of that name, if it is used
    Oddities m_odd;
    bool m_isInPart = false;
};

SavedModel ModelReader::read(Compound& entry) {
    m_model.name = entry.GetName();
    m_model.isEdited = !m_source || !m_source->text || dataVersion(&entry) != 0;
    if (m_source)
        readPlace();
    const HostItem& record = HostItem::of(&entry);
    if (record.isHolder()) {
        const auto count = static_cast<std::size_t>(static_cast<const Holder&>(record).sum.atoms);
        m_model.atoms.reserve(count);
        m_ids.reserve(count);
    }
    readItem(entry, nullptr);
    readBonds();
    return std::move(m_model);
}

// Where the item was in the text, whatever is left of it.
void ModelReader::readPlace() {
    m_model.index = m_source->model;
    if (m_source->atoms.empty())
        return;
    const auto [first, last] = std::ranges::minmax(m_source->atoms, {}, &EntrySource::Row::row);
    m_model.firstRow = first.row;
    m_model.endRow = last.row + 1;
}

void ModelReader::readItem(Compound& item, const Name* chain) {
    const HostItem& record = HostItem::of(&item);
    switch (record.kind) {
    case Kind::Atom:
        readAtom(static_cast<const AtomItem&>(item), record, chain);
        break;
    case Kind::Bond:
        m_bonds.push_back(&static_cast<const BondItem&>(item));
        break;
    case Kind::Molecule:
        m_hasResidue = false;
        readChildren(item, &record.name);
        m_hasResidue = false;
        break;
    case Kind::Residue:
        m_hasResidue = false;
        m_residue = &static_cast<const ResidueItem&>(item);
        readChildren(item, chain);
        m_residue = nullptr;
        m_hasResidue = false;
        break;
    case Kind::Composite:
    case Kind::Group:
        readChildren(item, chain);
        break;
    default:
        ++m_odd.others;
        break;
    }
}

void ModelReader::readChildren(Compound& item, const Name* chain) {
    Compound** const end = item.ChildEnd();
    for (Compound** child = item.ChildBegin(); child != end; ++child)
        if (*child)
            readItem(**child, chain);
}

void ModelReader::startResidue(const Name* chain) {
    m_odd.chainless += m_residue && !chain ? 1 : 0;
    if (m_model.chains.empty() || chain != m_chain) {
        m_model.chains.push_back(chain ? nameOf(*chain) : blank());
        m_chain = chain;
    }
    SavedResidue residue;
    residue.chain = static_cast<std::uint32_t>(m_model.chains.size() - 1);
    residue.firstAtom = static_cast<std::uint32_t>(m_model.atoms.size());
    if (m_residue) {
        const Label label = m_texts.label(HostItem::of(m_residue).name);
        residue.name = label.name;
        residue.number = label.number;
        residue.insertion = label.insertion;
        residue.labelChain = m_texts.number(m_residue->m_labelChain);
        residue.labelNumber = m_texts.number(m_residue->m_labelNumber);
    } else {
        residue.name = m_texts.number(unknownResidue);
    }
    m_model.residues.push_back(residue);
    m_hasResidue = true;
}

void ModelReader::readAtom(const AtomItem& atom, const HostItem& record, const Name* chain) {
    if (!isWanted(record)) {
        m_isInPart = true;
        return;
    }
    if (!m_hasResidue)
        startResidue(chain);
    m_odd.loose += m_residue ? 0 : 1;
    SavedAtom saved;
    saved.position = atom.m_position;
    saved.temperature = atom.m_temperature;
    saved.name = nameOf(record.name);
    saved.element = m_texts.number(record.type);
    saved.row = m_rows.of(record.id);
    saved.model = record.model;
    saved.hasPosition = record.has(HostItem::HasPosition);
    saved.details = atom.details();
    if (typeid(atom) == typeid(ChargedAtomItem)) {
        const auto& charged = static_cast<const ChargedAtomItem&>(atom);
        m_model.charges.resize(m_model.atoms.size());
        m_model.charges.push_back({charged.m_charge, charged.m_radius, true});
    }
    m_ids.emplace_back(record.id, static_cast<std::uint32_t>(m_model.atoms.size()));
    m_model.atoms.push_back(saved);
}

std::uint32_t ModelReader::atomOf(const Compound* atom) const {
    if (!atom)
        return unread;
    const std::uint32_t id = HostItem::of(atom).id;
    const auto found = std::ranges::lower_bound(m_ids, id, {}, &decltype(m_ids)::value_type::first);
    return found != m_ids.end() && found->first == id ? found->second : unread;
}

// The bonds that were found by distance are found again when the file is read.
void ModelReader::readBonds() {
    if (!m_model.charges.empty())
        m_model.charges.resize(m_model.atoms.size());
    if (!std::ranges::is_sorted(m_ids))
        std::ranges::sort(m_ids);
    std::vector<bool> areThere(m_source ? m_source->bonds.size() : 0);
    const auto isFound = [this, &areThere](const BondItem* bond) {
        const std::uint32_t id = HostItem::of(bond).id;
        if (!m_source || id > m_source->lastBond)
            return false;
        const auto listed =
            std::ranges::lower_bound(m_source->bonds, id, {}, &EntrySource::ListedBond::id);
        if (listed == m_source->bonds.end() || listed->id != id)
            return true;
        areThere[static_cast<std::size_t>(listed - m_source->bonds.begin())] = true;
        return false;
    };
    const auto found = std::stable_partition(m_bonds.begin(), m_bonds.end(),
                                             [&](const BondItem* bond) { return !isFound(bond); });
    for (auto bond = m_bonds.begin(); bond != found; ++bond)
        if (const auto [a, b] = atomsOf(**bond); a != unread && b != unread)
            m_model.bonds.push_back(
                {a, b, m_source && HostItem::of(*bond).id <= m_source->lastBond});
    std::ranges::sort(m_model.bonds, {},
                      [](const SavedBond& bond) { return std::pair(bond.first, bond.second); });
    for (std::size_t i = 0; i != areThere.size(); ++i)
        if (!areThere[i])
            m_model.lostBonds.push_back({m_source->bonds[i].first, m_source->bonds[i].second});
    if (!m_model.isEdited)
        return;
    const auto foundCount = static_cast<std::size_t>(m_bonds.end() - found);
    m_model.lacksBonds =
        m_source && (foundCount < m_source->foundBonds || !m_model.lostBonds.empty());
    m_model.foundBonds.reserve(foundCount);
    for (auto bond = found; bond != m_bonds.end(); ++bond)
        if (const auto pair = atomsOf(**bond); pair.first != unread && pair.second != unread)
            m_model.foundBonds.push_back(pair);
    std::ranges::sort(m_model.foundBonds);
}

// A model with its place: among the files in the order of the items, and in its file.
struct Part {
    std::size_t file = 0;
    std::shared_ptr<const EntrySource> source;
    SavedModel model;

    const SourceText* text() const { return source ? source->text.get() : nullptr; }
    std::tuple<std::size_t, std::uint32_t, std::uint32_t> place() const {
        return {file, source ? source->block : 0, model.index};
    }
};

// Brings the models of one structure of one file together. An entry without a file is alone.
void addStructures(std::vector<Part>& parts, SavedContent& content) {
    std::unordered_map<const SourceText*, std::size_t> files;
    for (std::size_t i = 0; i != parts.size(); ++i)
        parts[i].file = parts[i].text() ? files.try_emplace(parts[i].text(), i).first->second : i;
    std::ranges::stable_sort(parts, {}, &Part::place);
    for (std::size_t i = 0; i != parts.size(); ++i) {
        Part& part = parts[i];
        const std::uint32_t block = part.source ? part.source->block : 0;
        if (i == 0 || parts[i - 1].file != part.file || content.structures.back().block != block)
            content.structures.push_back({part.source ? part.source->text : nullptr, block, {}});
        content.structures.back().models.push_back(std::move(part.model));
    }
}

SavedContent readGrid(std::span<TAVIK::Compound* const> items, SaveReport& report) {
    if (items.size() != 1)
        report.refuse("a map and other entries cannot stand in one file",
                      "accepted is saving each map in a file of its own");
    const auto& grid = static_cast<const GridItem&>(*items.front());
    SavedContent content;
    content.grid = partOf(grid.m_values, std::to_array(grid.m_lower), std::to_array(grid.m_upper));
    content.crystal = grid.m_crystal;
    content.isInPart = content.grid->points != grid.m_values.points;
    if (const auto source = std::static_pointer_cast<EntrySource>(sourceOf(items.front()));
        source && source->file && !content.isInPart && grid.m_valuesVersion == 0) {
        content.mapPath = originPath(items.front());
        content.mapStamp = source->file->stamp;
    }
    return content;
}

bool isGrid(const Compound* item) {
    return HostItem::of(item).kind == Kind::Grid;
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

void Oddities::remark(SaveReport& report) const {
    if (others != 0)
        report.remark(counted(others, "surface, set or line") + " of the entries cannot be saved");
    const auto comeBack = [&report](std::size_t count, const char* noun, const char* where,
                                    std::string_view as) {
        if (count != 0)
            report.remark(counted(count, noun) + where + (count == 1 ? " comes" : " come") +
                          " back as " + std::string(as));
    };
    comeBack(loose, "atom", " in no residue", "those of a residue UNL");
    comeBack(chainless, "residue", " in no chain", "those of a chain \"_\"");
    comeBack(nameless, "blank name", "", "\"_\"");
}

bool hasPosition(const Part& part) {
    return std::ranges::any_of(part.model.atoms, &SavedAtom::hasPosition);
}

} // namespace

SavedContent readItems(std::span<TAVIK::Compound* const> items, const SaveOptions& options,
                       SaveReport& report) {
    if (std::ranges::any_of(items, isGrid))
        return readGrid(items, report);
    SavedContent content;
    Texts texts(content.names);
    std::vector<Part> parts;
    Oddities odd;
    for (TAVIK::Compound* item : items) {
        const auto source = std::static_pointer_cast<EntrySource>(sourceOf(item));
        ModelReader reader(texts, options, source.get());
        SavedModel model = reader.read(*item);
        odd.add(reader.oddities());
        content.isInPart = content.isInPart || reader.isInPart();
        if (!model.atoms.empty())
            parts.push_back({0, source, std::move(model)});
    }
    if (parts.empty())
        report.refuse("there is no atom to be saved", "accepted are entries with atoms");
    if (std::ranges::none_of(parts, hasPosition))
        report.refuse("no atom to be saved has a position",
                      "accepted are entries of which some atom has one");
    addStructures(parts, content);
    odd.remark(report);
    return content;
}

} // namespace memory_host
