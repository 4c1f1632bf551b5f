// gemmi's writers print with the C library's functions, instead of a third library's.
#define USE_STD_SNPRINTF
#define GEMMI_WRITE_IMPLEMENTATION
#ifndef __clang__
// What would be too long is refused or left out before.
#pragma GCC diagnostic ignored "-Wformat-truncation"
#endif
#include <gemmi/align.hpp>
#include <gemmi/polyheur.hpp>
#include <gemmi/to_cif.hpp>
#include <gemmi/to_mmcif.hpp>
#include <gemmi/to_pdb.hpp>

#include "CifEdit.h"
#include "ConnectedAtoms.h"
#include "Metadata.h"
#include "Relettering.h"
#include "ResidueKey.h"
#include "SecondaryStructure.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <functional>
#include <sstream>
#include <unordered_map>
#include <unordered_set>

namespace memory_host {

namespace {

// Those functions print the decimal point of the thread's locale.
class PointsInNumbers {
public:
    PointsInNumbers() : m_c(newlocale(LC_ALL_MASK, "C", nullptr)), m_before(uselocale(m_c)) {
        if (!m_c)
            throw std::bad_alloc();
    }
    ~PointsInNumbers() {
        uselocale(m_before);
        freelocale(m_c);
    }
    PointsInNumbers(const PointsInNumbers&) = delete;
    PointsInNumbers& operator=(const PointsInNumbers&) = delete;

private:
    locale_t m_c;
    locale_t m_before;
};

gemmi::SeqId seqIdOf(const SavedResidue& residue, const SavedContent& content) {
    gemmi::SeqId id;
    const std::string& number = content.names[residue.number];
    int value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc())
        id.num = value;
    const std::string& insertion = content.names[residue.insertion];
    id.icode = insertion.empty() ? ' ' : insertion.front();
    return id;
}

bool areNumbersWritable(const gemmi::Entity::DbRef& reference) {
    return isWritable(reference.seq_begin) && isWritable(reference.seq_end) &&
           isWritable(reference.db_begin) && isWritable(reference.db_end);
}

// Blank names are shown as "_".
std::string gemmiName(std::string_view name) {
    return name == "_" ? std::string() : std::string(name);
}

std::string keyOf(const gemmi::Chain& chain, const gemmi::Residue& residue) {
    return residueKey(chain.name, residue);
}

std::string keyOf(const gemmi::AtomAddress& address) {
    return residueKey(address.chain_name, address.res_id);
}

std::set<std::string> cisResidues(const gemmi::Structure& structure) {
    std::set<std::string> found;
    for (const gemmi::Model& model : structure.models)
        for (const gemmi::Chain& chain : model.chains)
            for (const gemmi::Residue& residue : chain.residues)
                if (residue.is_cis)
                    found.insert(keyOf(chain, residue));
    return found;
}

// The chains of the first model, without their atoms, which take memory.
std::vector<gemmi::Chain> takeResidues(gemmi::Structure& structure) {
    if (structure.models.empty())
        return {};
    std::vector<gemmi::Chain> chains = std::move(structure.models.front().chains);
    for (gemmi::Chain& chain : chains)
        for (gemmi::Residue& residue : chain.residues)
            std::vector<gemmi::Atom>().swap(residue.atoms);
    return chains;
}

bool isToCopy(const gemmi::Connection& connection) {
    return connection.asu == gemmi::Asu::Different;
}

bool hasBondType(const gemmi::Connection& connection) {
    return connection.type != gemmi::Connection::Hydrog &&
           connection.type != gemmi::Connection::Unknown;
}

// Whether reading takes it for a bond of the model.
bool isBond(const gemmi::Connection& connection) {
    return hasBondType(connection) && !isToCopy(connection);
}

gemmi::Connection::Type typeOf(const gemmi::Atom& a, const gemmi::Atom& b) {
    if (a.element.is_metal() || b.element.is_metal())
        return gemmi::Connection::MetalC;
    const bool isDisulfide = a.element == gemmi::El::S && b.element == gemmi::El::S;
    return isDisulfide ? gemmi::Connection::Disulf : gemmi::Connection::Covale;
}

} // namespace

