// Surfaces that take the colours of their atoms again.
#include "AtomColors.h"
#include "CommandCase.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "Surfaces.h"
#include "items/SpaceLock.h"

#include <set>

using namespace command_case;

namespace {

constexpr std::uint32_t red = 0xffff0000U;
constexpr std::uint32_t green = 0xff00ff00U;

void addSurfaces() {
    solid::addAtomSurfaces(solid::SurfaceKind::VanDerWaals);
}
void colorByAtoms() {
    solid::colorSurfacesByAtoms();
}
std::set<std::uint32_t> colorsOf(const Surface* surface) {
    const auto& colors = TAVIK::GetSurfaceMesh(surface)->colors;
    return {colors.begin(), colors.end()};
}
void colorAtoms(Compound* entry, std::uint32_t rgba) {
    for (Compound* atom : atomsIn(entry))
        atom->SetColor(Color(rgba));
}
const QString one = QStringLiteral("One surface has the colours of its atoms");
const QString none = QStringLiteral("No surface of atoms is selected or shown");

} // namespace

class AtomColorsTest : public CommandCase {
    Q_OBJECT
private slots:
    void aSurfaceFollowsItsAtomsOnRequest() {
        Compound* const entry = addCopper();
        command(addSurfaces);
        const std::set<std::uint32_t> before = colorsOf(surfaces()[0]);
        colorAtoms(entry, red);
        QCOMPARE(colorsOf(surfaces()[0]), before);
        const SurfaceMesh mesh = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        m_additions = 0;
        QCOMPARE(command(colorByAtoms), QStringList(one));
        QCOMPARE(m_labels, QStringList("Color surfaces by atoms"));
        QCOMPARE(colorsOf(surfaces()[0]), std::set<std::uint32_t>{red});
        QCOMPARE(m_updates, 1);
        QCOMPARE(m_additions + m_deletions, 0);
        SurfaceMesh expected = mesh;
        expected.colors.assign(mesh.vertices.size(), red);
        QVERIFY(*TAVIK::GetSurfaceMesh(surfaces()[0]) == expected);
    }

