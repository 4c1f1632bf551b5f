#include "SourceFacts.h"

#include "AlternativeLetters.h"
#include "Fields.h"
#include "PdbColumns.h"

#include <gemmi/cif.hpp>
#include <gemmi/mmcif.hpp>
#include <gemmi/pdb.hpp>

#include <algorithm>

namespace memory_host {

namespace {

void readPdbRows(std::string_view text, bool isPqr, SourceFacts& facts) {
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        const std::string_view record = trimmed(line.substr(0, 6));
        if (record.empty())
            continue;
        if (pdb::isAtomRecord(line)) {
            facts.residues.emplace_back(pdb::field(line, 18, 20));
            facts.segments += !isPqr && !pdb::field(line, 73, 76).empty();
            continue;
        }
        ++facts.kinds[std::string(record)];
        if (record != "ANISOU" || facts.residues.empty())
            continue;
        SourceFacts::Anisotropic u{};
        constexpr double unit = 1.0e-4;
        for (std::size_t i = 0; i != u.size(); ++i)
            u[i] = unit * finiteFloat(pdb::field(line, 29 + 7 * i, 35 + 7 * i)).value_or(0.0F);
        facts.anisotropic.emplace_back(facts.residues.size() - 1, u);
    }
}

// In old files columns 73 to 80 name the entry and the line, and are no element and charge.
gemmi::Structure readPdbMetadata(std::string_view text) {
    gemmi::PdbReadOptions options;
    try {
        return gemmi::read_pdb_from_memory(text.data(), text.size(), "", options);
    } catch (const std::runtime_error&) {
        options.max_line_length = 72;
        return gemmi::read_pdb_from_memory(text.data(), text.size(), "", options);
    }
}

std::string categoryOf(const std::string& tag) {
    return gemmi::to_lower(tag.substr(0, tag.find('.')));
}

void countKinds(const gemmi::cif::Block& block, SourceFacts& facts) {
    for (const gemmi::cif::Item& item : block.items) {
        if (item.type == gemmi::cif::ItemType::Loop && !item.loop.tags.empty())
            facts.kinds[categoryOf(item.loop.tags.front())] = item.loop.length();
        else if (item.type == gemmi::cif::ItemType::Pair)
            facts.kinds[categoryOf(item.pair[0])] = 1;
    }
}

using Ids = std::unordered_map<std::string, std::uint32_t>;

void readDisplacements(gemmi::cif::Block& block, const Ids& rows, SourceFacts& facts) {
    gemmi::cif::Table table =
        block.find("_atom_site_anisotrop.",
                   {"id", "U[1][1]", "U[2][2]", "U[3][3]", "U[1][2]", "U[1][3]", "U[2][3]"});
    for (const auto row : table) {
        const auto found = rows.find(row[0]);
        if (found == rows.end())
            continue;
        SourceFacts::Anisotropic u{};
        for (std::size_t i = 0; i != u.size(); ++i)
            u[i] = gemmi::cif::as_number(row[i + 1], 0.0);
        facts.anisotropic.emplace_back(found->second, u);
    }
    std::ranges::sort(facts.anisotropic, {}, &decltype(facts.anisotropic)::value_type::first);
}

// gemmi does not know types as "covale_base", and takes them for unknown ones, like "saltbr".
void findTypes(gemmi::cif::Block& block, std::vector<gemmi::Connection>& connections) {
    using Type = gemmi::Connection::Type;
    constexpr auto types = std::to_array<std::pair<std::string_view, Type>>(
        {{"covale", Type::Covale}, {"disulf", Type::Disulf}, {"metalc", Type::MetalC}});
    gemmi::cif::Column texts = block.find_values("_struct_conn.conn_type_id");
    auto connection = connections.begin();
    for (const std::string& quoted : texts) {
        if (connection == connections.end())
            return;
        const std::string text = gemmi::cif::as_string(quoted);
        for (const auto& [beginning, type] : types)
            if (startsWith(text, beginning))
                connection->type = type;
        ++connection;
    }
}

bool hasAtoms(gemmi::cif::Block& block) {
    return block.find("_atom_site.", {"Cartn_x"}).ok();
}

// Rows count on through all data blocks; entries are the blocks with atoms.
void readMmcif(std::string_view text, std::uint32_t wanted, SourceFacts& facts) {
    gemmi::cif::Document document = gemmi::cif::read_memory(text.data(), text.size(), "");
    std::uint32_t entry = 0;
    for (gemmi::cif::Block& block : document.blocks) {
        if (!hasAtoms(block))
            continue;
        gemmi::cif::Table names = block.find(
            "_atom_site.",
            {block.find("_atom_site.", {"auth_comp_id"}).ok() ? "auth_comp_id" : "label_comp_id"});
        const std::size_t first = facts.residues.size();
        for (const auto row : names)
            facts.residues.push_back(gemmi::cif::as_string(row[0]));
        facts.residues.resize(first + block.find("_atom_site.", {"Cartn_x"}).length());
        if (entry++ != wanted)
            continue;
        countKinds(block, facts);
        if (block.find("_atom_site_anisotrop.", {"id"}).ok()) {
            Ids rows;
            auto row = static_cast<std::uint32_t>(first);
            for (const std::string& id : block.find_values("_atom_site.id"))
                rows.emplace(id, row++);
            readDisplacements(block, rows, facts);
        }
        facts.metadata = gemmi::make_structure_from_block(block);
        findTypes(block, facts.metadata.connections);
    }
}

std::string_view nameOf(const SavedAtom& atom, std::string_view label, const SourceFacts& facts) {
    // Only a residue of several names has to ask the file.
    const std::size_t comma = label.find(',');
    if (comma == std::string_view::npos)
        return label;
    return atom.row < facts.residues.size() ? std::string_view(facts.residues[atom.row])
                                            : label.substr(0, comma);
}

} // namespace

