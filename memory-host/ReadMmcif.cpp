// The mmCIF format: gemmi's CIF grammar, with actions that pick the atoms out while it is parsed.
// The document is never held as a whole, and every value comes with its line.
#include "FieldText.h"
#include "Readers.h"
#include "ResidueKinds.h"
#include "TableBuilder.h"

#include <gemmi/cif.hpp>

#include <algorithm>

namespace memory_host {

namespace {

namespace rules = gemmi::cif::rules;
namespace pegtl = tao::pegtl;

const std::string acceptedSyntax = "accepted are mmCIF files with an _atom_site category";
constexpr std::string_view atomPrefix = "_atom_site.";

enum Column : std::uint8_t {
    X,
    Y,
    Z,
    Temperature,
    Symbol,
    Alternative,
    Insertion,
    ModelNumber,
    AuthAtom,
    LabelAtom,
    AuthResidue,
    LabelResidue,
    AuthChain,
    LabelChain,
    AuthNumber,
    LabelNumber,
    ColumnCount,
    Ignored = ColumnCount
};

constexpr std::array<std::string_view, ColumnCount> columnTags = {
    "cartn_x",      "cartn_y",       "cartn_z",           "b_iso_or_equiv",
    "type_symbol",  "label_alt_id",  "pdbx_pdb_ins_code", "pdbx_pdb_model_num",
    "auth_atom_id", "label_atom_id", "auth_comp_id",      "label_comp_id",
    "auth_asym_id", "label_asym_id", "auth_seq_id",       "label_seq_id"};

bool startsWith(std::string_view text, std::string_view lowerCasePrefix) {
    return text.size() >= lowerCasePrefix.size() &&
           std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(),
                      [](char a, char b) { return a == lowerCase(b); });
}

Column columnOf(std::string_view tag) {
    tag.remove_prefix(atomPrefix.size());
    const auto found = std::ranges::find_if(columnTags, [tag](std::string_view known) {
        return known.size() == tag.size() && startsWith(tag, known);
    });
    return static_cast<Column>(found - columnTags.begin());
}

bool isNull(std::string_view value) {
    return value.empty() || value == "?" || value == ".";
}

// The text of a value, without its quotes; empty where the file says that there is none.
std::string_view contentOf(std::string_view value) {
    if (isNull(value))
        return {};
    if (value.size() < 2)
        return value;
    const char quote = value.front();
    if (quote == '\'' || quote == '"')
        return value.substr(1, value.size() - 2);
    if (quote == ';' && value.back() == ';') {
        value = value.substr(1, value.size() - 2);
        while (!value.empty() && (value.back() == '\n' || value.back() == '\r'))
            value.remove_suffix(1);
    }
    return value;
}

// Turns values in the order of the file into atoms.
class MmcifReader {
public:
    MmcifReader(Bytes bytes, std::string stem, FileReport& report)
        : m_bytes(std::move(bytes)), m_stem(std::move(stem)), m_report(report) {}

    std::vector<StructureTable> read();

    void startBlock(std::string_view name);
    void setInFrame(bool in) { m_isInFrame = in; }
    void itemTag(std::string_view tag);
    void itemValue(std::string_view value, std::size_t line);
    void startLoop();
    void loopTag(std::string_view tag);
    void loopValue(std::string_view value, std::size_t line);
    void endLoop(const char* end);
    void missingValue(std::size_t line) const {
        m_report.refuse(line, "a tag has no value", acceptedSyntax);
    }

private:
    using Row = std::array<std::string_view, ColumnCount + 1>;

    bool isAtomTag(std::string_view tag) const {
        return !m_isInFrame && startsWith(tag, atomPrefix);
    }
    void checkColumns(const Row& row, std::size_t line);
    void takeRow(const Row& row, std::size_t line);
    void readPosition(const Row& values, std::size_t line, AtomRow& row);
    void readTemperature(const Row& values, std::size_t line, AtomRow& row);
    void parse();
    void refuseForeignWord(std::size_t at, std::size_t line) const;
    void takePairs();
    void finishBlock();

