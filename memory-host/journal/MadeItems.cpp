#include "MadeItems.h"

#include <algorithm>
#include <span>
#include <typeinfo>
#include <utility>

namespace memory_host {

namespace {

constexpr std::size_t membersAtOnce = 1024;
constexpr std::size_t bytesAtOnce = std::size_t{1} << 18;

template <class Value> std::string_view bytesOf(const std::vector<Value>& values) {
    // The journal stays on the machine, so that the order of bytes may be the machine's.
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(Value)};
}

void writeScale(JournalBytes& bytes, const TAVIK::ValueScale& scale) {
    bytes.text(scale.title);
    bytes.real(scale.lower);
    bytes.real(scale.upper);
    bytes.number(scale.colors.size());
    for (const std::uint32_t color : scale.colors)
        bytes.four(color);
}

} // namespace

std::uint32_t JournalTexts::number(const Name& name) {
    if (name.isEmpty())
        return 0;
    if (name.number() >= m_numbers.size())
        m_numbers.resize(std::max<std::size_t>(name.number() + 1, 2 * m_numbers.size()));
    std::uint32_t& known = m_numbers[name.number()];
    if (known == 0) {
        m_bytes.text(name.text());
        known = ++m_count;
    }
    return known;
}

BesideCopy::BesideCopy(const SurfaceItem& surface, const std::string& name) {
    const TAVIK::SurfaceMesh& mesh = *surface.m_mesh;
    m_made.name = name;
    m_parts = {bytesOf(mesh.vertices), bytesOf(mesh.normals), bytesOf(mesh.triangles),
               bytesOf(mesh.colors),   bytesOf(mesh.values),  bytesOf(mesh.atoms)};
    JournalBytes& bytes = m_made.bytes;
    bytes.byte(mesh.scale ? 1 : 0);
    if (mesh.scale)
        writeScale(bytes, *mesh.scale);
    bytes.byte(mesh.area ? 1 : 0);
    bytes.real(mesh.area.value_or(0.0));
    for (const std::string_view part : m_parts)
        bytes.number(part.size());
}

BesideCopy::BesideCopy(const GridItem& grid, const std::string& name) {
    const TAVIK::GridValues& values = grid.m_values;
    m_made.name = name;
    m_parts = {bytesOf(values.values)};
    JournalBytes& bytes = m_made.bytes;
    for (const int points : values.points)
        bytes.difference(points);
    for (const double x : values.origin)
        bytes.real(x);
    for (const std::array<double, 3>& step : values.steps)
        for (const double x : step)
            bytes.real(x);
    for (const int steps : grid.m_crystal.cellSteps)
        bytes.difference(steps);
    bytes.difference(grid.m_crystal.spaceGroup);
    bytes.number(m_parts.front().size());
}

bool BesideCopy::step() {
    for (std::size_t left = bytesAtOnce; left != 0 && m_part != m_parts.size();) {
        std::string_view& part = m_parts[m_part];
        const std::size_t count = std::min(left, part.size());
        m_made.bytes.bytes(part.substr(0, count));
        part.remove_prefix(count);
        left -= count;
        if (part.empty())
            ++m_part;
    }
    return m_part == m_parts.size();
}

void MadeItems::add(const Compound& item, const HostItem& record) {
    m_state.isAsRead = false;
    m_bytes.difference(std::int64_t{record.id} - std::int64_t{m_last});
    m_last = record.id;
    m_bytes.byte(static_cast<std::uint8_t>(record.kind));
    m_bytes.difference(std::int64_t{record.id} - std::int64_t{record.parent->id});
    m_bytes.number(m_texts.number(record.name));
    writeValues(item, record);
}

