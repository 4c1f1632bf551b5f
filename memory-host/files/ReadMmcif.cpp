// The mmCIF format, an entry for each data block with an _atom_site category: gemmi's CIF grammar
// with actions that pick out the atoms during parsing. The document is never in memory as a whole,
// and every value is known with its line.
#include "Fields.h"
#include "MmcifAtoms.h"
#include "MmcifBonds.h"
#include "PdbColumns.h"
#include "Readers.h"
#include "SaveMmcif.h"
#include "WriteMmcif.h"

#include <gemmi/cif.hpp>

#include <algorithm>
#include <unordered_set>

namespace memory_host {

namespace {

namespace rules = gemmi::cif::rules;
namespace pegtl = tao::pegtl;

using mmcif::acceptedSyntax;
using mmcif::Column;
using mmcif::contentOf;
using mmcif::Row;

// An entry's name is repeated in all its models and atoms. The limit is that of a file name.
constexpr std::size_t longestName = 255;

// Tags as written in the file, compared without regard to case.
struct TagHash {
    std::size_t operator()(std::string_view tag) const {
        std::uint64_t hash = 0xcbf29ce484222325U;
        for (const char c : tag)
            hash = (hash ^ static_cast<unsigned char>(lowerCase(c))) * 0x100000001b3U;
        return hash ^ hash >> 29;
    }
};
struct TagEqual {
    bool operator()(std::string_view a, std::string_view b) const {
        return a.size() == b.size() && startsWith(a, b);
    }
};
using TagSet = std::unordered_set<std::string_view, TagHash, TagEqual>;

// Takes tags and values in the order of the file, and picks the rows of atoms.
class MmcifReader {
public:
    MmcifReader(Bytes bytes, std::string stem, FileReport& report)
        : m_bytes(std::move(bytes)), m_stem(std::move(stem)), m_report(report), m_atoms(report) {}

    std::vector<StructureTable> read();

    void startBlock(std::string_view name);
    void setInFrame(bool in) {
        m_isInFrame = in;
        m_frameTags = TagSet();
    }
    void itemTag(std::string_view tag, std::size_t line);
    void itemValue(std::string_view value, std::size_t line);
    void startLoop();
    void loopTag(std::string_view tag, std::size_t line);
    void loopValue(std::string_view value, std::size_t line);
    void endLoop(const char* end);
    void missingValue(std::size_t line) const {
        m_report.refuse(line, "a tag has no value", acceptedSyntax);
    }

private:
    bool isAtomTag(std::string_view tag) const { return !m_isInFrame && mmcif::isAtomTag(tag); }
    bool isBondTag(std::string_view tag) const { return !m_isInFrame && mmcif::isBondTag(tag); }
    void parse();
    void checkRepetition(std::string_view tag, std::size_t line);
    [[noreturn]] void refuseWord(std::size_t at, std::size_t line, std::string_view message) const;
    void takePairs();
    void finishBlock();

    Bytes m_bytes;
    std::string m_stem;
    FileReport& m_report;
    mmcif::Atoms m_atoms;

    std::string m_blockName;
    std::string m_entryName;
    bool m_isInFrame = false; ///< inside of a save frame, which holds definitions
    TagSet m_tags;            ///< of the block
    TagSet m_frameTags;       ///< of the save frame

    std::vector<Column> m_columns; ///< of the loop
    std::size_t m_column = 0;      ///< of the next value
    bool m_isAtomLoop = false;
    Row m_row{};
    std::vector<mmcif::BondColumn> m_bondColumns; ///< of a loop that lists bonds, else empty
    mmcif::BondRow m_bondRow{};
    std::size_t m_rowLine = 0;
    std::size_t m_lastLine = 0;       ///< of a value in a loop
    const char* m_lastEnd = nullptr;  ///< of that value
    bool m_areColumnsChecked = false; ///< of the loop

    Column m_pairColumn = Column::Ignored; ///< of the last tag outside of loops
    bool m_isEntryTag = false;             ///< that tag was the entry's identifier
    bool m_hasPairs = false;               ///< the category has no loop: one row
    Row m_pairRow{};
    std::size_t m_pairLine = 0;
    mmcif::BondColumn m_bondPairColumn = mmcif::NoBondColumn; ///< of the last tag outside of loops
    bool m_hasBondPairs = false;
    mmcif::BondRow m_bondPairRow{};
    std::size_t m_bondPairLine = 0;