    Bytes m_bytes;
    std::string m_stem;
    FileReport& m_report;
    std::vector<StructureTable> m_structures;

    std::string m_blockName;
    std::string m_entryName;
    std::unique_ptr<TableBuilder> m_builder;
    std::string_view m_model; ///< number of the model that the last atom belongs to
    bool m_isInFrame = false; ///< inside of a save frame, where definitions stand

    std::vector<Column> m_columns; ///< of the loop
    std::size_t m_column = 0;      ///< of the next value
    bool m_isAtomLoop = false;
    Row m_row{};
    std::size_t m_rowLine = 0;
    std::size_t m_lastLine = 0;       ///< of a value in a loop
    const char* m_lastEnd = nullptr;  ///< of that value
    bool m_areColumnsChecked = false; ///< of the loop

    Column m_pairColumn = Ignored; ///< of the last tag outside of loops
    bool m_isEntryTag = false;     ///< that tag was the entry's identifier
    bool m_hasPairs = false;       ///< the category comes without a loop: one row
    Row m_pairRow{};
    std::size_t m_pairLine = 0;

    bool m_hasFractions = false; ///< some category gives fractional coordinates
    std::size_t m_firstBadLine = 0;
    std::size_t m_positions = 0; ///< number of atoms that have one
};

// The actions of the grammar.
template <class Rule> struct Pick : pegtl::nothing<Rule> {};

template <class Input> std::string_view textOf(const Input& in) {
    return {in.begin(), in.size()};
}

template <> struct Pick<rules::datablockname> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.startBlock(textOf(in));
    }
};
template <> struct Pick<rules::str_global> {
    static void apply0(MmcifReader& reader) { reader.startBlock({}); }
};
template <> struct Pick<rules::framename> {
    static void apply0(MmcifReader& reader) { reader.setInFrame(true); }
};
template <> struct Pick<rules::endframe> {
    static void apply0(MmcifReader& reader) { reader.setInFrame(false); }
};
template <> struct Pick<rules::item_tag> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.itemTag(textOf(in));
    }
};
template <> struct Pick<rules::item_value> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.itemValue(textOf(in), in.iterator().line);
    }
};
template <> struct Pick<rules::missing_value> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.missingValue(in.iterator().line);
    }
};
template <> struct Pick<rules::str_loop> {
    static void apply0(MmcifReader& reader) { reader.startLoop(); }
};
template <> struct Pick<rules::loop_tag> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.loopTag(textOf(in));
    }
};
template <> struct Pick<rules::loop_value> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.loopValue(textOf(in), in.iterator().line);
    }
};
template <> struct Pick<rules::loop> {
    template <class Input> static void apply(const Input& in, MmcifReader& reader) {
        reader.endLoop(in.end());
    }
};

