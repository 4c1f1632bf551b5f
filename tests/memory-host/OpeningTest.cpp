// Opening a file of any kind: names, threads, guards and progress.
#include "DataPointBase.h"
#include "FileTestCase.h"
#include "Space.h"
#include "Subscriber.h"
#include "items/Building.h"
#include "items/SpaceLock.h"

#include <algorithm>
#include <thread>

using namespace file_testing;
using memory_host::FileError;
using memory_host::OpenedFile;
using TAVIK::Compound;

namespace {

class Listener : public Subscriber {
public:
    void commUpdate() override { calls << "update"; }
    void commAdd() override {
        calls << "add";
        seen = childNames(TAVIK::Space::instance());
    }
    void commDelete() override { calls << "delete"; }

    QStringList calls;
    QStringList seen;
};

} // namespace

class OpeningTest : public FileTestCase {
    Q_OBJECT

private slots:
    void anEntryHasTheNameOfItsHeaderOrElseOfItsFile() {
        const QByteArray atom = atomAt(" CA ", 0);
        const QByteArray header = QByteArray("HEADER").leftJustified(62);
        openText(header + "9XYZ\n" + atom, {}, "other.pdb");
        openText(header + "XXXX\n" + atom, {}, "Mine.v2.pdb");
        openText(atom, {}, "pdb1abc.ent");
        openText(atom, {}, "noending");
        openText(gzipped(atom), {}, "packed.pdb.gz");
        QCOMPARE(childNames(TAVIK::Space::instance()),
                 QStringList({"9xyz", "Mine.v2", "pdb1abc", "noending", "packed"}));
    }

    void contentDecidesWhereTheEndingIsWrong() {
        openText(atomAt(" CA ", 0), {}, "a.cif");
        openText(mmcif({"CA C . ALA A 1 ? 1 2 3 1"}), {}, "b.pdb");
        openText(atomAt(" CA ", 0), {}, "c.map");
        openText(gzipped(atomAt(" CA ", 0)), {}, "d.pdb");
        openText(atomAt(" CA ", 0), {}, "e.pdb.gz");
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList({"a", "test", "c", "d", "e"}));
    }

    void severalModelsBecomeSeveralEntries() {
        const OpenedFile file = opened(structure("1d3z.pdb").toStdString());
        QStringList expected;
        for (int model = 1; model <= 10; ++model)
            expected << "1d3z." + QString::number(model);
        QCOMPARE(childNames(TAVIK::Space::instance()), expected);
        for (Compound* model : file.items)
            QCOMPARE(atoms(model).size(), 1231U);
    }

    void aByteOrderMarkIsNoPartOfTheText() {
        openText("\xef\xbb\xbf" + atomAt(" N  ", 1));
        QCOMPARE(atoms(item("/test")).size(), 1U);
    }

    void gzippedFilesOfSeveralPartsAreRead() {
        openText(gzipped(atomAt(" N  ", 1)) + gzipped(atomAt(" CA ", 2)) + QByteArray(64, '\0'), {},
                 "test.pdb.gz");
        QCOMPARE(atoms(item("/test")).size(), 2U);
    }

    void manyOddLinesBecomeFewRemarks() {
        PdbAtom atom;
        atom.position = " ";
        QByteArray text = atomAt(" N  ", 1);
        for (int i = 0; i < 500; ++i)
            text += line(atom);
        const std::string file = m_folder.write("test.pdb", text);
        const OpenedFile result = memory_host::openFile(file);
        QCOMPARE(result.remarks.size(), 11U);
        QCOMPARE(result.remarks.back(), file + ": 490 more atoms without coordinates");
    }

    void openingIsToldOnceWhenEverythingIsThere() {
        Listener listener;
        opened(structure("1d3z.pdb").toStdString());
        QCOMPARE(listener.calls, QStringList("add"));
        QCOMPARE(listener.seen.size(), 10);
    }

    void nothingIsAddedWhileTheSpaceIsInUse() {
        openText(atomAt(" N  ", 1), {}, "first.pdb");
        const std::string file = m_folder.write("second.pdb", atomAt(" N  ", 1));
        {
            const memory_host::SpaceLock lock;
            QCOMPARE(refusal(file), QString::fromStdString(file) +
                                        ": the data space is in use, so that nothing can be added; "
                                        "accepted is trying again when the change in progress is "
                                        "done");
        }
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(guard.m_good);
        QVERIFY(refusal(file).contains("in use"));
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("first"));
    }

    void aParsedFileOpensOnce() {
        const auto file = memory_host::parseFile(m_folder.write("test.pdb", atomAt(" N  ", 1)));
        memory_host::openParsed(*file, {});
        try {
            memory_host::openParsed(*file, {});
            QFAIL("it was opened again");
        } catch (const FileError& error) {
            QVERIFY(QString::fromLatin1(error.what()).contains("was opened already"));
        }
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList("test"));
    }

    void filesAreParsedOnManyThreadsAtOnce() {
        const std::string path = structure("1ejg.pdb").toStdString();
        std::vector<memory_host::ParsedFilePtr> files(4);
        std::vector<std::thread> threads;
        for (memory_host::ParsedFilePtr& file : files)
            threads.emplace_back([&file, &path] { file = memory_host::parseFile(path); });
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList());
        std::vector<std::vector<std::string>> expected;
        for (memory_host::ParsedFilePtr& file : files) {
            const auto found = sortedAtoms(memory_host::openParsed(*file, {}).items);
            if (expected.empty())
                expected = found;
            QVERIFY(found == expected);
        }
    }

    void progressRisesAndIsToldOftenEnough() {
        const auto file = memory_host::parseFile(structure("1d3z.pdb").toStdString());
        std::vector<double> fractions;
        QStringList stages;
        memory_host::openParsed(*file, [&](const std::string& stage, double fraction) {
            fractions.push_back(fraction);
            stages << QString::fromStdString(stage);
        });
        QVERIFY(fractions.size() >= 5);
        QVERIFY(fractions.size() < 300);
        QVERIFY(std::is_sorted(fractions.begin(), fractions.end()));
        QVERIFY(fractions.front() >= 0.0 && fractions.back() <= 1.0 && fractions.back() > 0.7);
        stages.removeDuplicates();
        QCOMPARE(stages, QStringList("building the atoms"));
    }

    void anExceptionInTheProgressLeavesTheSpaceAsItWas() {
        const auto file = memory_host::parseFile(structure("1ubq.pdb").toStdString());
        QVERIFY_EXCEPTION_THROWN(
            memory_host::openParsed(
                *file, [](const std::string&, double) { throw std::runtime_error("stopped"); }),
            FileError);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList());
    }

    void whatIsNoErrorPassesThroughTheBuildingAsItIs() {
        struct Cancelled {};
        const auto file = memory_host::parseFile(structure("1ubq.pdb").toStdString());
        QVERIFY_EXCEPTION_THROWN(
            memory_host::openParsed(*file, [](const std::string&, double) { throw Cancelled(); }),
            Cancelled);
        QCOMPARE(childNames(TAVIK::Space::instance()), QStringList());
    }
};

REGISTER_TEST(OpeningTest)
#include "OpeningTest.moc"
