#include "JournalContent.h"

#include <algorithm>
#include <limits>

namespace memory_host {

namespace {

// Reads identifiers, each as the difference to the one before.
class Identifiers {
public:
    std::uint32_t next(JournalReader& reader) {
        return m_last = checked(std::int64_t{m_last} + reader.difference());
    }
    static std::uint32_t checked(std::int64_t id) {
        if (id < 0 || id > std::numeric_limits<std::uint32_t>::max())
            JournalReader::refuse();
        return static_cast<std::uint32_t>(id);
    }

private:
    std::uint32_t m_last = 0;
};

class ContentReader {
public:
    explicit ContentReader(std::string bytes) { m_content.bytes = std::move(bytes); }

    JournalContent read();

private:
    using Section = void (ContentReader::*)(JournalReader&);

    void readText(JournalReader& in) { m_content.texts.push_back(in.text()); }
    void readFile(JournalReader& in);
    void readReading(JournalReader& in);
    void readEntry(JournalReader& in);
    void readMade(JournalReader& in);
    void readValues(JournalReader& in, JournalContent::Made& made);
    JournalContent::AtomValues atomValues(JournalReader& in) const;
    void readLine(JournalReader& in);
    void readSet(JournalReader& in);
    void readLook(JournalReader& in);
    void readChangedAtom(JournalReader& in);
    void readChangedGrid(JournalReader& in);
    void readModel(JournalReader& in);
    void readBounds(JournalReader& in);
    std::uint32_t textNumber(JournalReader& in) const {
        return in.number(static_cast<std::uint32_t>(m_content.texts.size() - 1));
    }
    void sortAndCheck();
    void checkLooks();