const SourceFacts::Anisotropic* SourceFacts::anisotropicOf(std::uint32_t row) const {
    const auto found =
        std::ranges::lower_bound(anisotropic, row, {}, &decltype(anisotropic)::value_type::first);
    return found != anisotropic.end() && found->first == row ? &found->second : nullptr;
}

SourceFacts readFacts(const SavedStructure& structure, SaveReport& report) {
    SourceFacts facts;
    if (!structure.source)
        return facts;
    const std::shared_ptr<const Bytes> bytes = structure.source->unpack();
    const std::string_view text = bytes->text();
    try {
        if (structure.source->format().name == "mmCIF") {
            readMmcif(text, structure.block, facts);
        } else {
            const bool isPqr = structure.source->format().name == "PQR";
            readPdbRows(text, isPqr, facts);
            if (!isPqr)
                facts.metadata = readPdbMetadata(text);
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        facts.metadata = gemmi::Structure();
        report.remark(std::string("the file's records beside its atoms are not kept: ") +
                      error.what());
    }
    return facts;
}

std::vector<WrittenAtom> writtenAtoms(const SavedModel& model, const SavedContent& content,
                                      const SourceFacts& facts, const SaveReport& report) {
    const std::vector<char> letters = alternativeLetters(model, content.names, report);
    std::vector<WrittenAtom> written;
    written.reserve(model.atoms.size());
    for (std::uint32_t residue = 0; residue != model.residues.size(); ++residue) {
        const std::uint32_t first = model.residues[residue].firstAtom;
        const std::uint32_t end = model.atomEnd(residue);
        const std::string_view label = content.names[model.residues[residue].name];
        for (std::uint32_t i = first; i != end; ++i) {
            const SavedAtom& atom = model.atoms[i];
            written.push_back({i, residue, nameOf(atom, label, facts), letters[i]});
        }
        const auto begin = written.begin() + first;
        std::stable_sort(begin, written.end(), [&](const WrittenAtom& a, const WrittenAtom& b) {
            return model.atoms[a.atom].row < model.atoms[b.atom].row;
        });
        for (auto atom = begin; atom != written.end(); ++atom)
            atom->startsResidue =
                atom == begin || atom->residueName != std::prev(atom)->residueName;
    }
    return written;
}

} // namespace memory_host
