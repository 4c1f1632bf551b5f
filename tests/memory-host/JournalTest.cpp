// What a journal brings back, onto files that are opened again: all that a user could see.
#include "AtomDetails.h"
#include "DataLines.h"
#include "DataMaker.h"
#include "DataPointBase.h"
#include "History.h"
#include "ItemOrigin.h"
#include "JournalTestCase.h"
#include "Sample.h"
#include "files/Saving.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using namespace file_testing;
using namespace journal_testing;
using namespace memory_host;
using namespace TAVIK;
using test_support::comparableLines;
using test_support::firstDifference;

class JournalTest : public JournalTestCase {
    Q_OBJECT

private slots:
    void whatIsAsReadHasNoJournal() {
        gather();
        QVERIFY(!isJournalThere());
        openAll();
        gather();
        QVERIFY(!isJournalThere());
        change([] { atomAt(3)->SetSelected(true); });
        gather();
        QVERIFY(isJournalThere());
        QVERIFY(History::undo());
        gather();
        QVERIFY(!isJournalThere());
    }

    void eachKindOfChangeComesBack_data() {
        QTest::addColumn<std::size_t>("number");
        for (std::size_t i = 0; i != journalChanges().size(); ++i)
            QTest::newRow(journalChanges()[i].name.data()) << i;
    }
    void eachKindOfChangeComesBack() {
        QFETCH(const std::size_t, number);
        openAll();
        change(journalChanges()[number].change);
        comesBack();
    }

    void allChangesTogetherComeBackTwice() {
        openAll();
        for (const JournalChange& each : journalChanges())
            if (!each.isLast)
                change(each.change);
        comesBack();
        m_journal = JournalFolder::make(path("journal"));
        comesBack();
    }

    void whatIsBroughtBackIsOneStep() {
        openAll();
        change(changeOf("selection"));
        change([] { DataMaker::Destroy(residueAt(9)); });
        gather();
        clear();
        recover();
        QCOMPARE(History::undoable(1).front().label, std::string("Recovered changes"));
        const QStringList after = comparableLines();
        QVERIFY(History::undo());
        QCOMPARE(comparableLines().filter(" selected").size(), 0);
        QVERIFY(History::redo());
        QCOMPARE(firstDifference(comparableLines(), after), QString());
        QCOMPARE(faults(), QString());
    }

    void aFileThatWasSavedComesBackWithItsFirstText() {
        openAll();
        change([] {
            DataMaker::Destroy(residueAt(1));
            SetAtomPosition(atomAt(0), Vertex(1, 1, 1, true));
        });
        gather();
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        comesBack();
        change([] { DataMaker::Destroy(residueAt(1)); });
        QCOMPARE(unsaved(), QStringList("1ejg"));
        comesBack();
        // What comes back is saved as if nothing had happened.
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        QCOMPARE(unsaved(), QStringList());
    }

