// The command that cuts a part out of a surface.
#include "CommandCase.h"
#include "SubSurface.h"
#include "SurfaceChecks.h"

#include <limits>

using namespace command_case;
using surface_checks::isWithin;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr std::uint32_t red = 0xffff0000U;
constexpr std::uint32_t blue = 0xff0000ffU;

std::function<void()> above(double limit) {
    return [limit] { solid::addSubSurface(limit); };
}

/// A square of 10 Å in steps of 1 Å. The value at each vertex is its x, and so is its colour, from
/// red to blue; the nearest atom is 1 left of the middle, and 2 right of it.
SurfaceMesh square() {
    SurfaceMesh mesh;
    mesh.scale = TAVIK::ValueScale{"Potential (kT/e)", 0, 10, {red, blue}};
    for (std::uint32_t y = 0; y != 11; ++y)
        for (std::uint32_t x = 0; x != 11; ++x) {
            mesh.vertices.push_back({float(x), float(y), 0});
            mesh.normals.push_back({0, 0, 1});
            mesh.values.push_back(float(x));
            mesh.colors.push_back(0xff000000U | (250 - 25 * x) << 16U | 25 * x);
            mesh.atoms.push_back(x < 5 ? 1 : 2);
            const std::uint32_t at = y * 11 + x;
            if (x != 10 && y != 10) {
                mesh.triangles.push_back({at, at + 1, at + 12});
                mesh.triangles.push_back({at, at + 12, at + 11});
            }
        }
    return mesh;
}

Surface* addSquare(const std::string& name = "square", const SurfaceMesh& mesh = square()) {
    return TAVIK::DataMaker::makeSurface(space(), name, mesh);
}

const SurfaceMesh& part() {
    return *TAVIK::GetSurfaceMesh(surfaces().back());
}

const QString noSurface = QStringLiteral(
    "Part of a surface: nothing is made: no surface with values is selected or shown");
} // namespace

class SurfacePartsTest : public CommandCase {
    Q_OBJECT
private slots:
    void trianglesAreCutAtTheLimit() {
        addSquare();
        const QStringList said = command(above(2.25));
        QCOMPARE(said, QStringList("Part of square from 2.25 on: 77.5 Å²"));
        QCOMPARE(m_labels, QStringList("Add Part of a surface"));
        QCOMPARE(m_additions, 1);
        QCOMPARE(namesOf(surfaces()), QStringList({"square", "square from 2.25"}));
        QVERIFY(isWithin(areaOf(part()), 77.5, 1e-5));
        for (const auto& vertex : part().vertices)
            QVERIFY(vertex[0] >= 2.2499F);
    }

    void aPartOfAKnownAreaHasItsShareOfThat() {
        SurfaceMesh mesh = square();
        mesh.area = 110; // for the 100 Å² of its triangles
        addSquare("square", mesh);
        QCOMPARE(command(above(5)), QStringList("Part of square from 5 on: 55.0 Å²"));
        QVERIFY(part().area && isWithin(*part().area, 55, 1e-5));
        QCOMPARE(command(above(-1)), QStringList("Part of square from -1 on: 110.0 Å²"));
    }

    void valuesScaleColoursAndAtomsAreThoseOfThePlace() {
        addSquare();
        command(above(2.25));
        const SurfaceMesh& mesh = part();
        QVERIFY(mesh.scale == square().scale);
        QCOMPARE(mesh.values.size(), mesh.vertices.size());
        QCOMPARE(mesh.atoms.size(), mesh.vertices.size());
        QCOMPARE(mesh.colors.size(), mesh.vertices.size());
        for (std::size_t i = 0; i != mesh.vertices.size(); ++i) {
            const float x = mesh.vertices[i][0];
            QVERIFY(std::abs(mesh.values[i] - x) < 1e-5F);
            QCOMPARE(mesh.atoms[i], x < 5 ? 1U : 2U);
            QVERIFY(std::abs(float(mesh.colors[i] & 0xffU) - 25 * x) <= 0.51F);
            QVERIFY(std::abs(float(mesh.colors[i] >> 16U & 0xffU) - (250 - 25 * x)) <= 0.51F);
            QCOMPARE(mesh.colors[i] >> 24U, 0xffU);
        }
        QVERIFY(TAVIK::HasDefaultColor(surfaces().back()));
    }

