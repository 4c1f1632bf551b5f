// Names of entries: two that are open at the same time can be told apart.
#include "files/EntryNames.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "ItemOrigin.h"
#include "Space.h"
#include "Traversal.h"
#include "items/Building.h"

#include <QRegularExpression>

using namespace file_testing;
using TAVIK::Compound;

class EntryNamesTest : public FileTestCase {
    Q_OBJECT

    static QStringList entries() { return childNames(TAVIK::Space::instance()); }
    static void destroy(const QString& name) {
        const DataPointBase guard(nullptr, Publisher::Delete);
        TAVIK::DataMaker::Destroy(item("/" + name));
    }
    static QByteArray twoModels() {
        const QByteArray atom = atomAt(" CA ", 0);
        return "MODEL        1\n" + atom + "ENDMDL\nMODEL        2\n" + atom + "ENDMDL\n";
    }

private slots:
    void theSecondEntryOfANameGetsANumber() {
        for (int i = 0; i != 3; ++i)
            QCOMPARE(opened(structure("1ubq.pdb").toStdString()).items.size(), 1U);
        QCOMPARE(entries(), QStringList({"1ubq", "1ubq-2", "1ubq-3"}));
        // Atoms are called by the new name, too.
        QVERIFY(item("/1ubq-2/A/Groups/MET 1"));
    }

    void filesOfOneNameInTwoFoldersAreToldApart() {
        const Folder other;
        const QByteArray atom = atomAt(" CA ", 0);
        const std::string here = m_folder.write("same.pdb", atom);
        const std::string there =
            other.write("same.cif", mmcif({"CA C . ALA A 1 ? 1 2 3 1"}, "same"));
        const Compound* first = opened(here).items.at(0);
        const Compound* second = opened(there).items.at(0);
        QCOMPARE(entries(), QStringList({"same", "same-2"}));
        QCOMPARE(TAVIK::OriginOf(first).toStdString(), here);
        QCOMPARE(TAVIK::OriginOf(second).toStdString(), there);
    }

    void allModelsOfTheSecondOpeningGetTheSameNumber() {
        openText(twoModels());
        openText(twoModels());
        QCOMPARE(entries(), QStringList({"test.1", "test.2", "test-2.1", "test-2.2"}));
        // One taken name is enough.
        destroy("test.1");
        destroy("test-2.2");
        openText(twoModels());
        QCOMPARE(entries(), QStringList({"test.2", "test-2.1", "test-3.1", "test-3.2"}));
    }

    void aNameThatIsFreeAgainIsGivenAgain() {
        const QByteArray atom = atomAt(" CA ", 0);
        openText(atom);
        openText(atom);
        destroy("test");
        openText(atom);
        QCOMPARE(entries(), QStringList({"test-2", "test"}));
    }

    void aNumberThatAnotherEntryIsCalledByIsPassedOver() {
        const QByteArray atom = atomAt(" CA ", 0);
        openText(atom, {}, "a-2.pdb");
        openText(atom, {}, "a.pdb");
        openText(atom, {}, "a.pdb");
        openText(atom, {}, "a-2.pdb");
        QCOMPARE(entries(), QStringList({"a-2", "a", "a-3", "a-2-2"}));
    }

    void itemsThatWereNotReadFromFilesCountAsWell() {
        TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "test", "Surface");
        openText(atomAt(" CA ", 0));
        QCOMPARE(entries(), QStringList({"test", "test-2"}));
    }

    void blocksOfOneNameInOneFileAreToldApart() {
        const QByteArray block = mmcif({"CA C . ALA A 1 ? 1 2 3 1"}, "twin");
        openText(block + block, {}, "twins.cif");
        QCOMPARE(entries(), QStringList({"twin", "twin-2"}));
    }

    void manyBlocksOfOneNameAreNumberedWithoutStartingAgain() {
        memory_host::EntryNames names;
        constexpr std::size_t count = 1000;
        const std::vector<std::string> single = {""};
        const std::vector<std::string> pair = {".1", ".2"};
        for (std::size_t i = 0; i != count; ++i) {
            names.take("twin", single);
            names.take("twin-2", single);
            names.take("twin", pair);
        }
        // Each asks for its plain name, and then goes on where the last one stopped.
        QVERIFY2(names.lookUps() <= 10 * count, std::to_string(names.lookUps()).c_str());
    }

    void manyModelsAreNotLookedUpAgainForEachNumber() {
        memory_host::EntryNames names;
        constexpr std::size_t count = 1000;
        std::vector<std::string> models;
        for (std::size_t i = 1; i <= count; ++i) {
            models.push_back('.' + std::to_string(i));
            names.take("a-" + std::to_string(i + 1) + '.' + std::to_string(count), {""});
        }
        names.take("a", models);
        QCOMPARE(names.take("a", models).back(),
                 "a-" + std::to_string(count + 2) + '.' + std::to_string(count));
        QVERIFY2(names.lookUps() <= 10 * count, std::to_string(names.lookUps()).c_str());
    }

    // A long name, said once, is the name of each model.
    void aLongNameOfABlockIsCut() {
        const QByteArray name(5000, 'n');
        QStringList rows;
        for (int model = 1; model <= 3; ++model)
            rows << QString("CA C . ALA A 1 ? 1 2 3 %1").arg(model);
        const QString cut(255, 'n');
        openText(mmcif(rows, name),
                 {path("long.cif") + ": the name \"" + cut.left(40) +
                  " ...\" of an entry has 5000 characters, and was cut after 255; accepted are "
                  "names of up to as many"},
                 "long.cif");
        QCOMPARE(entries(), QStringList({cut + ".1", cut + ".2", cut + ".3"}));
    }

    void anEntryAndAMapOfOneNameAreToldApart() {
        openText(atomAt(" CA ", 0), {}, "1jzv.pdb");
        const Compound* map = opened(structure("1jzv.ccp4").toStdString()).items.at(0);
        QCOMPARE(entries(), QStringList({"1jzv", "1jzv-2"}));
        QCOMPARE(TAVIK::OriginOf(map), structure("1jzv.ccp4"));
    }

    // What stands in a name goes into expressions as it is.
    void theNumberMeansItselfInAPattern() {
        openText(atomAt(" CA ", 0));
        openText(atomAt(" CA ", 0));
        const QString name = entries().at(1);
        QVERIFY(QRegularExpression("^" + name + "$").match(name).hasMatch());
        QVERIFY(!QRegularExpression("^" + name + "$").match(entries().at(0)).hasMatch());
    }
};

REGISTER_TEST(EntryNamesTest)
#include "EntryNamesTest.moc"