    void whatWasSavedAndTakenBackIsUnsaved() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        QVERIFY(History::undo());
        QCOMPARE(unsaved(), QStringList("1ejg"));
        comesBack();
    }

    // The file is neither as it was read nor as it is open.
    void aFileThatWasSavedIsUnsavedAlsoWhenAllIsTakenBack() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        change([] { DataMaker::Destroy(residueAt(1)); });
        for (int start = 0; start != 2; ++start) {
            comesBack();
            QVERIFY(History::undo());
            QCOMPARE(unsaved(), QStringList("1ejg"));
        }
        QVERIFY(History::redo());
        QCOMPARE(unsaved(), QStringList("1ejg"));
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb"));
        QCOMPARE(unsaved(), QStringList());
    }

    void aFileThatWasNotSavedIsAsReadWhenAllIsTakenBack() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        comesBack();
        QVERIFY(History::undo());
        QCOMPARE(unsaved(), QStringList());
    }

    void anEntryThatWasSavedAsAnotherFileComesBackInThat() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        saveFile(std::vector<Compound*>{item("/1ejg")}, path("other.cif"));
        change(changeOf("an entry without a file"));
        saveFile(std::vector<Compound*>{item("/made")}, path("made.pdb"));
        change([] { residueAt(2)->SetSelected(true); });
        comesBack();
    }

    void aFileWhoseEntriesAreClosedIsNotReplacedWithoutThem() {
        openAll();
        change([] {
            DataMaker::Destroy(space()->ChildBegin()[1]);
            DataMaker::Destroy(residueAt(1));
        });
        comesBack();
        QVERIFY_THROWS_EXCEPTION(
            SaveError,
            saveFile(std::vector<Compound*>{space()->ChildBegin()[1]}, path("models.pdb")));
        QVERIFY(!isUnsaved(space()->ChildBegin()[1]));
    }

    void aClosedEntryIsInItsFileWhenTheClosingIsTakenBack() {
        openAll();
        change([] { DataMaker::Destroy(space()->ChildBegin()[1]); });
        gather();
        clear();
        // The entry is read from the text in the journal.
        QVERIFY(QFile::remove(QString::fromStdString(path("models.pdb"))));
        recover();
        QVERIFY(History::undo());
        const Items entries = childrenOf(space());
        QCOMPARE(OriginOf(entries[1]), QString::fromStdString(path("models.pdb")));
        QCOMPARE(entriesOfFile(entries[1]), Items({entries[1], entries[2]}));
    }

    void aNameWithANumberStaysWhenTheFirstIsClosed() {
        openAll();
        openFile(path("1ejg.pdb"));
        change([] { DataMaker::Destroy(item("/1ejg")); });
        change([] { residueAt(2)->SetSelected(true); });
        comesBack();
        QVERIFY(item("/1ejg-2"));
    }

    void namesStayWhenAFileWasClosedAndOpenedAgain() {
        openAll();
        openFile(path("1ejg.pdb"));
        change([] { DataMaker::Destroy(item("/1ejg")); });
        openFile(path("1ejg.pdb"));
        change([] { residueAt(2)->SetSelected(true); });
        comesBack();
        QCOMPARE(entryNames(), QStringList({"models.1", "models.2", "1ejg-2", "1ejg"}));
    }

    void whatIsOpenOtherwiseKeepsItsName() {
        openAll();
        openFile(path("1ejg.pdb"));
        change([] {
            residueAt(2)->SetSelected(true);
            DataMaker::Destroy(space()->ChildBegin()[1]);
            make(space(), "Composite", "made");
        });
        gather();
        clear();
        openFile(path("1ejg.pdb"));
        recover();
        QVERIFY(m_outcome.isWhole);
        QCOMPARE(entryNames(), QStringList({"1ejg", "1ejg-3", "models.2", "1ejg-2", "made"}));
        QVERIFY(History::undo());
        QCOMPARE(entryNames(), QStringList({"1ejg", "1ejg-2", "models.1", "models.2", "1ejg-3"}));
        QVERIFY(History::redo());
        QCOMPARE(entryNames(), QStringList({"1ejg", "1ejg-3", "models.2", "1ejg-2", "made"}));
        QCOMPARE(faults(), QString());
    }

    void manyFilesComeBackAmongOtherEntries() {
        openAll();
        for (int i = 0; i != 40; ++i) {
            openFile(m_folder->write(QString::number(i) + ".pdb",
                                     file_testing::atomAt(" CA ", static_cast<float>(i))));
            change([] { make(space(), "Composite", "other"); });
        }
        change([] {
            const Items entries = childrenOf(space());
            QCOMPARE(entries.size(), std::size_t{83});
            for (std::size_t i = 4; i < entries.size(); i += 7)
                DataMaker::Destroy(entries[i]);
            residueAt(50)->SetSelected(true);
        });
        comesBack();
    }

    void aMapComesBackWithItsBounds() {
        openFile(copyOf("griddata.dx"));
        change([] {
            auto* const grid = dynamic_cast<Grid*>(*space()->ChildBegin());
            grid->m_upper[2] = 1;
            grid->SetColor(Color(7));
        });
        comesBack();
    }

    void aMapWhoseFileWasReplacedComesBackAsItIsOpen() {
        Grid* made = nullptr;
        change([&] { made = DataMaker::makeGrid(space(), "made", smallGrid()); });
        saveFile(std::vector<Compound*>{made}, path("own.ccp4"));
        clear();
        openFile(path("own.ccp4"));
        auto* const grid = dynamic_cast<Grid*>(*space()->ChildBegin());
        change([grid] { grid->m_upper[1] = 1; });
        saveFile(std::vector<Compound*>{grid}, path("own.ccp4"));
        comesBack();
        QCOMPARE(OriginOf(*space()->ChildBegin()), QString::fromStdString(path("own.ccp4")));
        comesBack();
    }

    void otherValuesOfMapsComeBack() {
        openFile(copyOf("griddata.dx"));
        change([] {
            setGrid(DataMaker::makeGrid(space(), "made", smallGrid()), otherGrid());
            setGrid(*space()->ChildBegin(), otherGrid());
        });
        comesBack();
        change([] { setGrid(*space()->ChildBegin(), smallGrid()); });
        comesBack();
    }

    void meshesAreWrittenOnceAndGoWithTheirSurface() {
        openAll();
        const QDir folder(QString::fromStdString(m_journal->path()));
        const auto meshes = [&folder] { return folder.entryList({"mesh-*"}); };
        change([] { DataMaker::makeSurface(space(), "surface", triangle()); });
        gather();
        const QStringList first = meshes();
        QCOMPARE(first.size(), 1);
        change([] { atomAt(0)->SetSelected(true); });
        gather();
        QCOMPARE(meshes(), first);
        change([] { SetSurfaceColors(dynamic_cast<Surface*>(item("/surface")), {1, 2, 3}); });
        gather();
        QCOMPARE(meshes().size(), 1);
        QVERIFY(meshes() != first);
        comesBack();
        change([] { DataMaker::Destroy(item("/surface")); });
        gather();
        QCOMPARE(meshes(), QStringList());
    }

    void gatheringStopsForAChange() {
        openAll();
        JournalGathering gathering(m_journal->written());
        const DataPointBase guard(nullptr, Publisher::Update, "Change");
        QCOMPARE(gathering.advance(std::chrono::seconds(1)), JournalGathering::Progress::Disturbed);
    }

    // Which nobody is told of.
    void gatheringStopsForAChangeWithoutAGuard_data() {
        QTest::addColumn<std::function<void()>>("alter");
        const auto row = [](const char* name, std::function<void()> alter) {
            QTest::newRow(name) << std::move(alter);
        };
        row("an atom comes", [] { makeAtom(residueAt(1)); });
        row("an entry comes", [] { make(space(), "Composite", "made"); });
        row("an atom goes", [] { DataMaker::Destroy(atomAt(1)); });
        row("an entry goes", [] { DataMaker::Destroy(*space()->ChildBegin()); });
        row("another mesh",
            [] { SetSurfaceMesh(dynamic_cast<Surface*>(item("/surface")), triangle()); });
        row("another mesh's colours", [] {
            SetSurfaceColors(dynamic_cast<Surface*>(item("/surface")), {1, 2, 3});
        });
        row("other values", [] { setGrid(item("/grid"), otherGrid()); });
    }
    void gatheringStopsForAChangeWithoutAGuard() {
        QFETCH(const std::function<void()>, alter);
        openAll();
        for (const char* name : {"a surface", "a grid"})
            change(changeOf(name));
        JournalGathering gathering(m_journal->written());
        const auto goOn = [&gathering] { return gathering.advance(std::chrono::seconds(0)); };
        QCOMPARE(goOn(), JournalGathering::Progress::More);
        alter();
        QCOMPARE(goOn(), JournalGathering::Progress::Disturbed);
        comesBack();
    }

    void gatheringStopsForWhatIsTakenBackAndDoneAgain() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(1)); });
        const auto isDisturbedBy = [this](bool (*replay)()) {
            JournalGathering gathering(m_journal->written());
            replay();
            return gathering.advance(std::chrono::seconds(1)) ==
                   JournalGathering::Progress::Disturbed;
        };
        QVERIFY(isDisturbedBy([] { return History::undo(); }));
        QVERIFY(isDisturbedBy([] { return History::redo(); }));
    }
};

REGISTER_TEST(JournalTest)
#include "JournalTest.moc"
