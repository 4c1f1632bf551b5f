#include "CommandCase.h"

#include "Traversal.h"
#include "items/Invariants.h"

#include <QRegularExpression>

#include <cmath>
#include <utility>

namespace command_case {

using TAVIK::DataMaker;

Compound* addResidue(Compound* entry, const std::string& residue,
                     const std::vector<AtomSpec>& atoms) {
    Compound* const made = DataMaker::makeCore(*entry->ChildBegin(), residue, "Residue");
    for (const AtomSpec& atom : atoms) {
        const auto& [x, y, z] = atom.position;
        DataMaker::makeAtom(made, {atom.name, atom.element, TAVIK::Vertex(x, y, z, true)});
    }
    return made;
}

Compound* addEntry(const std::string& name, const std::string& residue,
                   const std::vector<AtomSpec>& atoms) {
    Compound* const entry = DataMaker::makeCore(space(), name, "Composite");
    DataMaker::makeCore(entry, "A", "Molecule");
    addResidue(entry, residue, atoms);
    return entry;
}

Compound* addCopper(const std::string& name, std::array<float, 3> at) {
    return addEntry(name, "CU 1", {{"CU", "Cu", at}});
}

Grid* addGrid(const std::string& name, std::array<int, 3> points,
              const std::function<float(int, int, int)>& value) {
    TAVIK::GridValues grid;
    grid.points = points;
    grid.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (int z = 0; z != points[2]; ++z)
        for (int y = 0; y != points[1]; ++y)
            for (int x = 0; x != points[0]; ++x)
                grid.values.push_back(value(x, y, z));
    return DataMaker::makeGrid(space(), name, std::move(grid));
}

Grid* addDistances(const std::string& name) {
    return addGrid(name, {21, 21, 21}, [](int x, int y, int z) {
        return -static_cast<float>(std::hypot(x - 10, y - 10, z - 10));
    });
}

std::vector<Compound*> atomsIn(Compound* item) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(item, atoms, true);
    return atoms;
}

std::vector<Surface*> surfaces() {
    std::vector<Surface*> found;
    for (Compound** item = space()->ChildBegin(); item != space()->ChildEnd(); ++item)
        if (auto* const surface = dynamic_cast<Surface*>(*item))
            found.push_back(surface);
    return found;
}

QStringList namesOf(const std::vector<Surface*>& surfaces) {
    QStringList names;
    for (const Surface* surface : surfaces)
        names << QString::fromLatin1(surface->GetName());
    return names;
}

double areaOf(const SurfaceMesh& mesh) {
    double area = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        std::array<double, 3> u{};
        std::array<double, 3> v{};
        for (std::size_t i = 0; i != 3; ++i) {
            u[i] = double{mesh.vertices[b][i]} - mesh.vertices[a][i];
            v[i] = double{mesh.vertices[c][i]} - mesh.vertices[a][i];
        }
        area += std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                           u[0] * v[1] - u[1] * v[0]) /
                2;
    }
    return area;
}

std::optional<double> areaIn(const QString& message) {
    static const QRegularExpression number(QStringLiteral("([0-9.,]+) Å²"));
    const QRegularExpressionMatch match = number.match(message);
    if (!match.hasMatch())
        return {};
    return match.captured(1).remove(u',').toDouble();
}

void CommandCase::init() {
    TestCase::init();
    m_said.clear();
    m_updates = m_additions = m_deletions = 0;
}

QStringList CommandCase::command(const std::function<void()>& run) {
    m_said.clear();
    takeHostLog();
    memory_host::setLogLevel(memory_host::LogLevel::Debug);
    run();
    memory_host::setLogLevel(memory_host::LogLevel::Usual);
    // The log has the labels of changes, and what was said, in UTF-8.
    m_labels = takeHostLog();
    for (const QString& text : std::as_const(m_said))
        m_labels.removeOne(QString::fromLatin1(text.toUtf8()));
    return m_said;
}

void CommandCase::refuses(const std::function<void()>& run, const QString& line) {
    const std::vector<Compound*> before(space()->ChildBegin(), space()->ChildEnd());
    const int changes = m_updates + m_additions + m_deletions;
    QCOMPARE(command(run), QStringList(line));
    QCOMPARE(std::vector<Compound*>(space()->ChildBegin(), space()->ChildEnd()), before);
    QCOMPARE(m_updates + m_additions + m_deletions, changes);
    QVERIFY(memory_host::checkInvariants().empty());
}

} // namespace command_case