Metadata::Metadata(const SavedModel& model, std::size_t models, const SavedContent& content,
                   SourceFacts& facts, const std::vector<WrittenAtom>& written)
    : m_model(model) {
    const std::set<std::string> cis = cisResidues(facts.metadata);
    const std::vector<gemmi::Chain> before = takeResidues(facts.metadata);
    facts.metadata.models.clear();
    m_structure = std::move(facts.metadata);
    build(content, written);
    gemmi::setup_entities(m_structure);
    gemmi::assign_label_seq_id(m_structure, false);
    keepCisBonds(cis);
    keepConnections();
    trimSecondaryStructure(m_structure, before);
    while (m_structure.models.size() < models)
        m_structure.models.emplace_back(std::to_string(m_structure.models.size() + 1));
}

void Metadata::addResidue(const SavedContent& content, const WrittenAtom& atom) {
    const SavedResidue& saved = m_model.residues[atom.residue];
    gemmi::Residue residue;
    residue.name = gemmiName(atom.residueName);
    residue.seqid = seqIdOf(saved, content);
    residue.subchain = content.names[saved.labelChain];
    const std::string& number = content.names[saved.labelNumber];
    int value = 0;
    if (std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc())
        residue.label_seq = value;
    residue.het_flag = m_model.atoms[atom.atom].details.isHetero ? 'H' : 'A';
    auto& chains = m_structure.models.front().chains;
    chains[saved.chain].residues.push_back(std::move(residue));
    m_places.push_back({saved.chain, chains[saved.chain].residues.size() - 1});
}

void Metadata::build(const SavedContent& content, const std::vector<WrittenAtom>& written) {
    m_structure.models.emplace_back("1");
    gemmi::Model& model = m_structure.models.front();
    for (const std::uint32_t name : m_model.chains)
        model.chains.emplace_back(gemmiName(content.names[name]));
    std::unordered_map<std::string, const gemmi::Entity*> entities;
    for (const gemmi::Entity& entity : m_structure.entities)
        for (const std::string& chain : entity.subchains)
            entities.emplace(chain, &entity);
    m_starts.resize(m_model.atoms.size());
    m_letters.resize(m_model.atoms.size());
    for (const WrittenAtom& item : written) {
        if (item.startsResidue) {
            addResidue(content, item);
            gemmi::Residue& residue =
                model.chains[m_places.back().chain].residues[m_places.back().residue];
            if (const auto found = entities.find(residue.subchain);
                !residue.subchain.empty() && found != entities.end())
                residue.entity_type = found->second->entity_type;
        }
        const SavedAtom& saved = m_model.atoms[item.atom];
        gemmi::Atom atom;
        atom.name = content.names[saved.name];
        atom.element = gemmi::Element(content.names[saved.element]);
        atom.altloc = item.alternative;
        atom.pos = gemmi::Position(saved.position[0], saved.position[1], saved.position[2]);
        atom.serial = static_cast<int>(item.atom + 1); // The index, for what gemmi finds.
        m_letters[item.atom] = item.alternative;
        m_starts[item.atom] = static_cast<std::uint32_t>(m_places.size() - 1);
        model.chains[m_places.back().chain].residues[m_places.back().residue].atoms.push_back(
            std::move(atom));
    }
}

void Metadata::keepCisBonds(const std::set<std::string>& cis) {
    if (cis.empty())
        return;
    for (gemmi::Chain& chain : m_structure.models.front().chains)
        for (gemmi::Residue& residue : chain.residues)
            residue.is_cis = cis.contains(keyOf(chain, residue));
}

// A connection is kept with the letters that its atoms get, once for each pair of them, unless
// somebody has taken the bond away.
void Metadata::keepConnections() {
    const ConnectedAtoms atoms(m_structure, m_model);
    std::set<BondPair> lost;
    for (const LostBond& bond : m_model.lostBonds)
        lost.insert(std::minmax(bond.first, bond.second));
    std::set<BondPair> said;
    std::vector<gemmi::Connection> kept;
    for (const gemmi::Connection& connection : m_structure.connections) {
        std::size_t count = 0;
        for (const BondPair& pair : atoms.pairsOf(connection)) {
            if (!isKept(connection, pair, lost))
                continue;
            if (isBond(connection))
                said.insert(std::minmax(pair.first, pair.second));
            kept.push_back(connection);
            kept.back().partner1.altloc = m_letters[pair.first];
            kept.back().partner2.altloc = m_letters[pair.second];
            if (++count > 1)
                kept.back().name += '-' + std::to_string(count);
        }
        m_otherTypes += !hasBondType(connection) && count != 0;
        m_unknownTypes += connection.type == gemmi::Connection::Unknown && count != 0;
    }
    m_structure.connections = std::move(kept);
    for (const SavedBond& bond : m_model.bonds)
        if (!said.contains({bond.first, bond.second}) &&
            !areApart(m_letters[bond.first], m_letters[bond.second]))
            m_otherBonds.push_back(bond);
}

