#include "WritePdb.h"

#include "Fields.h"
#include "FileReport.h"
#include "Hybrid36.h"
#include "Losses.h"
#include "Metadata.h"
#include "PdbColumns.h"
#include "PdbRows.h"
#include "ResidueNames.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace memory_host {

namespace {

constexpr std::size_t recordLength = 80;
constexpr std::uint32_t mostModels = 9999;
constexpr std::string_view acceptedFormat =
    "accepted is saving as mmCIF (.cif), which has room for it";

// A record that is filled by columns, counted from 1.
class Record {
public:
    explicit Record(std::string_view name) { left(1, name); }
    void left(std::size_t first, std::string_view text) {
        text.copy(&m_text[first - 1], text.size());
    }
    void right(std::size_t last, std::string_view text) { left(last + 1 - text.size(), text); }
    void character(std::size_t column, char c) { m_text[column - 1] = c; }
    std::string_view text() const { return m_text; }

private:
    std::string m_text = std::string(recordLength, ' ') + '\n';
};

// A number with a fixed number of decimals; empty if it is wider than the columns.
class Fixed {
public:
    Fixed(double value, int decimals, std::size_t width) {
        char* const begin = m_text.data();
        const auto [end, error] =
            std::to_chars(begin, begin + m_text.size(), value, std::chars_format::fixed, decimals);
        if (error != std::errc())
            return;
        std::string_view text(begin, static_cast<std::size_t>(end - begin));
        // A negative zero is one that the file had, and does not come of rounding.
        if (value != 0.0 && text.starts_with('-') &&
            text.find_first_not_of("-0.") == std::string_view::npos)
            text.remove_prefix(1);
        if (text.size() <= width)
            m_shown = text;
    }
    Fixed(const Fixed&) = delete;
    Fixed& operator=(const Fixed&) = delete;
    std::string_view text() const { return m_shown; }

private:
    std::array<char, 64> m_text{};
    std::string_view m_shown;
};

bool isRounded(double value, double unit) {
    const double tolerance = std::max(1.0e-5 * unit, std::abs(value) * 2.0e-7) + unit * 1.0e-3;
    return std::abs(value - std::round(value / unit) * unit) > tolerance;
}

std::string shown(std::string_view name) {
    return name == "_" ? std::string() : std::string(name);
}

// A symbol of one letter stands in the second column.
std::string nameColumns(const std::string& name, const std::string& element) {
    return name.size() < 4 && element.size() < 2 ? ' ' + name : name;
}

// Counts what does not fit, and says it of the first one.
class Offences {
public:
    template <class Text> void add(const Text& text) {
        if (m_count++ == 0)
            m_first = text();
    }
    void refuse(const SaveReport& report) const {
        if (m_count == 0)
            return;
        std::string line = m_first + " does not fit the columns of a PDB file";
        if (m_count > 1)
            line += ", and neither do " + std::to_string(m_count - 1) + " others";
        report.refuse(line, std::string(acceptedFormat));
    }

private:
    std::string m_first;
    std::size_t m_count = 0;
};

class PdbWriter {
public:
    PdbWriter(const SavedContent& content, SaveReport& report)
        : m_content(content), m_structure(content.structures.front()), m_report(report) {}

    std::string write();

private:
    struct NamedSerial {
        std::int64_t serial;
        const SavedModel* lastUser; ///< the last model that has it
    };

    const std::string& text(std::uint32_t name) const { return m_content.names[name]; }
    void addModels(const SourceFacts& facts, const Metadata& metadata);
    void addModel(const SavedModel& model, const std::vector<WrittenAtom>& written,
                  const SourceFacts& facts, const std::vector<ResidueIds>& residues);
    void addResidue(const SavedModel& model, const WrittenAtom& item, Record& record);
    void addAtom(const SavedModel& model, const WrittenAtom& item, Record& record);
    void addNumber(Record& record, std::size_t last, std::size_t width, int decimals, double value,
                   const char* what, const std::string& atom);
    void addDisplacement(const Record& record, const SourceFacts::Anisotropic& u,
                         const std::string& atom);
    void addEnd(const SavedModel& model, const Record& record);
    void addConnections(const std::vector<SavedBond>& bonds);
    std::string nextSerial();
    std::string serialText(std::int64_t serial);
    std::string serialOf(const SavedModel& model, const Record& record);
    bool isFirst(const SavedModel& model) const { return &model == &m_structure.models.front(); }
    void remarkOnAtoms();

