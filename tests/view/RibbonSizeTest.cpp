// How many triangles ribbons have, and what they take in memory.
#include "RibbonTools.h"
#include "TestSupport.h"

using ribbon_tools::chain;
using ribbon_tools::meshOf;
using ribbon_tools::plainStyle;
using ribbon_tools::Residues;
using view::Mesh;
using view::RibbonStyle;

class RibbonSizeTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void largeStructuresHaveFewerTriangles() {
        for (const std::size_t count : {2'000U, 2'001U, 20'000U, 20'001U}) {
            const QByteArray helix(static_cast<qsizetype>(count), 'H');
            const Mesh mesh = meshOf(chain(helix), RibbonStyle::forResidues(count));
            const std::size_t most = count <= 2'000    ? 500'000
                                     : count <= 20'000 ? 1'000'000
                                                       : 350'000;
            QVERIFY2(mesh.triangles.size() <= most, qPrintable(QString::number(count)));
            QVERIFY(mesh.triangles.size() > 90'000);
        }
    }

    void aMeshTakesNoMoreMemoryThanItNeeds() {
        const Residues residues = chain("--EEEE--HHHHHH--");
        const auto isTight = [](const auto& array) { return array.capacity() == array.size(); };
        const view::Ribbon ribbon = view::makeRibbon(residues, plainStyle());
        const Mesh& mesh = ribbon.mesh;
        QVERIFY(isTight(mesh.vertices) && isTight(mesh.normals) && isTight(mesh.triangles) &&
                isTight(mesh.ids) && isTight(ribbon.cuts));
        QVERIFY(mesh.colours.empty());
    }
};

REGISTER_TEST(RibbonSizeTest)
#include "RibbonSizeTest.moc"
