#include "WriteMmcif.h"

#include "CifEdit.h"
#include "Losses.h"
#include "Metadata.h"
#include "ResidueNames.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace memory_host {

namespace {

constexpr std::string_view atomTags = "#\nloop_\n"
                                      "_atom_site.group_PDB\n"
                                      "_atom_site.id\n"
                                      "_atom_site.type_symbol\n"
                                      "_atom_site.label_atom_id\n"
                                      "_atom_site.label_alt_id\n"
                                      "_atom_site.label_comp_id\n"
                                      "_atom_site.label_asym_id\n"
                                      "_atom_site.label_entity_id\n"
                                      "_atom_site.label_seq_id\n"
                                      "_atom_site.pdbx_PDB_ins_code\n"
                                      "_atom_site.Cartn_x\n"
                                      "_atom_site.Cartn_y\n"
                                      "_atom_site.Cartn_z\n"
                                      "_atom_site.occupancy\n"
                                      "_atom_site.B_iso_or_equiv\n"
                                      "_atom_site.pdbx_formal_charge\n"
                                      "_atom_site.auth_seq_id\n"
                                      "_atom_site.auth_asym_id\n"
                                      "_atom_site.pdbx_PDB_model_num\n";
constexpr std::string_view displacementTags = "#\nloop_\n"
                                              "_atom_site_anisotrop.id\n"
                                              "_atom_site_anisotrop.type_symbol\n"
                                              "_atom_site_anisotrop.U[1][1]\n"
                                              "_atom_site_anisotrop.U[2][2]\n"
                                              "_atom_site_anisotrop.U[3][3]\n"
                                              "_atom_site_anisotrop.U[1][2]\n"
                                              "_atom_site_anisotrop.U[1][3]\n"
                                              "_atom_site_anisotrop.U[2][3]\n";

template <class Number> void addNumber(std::string& out, Number value) {
    std::array<char, 64> text{};
    char* const begin = text.data();
    char* end = nullptr;
    if constexpr (std::is_floating_point_v<Number>)
        end = std::to_chars(begin, begin + text.size(), value, std::chars_format::fixed).ptr;
    else
        end = std::to_chars(begin, begin + text.size(), value).ptr;
    out.append(begin, end) += ' ';
}

// A text as a value: in quotes where it needs them, `none` where it is empty.
std::string valueOf(std::string_view text, const char* none) {
    return text.empty() ? std::string(none) : cif::written(text);
}

class BlockWriter {
public:
    BlockWriter(const SavedContent& content, const SavedStructure& structure, SaveReport& report)
        : m_content(content), m_structure(structure), m_report(report) {
        m_quoted.reserve(content.names.size());
        for (const std::string& name : content.names)
            m_quoted.push_back(valueOf(name, "."));
    }

    /// Adds a data block of this name.
    void write(const std::string& name, std::string& file);

private:
    void addModel(const SavedModel& model, std::size_t number,
                  const std::vector<WrittenAtom>& written, const SourceFacts& facts,
                  const std::vector<ResidueIds>& residues);
    std::string residueValues(const SavedModel& model, const WrittenAtom& item,
                              const ResidueIds& ids) const;
    void addAtom(const SavedAtom& atom);
    void addDisplacement(const std::string& element, const SourceFacts::Anisotropic& u);
    void remarkOnAtoms(const SourceFacts& facts);