    JournalContent m_content;
    Identifiers m_made, m_members, m_changed, m_modelled;
    std::uint32_t m_lookEnd = 0;
    std::uint32_t m_color = 0;
};

void ContentReader::readFile(JournalReader& in) {
    JournalContent::File file{readStamp(in), {}};
    Identifiers identifiers;
    for (std::size_t left = in.count(); left != 0; --left)
        file.entries.push_back(identifiers.next(in));
    m_content.files.push_back(std::move(file));
}

void ContentReader::readReading(JournalReader& in) {
    JournalContent::Reading reading;
    reading.path = in.text();
    reading.stamp = readStamp(in);
    reading.firstItem = in.number<std::uint32_t>();
    reading.itemCount = in.number(std::numeric_limits<std::uint32_t>::max() - reading.firstItem);
    reading.hasText = in.byte() != 0;
    m_content.readings.push_back(reading);
}

void ContentReader::readEntry(JournalReader& in) {
    JournalContent::Entry entry;
    entry.id = in.number<std::uint32_t>();
    entry.name = textNumber(in);
    entry.path = in.text();
    entry.file = in.number(static_cast<std::uint32_t>(m_content.files.size()));
    entry.isUnsaved = in.byte() != 0;
    m_content.entries.push_back(entry);
}

void ContentReader::readMade(JournalReader& in) {
    JournalContent::Made made;
    made.id = m_made.next(in);
    const std::uint8_t kind = in.byte();
    made.kind = static_cast<Kind>(kind);
    if (kind >= kindCount || made.kind == Kind::Space)
        JournalReader::refuse();
    made.parent = Identifiers::checked(std::int64_t{made.id} - in.difference());
    made.name = textNumber(in);
    readValues(in, made);
    m_content.made.push_back(made);
}

void ContentReader::readValues(JournalReader& in, JournalContent::Made& made) {
    switch (made.kind) {
    case Kind::Residue:
        made.values = {textNumber(in), textNumber(in)};
        break;
    case Kind::Atom:
        made.values[0] = static_cast<std::uint32_t>(m_content.madeAtoms.size());
        m_content.madeAtoms.push_back(atomValues(in));
        break;
    case Kind::Bond:
        made.values = {in.number<std::uint32_t>(), in.number<std::uint32_t>()};
        break;
    case Kind::Surface:
        made.values[0] = in.number<std::uint32_t>();
        break;
    case Kind::Grid:
        made.values = {in.byte(), in.number<std::uint32_t>()};
        break;
    case Kind::PolyLine:
        made.values[0] = static_cast<std::uint32_t>(m_content.madeLines.size());
        readLine(in);
        break;
    default:
        break;
    }
}

JournalContent::AtomValues ContentReader::atomValues(JournalReader& in) const {
    JournalContent::AtomValues atom;
    const std::uint8_t bits = in.byte();
    atom.hasPosition = (bits & journal_atom::hasPosition) != 0;
    for (float& coordinate : atom.position)
        coordinate = in.real();
    atom.temperature = in.real();
    atom.type = textNumber(in);
    atom.model = in.number<std::uint16_t>();
    atom.details.occupancy = in.real();
    atom.details.serial = static_cast<std::int32_t>(in.difference());
    atom.details.formalCharge = static_cast<std::int8_t>(in.difference());
    atom.details.alternative = static_cast<char>(in.byte());
    atom.details.isHetero = (bits & journal_atom::isHetero) != 0;
    if ((bits & journal_atom::hasCharge) != 0)
        atom.partial = {in.real(), in.real(), true};
    return atom;
}

void ContentReader::readLine(JournalReader& in) {
    std::vector<TAVIK::Vertex> points;
    for (std::size_t left = in.count(13); left != 0; --left) {
        const bool isValid = in.byte() != 0;
        const std::array<float, 3> at{in.real(), in.real(), in.real()};
        points.emplace_back(at[0], at[1], at[2], isValid);
    }
    m_content.madeLines.push_back(std::move(points));
}

void ContentReader::readSet(JournalReader& in) {
    JournalContent::Set set;
    set.id = in.number<std::uint32_t>();
    const std::size_t count = in.count();
    set.members.reserve(count);
    for (std::size_t left = count; left != 0; --left)
        set.members.push_back(m_members.next(in));
    m_content.sets.push_back(std::move(set));
}

void ContentReader::readLook(JournalReader& in) {
    JournalContent::Run run;
    run.first = Identifiers::checked(std::int64_t{m_lookEnd} + in.difference());
    run.length = in.number(std::numeric_limits<std::uint32_t>::max() - run.first);
    m_lookEnd = run.first + run.length;
    run.look = in.byte();
    if ((run.look & journal_look::newColour) != 0)
        m_color = in.four();
    run.color = m_color;
    m_content.looks.push_back(run);
}

void ContentReader::readChangedAtom(JournalReader& in) {
    const std::uint32_t id = m_changed.next(in);
    m_content.changedAtoms.push_back({id, atomValues(in)});
}

void ContentReader::readChangedGrid(JournalReader& in) {
    const auto id = in.number<std::uint32_t>();
    m_content.changedGrids.push_back({id, in.number<std::uint32_t>()});
}

void ContentReader::readModel(JournalReader& in) {
    const std::uint32_t id = m_modelled.next(in);
    m_content.models.push_back({id, in.number<std::uint16_t>()});
}

void ContentReader::readBounds(JournalReader& in) {
    JournalContent::Bounds bounds;
    bounds.id = in.number<std::uint32_t>();
    for (int& bound : bounds.bounds)
        bound = static_cast<int>(in.difference());
    m_content.bounds.push_back(bounds);
}

JournalContent ContentReader::read() {
    // In the order of JournalSection.
    constexpr std::array<Section, journalSectionCount> sections = {
        &ContentReader::readText,  &ContentReader::readFile,        &ContentReader::readReading,
        &ContentReader::readEntry, &ContentReader::readMade,        &ContentReader::readSet,
        &ContentReader::readLook,  &ContentReader::readChangedAtom, &ContentReader::readChangedGrid,
        &ContentReader::readModel, &ContentReader::readBounds};
    JournalReader all(m_content.bytes);
    if (all.take(journalMark.size()) != journalMark)
        JournalReader::refuse();
    m_content.texts.emplace_back();
    for (const Section& section : sections)
        for (JournalReader in(all.text()); !in.isAtEnd();)
            (this->*section)(in);
    if (!all.isAtEnd())
        JournalReader::refuse();
    sortAndCheck();
    checkLooks();
    return std::move(m_content);
}

void ContentReader::sortAndCheck() {
    std::ranges::sort(m_content.readings, {}, &JournalContent::Reading::firstItem);
    std::ranges::sort(m_content.made, {}, &JournalContent::Made::id);
    std::ranges::sort(m_content.models, {}, &JournalContent::Model::id);
    std::ranges::sort(m_content.sets, {}, &JournalContent::Set::id);
    std::uint32_t end = 0;
    for (const JournalContent::Reading& reading : m_content.readings) {
        if (reading.firstItem < end)
            JournalReader::refuse();
        end = reading.firstItem + reading.itemCount;
    }
}

// Runs that overlap could make the work of a short journal endless.
void ContentReader::checkLooks() {
    std::vector<JournalContent::Run>& looks = m_content.looks;
    std::ranges::sort(looks, {}, &JournalContent::Run::first);
    std::uint32_t end = 0;
    for (const JournalContent::Run& run : looks) {
        if (run.first < end)
            JournalReader::refuse();
        end = run.first + run.length;
    }
}

template <class Value> std::vector<Value> readArray(JournalReader& in, std::size_t bytes) {
    if (bytes % sizeof(Value) != 0)
        JournalReader::refuse();
    const std::string_view from = in.take(bytes);
    std::vector<Value> values(bytes / sizeof(Value));
    if (bytes != 0)
        std::memcpy(values.data(), from.data(), bytes);
    return values;
}

TAVIK::ValueScale readScale(JournalReader& in) {
    TAVIK::ValueScale scale;
    scale.title = in.text();
    scale.lower = in.real();
    scale.upper = in.real();
    scale.colors.resize(in.count(4));
    for (std::uint32_t& color : scale.colors)
        color = in.four();
    return scale;
}

} // namespace

JournalContent readJournal(std::string bytes) {
    return ContentReader(std::move(bytes)).read();
}

TAVIK::SurfaceMesh readMesh(std::string_view bytes) {
    JournalReader in(bytes);
    TAVIK::SurfaceMesh mesh;
    if (in.byte() != 0)
        mesh.scale = readScale(in);
    const bool hasArea = in.byte() != 0;
    const double area = in.realOfDouble();
    if (hasArea)
        mesh.area = area;
    std::array<std::size_t, 6> sizes{};
    for (std::size_t& size : sizes)
        size = in.number<std::size_t>();
    mesh.vertices = readArray<std::array<float, 3>>(in, sizes[0]);
    mesh.normals = readArray<std::array<float, 3>>(in, sizes[1]);
    mesh.triangles = readArray<std::array<std::uint32_t, 3>>(in, sizes[2]);
    mesh.colors = readArray<std::uint32_t>(in, sizes[3]);
    mesh.values = readArray<float>(in, sizes[4]);
    mesh.atoms = readArray<unsigned int>(in, sizes[5]);
    return mesh;
}

TAVIK::GridValues readGrid(std::string_view bytes, MapCrystal& crystal) {
    JournalReader in(bytes);
    TAVIK::GridValues grid;
    for (int& points : grid.points)
        points = static_cast<int>(in.difference());
    for (double& x : grid.origin)
        x = in.realOfDouble();
    for (std::array<double, 3>& step : grid.steps)
        for (double& x : step)
            x = in.realOfDouble();
    for (int& steps : crystal.cellSteps)
        steps = static_cast<int>(in.difference());
    crystal.spaceGroup = static_cast<int>(in.difference());
    grid.values = readArray<float>(in, in.number<std::size_t>());
    return grid;
}

} // namespace memory_host