// `lost` are bonds by rows.
bool Metadata::isKept(const gemmi::Connection& connection, const BondPair& pair,
                      const std::set<BondPair>& lost) const {
    if (!isWritable(connection.partner1.res_id.seqid) ||
        !isWritable(connection.partner2.res_id.seqid))
        return false;
    const SavedAtom& first = m_model.atoms[pair.first];
    const SavedAtom& second = m_model.atoms[pair.second];
    // Without symmetry operators, a bond to a copy would be written as one that is not.
    if ((!isToCopy(connection) || m_structure.cell.images.empty()) &&
        lost.contains(std::minmax(first.row, second.row)))
        return false;
    return !isBond(connection) || !areApart(m_letters[pair.first], m_letters[pair.second]) ||
           areApart(first.details.alternative, second.details.alternative);
}

std::vector<ResidueIds> Metadata::residues() const {
    std::unordered_map<std::string, std::string> entities;
    for (const gemmi::Entity& entity : m_structure.entities)
        for (const std::string& chain : entity.subchains)
            entities.emplace(chain, entity.name);
    std::vector<ResidueIds> ids;
    ids.reserve(m_places.size());
    for (const Place& place : m_places) {
        const auto& residues = m_structure.models.front().chains[place.chain].residues;
        const gemmi::Residue& residue = residues[place.residue];
        const auto entity = entities.find(residue.subchain);
        const bool isPolymer = residue.entity_type == gemmi::EntityType::Polymer;
        const bool isLast = place.residue + 1 == residues.size() ||
                            residues[place.residue + 1].entity_type != gemmi::EntityType::Polymer;
        ids.push_back({residue.subchain, residue.label_seq ? residue.label_seq.str() : "",
                       entity == entities.end() ? std::string() : entity->second,
                       isPolymer && isLast});
    }
    return ids;
}

std::vector<ResidueIds> Metadata::residuesOf(const SavedModel& model, const SavedContent& content,
                                             const std::vector<WrittenAtom>& written) const {
    std::vector<ResidueIds> first = residues();
    if (&model == &m_model)
        return first;
    std::unordered_map<std::string, std::size_t> places;
    const auto& chains = m_structure.models.front().chains;
    for (std::size_t i = 0; i != m_places.size(); ++i) {
        const gemmi::Chain& chain = chains[m_places[i].chain];
        places.emplace(keyOf(chain, chain.residues[m_places[i].residue]), i);
    }
    std::vector<ResidueIds> ids;
    for (const WrittenAtom& item : written) {
        if (!item.startsResidue)
            continue;
        const SavedResidue& saved = model.residues[item.residue];
        gemmi::Chain chain(gemmiName(content.names[model.chains[saved.chain]]));
        gemmi::Residue residue;
        residue.name = gemmiName(item.residueName);
        residue.seqid = seqIdOf(saved, content);
        const auto found = places.find(keyOf(chain, residue));
        ids.push_back(found == places.end() ? ResidueIds() : first[found->second]);
    }
    return ids;
}

// Blank names are shown as "_", and mmCIF has no blank ones.
void Metadata::nameBlankChains() {
    const auto name = [](std::string& chain) {
        if (chain.empty())
            chain = "_";
    };
    for (gemmi::Chain& chain : m_structure.models.front().chains)
        name(chain.name);
    for (gemmi::Connection& connection : m_structure.connections) {
        name(connection.partner1.chain_name);
        name(connection.partner2.chain_name);
    }
    for (gemmi::Helix& helix : m_structure.helices) {
        name(helix.start.chain_name);
        name(helix.end.chain_name);
    }
    for (gemmi::Sheet& sheet : m_structure.sheets)
        for (gemmi::Sheet::Strand& strand : sheet.strands)
            for (gemmi::AtomAddress* address :
                 {&strand.start, &strand.end, &strand.hbond_atom1, &strand.hbond_atom2})
                name(address->chain_name);
}

