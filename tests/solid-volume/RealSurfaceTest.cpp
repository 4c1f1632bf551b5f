// Surfaces of real structures: areas against an independent program, and closed meshes.
#include "LatticeTopology.h"
#include "RealBalls.h"
#include "SurfaceChecks.h"
#include "TestSupport.h"
#include "mesh/BallUnion.h"
#include "mesh/Creases.h"
#include "mesh/ExcludedSolid.h"
#include "mesh/ExposedArea.h"
#include "mesh/Vectors.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <map>
#include <numeric>

using solid::Ball;
using solid::Mesh;
using solid::vectorOf;
using surface_checks::ballsOf;
using surface_checks::isWholeProof;
using surface_checks::isWithin;
using surface_checks::oneByOne;
using surface_checks::problemWith;
using surface_checks::topologyOf;

namespace {

/// As a PDB file whose occupancies are the radii. Coordinates have three decimals.
void writeBalls(const std::vector<Ball>& balls, const QString& path) {
    QFile file(path);
    if (!file.open(QFile::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
    int serial = 0;
    for (const Ball& ball : balls) {
        file.write(QString::asprintf("ATOM  %5d  C   ALA A%4d    %8.3f%8.3f%8.3f%6.2f%6.2f\n",
                                     serial % 100'000, 1 + serial / 20 % 9999,
                                     double(ball.centre[0]), double(ball.centre[1]),
                                     double(ball.centre[2]), double(ball.radius), 0.0)
                       .toLatin1());
        ++serial;
    }
}

/// By freesasa, 200 slices an atom; Å².
double independentArea(const std::vector<Ball>& balls, double probe) {
    const QTemporaryDir folder;
    const QString path = folder.filePath("balls.pdb");
    writeBalls(balls, path);
    QProcess program;
    program.start("freesasa", {"--lee-richards", "--resolution=200", "--radius-from-occupancy",
                               "--probe-radius=" + QString::number(probe), "--no-warnings", path});
    if (!program.waitForFinished(1'000'000) || program.exitCode() != 0)
        qFatal("freesasa: %s", program.readAllStandardError().constData());
    const QRegularExpression total("Total\\s*:\\s*([0-9.]+)");
    return total.match(program.readAllStandardOutput()).captured(1).toDouble();
}

double area(const std::vector<Ball>& balls, double step, double probe) {
    const std::vector<double> areas = exposedAreas(balls, probe, step, oneByOne());
    return std::accumulate(areas.begin(), areas.end(), 0.0);
}

void addFiles() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<std::size_t>("atoms");
    QTest::newRow("1ubq") << "1ubq.pdb" << std::size_t(602);
    QTest::newRow("1cbs") << "1cbs.cif.gz" << std::size_t(1113);
    QTest::newRow("the middle of 1tii") << "1tii.pdb" << std::size_t(1000);
    QTest::newRow("the middle of 6zu5") << "6zu5.cif" << std::size_t(1500);
    if (isWholeProof()) {
        QTest::newRow("1tii") << "1tii.pdb" << std::size_t(5469);
        QTest::newRow("6zu5") << "6zu5.cif" << std::size_t(165'175);
    }
}

/// The balls of a file that are nearest to their mean.
std::vector<Ball> middleOf(const QString& path, std::size_t count) {
    static std::map<QString, std::vector<Ball>> known; // nearest first
    std::vector<Ball>& balls = known[path];
    if (balls.empty()) {
        balls = ballsOf(path.toStdString());
        solid::Vector mean;
        for (const Ball& ball : balls)
            mean = mean + vectorOf(ball.centre) * (1 / static_cast<double>(balls.size()));
        std::stable_sort(balls.begin(), balls.end(), [&](const Ball& a, const Ball& b) {
            return length(vectorOf(a.centre) - mean) < length(vectorOf(b.centre) - mean);
        });
    }
    return {balls.data(), balls.data() + std::min(balls.size(), count)};
}

} // namespace

class RealSurfaceTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void areasAreThoseOfAnIndependentProgram_data() { addFiles(); }
    void areasAreThoseOfAnIndependentProgram() {
        QFETCH(QString, file);
        QFETCH(std::size_t, atoms);
        if (QStandardPaths::findExecutable("freesasa").isEmpty())
            QSKIP("the program freesasa is not installed");
        const std::vector<Ball> balls = middleOf(structure(file), atoms);
        QCOMPARE(balls.size(), atoms);
        const double vdw = independentArea(balls, 1e-5); // 0 is refused
        QVERIFY(isWithin(area(balls, 0.5, 0), vdw, 0.005));
        QVERIFY(isWithin(area(balls, 0.25, 0), vdw, 0.002));
        const double accessible = independentArea(balls, 1.4);
        QVERIFY(isWithin(area(balls, 0.5, 1.4), accessible, 0.005));
        QVERIFY(isWithin(area(balls, 0.25, 1.4), accessible, 0.002));
    }

    void meshesAreClosed_data() { addFiles(); }
    void meshesAreClosed() {
        QFETCH(QString, file);
        QFETCH(std::size_t, atoms);
        const std::vector<Ball> balls = middleOf(structure(file), atoms);
        const double step = balls.size() > 10'000 ? 1 : 0.5;
        for (const double margin : {0.0, 1.4}) {
            const solid::BallUnion solid(balls, step, margin);
            const surface_checks::Topology expected = topologyOf(solid);
            Mesh mesh = polygonize(solid, oneByOne());
            QVERIFY(topologyOf(mesh) == expected);
            std::vector<Ball> grown = balls;
            for (Ball& ball : grown)
                ball.radius += static_cast<float>(margin);
            divideAtCreases(mesh, grown);
            QCOMPARE(problemWith(mesh), std::string());
            QVERIFY(topologyOf(mesh) == expected);
        }
        const solid::ExcludedSolid solid(balls, step, 1.4, oneByOne());
        const Mesh mesh = polygonize(solid, oneByOne());
        QCOMPARE(problemWith(mesh), std::string());
        QVERIFY(topologyOf(mesh) == topologyOf(solid));
    }

    // No closed form is known; steps of an eighth of an Å stand for it.
    void theExcludedAreaIsThatOfAFineMesh() {
        const std::vector<Ball> balls = ballsOf(structure("1ubq.pdb").toStdString());
        const auto excluded = [&](double step) {
            return polygonize(solid::ExcludedSolid(balls, step, 1.4, oneByOne()), oneByOne()).area;
        };
        const double fine = excluded(isWholeProof() ? 0.1 : 0.125);
        QVERIFY(isWithin(excluded(1), fine, 0.02));
        QVERIFY(isWithin(excluded(0.5), fine, 0.005));
        QVERIFY(isWithin(excluded(0.25), fine, 0.002));
    }
};

REGISTER_TEST(RealSurfaceTest)
#include "RealSurfaceTest.moc"