    void eachVertexTakesTheColourOfItsOwnAtom() {
        Compound* const entry =
            addEntry("one", "CU 1", {{"CU", "Cu", {0, 0, 0}}, {"CU2", "Cu", {2, 0, 0}}});
        command(addSurfaces);
        atomsIn(entry)[0]->SetColor(Color(red));
        atomsIn(entry)[1]->SetColor(Color(green));
        command(colorByAtoms);
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i)
            if (std::abs(mesh.vertices[i][0] - 1) > 0.01F)
                QCOMPARE(mesh.colors[i], mesh.vertices[i][0] < 1 ? red : green);
    }

    void theSelectedSurfacesElseAllThatAreShown() {
        Compound* const a = addCopper("a");
        Compound* const b = addCopper("b", {9, 0, 0});
        Compound* const c = addCopper("c", {18, 0, 0});
        command(addSurfaces);
        for (Compound* entry : {a, b, c})
            colorAtoms(entry, red);
        surfaces()[0]->SetSelected(true);
        QCOMPARE(command(colorByAtoms), QStringList(one));
        QCOMPARE(colorsOf(surfaces()[0]), std::set<std::uint32_t>{red});
        QVERIFY(colorsOf(surfaces()[1]) != std::set<std::uint32_t>{red});
        surfaces()[0]->SetSelected(false);
        surfaces()[2]->SetVisible(false);
        QCOMPARE(command(colorByAtoms), QStringList("2 surfaces have the colours of their atoms"));
        QCOMPARE(colorsOf(surfaces()[1]), std::set<std::uint32_t>{red});
        QVERIFY(colorsOf(surfaces()[2]) != std::set<std::uint32_t>{red});
        QCOMPARE(m_updates, 2); // one change each time
    }

    void aColourOfItsOwnGivesWay() {
        addCopper();
        command(addSurfaces);
        surfaces()[0]->SetColor(Color(green));
        QVERIFY(!TAVIK::HasDefaultColor(surfaces()[0]));
        command(colorByAtoms);
        QVERIFY(TAVIK::HasDefaultColor(surfaces()[0]));
    }

    void valuesStayAndTheirScaleGoes() {
        Compound* const entry = addCopper();
        command(addSurfaces);
        SurfaceMesh mesh = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        mesh.values.assign(mesh.vertices.size(), 2.5F);
        mesh.scale = TAVIK::ValueScale{"Potential (kT/e)", -5, 5, {red, green}};
        mesh.colors.assign(mesh.vertices.size(), green);
        TAVIK::SetSurfaceMesh(surfaces()[0], mesh);
        colorAtoms(entry, red);
        command(colorByAtoms);
        const SurfaceMesh& now = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        QVERIFY(!now.scale);
        QCOMPARE(now.values, mesh.values);
        QCOMPARE(colorsOf(surfaces()[0]), std::set<std::uint32_t>{red});
    }

    void whereAnAtomIsGoneTheColourStays() {
        Compound* const entry =
            addEntry("one", "CU 1", {{"CU", "Cu", {0, 0, 0}}, {"CU2", "Cu", {60, 0, 0}}});
        colorAtoms(entry, green);
        command(addSurfaces);
        colorAtoms(entry, red);
        TAVIK::DataMaker::Destroy(atomsIn(entry)[0]);
        addCopper("later"); // with an identifier of its own
        command(colorByAtoms);
        const SurfaceMesh& mesh = *TAVIK::GetSurfaceMesh(surfaces()[0]);
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i)
            QCOMPARE(mesh.colors[i], mesh.vertices[i][0] < 30 ? green : red);
        // What showed a value says nothing of an atom.
        SurfaceMesh valued = mesh;
        valued.values.assign(mesh.vertices.size(), 1);
        valued.scale = TAVIK::ValueScale{"Potential (kT/e)", -5, 5, {red, green}};
        TAVIK::SetSurfaceMesh(surfaces()[0], valued);
        command(colorByAtoms);
        QCOMPARE(colorsOf(surfaces()[0]), (std::set<std::uint32_t>{0xffffffffU, red}));
    }

    void entriesMayHaveBeenOpenedInAnyOrder() {
        Compound* const late = addEntry("late", "CU 1", {});
        Compound* const early = addCopper("early", {9, 0, 0});
        TAVIK::DataMaker::makeAtom(*(*late->ChildBegin())->ChildBegin(),
                                   {"CU", "Cu", TAVIK::Vertex(0, 0, 0, true)});
        QVERIFY(atomsIn(late)[0]->GetId() > atomsIn(early)[0]->GetId());
        command(addSurfaces);
        colorAtoms(late, red);
        colorAtoms(early, green);
        command(colorByAtoms);
        QCOMPARE(colorsOf(surfaces()[0]), std::set<std::uint32_t>{red});
        QCOMPARE(colorsOf(surfaces()[1]), std::set<std::uint32_t>{green});
    }

    void withoutASurfaceOfAtomsNothingHappens() {
        refuses(colorByAtoms, none);
        addCopper();
        refuses(colorByAtoms, none);
        // Contours have no atoms; some surfaces have no mesh.
        SurfaceMesh bare;
        bare.vertices = {{0, 0, 0}};
        bare.normals = {{0, 0, 1}};
        Surface* const contour = TAVIK::DataMaker::makeSurface(space(), "contour", bare);
        contour->SetColor(Color(green));
        TAVIK::DataMaker::makeCore(space(), "empty", "Surface");
        refuses(colorByAtoms, none);
        QVERIFY(!TAVIK::HasDefaultColor(contour));
        command(addSurfaces);
        contour->SetSelected(true);
        refuses(colorByAtoms, none);
        surfaces().back()->SetVisible(false);
        contour->SetSelected(false);
        refuses(colorByAtoms, none);
    }

    void whileOthersChangeTheDataColoursStay() {
        Compound* const entry = addCopper();
        command(addSurfaces);
        colorAtoms(entry, red);
        const QString line =
            QStringLiteral("Surfaces keep their colours: another change of the data is under way");
        {
            const memory_host::SpaceLock lock;
            refuses(colorByAtoms, line);
        }
        QVERIFY(colorsOf(surfaces()[0]) != std::set<std::uint32_t>{red});
        const DataPointBase guard(nullptr, Publisher::Update);
        QCOMPARE(command(colorByAtoms), QStringList(line));
        QVERIFY(colorsOf(surfaces()[0]) != std::set<std::uint32_t>{red});
    }

    void memoryThatEndsChangesAllOrNothing() {
        Compound* const a = addCopper("a");
        Compound* const b = addCopper("b", {9, 0, 0});
        command(addSurfaces);
        const std::set<std::uint32_t> before = colorsOf(surfaces()[0]);
        colorAtoms(a, red);
        colorAtoms(b, red);
        int refusals = 0;
        int failed = 0;
        for (int granted = 0; granted == 0 || refusals > 0; ++granted) {
            QStringList said = command([&] {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                try {
                    colorByAtoms();
                } catch (const std::bad_alloc&) {
                }
                refusals = FailingMemory::refusals();
            });
            QCOMPARE(colorsOf(surfaces()[0]), colorsOf(surfaces()[1]));
            const bool isDone = colorsOf(surfaces()[0]) != before;
            said.removeAll("Color surfaces by atoms: not done, as memory is short");
            failed += isDone ? 0 : 1;
            if (!isDone && !said.isEmpty())
                QCOMPARE(said,
                         QStringList("Surfaces keep their colours: there is not enough memory"));
            if (isDone && refusals > 0) { // back to the start
                for (Surface* surface : surfaces())
                    TAVIK::SetSurfaceColors(
                        surface, std::vector(TAVIK::GetSurfaceMesh(surface)->vertices.size(),
                                             *before.begin()));
            }
        }
        QVERIFY(failed > 3);
        QCOMPARE(colorsOf(surfaces()[1]), std::set<std::uint32_t>{red});
    }
};

REGISTER_TEST(AtomColorsTest)
#include "AtomColorsTest.moc"
