// Radii of united atoms, against the configuration that comes with FreeSASA.
#include "Radii.h"
#include "TestSupport.h"

#include <QFile>
#include <QMap>
#include <QStringList>

using solid::hasUnitedAtoms;
using solid::unitedAtomRadius;

namespace {

float radiusOf(const QStringList& atom) {
    return unitedAtomRadius(atom[0].toStdString(), atom[1].toStdString());
}

} // namespace

class RadiiTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void theyAreThoseOfTheProtOrConfiguration() {
        QFile file(QStringLiteral("/usr/share/freesasa/protor.config"));
        if (!file.open(QIODevice::ReadOnly))
            QSKIP("the package freesasa is not installed");
        QMap<QString, float> types;
        int compared = 0;
        bool areTypes = true;
        while (!file.atEnd()) {
            const QString line =
                QString::fromUtf8(file.readLine()).section(u'#', 0, 0).simplified();
            const QStringList words = line.split(u' ');
            areTypes = areTypes && line != QLatin1String("atoms:");
            if (words.size() != 3)
                continue;
            if (areTypes) {
                types[words[0]] = words[1].toFloat();
                continue;
            }
            // Waters have a radius by their element, an undecided N or O of ASX and GLX too; and
            // the C of a cap is that of a peptide bond, not of an aldehyde.
            if (words[0] == "HOH" || words[1].startsWith(u'X') || line == "ACE C C3H1")
                continue;
            QVERIFY2(hasUnitedAtoms(words[0].toStdString()), qPrintable(line));
            QVERIFY2(types.contains(words[2]), qPrintable(line));
            QVERIFY2(radiusOf(words) == types[words[2]], qPrintable(line));
            ++compared;
        }
        QVERIFY(compared > 450);
    }

    void atomsOfEachKindHaveThePublishedRadius_data() {
        QTest::addColumn<float>("radius");
        QTest::addColumn<QStringList>("atoms");
        const auto row = [](const char* kind, float radius, const QStringList& atoms) {
            QTest::newRow(kind) << radius << atoms;
        };
        row("C3H0", 1.61F, {"ALA C", "ARG CZ", "PHE CG", "TRP CE2", "G C2", "DT C5"});
        row("C3H1", 1.76F, {"HIS CE1", "PHE CZ", "TRP CH2", "A C8", "DA C2", "U C6"});
        row("C4", 1.88F, {"ALA CA", "GLY CA", "LEU CD1", "DT C7", "A C1'", "A C5*", "ACE CH3"});
        row("N", 1.64F, {"LYS NZ", "PRO N", "HIS ND1", "DG N7", "NH2 N"});
        row("O1H0", 1.42F, {"ALA O", "ASP OD1", "GLU OE1", "U O4", "A OP1", "A O1P"});
        row("O2", 1.46F, {"SER OG", "TYR OH", "ASP OD2", "ALA OXT", "A O2'", "A OP2", "A O2P"});
        row("S", 1.77F, {"CYS SG", "MET SD"});
        row("Se", 1.90F, {"MSE SE", "SEC SE"});
        row("P", 1.80F, {"A P", "DT P"});
        row("none", 0.0F, {"HEM CHA", "HOH O", "GLY XYZ", "ASX XD1", "CU CU"});
    }
    void atomsOfEachKindHaveThePublishedRadius() {
        QFETCH(float, radius);
        QFETCH(QStringList, atoms);
        for (const QString& atom : atoms)
            QVERIFY2(radiusOf(atom.split(u' ')) == radius, qPrintable(atom));
    }

    void whatHasNoNameHasNoRadius() {
        QCOMPARE(unitedAtomRadius("ALA", ""), 0.0F);
        QCOMPARE(unitedAtomRadius("", "CA"), 0.0F);
        QVERIFY(!hasUnitedAtoms(""));
        QVERIFY(!hasUnitedAtoms("AL"));
    }
};

REGISTER_TEST(RadiiTest)
#include "RadiiTest.moc"