// The parser stops before a word that cannot be, and does not say what is wrong with it.
void MmcifReader::refuseForeignWord(std::size_t at, std::size_t line) const {
    std::string_view word = m_bytes.text().substr(std::min(at, m_bytes.size()));
    word = word.substr(0, word.find_first_of(" \t\r\n"));
    if (std::ranges::any_of(word, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
        m_report.refuse(line,
                        "is no valid mmCIF: the word " + inQuotes(word) +
                            " has bytes outside of ASCII, and stands in no quotes",
                        acceptedSyntax);
}

void MmcifReader::parse() {
    const std::string_view text = m_bytes.text();
    pegtl::memory_input<> in(text.data(), text.size(), "");
    try {
        pegtl::parse<rules::file, Pick, gemmi::cif::Errors>(in, *this);
    } catch (const pegtl::parse_error& error) {
        const auto& place = error.positions().front();
        refuseForeignWord(place.byte, place.line);
        m_report.refuse(place.line, "is no valid mmCIF: " + std::string(error.message()),
                        acceptedSyntax);
    }
    takePairs();
}

std::vector<StructureTable> MmcifReader::read() {
    parse();
    m_bytes = {};
    finishBlock();
    if (m_structures.empty())
        m_report.refuse(0,
                        m_hasFractions
                            ? "has fractional coordinates, and no atoms in an _atom_site category"
                            : "is no structure: it has no atoms in an _atom_site category",
                        acceptedFiles());
    if (m_positions == 0 && m_firstBadLine != 0)
        m_report.refuse(m_firstBadLine, "no atom of the file has coordinates that are numbers",
                        acceptedSyntax);
    return std::move(m_structures);
}

void MmcifReader::startBlock(std::string_view name) {
    takePairs();
    finishBlock();
    m_blockName = name;
}

void MmcifReader::finishBlock() {
    if (m_builder) {
        std::string name = asLatin1Component(m_entryName.empty() ? m_blockName : m_entryName);
        std::ranges::transform(name, name.begin(), lowerCase);
        m_structures.push_back(m_builder->finish(name.empty() ? m_stem : name));
    }
    m_builder.reset();
    m_entryName.clear();
    m_isInFrame = false;
}

void MmcifReader::takePairs() {
    if (m_hasPairs) {
        checkColumns(m_pairRow, m_pairLine);
        takeRow(m_pairRow, m_pairLine);
    }
    m_hasPairs = false;
    m_pairRow = {};
}

void MmcifReader::itemTag(std::string_view tag) {
    m_pairColumn = isAtomTag(tag) ? columnOf(tag) : Ignored;
    m_hasPairs = m_hasPairs || isAtomTag(tag);
    m_isEntryTag = !m_isInFrame && startsWith(tag, "_entry.id") && tag.size() == 9;
}

void MmcifReader::itemValue(std::string_view value, std::size_t line) {
    if (m_isEntryTag)
        m_entryName = contentOf(value);
    if (m_pairColumn == Ignored)
        return;
    m_pairRow[m_pairColumn] = value;
    m_pairLine = line;
}

void MmcifReader::startLoop() {
    m_columns.clear();
    m_column = 0;
    m_isAtomLoop = false;
    m_areColumnsChecked = false;
    m_row = {};
}

void MmcifReader::loopTag(std::string_view tag) {
    const bool ofAtoms = isAtomTag(tag);
    m_isAtomLoop = m_isAtomLoop || ofAtoms;
    m_columns.push_back(ofAtoms ? columnOf(tag) : Ignored);
    m_hasFractions = m_hasFractions || startsWith(tag, "_atom_site_fract_x");
}

void MmcifReader::loopValue(std::string_view value, std::size_t line) {
    m_lastLine = line;
    m_lastEnd = value.data() + value.size();
    if (m_column == 0)
        m_rowLine = line;
    m_row[m_columns[m_column]] = value;
    if (++m_column != m_columns.size())
        return;
    m_column = 0;
    if (!m_isAtomLoop)
        return;
    if (!m_areColumnsChecked)
        checkColumns(m_row, m_rowLine);
    m_areColumnsChecked = true;
    takeRow(m_row, m_rowLine);
}

void MmcifReader::endLoop(const char* end) {
    if (m_column != 0) {
        refuseForeignWord(static_cast<std::size_t>(end - m_bytes.data()), m_lastLine);
        m_report.refuse(m_lastLine,
                        "a loop ends in the middle of a row, after " + std::to_string(m_column) +
                            " of " + std::to_string(m_columns.size()) +
                            " values: the file is cut or damaged",
                        acceptedSyntax);
    }
    if (m_isAtomLoop && m_lastEnd == m_bytes.data() + m_bytes.size())
        m_report.remark(FileReport::Kind::Cut, m_lastLine,
                        "the last row of the atoms has no line end: the file may have been cut");
}

void MmcifReader::checkColumns(const Row& row, std::size_t line) {
    // A column that is there has a value in every row.
    constexpr std::array<std::pair<Column, Column>, 6> needed = {
        std::pair(X, X),
        std::pair(Y, Y),
        std::pair(Z, Z),
        std::pair(AuthAtom, LabelAtom),
        std::pair(AuthResidue, LabelResidue),
        std::pair(AuthChain, LabelChain)};
    for (const auto& [column, other] : needed)
        if (row[column].empty() && row[other].empty())
            m_report.refuse(line,
                            "the _atom_site category has no " + std::string(columnTags[other]),
                            acceptedSyntax);
}

void MmcifReader::takeRow(const Row& values, std::size_t line) {
    const auto authorOrLabel = [&values](Column author, Column label) {
        return contentOf(isNull(values[author]) ? values[label] : values[author]);
    };
    const std::string_view model = contentOf(values[ModelNumber]);
    if (!m_builder) {
        m_builder = std::make_unique<TableBuilder>(m_report);
        m_builder->startModel(model, true);
    } else if (model != m_model) {
        m_builder->startModel(model, true);
    }
    m_model = model;

    AtomRow row;
    row.chain = authorOrLabel(AuthChain, LabelChain);
    row.residue = authorOrLabel(AuthResidue, LabelResidue);
    row.number = authorOrLabel(AuthNumber, LabelNumber);
    row.insertion = contentOf(values[Insertion]);
    row.name = authorOrLabel(AuthAtom, LabelAtom);
    row.alternative = contentOf(values[Alternative]);
    const std::string_view symbol = contentOf(values[Symbol]);
    row.element = symbol.empty()
                      ? elementOfName(row.name, residueKind(row.residue) != ResidueKind::Other)
                      : elementOf(symbol);
    readPosition(values, line, row);
    readTemperature(values, line, row);
    m_builder->add(row);
}

// A number may have its uncertainty in brackets behind it.
std::optional<float> parsedValue(std::string_view value) {
    value = contentOf(value);
    if (value.ends_with(')'))
        if (const std::size_t bracket = value.find('(');
            bracket != std::string_view::npos &&
            std::all_of(value.begin() + bracket + 1, value.end() - 1, isDigit))
            value = value.substr(0, bracket);
    return parsedNumber(value);
}

void MmcifReader::readPosition(const Row& values, std::size_t line, AtomRow& row) {
    row.hasPosition = true;
    bool isBlank = true;
    for (const Column axis : {X, Y, Z}) {
        const std::optional<float> value = parsedValue(values[axis]);
        isBlank = isBlank && isNull(values[axis]);
        row.hasPosition = row.hasPosition && value;
        row.position[axis] = value.value_or(0.0F);
    }
    if (row.hasPosition) {
        ++m_positions;
        return;
    }
    row.position = {};
    if (isBlank) {
        m_report.remark(FileReport::Kind::NoCoordinates, line, [&] {
            return "the atom " + inQuotes(row.name) +
                   " has no coordinates; accepted are numbers as Cartn_x, Cartn_y and Cartn_z";
        });
        return;
    }
    if (m_firstBadLine == 0)
        m_firstBadLine = line;
    m_report.remark(FileReport::Kind::Coordinates, line, [&] {
        std::string text(values[X]);
        text.append(" ").append(values[Y]).append(" ").append(values[Z]);
        return "the coordinates " + inQuotes(text) + " of the atom " + inQuotes(row.name) +
               " are no numbers: it has no position; accepted are numbers as Cartn_x, Cartn_y and "
               "Cartn_z";
    });
}

void MmcifReader::readTemperature(const Row& values, std::size_t line, AtomRow& row) {
    const std::string_view text = contentOf(values[Temperature]);
    if (text.empty())
        return;
    const std::optional<float> temperature = parsedValue(text);
    row.temperature = temperature.value_or(0.0F);
    if (!temperature)
        m_report.remark(FileReport::Kind::Temperature, line, [&] {
            return "the temperature factor " + inQuotes(text) +
                   " is no number, and was read as 0; accepted are numbers as B_iso_or_equiv";
        });
}

} // namespace

bool looksLikeMmcif(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '#')
            at = std::min(text.find('\n', at), text.size());
        else if (c == ' ' || c == '\t' || c == '\r' || c == '\n')
            ++at;
        else
            break;
    }
    return startsWith(text.substr(at), "data_");
}

std::vector<StructureTable> readMmcif(Bytes bytes, const std::string& stem, FileReport& report) {
    return MmcifReader(std::move(bytes), stem, report).read();
}

} // namespace memory_host