namespace {

// gemmi writes letters of alternative locations in upper case into LINK records. These stand
// together, in the order of the connections.
void putLetters(const std::vector<gemmi::Connection>& connections, std::string& headers) {
    constexpr std::string_view record = "LINK  ";
    constexpr std::size_t first = 16; // from 0
    constexpr std::size_t second = 46;
    std::size_t line =
        headers.starts_with(record) ? 0 : headers.find('\n' + std::string(record)) + 1;
    for (const gemmi::Connection& connection : connections) {
        if (connection.type == gemmi::Connection::Disulf)
            continue;
        if (headers.compare(line, record.size(), record) != 0)
            return;
        const auto put = [&](std::size_t column, char letter) {
            headers[line + column] = letter == '\0' ? ' ' : letter;
        };
        put(first, connection.partner1.altloc);
        put(second, connection.partner2.altloc);
        line = headers.find('\n', line) + 1;
    }
}

} // namespace

std::string Metadata::pdbHeaders() {
    const PointsInNumbers points;
    for (gemmi::Entity& entity : m_structure.entities) {
        // The records have room for names of three letters.
        if (std::ranges::any_of(entity.full_sequence, [](const std::string& name) {
                return gemmi::Entity::first_mon(name).size() > 3;
            }))
            entity.full_sequence.clear();
        std::erase_if(entity.dbrefs,
                      [](const auto& reference) { return !areNumbersWritable(reference); });
    }
    // gemmi writes LINK records of unknown types.
    std::erase_if(m_structure.connections, std::not_fn(hasBondType));
    // SSBOND records have no names of atoms.
    for (gemmi::Connection& connection : m_structure.connections)
        if (connection.type == gemmi::Connection::Disulf &&
            (connection.partner1.atom_name != "SG" || connection.partner2.atom_name != "SG"))
            connection.type = gemmi::Connection::Covale;
    // Nor letters: one is of all alternative locations.
    std::set<std::pair<std::string, std::string>> disulfides;
    std::erase_if(m_structure.connections, [&disulfides](const gemmi::Connection& connection) {
        return connection.type == gemmi::Connection::Disulf && !isToCopy(connection) &&
               !disulfides.emplace(keyOf(connection.partner1), keyOf(connection.partner2)).second;
    });
    std::string headers = gemmi::make_pdb_headers(m_structure);
    putLetters(m_structure.connections, headers);
    return headers;
}

std::vector<SavedBond> Metadata::joinedByDisulfides() const {
    std::set<std::pair<std::uint32_t, std::uint32_t>> pairs;
    const gemmi::Model& model = m_structure.models.front();
    for (const gemmi::Connection& connection : m_structure.connections) {
        if (connection.type != gemmi::Connection::Disulf || isToCopy(connection))
            continue;
        for (const gemmi::Atom& a : model.find_cra(connection.partner1, true).residue->atoms)
            for (const gemmi::Atom& b : model.find_cra(connection.partner2, true).residue->atoms)
                if (a.name == "SG" && b.name == "SG" && !areApart(a.altloc, b.altloc))
                    pairs.insert(std::minmax({static_cast<std::uint32_t>(a.serial - 1),
                                              static_cast<std::uint32_t>(b.serial - 1)}));
    }
    for (const SavedBond& bond : m_model.bonds)
        pairs.erase({bond.first, bond.second});
    std::vector<SavedBond> bonds;
    for (const auto& [first, second] : pairs)
        if (isInReach(m_model.atoms[first], m_model.atoms[second]))
            bonds.push_back({first, second});
    return bonds;
}