    const SavedContent& m_content;
    const SavedStructure& m_structure;
    SaveReport& m_report;
    std::string m_atoms;
    Offences m_offences;
    pdb::ResidueColumns m_columns; ///< as they are read
    std::int64_t m_serial = 0;
    std::vector<std::string> m_serials; ///< of the first model, by atom, if there are bonds
    /// Likewise, by the columns that name an atom, or the end of a chain.
    std::unordered_map<std::string, NamedSerial> m_named;
    std::size_t m_rounded = 0;
    std::size_t m_written = 0;
};

std::string PdbWriter::nextSerial() {
    return serialText(++m_serial);
}

std::string PdbWriter::serialText(std::int64_t serial) {
    constexpr std::size_t width = 5;
    std::string text = hybrid36(serial, width);
    if (text.empty()) {
        m_offences.add([&] { return "the number " + std::to_string(serial) + " of atoms"; });
        text = "*****";
    }
    return text;
}

// Bonds name the atoms of all models by their numbers, so that an atom has the same one in each,
// also where models lack atoms that others have.
std::string PdbWriter::serialOf(const SavedModel& model, const Record& record) {
    if (m_serials.empty() || m_structure.models.size() == 1)
        return nextSerial();
    const std::string name(record.text().substr(12, 15));
    if (isFirst(model)) {
        m_named.try_emplace(name, NamedSerial{m_serial + 1, nullptr});
        return nextSerial();
    }
    const auto found = m_named.find(name);
    if (found == m_named.end() || std::exchange(found->second.lastUser, &model) == &model)
        return nextSerial();
    return serialText(found->second.serial);
}

void PdbWriter::addNumber(Record& record, std::size_t last, std::size_t width, int decimals,
                          double value, const char* what, const std::string& atom) {
    const Fixed number(value, decimals, width);
    if (number.text().empty())
        m_offences.add([&] {
            return std::string("the ") + what + " " + numberText(static_cast<float>(value)) +
                   " of the atom " + inQuotes(atom);
        });
    record.right(last, number.text());
}

// The residue's columns must be read as they are meant: some could be both a name of four letters
// and one before a chain of two.
void PdbWriter::addResidue(const SavedModel& model, const WrittenAtom& item, Record& record) {
    const SavedResidue& residue = model.residues[item.residue];
    const std::string name = shown(item.residueName);
    const std::string chain = shown(text(model.chains[residue.chain]));
    const auto offend = [&](const char* what, const std::string& value) {
        m_offences.add([&] { return std::string("the ") + what + " " + inQuotes(value); });
    };
    record.left(18, "     ");
    if (name.size() > 3)
        offend("residue name", name);
    else
        record.right(20, name);
    if (chain.size() > 2)
        offend("chain name", chain);
    else
        record.right(22, chain);
    const pdb::ResidueColumns::Fields fields = m_columns.read(record.text().substr(17, 5));
    if (name.size() <= 3 && chain.size() <= 2 && (fields.residue != name || fields.chain != chain))
        offend("residue name before a chain's name of two letters,", name + chain);
    constexpr std::size_t width = 4;
    std::string number = text(residue.number);
    if (number.size() > width) {
        std::int64_t value = 0;
        const auto [end, error] =
            std::from_chars(number.data(), number.data() + number.size(), value);
        std::string encoded = error == std::errc() && value > 0 ? hybrid36(value, width) : "";
        if (encoded.empty())
            offend("residue number", number);
        number = std::move(encoded);
    }
    record.left(23, "     ");
    record.right(26, number);
    const std::string& insertion = text(residue.insertion);
    if (insertion.size() > 1)
        offend("insertion code", insertion);
    else
        record.left(27, insertion);
}

void PdbWriter::addAtom(const SavedModel& model, const WrittenAtom& item, Record& record) {
    const SavedAtom& atom = model.atoms[item.atom];
    const std::string name = shown(text(atom.name));
    const std::string& element = text(atom.element);
    record.left(1, atom.details.isHetero ? "HETATM" : "ATOM  ");
    record.left(13, "    ");
    if (name.size() > 4)
        m_offences.add([&] { return "the atom name " + inQuotes(name); });
    else
        record.left(13, nameColumns(name, element));
    record.character(17, item.alternative != '\0' ? item.alternative : ' ');
    record.left(7, serialOf(model, record));
    record.left(31, std::string_view("                                                  ", 50));
    for (const std::size_t axis : {0, 1, 2})
        if (atom.hasPosition)
            addNumber(record, 38 + 8 * axis, 8, 3, static_cast<double>(atom.position[axis]),
                      "coordinate", name);
    addNumber(record, 60, 6, 2, static_cast<double>(atom.details.occupancy), "occupancy", name);
    addNumber(record, 66, 6, 2, static_cast<double>(atom.temperature), "temperature factor", name);
    std::string symbol = element;
    std::ranges::transform(symbol, symbol.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
    if (symbol.size() > 2)
        m_offences.add([&] { return "the element " + inQuotes(element); });
    else
        record.right(78, symbol);
    const std::int8_t charge = atom.details.formalCharge;
    if (std::abs(charge) > 9)
        m_offences.add([&] { return "the formal charge " + std::to_string(charge); });
    else if (charge != 0) {
        record.character(79, static_cast<char>('0' + std::abs(charge)));
        record.character(80, charge < 0 ? '-' : '+');
    }
    const auto& xyz = atom.position;
    constexpr double milli = 0.001;
    constexpr double centi = 0.01;
    m_rounded += isRounded(static_cast<double>(xyz[0]), milli) ||
                 isRounded(static_cast<double>(xyz[1]), milli) ||
                 isRounded(static_cast<double>(xyz[2]), milli) ||
                 isRounded(static_cast<double>(atom.details.occupancy), centi) ||
                 isRounded(static_cast<double>(atom.temperature), centi);
}

void PdbWriter::addDisplacement(const Record& record, const SourceFacts::Anisotropic& u,
                                const std::string& atom) {
    Record row = record;
    row.left(1, "ANISOU");
    row.left(29, std::string_view("                                          ", 42));
    constexpr double unit = 1.0e4;
    for (std::size_t i = 0; i != u.size(); ++i) {
        const std::string value = std::to_string(std::llround(u[i] * unit));
        if (value.size() > 7)
            m_offences.add(
                [&] { return "the anisotropic displacement of the atom " + inQuotes(atom); });
        else
            row.right(35 + 7 * i, value);
    }
    m_atoms += row.text();
}

void PdbWriter::addEnd(const SavedModel& model, const Record& record) {
    Record row("TER");
    row.left(18, record.text().substr(17, 10));
    row.left(7, serialOf(model, row));
    m_atoms += row.text();
}

void PdbWriter::addModel(const SavedModel& model, const std::vector<WrittenAtom>& written,
                         const SourceFacts& facts, const std::vector<ResidueIds>& residues) {
    constexpr std::size_t piece = 10'000;
    Record record("ATOM");
    std::size_t residue = 0;
    if (m_named.empty())
        m_serial = 0;
    for (std::size_t i = 0; i != written.size(); ++i) {
        const WrittenAtom& item = written[i];
        if (item.startsResidue) {
            addResidue(model, item, record);
            ++residue;
        }
        addAtom(model, item, record);
        if (!m_serials.empty() && isFirst(model))
            m_serials[item.atom] = record.text().substr(6, 5);
        m_atoms += record.text();
        if (const auto* u = facts.anisotropicOf(model.atoms[item.atom].row))
            addDisplacement(record, *u, text(model.atoms[item.atom].name));
        const bool isLast = i + 1 == written.size() || written[i + 1].startsResidue;
        if (isLast && residues[residue - 1].endsPolymer)
            addEnd(model, record);
        if (++m_written % piece == 0)
            m_report.advance(-1.0);
    }
}

void PdbWriter::addModels(const SourceFacts& facts, const Metadata& metadata) {
    const bool areSeveral = m_structure.models.size() > 1;
    if (!metadata.otherBonds().empty())
        m_serials.resize(m_structure.models.front().atoms.size());
    std::uint32_t number = 0;
    for (const SavedModel& model : m_structure.models) {
        Record begin("MODEL");
        begin.right(14, std::to_string(++number));
        if (areSeveral)
            m_atoms += begin.text();
        const std::vector<WrittenAtom> written = writtenAtoms(model, m_content, facts, m_report);
        addModel(model, written, facts, metadata.residuesOf(model, m_content, written));
        if (areSeveral)
            m_atoms += Record("ENDMDL").text();
    }
}

void PdbWriter::addConnections(const std::vector<SavedBond>& bonds) {
    // Each bond is listed at both of its atoms, four to a record.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ends;
    for (const SavedBond& bond : bonds) {
        ends.emplace_back(bond.first, bond.second);
        ends.emplace_back(bond.second, bond.first);
    }
    std::ranges::sort(ends);
    constexpr std::size_t mostInRecord = 4;
    for (std::size_t i = 0; i != ends.size();) {
        Record record("CONECT");
        const std::uint32_t first = ends[i].first;
        record.left(7, m_serials[first]);
        for (std::size_t n = 0; n != mostInRecord && i != ends.size() && ends[i].first == first;
             ++n)
            record.left(12 + 5 * n, m_serials[ends[i++].second]);
        m_atoms += record.text();
    }
}

void PdbWriter::remarkOnAtoms() {
    std::size_t labels = 0;
    for (const SavedModel& model : m_structure.models)
        labels += static_cast<std::size_t>(std::ranges::count_if(
            model.residues, [](const SavedResidue& residue) { return residue.labelChain != 0; }));
    remarkOnLostValues(m_structure, m_content.names, m_report);
    remarkOnLost(labels, "the label ids", "residue", m_report);
    pdb::remarkOnRounded(m_rounded, m_report);
}

std::string PdbWriter::write() {
    if (m_structure.models.size() > mostModels)
        m_report.refuse(std::to_string(m_structure.models.size()) +
                            " models do not fit a PDB file, which has room for 9999",
                        std::string(acceptedFormat));
    SourceFacts facts = readFacts(m_structure, m_report);
    const SavedModel& first = m_structure.models.front();
    Metadata metadata(first, m_structure.models.size(), m_content, facts,
                      writtenAtoms(first, m_content, facts, m_report));
    std::size_t atoms = 0;
    for (const SavedModel& model : m_structure.models)
        atoms += model.atoms.size();
    m_atoms.reserve((recordLength + 1) * (atoms + atoms / 32));
    addModels(facts, metadata);
    remarkOnLostNames(m_structure, m_content.names, facts.namesInRows(), m_report);
    m_offences.refuse(m_report);
    addConnections(metadata.otherBonds());
    m_atoms += Record("END").text();
    std::string file = metadata.pdbHeaders();
    remarkOnLostKinds(facts, file, false, m_report);
    if (const std::size_t rows = metadata.otherTypes(); rows != 0)
        m_report.remark("the file's " + std::to_string(rows) + (rows == 1 ? " row" : " rows") +
                        " of category _struct_conn of other types than covale, disulf and metalc " +
                        (rows == 1 ? "is" : "are") + " not kept");
    remarkOnJoinedBonds(metadata.joinedByDisulfides(), first, m_content.names, m_report);
    remarkOnAtoms();
    return file += m_atoms;
}

} // namespace

std::string writePdb(const SavedContent& content, SaveReport& report) {
    return PdbWriter(content, report).write();
}

} // namespace memory_host