    bool m_hasFractions = false; ///< some category gives fractional coordinates
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
        reader.itemTag(textOf(in), in.iterator().line);
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
        reader.loopTag(textOf(in), in.iterator().line);
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

// The parser stops before an invalid word, and does not always name it.
void MmcifReader::refuseWord(std::size_t at, std::size_t line, std::string_view message) const {
    std::string_view word = m_bytes.text().substr(std::min(at, m_bytes.size()));
    word = word.substr(0, word.find_first_of(" \t\r\n"));
    std::string what(message);
    if (std::ranges::any_of(word, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
        what =
            "the word " + inQuotes(word) + " has bytes outside of ASCII, and stands in no quotes";
    else if (message.starts_with("expected block header"))
        what = "expected a data block (data_NAME) before " + inQuotes(word);
    else if (message == "parse error" && !word.empty())
        what = inQuotes(word) + " cannot stand here";
    m_report.refuse(line, "is no valid mmCIF: " + what, acceptedSyntax);
}

void MmcifReader::parse() {
    const std::string_view text = m_bytes.text();
    pegtl::memory_input<> in(text.data(), text.size(), "");
    try {
        pegtl::parse<rules::file, Pick, gemmi::cif::Errors>(in, *this);
    } catch (const pegtl::parse_error& error) {
        const auto& place = error.positions().front();
        refuseWord(place.byte, place.line, error.message());
    }
    takePairs();
}

std::vector<StructureTable> MmcifReader::read() {
    parse();
    m_bytes = {};
    finishBlock();
    std::vector<StructureTable> structures = m_atoms.take();
    if (structures.empty())
        m_report.refuse(0,
                        m_hasFractions
                            ? "has fractional coordinates, and no atoms in an _atom_site category"
                            : "is no structure: it has no atoms in an _atom_site category",
                        acceptedFiles());
    return structures;
}

void MmcifReader::startBlock(std::string_view name) {
    takePairs();
    finishBlock();
    m_blockName = name;
    m_tags = TagSet(); // clear() would take as long as for the most tags so far.
}

// With two values of a tag, it is unknown which one is meant.
void MmcifReader::checkRepetition(std::string_view tag, std::size_t line) {
    if (!(m_isInFrame ? m_frameTags : m_tags).insert(tag).second)
        m_report.refuse(line, "the tag " + inQuotes(tag) + " stands twice in one data block",
                        acceptedSyntax);
}

void MmcifReader::finishBlock() {
    std::string name = asLatin1Component(m_entryName.empty() ? m_blockName : m_entryName);
    if (name.size() > longestName && !m_atoms.isEntryEmpty())
        m_report.remark(FileReport::Kind::Name, 0, [&] {
            return "the name " + inQuotes(name) + " of an entry has " +
                   std::to_string(name.size()) + " characters, and was cut after " +
                   std::to_string(longestName) + "; accepted are names of up to as many";
        });
    name.resize(std::min(name.size(), longestName));
    std::ranges::transform(name, name.begin(), lowerCase);
    m_atoms.finishEntry(name.empty() ? m_stem : name);
    m_entryName.clear();
    m_isInFrame = false;
}

void MmcifReader::takePairs() {
    if (m_hasPairs) {
        m_atoms.checkColumns(m_pairRow, m_pairLine);
        m_atoms.add(m_pairRow, m_pairLine);
    }
    m_hasPairs = false;
    m_pairRow = {};
    if (m_hasBondPairs)
        mmcif::addBond(m_bondPairRow, m_bondPairLine, m_atoms.listedBonds());
    m_hasBondPairs = false;
    m_bondPairRow = {};
}

void MmcifReader::itemTag(std::string_view tag, std::size_t line) {
    checkRepetition(tag, line);
    m_pairColumn = isAtomTag(tag) ? mmcif::columnOf(tag) : Column::Ignored;
    m_hasPairs = m_hasPairs || isAtomTag(tag);
    m_isEntryTag = !m_isInFrame && startsWith(tag, "_entry.id") && tag.size() == 9;
    m_bondPairColumn = isBondTag(tag) ? mmcif::bondColumnOf(tag) : mmcif::NoBondColumn;
    m_hasBondPairs = m_hasBondPairs || m_bondPairColumn != mmcif::NoBondColumn;
}

void MmcifReader::itemValue(std::string_view value, std::size_t line) {
    if (m_isEntryTag)
        m_entryName = contentOf(value);
    if (m_bondPairColumn != mmcif::NoBondColumn) {
        m_bondPairRow[m_bondPairColumn] = value;
        m_bondPairLine = line;
    }
    if (m_pairColumn == Column::Ignored)
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
    m_bondColumns.clear();
    m_bondRow = {};
}

void MmcifReader::loopTag(std::string_view tag, std::size_t line) {
    checkRepetition(tag, line);
    const bool ofAtoms = isAtomTag(tag);
    m_isAtomLoop = m_isAtomLoop || ofAtoms;
    m_columns.push_back(ofAtoms ? mmcif::columnOf(tag) : Column::Ignored);
    if (isBondTag(tag)) {
        m_bondColumns.resize(m_columns.size(), mmcif::NoBondColumn);
        m_bondColumns.back() = mmcif::bondColumnOf(tag);
    }
    m_hasFractions = m_hasFractions || startsWith(tag, "_atom_site_fract_x");
}

void MmcifReader::loopValue(std::string_view value, std::size_t line) {
    m_lastLine = line;
    m_lastEnd = value.data() + value.size();
    if (m_column == 0)
        m_rowLine = line;
    m_row[m_columns[m_column]] = value;
    if (m_column < m_bondColumns.size())
        m_bondRow[m_bondColumns[m_column]] = value;
    if (++m_column != m_columns.size())
        return;
    m_column = 0;
    if (!m_bondColumns.empty())
        mmcif::addBond(m_bondRow, m_rowLine, m_atoms.listedBonds());
    if (!m_isAtomLoop)
        return;
    if (!m_areColumnsChecked)
        m_atoms.checkColumns(m_row, m_rowLine);
    m_areColumnsChecked = true;
    m_atoms.add(m_row, m_rowLine);
}

void MmcifReader::endLoop(const char* end) {
    if (m_column != 0)
        refuseWord(static_cast<std::size_t>(end - m_bytes.data()), m_lastLine,
                   "a loop ends in the middle of a row, after " + std::to_string(m_column) +
                       " of " + std::to_string(m_columns.size()) +
                       " values: the file is cut or damaged");
    if (m_isAtomLoop && m_lastEnd == m_bytes.data() + m_bytes.size())
        m_report.remark(FileReport::Kind::Cut, m_lastLine,
                        "the last row of the atoms has no line end: the file may have been cut");
}

// Whether the text starts as a CIF does: with a data block, a loop or a category's tag.
bool startsAsCif(std::string_view text) {
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
    text.remove_prefix(at);
    // A missing data block is accepted here, and reported later.
    const std::string_view word = text.substr(0, text.find_first_of(" \t\r\n"));
    return startsWith(word, "data_") || startsWith(word, "loop_") ||
           (startsWith(word, "_") && word.find('.') != std::string_view::npos);
}

// If the text does not tell, the file's name decides, so that the message fits.
bool isMmcif(const FileSample& sample) {
    return startsAsCif(sample.bytes) || (sample.isNamedSo && !pdb::hasAtoms(sample.bytes));
}

FileContent readMmcif(Bytes bytes, const std::string& stem, FileReport& report) {
    return {MmcifReader(std::move(bytes), stem, report).read(), {}};
}

constexpr auto endings = std::to_array<std::string_view>({".cif", ".mmcif"});

} // namespace

extern const FileFormat mmcifFormat = {.name = "mmCIF",
                                       .holds = FileFormat::Holds::Structure,
                                       .form = FileFormat::Form::Text,
                                       .endings = endings,
                                       .recognises = isMmcif,
                                       .read = readMmcif,
                                       .holdsSeveral = true,
                                       .write = writeMmcif,
                                       .edit = editMmcif};

} // namespace memory_host