// By atom: whether a row that names it names another atom, too. Without a letter, it names the atom
// in all of its alternative locations.
std::vector<bool> Metadata::ambiguousAtoms() const {
    const auto& chains = m_structure.models.front().chains;
    std::unordered_set<std::string> bonded; // residues; several may be called the same
    for (const SavedBond& bond : m_otherBonds)
        for (const std::uint32_t end : {bond.first, bond.second}) {
            const auto& place = m_places[m_starts[end]];
            bonded.insert(keyOf(chains[place.chain], chains[place.chain].residues[place.residue]));
        }
    std::unordered_map<std::string, std::size_t> counts; // with and without letters
    const auto forBonded = [&](const auto& use) {
        for (const gemmi::Chain& chain : chains)
            for (const gemmi::Residue& residue : chain.residues)
                if (const std::string key = keyOf(chain, residue); bonded.contains(key))
                    for (const gemmi::Atom& atom : residue.atoms)
                        use(atom, counts[key + ' ' + atom.name],
                            counts[key + ' ' + atom.name + ' ' + atom.altloc]);
    };
    forBonded([](const gemmi::Atom&, std::size_t& named, std::size_t& lettered) {
        ++named;
        ++lettered;
    });
    std::vector<bool> ambiguous(m_model.atoms.size());
    forBonded([&ambiguous](const gemmi::Atom& atom, std::size_t named, std::size_t lettered) {
        ambiguous[static_cast<std::size_t>(atom.serial - 1)] =
            (atom.altloc == '\0' ? named : lettered) > 1;
    });
    return ambiguous;
}

void Metadata::addConnections(gemmi::cif::Block& block) {
    if (m_otherBonds.empty())
        return;
    const auto& chains = m_structure.models.front().chains;
    std::vector<const gemmi::Atom*> atoms(m_model.atoms.size());
    for (const gemmi::Chain& chain : chains)
        for (const gemmi::Residue& residue : chain.residues)
            for (const gemmi::Atom& atom : residue.atoms)
                atoms[static_cast<std::size_t>(atom.serial - 1)] = &atom;
    gemmi::cif::Column ids = block.find_loop("_struct_conn.id");
    gemmi::cif::Loop& loop = *ids.get_loop();
    std::size_t number = 0;
    const std::vector<bool> ambiguous = ambiguousAtoms();
    for (const SavedBond& bond : m_otherBonds) {
        if (ambiguous[bond.first] || ambiguous[bond.second]) {
            m_ambiguousBonds.push_back(bond);
            continue;
        }
        const auto type = typeOf(*atoms[bond.first], *atoms[bond.second]);
        std::vector<std::string> row = {"bond" + std::to_string(++number),
                                        gemmi::connection_type_to_string(type)};
        for (const std::uint32_t index : {bond.first, bond.second}) {
            const Place& place = m_places[m_starts[index]];
            const gemmi::Residue& residue = chains[place.chain].residues[place.residue];
            const gemmi::Atom& atom = *atoms[index];
            for (const std::string& value :
                 {gemmi::cif::quote(chains[place.chain].name),
                  gemmi::impl::subchain_or_dot(residue), gemmi::cif::quote(residue.name),
                  residue.label_seq.str('.'), gemmi::cif::quote(atom.name),
                  std::string(1, atom.altloc_or('?')), residue.seqid.num.str(),
                  gemmi::impl::pdbx_icode(residue), std::string("1_555")})
                row.push_back(value);
        }
        row.resize(loop.tags.size(), "?");
        for (std::string& value : row)
            loop.values.push_back(std::move(value));
    }
}

namespace {

bool isOutsideOfAscii(const std::string& value) {
    return std::ranges::any_of(value, [](unsigned char c) { return c >= 0x80; });
}

// gemmi leaves letters outside of ASCII, as in the names of chains, without the quotes that they
// need to be read.
void quoteOthers(gemmi::cif::Block& block) {
    static constexpr std::string_view quotes = "'\";";
    const auto quote = [](std::string& value) {
        if (isOutsideOfAscii(value) && quotes.find(value.front()) == std::string_view::npos)
            value = cif::written(value);
    };
    for (gemmi::cif::Item& item : block.items)
        if (item.type == gemmi::cif::ItemType::Pair)
            quote(item.pair[1]);
        else if (item.type == gemmi::cif::ItemType::Loop)
            std::ranges::for_each(item.loop.values, quote);
}

} // namespace

std::string Metadata::mmcifBlock(const std::string& name) {
    const PointsInNumbers points;
    nameBlankChains();
    m_structure.name = name;
    if (m_structure.info["_entry.id"].empty())
        m_structure.info["_entry.id"] = name;
    gemmi::MmcifOutputGroups groups(true);
    groups.atoms = false;
    gemmi::cif::Block block = gemmi::make_mmcif_block(m_structure, groups);
    addConnections(block);
    quoteOthers(block);
    std::ostringstream out;
    gemmi::cif::write_cif_block_to_stream(out, block);
    return std::move(out).str();
}

} // namespace memory_host
