// Saving in the main window: what is offered, the dialogs and questions, and what is said.
#include "ErrorBar.h"
#include "Focus.h"
#include "Geometry.h"
#include "ItemOrigin.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "TestData.h"
#include "Traversal.h"

#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "TestFiles.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include <csignal>
#include <sys/resource.h>

using test_support::contentOf;
using test_support::writeFile;

namespace {

/// RAII: files of this process become no larger, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

qsizetype atomRows(const QByteArray& text) {
    return text.count("\nATOM  ") + text.count("\nHETATM");
}

/// Presses a button of a question by its text, without the mark of its key.
void press(const QMessageBox* box, const QString& label) {
    for (QAbstractButton* const button : box->buttons())
        if (button->text().remove('&') == label)
            return QTest::mouseClick(button, Qt::LeftButton);
    QTest::qFail(qPrintable("no button " + label), __FILE__, __LINE__);
    QTest::keyClick(const_cast<QMessageBox*>(box), Qt::Key_Escape); // NOLINT: to go on
}

} // namespace

class SavingTest : public test_support::MainWindowCase {
    Q_OBJECT

    QList<std::function<void(QWidget*)>> m_answers; ///< to the next dialogs
    QTimer m_answering;
    QStringList m_asked; ///< questions

    /// Answers a dialog that will open while a command runs.
    template <class Dialog> void next(const std::function<void(Dialog*)>& answer) {
        m_answers << [this, answer](QWidget* window) {
            auto* const dialog = qobject_cast<Dialog*>(window);
            if (auto* const box = qobject_cast<QMessageBox*>(window))
                m_asked << box->text();
            if (!dialog) {
                QTest::qFail("another dialog", __FILE__, __LINE__);
                QTest::keyClick(window, Qt::Key_Escape);
                return;
            }
            answer(dialog);
        };
    }
    void nextQuestion(const QString& button) {
        next<QMessageBox>([button](QMessageBox* box) { press(box, button); });
    }
    void nextFile(const QString& file, bool asShown = false) {
        next<QFileDialog>([file, asShown](QFileDialog* dialog) {
            auto* const name = dialog->findChild<QLineEdit*>("fileNameEdit");
            QApplication::clipboard()->setText(file);
            name->selectAll();
            name->paste();
            dialog->findChild<QCheckBox*>("asShown")->setChecked(asShown);
            auto* const buttons = dialog->findChild<QDialogButtonBox*>();
            for (QAbstractButton* const button : buttons->buttons())
                if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                    QTest::mouseClick(button, Qt::LeftButton);
        });
    }

    QString path(const QString& name) const { return m_folder->filePath(name); }
    /// A file of the user's.
    QString ownCopy(const QString& name = "own.pdb") {
        return QFile::copy(sample(), path(name)) ? path(name) : QString();
    }
    void openOwn() {
        open();
        m_window->openFiles({ownCopy()});
        takeMessages();
    }
    static TAVIK::Compound* entryAt(int i) { return TAVIK::Space::instance()->ChildBegin()[i]; }
    /// Destroys the first residue of an entry, as any plug-in may; returns how many atoms it had.
    static qsizetype edit(int entry = 0) {
        TAVIK::Compound* residue = entryAt(entry);
        while (residue->GetType() != "Residue")
            residue = *residue->ChildBegin();
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(residue, atoms, true);
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(residue);
        }
        return static_cast<qsizetype>(atoms.size());
    }
    void trigger(const QString& label) { entry("File", label)->trigger(); }
    bool isOffered(const QString& label) const { return entry("File", label)->isEnabled(); }
    QString said() const { return m_window->status().said(); }
    /// What the window manager shows.
    QString title() const {
        return m_window->windowTitle().replace("[*]", m_window->isWindowModified() ? "*" : "");
    }
    bool closeWindow() {
        m_window->close();
        return !m_window->isVisible();
    }

