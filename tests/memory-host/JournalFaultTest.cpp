// Journals and files that are missing, damaged or of others, and memory that ends.
#include "DataLines.h"
#include "DataMaker.h"
#include "FailingMemory.h"
#include "ItemOrigin.h"
#include "JournalTestCase.h"
#include "Sample.h"
#include "TestFiles.h"
#include "files/Saving.h"

#include <QDir>

#include <random>

using namespace file_testing;
using namespace journal_testing;
using namespace memory_host;
using namespace TAVIK;
using test_support::comparableLines;
using test_support::contentOf;
using test_support::firstDifference;
using test_support::writeFile;

class JournalFaultTest : public JournalTestCase {
    Q_OBJECT

private slots:
    void aMapWhoseOtherValuesAreMissingIsSaid() {
        openFile(copyOf("griddata.dx"));
        change([] { (*space()->ChildBegin())->SetColor(Color(7)); });
        const QStringList before = comparableLines();
        change([] { setGrid(*space()->ChildBegin(), otherGrid()); });
        gather();
        clear();
        QDir folder(QString::fromStdString(m_journal->path()));
        for (const QString& grid : folder.entryList({"grid-*"}))
            QVERIFY(folder.remove(grid));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{"griddata: its values are not brought back, and are "
                                          "those of its file"});
        QCOMPARE(firstDifference(comparableLines(), before), QString());
    }

    void aMapThatOthersChangedIsSaidAndLeftOut() {
        openAll();
        openFile(copyOf("griddata.dx"));
        change([] {
            space()->ChildBegin()[3]->SetSelected(true);
            residueAt(2)->SetSelected(true);
        });
        gather();
        clear();
        QVERIFY(writeFile(QString::fromStdString(path("griddata.dx")), "other"));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{path("griddata.dx") +
                                          ": the changes to it are not brought back"});
        QCOMPARE(childrenOf(space()).size(), std::size_t{3});
        QVERIFY(residueAt(2)->IsSelected());
        QCOMPARE(faults(), QString());
    }

    void aStructureComesBackAlsoWhenOthersChangedTheFile() {
        openAll();
        change([] { DataMaker::Destroy(residueAt(2)); });
        const QStringList before = comparableLines();
        gather();
        clear();
        QVERIFY(writeFile(QString::fromStdString(path("1ejg.pdb")), "other"));
        recover();
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        QVERIFY(m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{path("1ejg.pdb") +
                                          " is another than when the journal was written; what is "
                                          "open is as it was then"});
        QCOMPARE(unsaved(), QStringList("1ejg"));
        // Saving does not replace it unasked.
        QVERIFY_THROWS_EXCEPTION(SaveError,
                                 saveFile(std::vector<Compound*>{item("/1ejg")}, path("1ejg.pdb")));
    }

    // Another version of the program may read it otherwise.
    void aTextThatGivesOtherItemsIsOpenAsTheUsersFile() {
        openSmall();
        change([] { DataMaker::Destroy(atomAt(0)); });
        gather();
        clear();
        QVERIFY(writeFile(QString::fromStdString(path("one.pdb")), "other"));
        const QString text = QDir(QString::fromStdString(m_journal->path()))
                                 .entryInfoList({"text-*"})
                                 .at(0)
                                 .filePath();
        QVERIFY(writeFile(text + "/one.pdb", file_testing::atomAt(" CA ", 1)));
        recover();
        QVERIFY(!m_outcome.isWhole);
        QCOMPARE(m_outcome.lines,
                 std::vector<std::string>{path("one.pdb") +
                                          ": its content is not what it was; the changes to it are "
                                          "not brought back"});
        Compound* const entry = *space()->ChildBegin();
        QCOMPARE(OriginOf(entry), QString::fromStdString(path("one.pdb")));
        QVERIFY(isUnsaved(entry));
        QVERIFY_THROWS_EXCEPTION(SaveError,
                                 saveFile(std::vector<Compound*>{entry}, path("one.pdb")));
    }

    void aMeshThatIsMissingIsCounted() {
        openAll();
        change(changeOf("a surface"));
        gather();
        clear();
        QDir folder(QString::fromStdString(m_journal->path()));
        for (const QString& mesh : folder.entryList({"mesh-*"}))
            QVERIFY(folder.remove(mesh));
        recover();
        QVERIFY(m_outcome.isDone && !m_outcome.isWhole);
        QCOMPARE(m_outcome.lines, std::vector<std::string>{"Not brought back: 1 surface"});
    }

    void othersDoNotSeeTheJournalOfAProgramThatRuns() {
        openAll();
        change(changeOf("selection"));
        gather();
        const std::string mine = m_journal->path();
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        m_journal.reset();
        {
            const auto found = JournalFolder::abandoned(path("journal"));
            QCOMPARE(found.size(), std::size_t{1});
            QCOMPARE(found[0].path(), mine);
            QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        }
        auto found = JournalFolder::abandoned(path("journal"));
        QCOMPARE(found.size(), std::size_t{1});
        found[0].remove();
        QVERIFY(!QFile::exists(QString::fromStdString(mine)));
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        QVERIFY(JournalFolder::abandoned(path("nowhere")).empty());
        m_journal = JournalFolder::make(path("journal"));
        m_journal.reset();
        QVERIFY(JournalFolder::abandoned(path("journal")).empty());
        QCOMPARE(QDir(QString::fromStdString(path("journal")))
                     .entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList("lock"));
    }

    void aJournalThatIsCutOrDamagedIsRefused() {
        openSmall();
        change([] { atomAt(0)->SetSelected(true); });
        gather();
        const QByteArray whole = contentOf(journal());
        QVERIFY(whole.size() > 50);
        for (qsizetype size = 0; size != whole.size(); ++size) {
            QVERIFY(writeFile(journal(), whole.left(size)));
            QVERIFY_THROWS_EXCEPTION(FileError, JournalRecovery(m_journal->path()));
        }
        QVERIFY(writeFile(journal(), whole));
        const QByteArray content = unpacked(journal());
        for (qsizetype at = 0; at != whole.size(); ++at) {
            QByteArray wrong = whole;
            wrong[at] = static_cast<char>(wrong[at] ^ (1 << at % 8));
            QVERIFY(writeFile(journal(), wrong));
            try {
                const JournalRecovery recovery(m_journal->path());
                QCOMPARE(unpacked(journal()), content); // Not every bit means something.
            } catch (const FileError&) {
            }
        }
        QVERIFY(writeFile(journal(), content));
        QVERIFY_THROWS_EXCEPTION(FileError, JournalRecovery(m_journal->path()));
    }

    void aJournalThatSaysOtherThingsDoesNoHarm() {
        openAll();
        for (const JournalChange& each : journalChanges())
            if (!each.isLast)
                change(each.change);
        gather();
        const QByteArray whole = unpacked(journal());
        clear();
        std::mt19937 random(7);
        int refused = 0;
        constexpr int tries = 60;
        for (int i = 0; i != tries; ++i) {
            QByteArray wrong = whole;
            for (int changes = 1 + static_cast<int>(random() % 3); changes != 0; --changes)
                wrong[static_cast<qsizetype>(random()) % wrong.size()] =
                    static_cast<char>(random());
            QVERIFY(writeFile(journal(), gzipped(wrong)));
            try {
                recover();
            } catch (const FileError&) {
                ++refused;
            }
            QCOMPARE(faults(), QString());
            clear();
            takeMessages();
        }
        QVERIFY2(refused > 5 && refused < tries, qPrintable(QString::number(refused)));
        takeHostLog();
    }

    void gatheringAndWritingMayRunOutOfMemory() {
        openSmall();
        change([] { DataMaker::Destroy(atomAt(0)); });
        for (const char* name : {"an entry without a file", "a grid", "a line"})
            change(changeOf(name));
        int failures = 0;
        for (int granted = 0;; ++granted) {
            bool isWritten = false;
            {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                try {
                    gather();
                    isWritten = true;
                } catch (const std::bad_alloc&) {
                } catch (const SaveError&) {
                }
                if (FailingMemory::refusals() == 0)
                    break;
            }
            failures += isWritten ? 0 : 1;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
        comesBack();
    }

    void bringingBackMayRunOutOfMemory() {
        openSmall();
        change([] { atomAt(1)->SetSelected(true); });
        change([] { DataMaker::Destroy(atomAt(0)); });
        change(changeOf("an entry without a file"));
        const QStringList after = comparableLines();
        gather();
        clear();
        int failures = 0;
        for (int granted = 0;; ++granted) {
            m_outcome = {};
            JournalRecovery recovery(m_journal->path());
            openFile(recovery.contentPath(0));
            recovery.setOpened(0);
            const QStringList before = comparableLines();
            int refused = 0;
            {
                const FailingMemory memory(granted, 1, 0, FailingMemory::Of::OwnCode);
                try {
                    m_outcome = recovery.apply();
                } catch (const std::bad_alloc&) {
                }
                refused = FailingMemory::refusals();
            }
            QCOMPARE(faults(), QString());
            if (m_outcome.isDone)
                QCOMPARE(firstDifference(comparableLines(), after), QString());
            else
                QCOMPARE(comparableLines().size(), before.size());
            failures += m_outcome.isDone ? 0 : 1;
            clear();
            if (refused == 0)
                break;
        }
        QVERIFY2(failures > 20, qPrintable(QString::number(failures)));
        takeHostLog();
        takeMessages();
    }
};

REGISTER_TEST(JournalFaultTest)
#include "JournalFaultTest.moc"