void MadeItems::writeValues(const Compound& item, const HostItem& record) {
    switch (record.kind) {
    case Kind::Residue: {
        const auto& residue = static_cast<const ResidueItem&>(item);
        m_bytes.number(m_texts.number(residue.m_labelChain));
        m_bytes.number(m_texts.number(residue.m_labelNumber));
        break;
    }
    case Kind::Atom:
        writeAtom(m_bytes, static_cast<const AtomItem&>(item), record);
        break;
    case Kind::Bond:
        for (const Compound* atom : static_cast<const BondItem&>(item).m_atoms)
            m_bytes.number(atom ? atom->GetId() : 0);
        break;
    case Kind::Surface: {
        const auto& surface = static_cast<const SurfaceItem&>(item);
        m_bytes.number(surface.m_mesh ? surface.m_meshVersion : 0);
        if (surface.m_mesh)
            keepBeside(surface, meshFile(record.id, surface.m_meshVersion));
        break;
    }
    case Kind::Grid: {
        const auto& grid = static_cast<const GridItem&>(item);
        m_bytes.byte(grid.m_values.values.empty() ? 0 : 1);
        m_bytes.number(grid.m_valuesVersion);
        if (!grid.m_values.values.empty())
            keepBeside(grid, gridFile(record.id, grid.m_valuesVersion));
        break;
    }
    case Kind::PolyLine: {
        const std::vector<TAVIK::Vertex>& points = static_cast<const PolyLineItem&>(item).m_points;
        m_bytes.number(points.size());
        for (const TAVIK::Vertex& point : points) {
            m_bytes.byte(point.isValid() ? 1 : 0);
            for (const std::size_t axis : {0, 1, 2})
                m_bytes.real(point[axis]);
        }
        break;
    }
    case Kind::Set:
        m_sets.push_back(&static_cast<SetRecord&>(HostItem::of(&item)));
        break;
    default:
        break;
    }
}

void MadeItems::writeAtom(JournalBytes& bytes, const AtomItem& atom, const HostItem& record) {
    using namespace journal_atom;
    const bool isCharged = typeid(atom) == typeid(ChargedAtomItem);
    const TAVIK::AtomDetails& details = atom.details();
    bytes.byte(static_cast<std::uint8_t>((record.has(HostItem::HasPosition) ? hasPosition : 0U) |
                                         (isCharged ? hasCharge : 0U) |
                                         (details.isHetero ? isHetero : 0U)));
    for (const float coordinate : atom.m_position)
        bytes.real(coordinate);
    bytes.real(atom.m_temperature);
    bytes.number(m_texts.number(record.type));
    bytes.number(record.model);
    bytes.real(details.occupancy);
    bytes.difference(details.serial);
    bytes.difference(details.formalCharge);
    bytes.byte(static_cast<std::uint8_t>(details.alternative));
    if (isCharged) {
        bytes.real(static_cast<const ChargedAtomItem&>(atom).m_charge);
        bytes.real(static_cast<const ChargedAtomItem&>(atom).m_radius);
    }
}

void MadeItems::addChanged(const AtomItem& atom) {
    const HostItem& record = HostItem::of(&atom);
    JournalBytes& bytes = m_state.at(JournalSection::Atoms);
    bytes.difference(std::int64_t{record.id} -
                     std::int64_t{std::exchange(m_lastChanged, record.id)});
    writeAtom(bytes, atom, record);
}

void MadeItems::addChanged(const GridItem& grid) {
    const std::uint32_t id = HostItem::of(&grid).id;
    JournalBytes& bytes = m_state.at(JournalSection::Values);
    bytes.number(id);
    bytes.number(grid.m_valuesVersion);
    keepBeside(grid, gridFile(id, grid.m_valuesVersion));
}

template <class Item> void MadeItems::keepBeside(const Item& item, const std::string& name) {
    m_state.needed.insert(name);
    if (!m_written.contains(name))
        m_copies.emplace_back(item, name);
}

bool MadeItems::stepMembers() {
    SetRecord& set = *m_sets.back();
    const std::vector<Compound*>& members = set.listed();
    JournalBytes& bytes = m_state.at(JournalSection::Members);
    if (m_member == 0) {
        bytes.number(set.id);
        bytes.number(members.size());
    }
    const std::size_t end = std::min(m_member + membersAtOnce, members.size());
    for (; m_member != end; ++m_member) {
        const std::uint32_t id = HostItem::of(members[m_member]).id;
        bytes.difference(std::int64_t{id} - std::int64_t{m_lastMember});
        m_lastMember = id;
    }
    return m_member == members.size();
}

bool MadeItems::step() {
    if (!m_sets.empty()) {
        if (stepMembers()) {
            m_sets.pop_back();
            m_member = 0;
        }
    } else if (!m_copies.empty() && m_copies.back().step()) {
        m_state.besides.push_back(m_copies.back().take());
        m_copies.pop_back();
    }
    return m_sets.empty() && m_copies.empty();
}

} // namespace memory_host
