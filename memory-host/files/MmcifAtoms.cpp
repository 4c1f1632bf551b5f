#include "MmcifAtoms.h"

#include "ResidueKinds.h"

namespace memory_host::mmcif {

namespace {

constexpr std::array<std::string_view, ColumnCount> columnTags = {
    "cartn_x",      "cartn_y",       "cartn_z",           "b_iso_or_equiv",
    "type_symbol",  "label_alt_id",  "pdbx_pdb_ins_code", "pdbx_pdb_model_num",
    "auth_atom_id", "label_atom_id", "auth_comp_id",      "label_comp_id",
    "auth_asym_id", "label_asym_id", "auth_seq_id",       "label_seq_id",
    "id",           "group_pdb",     "occupancy",         "pdbx_formal_charge"};

bool isNull(std::string_view value) {
    return value.empty() || value == "?" || value == ".";
}

} // namespace

Column columnOf(std::string_view tag) {
    tag.remove_prefix(tag.find('.') + 1);
    const auto found = std::ranges::find_if(columnTags, [tag](std::string_view known) {
        return known.size() == tag.size() && startsWith(tag, known);
    });
    return static_cast<Column>(found - columnTags.begin());
}

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

std::optional<float> numberOf(std::string_view value) {
    value = contentOf(value);
    if (value.ends_with(')'))
        if (const std::size_t bracket = value.find('(');
            bracket != std::string_view::npos &&
            std::all_of(value.begin() + bracket + 1, value.end() - 1, isDigit))
            value = value.substr(0, bracket);
    return finiteFloat(value);
}

void Atoms::checkColumns(const Row& row, std::size_t line) const {
    // If a column exists, every row has a value in it.
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

TableBuilder& Atoms::builder() {
    if (!m_builder)
        m_builder = std::make_unique<TableBuilder>(m_report, m_finishedAtoms);
    return *m_builder;
}

void Atoms::add(const Row& values, std::size_t line) {
    const auto authorOrLabel = [&values](Column author, Column label) {
        return contentOf(isNull(values[author]) ? values[label] : values[author]);
    };
    const std::string_view model = contentOf(values[ModelNumber]);
    if (isEntryEmpty() || model != m_model)
        builder().startModel(model, true);
    m_model = model;

    AtomRow row;
    row.chain = authorOrLabel(AuthChain, LabelChain);
    row.residue = authorOrLabel(AuthResidue, LabelResidue);
    row.number = authorOrLabel(AuthNumber, LabelNumber);
    row.insertion = contentOf(values[Insertion]);
    row.name = authorOrLabel(AuthAtom, LabelAtom);
    row.alternative = contentOf(values[Alternative]);
    row.labelChain = contentOf(values[LabelChain]);
    row.labelNumber = contentOf(values[LabelNumber]);
    const std::string_view symbol = contentOf(values[Symbol]);
    row.element = symbol.empty()
                      ? elementOfName(row.name, residueKind(row.residue) != ResidueKind::Other)
                      : elementOf(symbol);
    m_numbers.setPosition(
        row, {numberOf(values[X]), numberOf(values[Y]), numberOf(values[Z])},
        isNull(values[X]) && isNull(values[Y]) && isNull(values[Z]), line, [&values] {
            std::string text(values[X]);
            return text.append(" ").append(values[Y]).append(" ").append(values[Z]);
        });
    const std::string_view temperature = contentOf(values[Temperature]);
    m_numbers.setTemperature(row, temperature, numberOf(temperature), line);
    row.details.serial = serialNumber(contentOf(values[Id]));
    row.details.isHetero = contentOf(values[Group]) == "HETATM";
    row.details.occupancy = numberOf(values[Occupancy]).value_or(1.0F);
    row.details.formalCharge = formalCharge(contentOf(values[FormalCharge]));
    m_builder->add(row);
}

void Atoms::finishEntry(std::string name) {
    if (!isEntryEmpty()) {
        m_finishedAtoms += m_builder->atomCount();
        m_structures.push_back(m_builder->finish(std::move(name)));
    }
    m_builder.reset();
}

std::vector<StructureTable> Atoms::take() {
    m_numbers.check(acceptedSyntax);
    return std::move(m_structures);
}

} // namespace memory_host::mmcif