    void theSurfaceItselfStaysAsItIs() {
        addSquare()->SetColor(Color(blue));
        command(above(5));
        QVERIFY(*TAVIK::GetSurfaceMesh(surfaces().front()) == square());
        QCOMPARE(surfaces().back()->GetColor().rgba(), blue);
    }

    void whatASurfaceLacksItsPartLacksToo() {
        SurfaceMesh plain = square();
        plain.colors.clear();
        plain.atoms.clear();
        plain.scale.reset();
        addSquare("plain", plain);
        command(above(5));
        QVERIFY(part().colors.empty() && part().atoms.empty() && !part().scale);
        QVERIFY(!part().values.empty());
    }

    void missingValuesAreNeverAboveALimit() {
        SurfaceMesh mesh = square();
        for (std::size_t i = 0; i != mesh.values.size(); ++i)
            if (mesh.vertices[i][1] > 6)
                mesh.values[i] = notANumber;
        addSquare("holes", mesh);
        for (const double limit : {2.0, -1e300}) {
            QCOMPARE(command(above(limit)).size(), 1);
            for (const auto& vertex : part().vertices)
                QVERIFY(vertex[1] <= 6);
            for (const float value : part().values)
                QVERIFY(std::isfinite(value));
            QVERIFY(isWithin(areaOf(part()), limit > 0 ? 48 : 60, 1e-5));
        }
    }

    void theSelectedSurfaceElseTheFirstThatIsShown() {
        addSquare("a")->SetVisible(false);
        Surface* const b = addSquare("b");
        TAVIK::DataMaker::makeSurface(space(), "no values", {})->SetSelected(true);
        command(above(5));
        QCOMPARE(namesOf(surfaces()).last(), QString("b from 5"));
        b->SetVisible(false);
        surfaces().back()->SetVisible(false);
        surfaces().front()->SetSelected(true);
        command(above(5));
        QCOMPARE(namesOf(surfaces()).last(), QString("a from 5"));
    }

    void aPartOfAPartCanBeMade() {
        addSquare();
        command(above(2));
        surfaces().back()->SetSelected(true);
        command(above(8));
        QCOMPARE(namesOf(surfaces()).last(), QString("square from 2 from 8"));
        QVERIFY(isWithin(areaOf(part()), 20, 1e-5));
    }

    void withoutASurfaceWithValuesThereIsNone() {
        refuses(above(0), noSurface);
        SurfaceMesh mesh = square();
        mesh.values.clear();
        mesh.scale.reset();
        addSquare("plain", mesh);
        TAVIK::DataMaker::makeCore(space(), "empty", "Surface");
        addSquare("hidden")->SetVisible(false);
        refuses(above(0), noSurface);
    }

    void limitsThatNoValueReachesOrThatAreNoNumberAreSaid() {
        addSquare();
        for (const auto& [limit, words] :
             {std::pair(10.5, "10.5"), std::pair(1e38, "1e+38"), std::pair(1e300, "1e+300")})
            refuses(above(limit), QStringLiteral("Part of a surface: nothing is made: no value on "
                                                 "square reaches ") +
                                      words);
        const double infinite = std::numeric_limits<double>::infinity();
        for (const double limit : {double(notANumber), infinite, -infinite})
            refuses(above(limit), "Part of a surface: nothing is made: the limit is no number");
        // All of it is a part, too.
        for (const double limit : {0.0, -1e300}) {
            command(above(limit));
            QVERIFY(isWithin(areaOf(part()), 100, 1e-5));
            QCOMPARE(part().vertices.size(), square().vertices.size());
            surfaces().back()->SetVisible(false);
        }
    }
};

REGISTER_TEST(SurfacePartsTest)
#include "SurfacePartsTest.moc"
