// The journal of a program that ends in the middle of its work, and what the next start makes of
// it.
#include "Recovery.h"
#include "CrashJournal.h"
#include "DataDelete.h"
#include "DataLines.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "HostUnderTest.h"
#include "Kinds.h"
#include "Opening.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"

#include "Logger.h"
#include "TestFiles.h"
#include "services/ElidedLine.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;
using memory_host::JournalFolder;
using test_support::comparableLines;
using test_support::firstDifference;
using test_support::writeFile;
using workbench::CrashJournal;

namespace {

TAVIK::Space* space() {
    return TAVIK::Space::instance();
}

TAVIK::Compound* residue(std::size_t i) {
    std::vector<TAVIK::Compound*> residues;
    TAVIK::GetResidues(space(), residues, true);
    return residues.at(i);
}

void select(std::size_t i) {
    const DataPoint<TAVIK::Space> guard(nullptr, space());
    residue(i)->ToggleSelected();
}

void destroy(std::size_t i) {
    const DataDelete<TAVIK::Space> guard(nullptr, space());
    TAVIK::DataMaker::Destroy(residue(i));
}

memory_host::ProgressWindow* progressWindow() {
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const each : windows)
        if (auto* const window = qobject_cast<memory_host::ProgressWindow*>(each))
            return window;
    return nullptr;
}

void closeAll() {
    const DataDelete<TAVIK::Space> guard(nullptr, space());
    while (space()->HasChildren())
        TAVIK::DataMaker::Destroy(*space()->ChildBegin());
}

} // namespace

class RecoveryTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CrashJournal> m_journal;
    QStringList m_asked;

    QString path(const QString& name) const { return m_folder->filePath(name); }
    std::string journals() const { return path("journal").toStdString(); }
    QStringList folders() const {
        return QDir(path("journal")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }
    QString textInJournal(const QString& name) const {
        const QDir journal(path("journal/" + folders().constFirst()));
        for (const QString& text : journal.entryList({"text-*"}))
            if (QFile::exists(journal.filePath(text + u'/' + name)))
                return journal.filePath(text + u'/' + name);
        return {};
    }
    void startJournal(std::chrono::milliseconds interval = 5ms) {
        m_journal = std::make_unique<CrashJournal>(journals(), interval);
    }
    void open(const QStringList& names = {"own.pdb"}) const {
        workbench::Opening opening(Logger::Write);
        for (const QString& name : names) {
            QFile::copy(SOURCE_DIR "/data/sample.pdb", path(name));
            QCOMPARE(opening.open({path(name).toStdString()}), std::size_t{1});
        }
    }
    /// Until all that was changed is on the disk.
    bool waitUntilWritten() const {
        QSignalSpy written(m_journal.get(), &CrashJournal::written);
        while (written.wait())
            if (written.constLast().constFirst().toBool())
                return true;
        return false;
    }
    /// The program goes, and leaves what is on the disk.
    void crash() {
        m_journal.reset();
        closeAll();
    }
    /// A start of which each question is answered so; returns what is said then.
    QString startAgain(const QString& button, std::chrono::milliseconds interval = 5ms) {
        QTimer answering;
        connect(&answering, &QTimer::timeout, this, [&] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            m_asked << box->text();
            for (QAbstractButton* const each : box->buttons())
                if (each->text().remove('&') == button)
                    return QTest::mouseClick(each, Qt::LeftButton);
            QTest::keyClick(box, Qt::Key_Escape);
        });
        answering.start(1);
        startJournal(interval);
        workbench::Opening opening(Logger::Write);
        return workbench::Recovery(nullptr, opening).run(journals(), *m_journal);
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        m_asked.clear();
    }
    void cleanup() override {
        m_journal.reset();
        m_folder.reset();
        TestCase::cleanup();
    }

    void aCrashIsAskedAboutAndBroughtBack() {
        startJournal();
        open();
        select(3);
        destroy(1);
        QVERIFY(waitUntilWritten());
        const QStringList before = comparableLines();
        crash();
        QVERIFY(startAgain("Open").startsWith("Opened as it was on "));
        QCOMPARE(m_asked, QStringList("The workbench did not end in good order while own.pdb was "
                                      "open."));
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        // The next crash finds it again, and no journal is left over.
        QVERIFY(waitUntilWritten());
        QCOMPARE(folders().size(), 1);
        crash();
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        m_journal->end(false);
        QCOMPARE(folders(), QStringList());
        takeHostLog();
    }

    void severalFilesAreOneQuestion() {
        startJournal();
        open({"a.pdb", "b.pdb"});
        select(3);
        QVERIFY(waitUntilWritten());
        crash();
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(m_asked, QStringList("The workbench did not end in good order while 2 entries and "
                                      "files were open."));
        QVERIFY(residue(3)->IsSelected());
        takeHostLog();
    }

    void whoCancelsOpensNoneOfTheFilesThatFollow() {
        startJournal();
        open({"a.pdb", "b.pdb", "c.pdb"});
        select(3);
        const QStringList before = comparableLines();
        QVERIFY(waitUntilWritten());
        crash();
        // The second file is taken from the journal, and there a pipe that brings nothing.
        QVERIFY(QFile::remove(path("b.pdb")));
        const QString text = textInJournal("b.pdb");
        QVERIFY(QFile::rename(text, path("kept")));
        QCOMPARE(mkfifo(QFile::encodeName(text).constData(), 0600), 0);
        QTimer cancelling;
        QString title;
        connect(&cancelling, &QTimer::timeout, this, [&] {
            // This succeeds when somebody reads.
            const int writer =
                ::open(QFile::encodeName(text).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (writer < 0)
                return;
            cancelling.stop();
            auto* const window = progressWindow();
            title = window->findChild<memory_host::ElidedLine*>()->accessibleName();
            window->reject();
            ::close(writer);
        });
        cancelling.start(1);
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(title, "Opening b.pdb (2 of 3)");
        QCOMPARE(std::distance(space()->ChildBegin(), space()->ChildEnd()), 1);
        QVERIFY(residue(3)->IsSelected());
        const QStringList log = takeHostLog();
        QCOMPARE(log.filter("opening was cancelled").size(), 1);
        QCOMPARE(log.filter("the changes to it are not brought back").size(), 2);
        QCOMPARE(log.filter("The journal is kept").size(), 1);

        m_journal->end(false);
        crash();
        QVERIFY(QFile::remove(text) && QFile::rename(path("kept"), text));
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        takeHostLog();
    }

    void whatIsOnlyOpenIsNotAskedAbout() {
        startJournal();
        open();
        QVERIFY(waitUntilWritten());
        crash();
        QCOMPARE(startAgain("Open"), QString());
        QCOMPARE(m_asked, QStringList());
        QCOMPARE(folders(), QStringList());
    }

    void laterAsksAgainAndDiscardDoesNot() {
        startJournal();
        open();
        destroy(1);
        QVERIFY(waitUntilWritten());
        crash();
        for (const char* answer : {"Later", "(Escape)", "Discard"})
            QCOMPARE(startAgain(answer), QString());
        QCOMPARE(m_asked.size(), 3);
        QVERIFY(!space()->HasChildren());
        QCOMPARE(startAgain("Open"), QString());
        QCOMPARE(m_asked.size(), 3);
    }

    void aProgramThatRunsIsNotAskedAbout() {
        startJournal();
        open();
        destroy(1);
        QVERIFY(waitUntilWritten());
        const auto first = std::move(m_journal);
        QCOMPARE(startAgain("Open"), QString());
        QCOMPARE(m_asked, QStringList());
        // Each writes its own.
        destroy(1);
        QVERIFY(waitUntilWritten());
        QCOMPARE(folders().size(), 2);
    }

    void anEndInGoodOrderLeavesNothing() {
        startJournal();
        open();
        destroy(1);
        QVERIFY(waitUntilWritten());
        destroy(1);
        m_journal->end(false);
        QCOMPARE(folders(), QStringList());
        destroy(1);
        m_journal->changed();
        QTest::qWait(20);
        QCOMPARE(folders(), QStringList());
    }

    // As when a signal ends it.
    void anEndWithoutAQuestionWritesTheLastChange() {
        startJournal(1h);
        open();
        destroy(1);
        const QStringList before = comparableLines();
        m_journal->end(true);
        crash();
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        takeHostLog();
    }

    void anEndWithoutAQuestionLeavesOneJournal() {
        startJournal();
        open();
        destroy(1);
        QVERIFY(waitUntilWritten());
        const QStringList before = comparableLines();
        crash();
        for (const auto interval : {1h, 0h}) {
            QVERIFY(!startAgain("Open", interval).isEmpty());
            m_journal->end(true);
            crash();
            QCOMPARE(folders().size(), 1);
        }
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        takeHostLog();
    }

    // It is in none of what is being written.
    void aJournalThatIsTakenOverMeanwhileStays() {
        startJournal();
        open();
        select(1);
        QVERIFY(waitUntilWritten());
        crash();
        std::vector<JournalFolder> found = JournalFolder::abandoned(journals());
        QCOMPARE(found.size(), std::size_t{1});
        const QString journal = QString::fromStdString(found.front().path()) + "/journal";

        startJournal();
        open();
        select(2);
        const auto isWritten = [&] {
            const QStringList all = folders();
            return std::ranges::all_of(all, [this](const QString& folder) {
                return QFile::exists(path("journal/" + folder + "/journal"));
            });
        };
        const QDeadlineTimer deadline(60'000);
        for (; folders().size() != 2 || !isWritten(); QTest::qSleep(20)) {
            QVERIFY(!deadline.hasExpired());
            if (folders().size() != 2)
                QCoreApplication::processEvents();
        }
        QSignalSpy written(m_journal.get(), &CrashJournal::written);
        m_journal->adopt(std::move(found.front()), false);
        QVERIFY(written.wait());
        QVERIFY(QFile::exists(journal));
        QVERIFY(waitUntilWritten());
        QVERIFY(!QFile::exists(journal));
    }

    void aJournalWhoseFolderIsGoneIsWrittenAnew() {
        startJournal();
        open();
        destroy(1);
        QVERIFY(waitUntilWritten());
        QVERIFY(QDir(path("journal")).removeRecursively());
        destroy(1);
        const QStringList before = comparableLines();
        QVERIFY(waitUntilWritten());
        crash();
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        takeHostLog();
    }

    void changesWithoutEndAreWrittenToo() {
        startJournal(20ms);
        open();
        QTimer changing;
        connect(&changing, &QTimer::timeout, this, [] { select(0); });
        changing.start(0);
        QSignalSpy written(m_journal.get(), &CrashJournal::written);
        QVERIFY(written.wait());
    }

    void aChangeUnderWayIsWaitedFor() {
        startJournal();
        open();
        QSignalSpy written(m_journal.get(), &CrashJournal::written);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, space());
            residue(0)->SetSelected(true);
            QTest::qWait(50);
            QCOMPARE(written.size(), 0);
        }
        QVERIFY(written.wait());
    }

    void whatCannotBeBroughtBackIsSaidAndKept() {
        startJournal();
        QVERIFY(QFile::copy(structure("griddata.dx"), path("own.dx")));
        open({"own.dx"});
        {
            const DataPoint<TAVIK::Space> guard(nullptr, space());
            (*space()->ChildBegin())->SetSelected(true);
        }
        QVERIFY(waitUntilWritten());
        crash();
        QVERIFY(writeFile(path("own.dx"), "other"));
        QCOMPARE(startAgain("Open"), QString());
        const QStringList log = takeHostLog();
        QCOMPARE(log.filter("own.dx was changed by someone else since it was opened").size(), 1);
        QCOMPARE(log.filter("The journal is kept").size(), 1);
        QVERIFY(!space()->HasChildren());
        m_journal->end(false);
        m_journal.reset();
        QCOMPARE(folders().size(), 1);
        startAgain("Discard");
        QCOMPARE(m_asked.size(), 2);
        QCOMPARE(folders(), QStringList());
    }

    void aDamagedJournalIsALine() {
        startJournal();
        open();
        select(1);
        QVERIFY(waitUntilWritten());
        crash();
        QVERIFY(writeFile(path("journal/" + folders().constFirst() + "/journal"), "damaged"));
        QCOMPARE(startAgain("Open"), QString());
        QCOMPARE(m_asked, QStringList());
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log[0].contains("/journal: is damaged"), qPrintable(log[0]));
    }

    void whereNoJournalCanBeWrittenThereIsOneLine() {
        QVERIFY(writeFile(path("journal"), "in the way"));
        startJournal(1ms);
        open();
        for (int i = 0; i != 3; ++i) {
            select(1);
            QTest::qWait(20);
        }
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log[0].startsWith("What is changed is not kept for the case of a crash: "),
                 qPrintable(log[0]));
    }

    void whatCouldNotBeWrittenIsTriedAgain() {
        QVERIFY(writeFile(path("journal"), "in the way"));
        startJournal();
        open();
        destroy(1);
        QTest::qWait(30);
        const auto comesAgain = [this] {
            const QStringList log = takeHostLog();
            QCOMPARE(log.size(), 2);
            QVERIFY2(log[0].startsWith("What is changed is not kept for the case of a crash: "),
                     qPrintable(log[0]));
            QCOMPARE(log[1], "What is changed is kept for the case of a crash again");
        };
        QVERIFY(QFile::remove(path("journal")));
        QVERIFY(waitUntilWritten());
        comesAgain();

        // The folder is there, and cannot be written.
        const QString journal = path("journal/" + folders().constFirst() + "/journal");
        QVERIFY(QFile::remove(journal) && QDir().mkdir(journal));
        destroy(1);
        const QStringList before = comparableLines();
        QTest::qWait(30);
        QVERIFY(QDir().rmdir(journal));
        QVERIFY(waitUntilWritten());
        comesAgain();
        crash();
        QVERIFY(!startAgain("Open").isEmpty());
        QCOMPARE(firstDifference(comparableLines(), before), QString());
        takeHostLog();
    }

    void theIntervalIsASetting() {
        host_under_test::setOnlySetting("Other", "Key", "");
        QCOMPARE(CrashJournal::intervalFromSettings(), std::chrono::milliseconds(5000));
        host_under_test::setOnlySetting("Journal", "Seconds", "12");
        QCOMPARE(CrashJournal::intervalFromSettings(), std::chrono::milliseconds(12000));
        host_under_test::setOnlySetting("Journal", "Seconds", "0");
        startJournal(CrashJournal::intervalFromSettings());
        open();
        destroy(1);
        QTest::qWait(20);
        QVERIFY(!QFile::exists(path("journal")));
        for (const char* wrong : {"-1", "soon", "", "1.5"}) {
            host_under_test::setOnlySetting("Journal", "Seconds", wrong);
            QCOMPARE(CrashJournal::intervalFromSettings(), std::chrono::milliseconds(5000));
            QCOMPARE(takeHostLog(),
                     QStringList(QStringLiteral("The setting Seconds of Journal is no number of "
                                                "seconds: ") +
                                 QLatin1String(wrong)));
        }
        host_under_test::setOnlySetting("Other", "Key", "");
    }
};

REGISTER_TEST(RecoveryTest)
#include "RecoveryTest.moc"