protected slots:
    void init() override {
        MainWindowCase::init();
        m_answers.clear();
        m_asked.clear();
        connect(&m_answering, &QTimer::timeout, this, [this] {
            QWidget* const modal = QApplication::activeModalWidget();
            if (!m_answers.isEmpty() && modal && modal->inherits("QDialog") &&
                !modal->inherits("memory_host::ProgressWindow"))
                // Later: a timer does not fire again while it is answered, as by a further dialog.
                QTimer::singleShot(0, modal,
                                   [modal, answer = m_answers.takeFirst()] { answer(modal); });
        });
        m_answering.start(1);
    }
    void cleanup() override {
        m_answering.stop();
        m_answering.disconnect();
        QCOMPARE(m_answers.size(), 0);
        takeHostLog();
        MainWindowCase::cleanup();
    }

private slots:
    void onlyWhatThereIsToSaveIsOffered() {
        open();
        for (const char* label : {"Save", "Save As...", "Save Selection As...", "Save All"})
            QVERIFY2(!isOffered(label), label);
        m_window->openFiles({ownCopy()});
        takeMessages();
        QVERIFY(!isOffered("Save"));
        QVERIFY(!isOffered("Save All"));
        QVERIFY(isOffered("Save As..."));
        QVERIFY(!isOffered("Save Selection As..."));
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            entryAt(0)->SetSelected(true);
        }
        QVERIFY(isOffered("Save Selection As..."));
        QVERIFY(!isOffered("Save"));
        edit();
        QVERIFY(isOffered("Save"));
        QVERIFY(isOffered("Save All"));
    }

    void theCommandsStandBelowTheRecentFilesWithTheirKeys() {
        open();
        QStringList labels;
        for (const QAction* action : m_window->menuBar()->actions().constFirst()->menu()->actions())
            labels << action->text().remove('&');
        const qsizetype first = labels.indexOf("Save");
        QVERIFY(labels.indexOf("Open Recent") < first);
        QCOMPARE(labels.mid(first, 5), QStringList({"Save", "Save As...", "Save Selection As...",
                                                    "Save All", "Save Picture..."}));
        QCOMPARE(entry("File", "Save")->shortcut(), QKeySequence("Ctrl+S"));
        QCOMPARE(entry("File", "Save As...")->shortcut(), QKeySequence("Ctrl+Shift+S"));
    }

    void saveWritesTheFileAndSaysSo() {
        openOwn();
        const QByteArray before = contentOf(path("own.pdb"));
        QCOMPARE(title(), "own - Workbench");
        const qsizetype lost = edit();
        QCOMPARE(title(), "own* - Workbench");
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        const qsizetype left = atomRows(before) - lost;
        QCOMPARE(said().remove(','), QString("Saved own as own.pdb: %1 atoms").arg(left));
        QCOMPARE(atomRows(contentOf(path("own.pdb"))), left);
        QCOMPARE(title(), "own - Workbench");
        QVERIFY(!isOffered("Save"));
        QVERIFY(m_asked.isEmpty());
        // And once more.
        edit();
        QCOMPARE(title(), "own* - Workbench");
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier);
        QVERIFY(atomRows(contentOf(path("own.pdb"))) < left);
    }

    void saveAsMakesTheOtherFileItsOwn() {
        openOwn();
        const QByteArray before = contentOf(path("own.pdb"));
        edit();
        nextFile(path("other.pdb"));
        QTest::keyClick(m_window.get(), Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(said().startsWith("Saved own as other.pdb: "));
        QCOMPARE(TAVIK::OriginOf(entryAt(0)), path("other.pdb"));
        QCOMPARE(m_window->remembered().files().constFirst(), path("other.pdb"));
        QCOMPARE(contentOf(path("own.pdb")), before);
        QVERIFY(!m_window->isWindowModified());
        edit();
        trigger("Save");
        QVERIFY(said().startsWith("Saved own as other.pdb: "));
        QCOMPARE(contentOf(path("own.pdb")), before);
    }

    void aNameWithoutAnEndingGetsThatOfTheChosenFormat() {
        openOwn();
        QStringList filters;
        QStringList proposed;
        next<QFileDialog>([&](QFileDialog* dialog) {
            filters = dialog->nameFilters();
            proposed = dialog->selectedFiles();
            QTest::keyClick(dialog, Qt::Key_Escape);
        });
        trigger("Save As...");
        QVERIFY(filters.contains("PDB (*.pdb *.pdb.gz *.ent *.ent.gz)"));
        QVERIFY(!filters.join(' ').contains("*.map"));
        QCOMPARE(proposed, QStringList(path("own.pdb")));
        nextFile("plain");
        trigger("Save As...");
        QVERIFY(QFile::exists(path("plain.pdb")));
    }

    void theSelectionBecomesAFileOfItsOwn() {
        openOwn();
        TAVIK::Compound* residue = entryAt(0);
        while (residue->GetType() != "Residue")
            residue = *residue->ChildBegin();
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(residue, atoms, true);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            residue->SetSelected(true);
        }
        nextFile(path("part.pdb"));
        trigger("Save Selection As...");
        QCOMPARE(said(), QString("Saved the selection as part.pdb: %1 atoms").arg(atoms.size()));
        QCOMPARE(atomRows('\n' + contentOf(path("part.pdb"))),
                 static_cast<qsizetype>(atoms.size()));
        QCOMPARE(TAVIK::OriginOf(entryAt(0)), path("own.pdb"));
    }

    void onRequestOnlyTheActiveModelsAreSaved() {
        open();
        m_window->openFiles({structure("1ejg.pdb")});
        takeMessages();
        nextFile(path("all.pdb"));
        trigger("Save As...");
        nextFile(path("shown.pdb"), true);
        trigger("Save As...");
        QVERIFY(atomRows(contentOf(path("shown.pdb"))) > 0);
        QVERIFY(atomRows(contentOf(path("shown.pdb"))) < atomRows(contentOf(path("all.pdb"))));
    }

    void saveAllSavesEachChangedFile() {
        open();
        m_window->openFiles({ownCopy("a.pdb"), ownCopy("b.pdb"), ownCopy("c.pdb")});
        takeMessages();
        const QByteArray before = contentOf(path("b.pdb"));
        edit(0);
        edit(2);
        QCOMPARE(title(), "a*, b, c* - Workbench");
        trigger("Save All");
        QCOMPARE(title(), "a, b, c - Workbench");
        QVERIFY(atomRows(contentOf(path("a.pdb"))) < atomRows(before));
        QVERIFY(atomRows(contentOf(path("c.pdb"))) < atomRows(before));
        QCOMPARE(contentOf(path("b.pdb")), before);
        QVERIFY(!isOffered("Save All"));
    }

    void aFileThatSomeoneElseChangedIsReplacedOnlyWhenTheUserSaysSo() {
        openOwn();
        edit();
        const QByteArray others = "REMARK of someone else\n" + contentOf(path("own.pdb"));
        QVERIFY(writeFile(path("own.pdb"), others));
        nextQuestion("Cancel");
        trigger("Save");
        QCOMPARE(m_asked, QStringList("own.pdb was changed by someone else after it was opened."));
        QCOMPARE(contentOf(path("own.pdb")), others);
        QVERIFY(m_window->isWindowModified());

        nextQuestion("Save As...");
        nextFile(path("other.pdb"));
        trigger("Save");
        QCOMPARE(contentOf(path("own.pdb")), others);
        QVERIFY(QFile::exists(path("other.pdb")));

        edit();
        QVERIFY(writeFile(path("other.pdb"), others));
        nextQuestion("Replace");
        trigger("Save");
        QVERIFY(said().startsWith("Saved own as other.pdb"));
        QVERIFY(atomRows(contentOf(path("other.pdb"))) < atomRows(others));
    }

    void aModelThatIsClosedIsLostOnlyWhenTheUserSaysSo() {
        const QByteArray atoms = "ATOM      1  CA  GLY A   1       1.000   2.000   3.000\n"
                                 "ATOM      2  CA  ALA A   2       4.000   2.000   3.000\n";
        const QByteArray models =
            "MODEL        1\n" + atoms + "ENDMDL\nMODEL        2\n" + atoms + "ENDMDL\nEND\n";
        open();
        QVERIFY(writeFile(path("own.pdb"), models));
        m_window->openFiles({path("own.pdb")});
        takeMessages();
        {
            DataDelete guard(nullptr, "Close");
            TAVIK::DataMaker::Destroy(entryAt(1));
        }
        QCOMPARE(title(), "own.1 - Workbench");
        edit();
        nextQuestion("Cancel");
        trigger("Save All");
        QCOMPARE(m_asked, QStringList("own.pdb holds entries that are closed here."));
        QCOMPARE(contentOf(path("own.pdb")), models);

        nextQuestion("Replace");
        trigger("Save All");
        QCOMPARE(atomRows(contentOf(path("own.pdb"))), 1);
        QCOMPARE(title(), "own.1 - Workbench");
        // Back again, it is in no file.
        entry("Edit", "Undo Last Change of Data")->trigger();
        entry("Edit", "Undo Last Change of Data")->trigger();
        QCOMPARE(title(), "own.1*, own.2* - Workbench");
        trigger("Save All");
        QCOMPARE(contentOf(path("own.pdb")), models);
        QCOMPARE(title(), "own.1, own.2 - Workbench");
    }

    void aFullDiskIsALineAndTheOldFileIsWhole() {
        openOwn();
        const QByteArray before = contentOf(path("own.pdb"));
        edit();
        {
            const FullDisk full(1024);
            trigger("Save");
        }
        QCOMPARE(contentOf(path("own.pdb")), before);
        QTRY_VERIFY(m_window->errors().isVisible());
        QCOMPARE(m_window->errors().lines().size(), 1);
        QVERIFY(m_window->errors().lines().constFirst().startsWith(path("own.pdb") + ": "));
        QVERIFY(m_window->isWindowModified());
        QVERIFY(isOffered("Save"));
        QCOMPARE(QDir(m_folder->path()).entryList({"own*", ".own*"}, QDir::Files | QDir::Hidden),
                 QStringList("own.pdb"));
    }

    void cancellingLeavesTheOldFileWhole() {
        open();
        TAVIK::GridValues grid;
        grid.points = {160, 160, 160};
        grid.steps = {{{0.5, 0, 0}, {0, 0.5, 0}, {0, 0, 0.5}}};
        for (unsigned int number = 1; grid.values.size() != 160U * 160U * 160U;
             number = number * 1664525U + 1013904223U)
            grid.values.push_back(static_cast<float>(number));
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeGrid(TAVIK::Space::instance(), "noise", std::move(grid));
        }
        QVERIFY(writeFile(path("noise.map.gz"), "old"));
        nextFile(path("noise.map.gz"));
        nextQuestion("Yes"); // to replace it
        // As soon as there is something to cancel, be it seen yet or not.
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [] {
            for (QWidget* const window : QApplication::topLevelWidgets())
                if (window->inherits("memory_host::ProgressWindow"))
                    QTest::keyClick(window, Qt::Key_Escape);
        });
        watch.start(0);
        trigger("Save As...");
        QCOMPARE(said(), path("noise.map.gz") + " is not saved");
        QCOMPARE(contentOf(path("noise.map.gz")), "old");
        QVERIFY(!m_window->errors().isVisible());
    }

    void aMapIsSavedAsAMap() {
        open();
        m_window->openFiles({structure("1jzv.ccp4")});
        takeMessages();
        QVERIFY(!isOffered("Save"));
        nextFile(path("again.map"));
        trigger("Save As...");
        QCOMPARE(said(), "Saved 1jzv as again.map");
        QVERIFY(QFileInfo(path("again.map")).size() > 1024);
    }

    void closingAChangedEntryAsks() {
        openOwn();
        const QByteArray before = contentOf(path("own.pdb"));
        edit();
        nextQuestion("Cancel");
        trigger("Close Entry");
        QCOMPARE(entries(), QStringList("own"));
        QCOMPARE(m_asked, QStringList("The changes to own.pdb are not saved."));
        nextQuestion("Discard");
        trigger("Close Entry");
        QCOMPARE(entries(), QStringList());
        QCOMPARE(contentOf(path("own.pdb")), before);

        m_window->openFiles({path("own.pdb")});
        edit();
        nextQuestion("Save");
        trigger("Close Entry");
        QCOMPARE(entries(), QStringList());
        QVERIFY(atomRows(contentOf(path("own.pdb"))) < atomRows(before));

        m_window->openFiles({path("own.pdb")});
        trigger("Close Entry"); // without a question
        QCOMPARE(entries(), QStringList());
        takeMessages();
    }

    void anEntryOfWhichAllIsDeletedIsChanged() {
        openOwn();
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            while (entryAt(0)->HasChildren())
                TAVIK::DataMaker::Destroy(*entryAt(0)->ChildBegin());
        }
        QCOMPARE(title(), "own* - Workbench");
        nextQuestion("Discard");
        trigger("Close Entry");
        QCOMPARE(entries(), QStringList());
    }

    void aSaveThatFailsCancelsTheClosing() {
        openOwn();
        edit();
        const FullDisk full(1024);
        nextQuestion("Save");
        trigger("Close Entry");
        QCOMPARE(entries(), QStringList("own"));
        nextQuestion("Save");
        QVERIFY(!closeWindow());
    }

    void closingTheWindowAsksOnceForAllFiles() {
        open();
        m_window->openFiles({ownCopy("a.pdb"), ownCopy("b.pdb"), ownCopy("c.pdb")});
        takeMessages();
        const QByteArray before = contentOf(path("b.pdb"));
        edit(0);
        edit(2);
        nextQuestion("Cancel");
        QVERIFY(!closeWindow());
        QCOMPARE(m_asked, QStringList("The changes to 2 files are not saved."));
        QString listed;
        next<QMessageBox>([&listed](QMessageBox* box) {
            listed = box->informativeText();
            press(box, "Save");
        });
        QVERIFY(closeWindow());
        QCOMPARE(listed, "a.pdb\nc.pdb");
        QVERIFY(atomRows(contentOf(path("a.pdb"))) < atomRows(before));
        QVERIFY(atomRows(contentOf(path("c.pdb"))) < atomRows(before));
        QCOMPARE(contentOf(path("b.pdb")), before);
    }

    void aWindowWithoutChangesClosesWithoutAQuestion() {
        openOwn();
        QVERIFY(closeWindow());
    }

    void whatIsInNoFileIsAskedForItsFile() {
        open();
        const test_data::Chains chains(1, 3);
        QCOMPARE(title(), "made* - Workbench");
        nextQuestion("Save");
        next<QFileDialog>([](QFileDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        QVERIFY(!closeWindow());
        nextQuestion("Save");
        nextFile(path("made.pdb"));
        QVERIFY(closeWindow());
        QCOMPARE(atomRows('\n' + contentOf(path("made.pdb"))), qsizetype{6});
    }

    void aNameWithTheMarkOfTheStarIsShownAsItIs() {
        open();
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "a[*]b", "Composite");
        }
        QCOMPARE(m_window->windowTitle(), "a[*][*]b - Workbench");
        QVERIFY(!m_window->isWindowModified());
    }
};

REGISTER_TEST(SavingTest)
#include "SavingTest.moc"