    const SavedContent& m_content;
    const SavedStructure& m_structure;
    SaveReport& m_report;
    std::vector<std::string> m_quoted; ///< the content's names as values
    std::string m_atoms;
    std::string m_displacements;
    std::size_t m_id = 0;
};

// From label_comp_id to pdbx_PDB_ins_code.
std::string BlockWriter::residueValues(const SavedModel& model, const WrittenAtom& item,
                                       const ResidueIds& ids) const {
    const SavedResidue& residue = model.residues[item.residue];
    std::string text = valueOf(item.residueName, ".") + ' ';
    text +=
        valueOf(ids.chain, ".") + ' ' + valueOf(ids.entity, ".") + ' ' + valueOf(ids.number, ".");
    return text + ' ' + valueOf(m_content.names[residue.insertion], "?") + ' ';
}

void BlockWriter::addAtom(const SavedAtom& atom) {
    for (const float coordinate : atom.position) {
        if (atom.hasPosition)
            addNumber(m_atoms, coordinate);
        else
            m_atoms += "? ";
    }
    addNumber(m_atoms, atom.details.occupancy);
    addNumber(m_atoms, atom.temperature);
    if (atom.details.formalCharge != 0)
        addNumber(m_atoms, static_cast<int>(atom.details.formalCharge));
    else
        m_atoms += "? ";
}

void BlockWriter::addDisplacement(const std::string& element, const SourceFacts::Anisotropic& u) {
    if (m_displacements.empty())
        m_displacements = displacementTags;
    addNumber(m_displacements, m_id);
    m_displacements.append(element) += ' ';
    // The text's own digits: single precision holds all that files have.
    for (const double value : u)
        addNumber(m_displacements, static_cast<float>(value));
    m_displacements.back() = '\n';
}

void BlockWriter::addModel(const SavedModel& model, std::size_t number,
                           const std::vector<WrittenAtom>& written, const SourceFacts& facts,
                           const std::vector<ResidueIds>& residues) {
    constexpr std::size_t piece = 10'000;
    std::string residue;
    std::string author;
    std::size_t starts = 0;
    for (const WrittenAtom& item : written) {
        const SavedAtom& atom = model.atoms[item.atom];
        if (item.startsResidue) {
            residue = residueValues(model, item, residues[starts++]);
            const SavedResidue& saved = model.residues[item.residue];
            author = m_quoted[saved.number] + ' ' + m_quoted[model.chains[saved.chain]] + ' ' +
                     std::to_string(number) + '\n';
        }
        m_atoms += atom.details.isHetero ? "HETATM " : "ATOM ";
        addNumber(m_atoms, ++m_id);
        m_atoms.append(m_quoted[atom.element]).append(" ").append(m_quoted[atom.name]) += ' ';
        m_atoms += item.alternative != '\0' ? valueOf({&item.alternative, 1}, ".") : ".";
        m_atoms.append(" ").append(residue);
        addAtom(atom);
        m_atoms += author;
        if (const auto* u = facts.anisotropicOf(atom.row))
            addDisplacement(m_content.names[atom.element], *u);
        if (m_id % piece == 0)
            m_report.advance(-1.0);
    }
}

void BlockWriter::remarkOnAtoms(const SourceFacts& facts) {
    remarkOnLostValues(m_structure, m_content.names, m_report);
    remarkOnLost(facts.segments, "the segment names", "atom", m_report);
}

void BlockWriter::write(const std::string& name, std::string& file) {
    SourceFacts facts = readFacts(m_structure, m_report);
    const SavedModel& first = m_structure.models.front();
    const std::vector<WrittenAtom> written = writtenAtoms(first, m_content, facts, m_report);
    Metadata metadata(first, 1, m_content, facts, written);
    const std::string block = metadata.mmcifBlock(name);
    std::size_t atoms = 0;
    for (const SavedModel& model : m_structure.models)
        atoms += model.atoms.size();
    constexpr std::size_t usualRow = 96;
    m_atoms.reserve(atoms * usualRow);
    m_atoms += atomTags;
    std::size_t number = 0;
    for (const SavedModel& model : m_structure.models) {
        const std::vector<WrittenAtom> rows = writtenAtoms(model, m_content, facts, m_report);
        addModel(model, ++number, rows, facts, metadata.residuesOf(model, m_content, rows));
    }
    remarkOnLostKinds(facts, block, true, m_report);
    if (const std::size_t rows = metadata.unknownTypes(); rows != 0)
        m_report.remark("the types of " + std::to_string(rows) + (rows == 1 ? " row" : " rows") +
                        " of category _struct_conn other than covale, disulf, metalc and hydrog "
                        "are not kept");
    remarkOnAmbiguousBonds(metadata.ambiguousBonds(), first, m_content.names, m_report);
    remarkOnAtoms(facts);
    remarkOnLostNames(m_structure, m_content.names, facts.namesInRows(), m_report);
    file.reserve(file.size() + block.size() + m_atoms.size() + m_displacements.size());
    file.append(block).append(m_atoms).append(m_displacements).append("#\n");
}

// The name of a data block: printing characters, and no other block's.
std::string blockName(const SavedStructure& structure, std::set<std::string>& taken) {
    std::string name = structure.models.front().name;
    if (structure.source && structure.models.size() > 1)
        name.resize(std::min(name.find('.'), name.size()));
    for (char& c : name)
        if (c <= ' ' || c > '~')
            c = '_';
    const std::string stem = name;
    for (int number = 2; !taken.insert(name).second; ++number)
        name = stem + '-' + std::to_string(number);
    return name;
}

} // namespace

std::string writeMmcif(const SavedContent& content, SaveReport& report) {
    std::string file;
    std::set<std::string> names;
    for (const SavedStructure& structure : content.structures)
        BlockWriter(content, structure, report).write(blockName(structure, names), file);
    return file;
}

} // namespace memory_host
