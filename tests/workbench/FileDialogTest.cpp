// The dialogs of files: accepted, cancelled, and with files that cannot be used.
#include "DataDelete.h"
#include "DataPoint.h"
#include "ErrorBar.h"
#include "Focus.h"
#include "Geometry.h"
#include "Inspector.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "TestData.h"

#include <QAbstractButton>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QTimer>
#include <QToolButton>

class FileDialogTest : public test_support::MainWindowCase {
    Q_OBJECT

    static QFileDialog* dialog() {
        QFileDialog* found = nullptr;
        const auto isThere = [&found] {
            for (QWidget* const window : QApplication::topLevelWidgets())
                if (auto* const one = qobject_cast<QFileDialog*>(window); one && one->isVisible())
                    found = one;
            return found != nullptr;
        };
        return QTest::qWaitFor(isThere) ? found : nullptr;
    }
    static void answer(const QString& path) {
        auto* const name = dialog()->findChild<QLineEdit*>("fileNameEdit");
        QApplication::clipboard()->setText(path);
        name->selectAll();
        name->paste();
        auto* const buttons = dialog()->findChild<QDialogButtonBox*>();
        for (QAbstractButton* const button : buttons->buttons())
            if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                QTest::mouseClick(button, Qt::LeftButton);
    }
    static void cancel() { QTest::keyClick(dialog(), Qt::Key_Escape); }
    QString badFile() const {
        QFile file(m_folder->filePath("bad.pdb"));
        return file.open(QIODevice::WriteOnly) && file.write("no structure\n") > 0 ? file.fileName()
                                                                                   : QString();
    }
    void verifyError(const QString& part) {
        QTRY_VERIFY(m_window->errors().isVisible());
        const QStringList lines = m_window->errors().lines();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.constFirst().contains(part), qPrintable(lines.constFirst()));
        QCOMPARE(takeHostLog(), lines);
    }
    void select(TAVIK::Compound* item) {
        const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        item->SetSelected(true);
    }

private slots:
    void aFileIsOpenedOrNot() {
        open();
        entry("File", "Open...")->trigger();
        cancel();
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(entries(), QStringList());
        entry("File", "Open...")->trigger();
        answer(sample());
        QTRY_COMPARE(entries(), QStringList("sample"));
    }

    void itOffersEveryFormatAlsoGzipped() {
        open();
        entry("File", "Open...")->trigger();
        const QString filter = dialog()->nameFilters().constFirst();
        cancel();
        for (const char* const ending : {"pdb", "cif", "map", "dx"})
            QVERIFY2(filter.contains(QStringLiteral("*.%1 *.%1.gz").arg(ending)),
                     qPrintable(filter));
    }

    void aBadFileIsSaidWhereTheUserLooks() {
        open();
        entry("File", "Open...")->trigger();
        answer(badFile());
        verifyError("bad.pdb");
        QCOMPARE(entries(), QStringList());
    }

    void aBadFileThatIsDroppedIsSaidThere() {
        open();
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(badFile())});
        // Only what was dragged into the window is dropped there.
        QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(m_window.get(), &enter);
        QDropEvent drop(QPointF(100, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(m_window.get(), &drop);
        verifyError("bad.pdb");
    }

    void theTableIsOfWhatIsSelectedWhenTheDialogCloses() {
        open();
        const test_data::Chains chains(2, 3);
        const QString path = m_folder->filePath("atoms.csv");
        select(chains.chain(0));
        m_window->inspector().saveTable();
        cancel();
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QVERIFY(!QFile::exists(path));
        m_window->inspector().saveTable();
        QVERIFY(dialog());
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(chains.residue(0, 0));
        }
        answer(path);
        QTRY_COMPARE(m_window->status().said(), "4 atoms written to " + path);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().count('\n'), 5);
    }

    void aTableThatIsCancelledIsNotWritten() {
        open();
        const test_data::Chains chains(2, 20'000);
        select(chains.entry);
        const QString path = m_folder->filePath("atoms.csv");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        m_window->inspector().saveTable();
        emit dialog()->fileSelected(path);
        // As soon as there is something to cancel, be it seen yet or not.
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [] {
            for (QWidget* const window : QApplication::topLevelWidgets())
                if (window->inherits("memory_host::ProgressWindow"))
                    QTest::keyClick(window, Qt::Key_Escape);
        });
        watch.start(0);
        cancel();
        QTRY_COMPARE(m_window->status().said(), path + " is not written");
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), "old");
        QCOMPARE(QDir(m_folder->path()).entryList({"atoms.csv*"}, QDir::Files).size(), 1);
        QVERIFY(!m_window->errors().isVisible());
    }

    void aTableOfNothingIsNotWritten() {
        open();
        const test_data::Chains chains(1, 1);
        const QString path = m_folder->filePath("atoms.csv");
        select(chains.entry);
        m_window->inspector().saveTable();
        QVERIFY(dialog());
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::Space::instance()->SetSelected(false);
        }
        answer(path);
        verifyError("no atom is selected");
        QVERIFY(!QFile::exists(path));
    }

    void aTableIsOfferedWhereAtomsAreSelected() {
        open();
        const test_data::Chains chains(1, 1);
        TAVIK::Compound* surface = nullptr;
        {
            const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::SurfaceMesh mesh;
            mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
            mesh.normals.assign(3, {0, 0, 1});
            mesh.triangles = {{0, 1, 2}};
            surface = TAVIK::DataMaker::makeSurface(TAVIK::Space::instance(), "surface", mesh);
        }
        QToolButton* table = nullptr;
        for (auto* const button : m_window->inspector().findChildren<QToolButton*>())
            if (button->text() == "CSV...")
                table = button;
        QVERIFY(table);
        const auto isOffered = [&] {
            return QTest::qWaitFor([this] { return m_window->inspector().isUpToDate(); }) &&
                   table->isEnabled();
        };
        QVERIFY(!isOffered());
        TAVIK::Focus::set(surface, nullptr);
        QVERIFY(!isOffered());
        select(surface);
        QVERIFY(TAVIK::Space::instance()->HasSelected());
        QVERIFY(!isOffered());
        select(chains.atom(0, 0, 1));
        QVERIFY(isOffered());
    }

    void aTableThatCannotBeWrittenIsSaid() {
        open();
        const test_data::Chains chains(1, 1);
        select(chains.chain(0));
        m_window->inspector().saveTable();
        const QString path = m_folder->filePath("nowhere/atoms.csv");
        // The dialog itself takes no such path: who gives it has another way.
        emit dialog()->fileSelected(path);
        cancel();
        verifyError("cannot be written");
    }
};

REGISTER_TEST(FileDialogTest)
#include "FileDialogTest.moc"
