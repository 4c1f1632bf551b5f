// The main window with other plug-ins than those of the build: some missing, some that do not do
// what they should, some without a window.
#include "DataPoint.h"
#include "ErrorBar.h"
#include "FindBox.h"
#include "Inspector.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "TestData.h"

#include <QFile>
#include <QLineEdit>
#include <QListWidget>

class PluginFolderTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// Puts a library into the plug-in folder.
    void place(const QString& library, const QString& type, const QString& name) {
        const QString folder = plugins() + u'/' + type;
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::copy(library, folder + "/lib" + name + ".so"));
    }
    void placeEditor() { place(STAGE_PLUGINS "/Edit/libVuxo.so.0", "Edit", "Vuxo"); }
    void placeView() { place(STAGE_PLUGINS "/Display/libView3D.so", "Display", "View3D"); }
    void placeTest(const QString& plugin, const QString& type, const QString& name) {
        place(QStringLiteral(TEST_PLUGINS "/lib%1.so").arg(plugin), type, name);
    }
    QString plugins() const { return m_folder->filePath("plugins"); }

    QStringList pluginEntries() const {
        QStringList all;
        for (const QAction* menu : m_window->menuBar()->actions())
            if (menu->text().remove('&') == "Plug-ins")
                for (const QAction* each : menu->menu()->actions())
                    all << each->text() + (each->isEnabled() ? "" : ", grey");
        return all;
    }
    void openSample() {
        m_window->openFiles({sample()});
        QCOMPARE(entries(), QStringList("sample"));
        takeMessages();
    }

private slots:
    void withoutTheViewThereIsNoPictureToSave() {
        placeEditor();
        open(plugins(), {"Edit/Vuxo"});
        openSample();
        QVERIFY(!entry("File", "Save Picture..."));
        QVERIFY(entry("File", "Open..."));
        QCOMPARE(pluginEntries(), QStringList("Structure Editor"));
        m_window->find().begin();
        QTest::keyClicks(m_window->find().field(), "NAG 383");
        QTest::keyClick(m_window->find().field(), Qt::Key_Return);
        QTRY_VERIFY(m_window->inspector().inspection().title.endsWith("NAG 383"));
        QVERIFY(!m_window->errors().isVisible());
        takeMessages();
    }

    void withoutTheStructureEditorTheViewIsThere() {
        placeView();
        open(plugins(), {"Display/View3D"});
        openSample();
        QVERIFY(entry("File", "Save Picture..."));
        QCOMPARE(pluginEntries(), QStringList("3-D View"));
        QVERIFY(windowIn(m_view)->isVisible());
        entry("File", "Close Entry")->trigger();
        QCOMPARE(entries(), QStringList());
        QVERIFY(!m_window->errors().isVisible());
    }

    void thePluginsAreNamedByTheirWindows() {
        placeEditor();
        placeView();
        placeTest("Good", "Create", "Good");
        placeTest("Window", "Show", "One");
        placeTest("Window", "Show", "Two");
        open(plugins(), {"Create/Good", "Display/View3D", "Edit/Vuxo", "Show/One", "Show/Two"});
        const QStringList expected{"Good (no window), grey", "3-D View", "Structure Editor",
                                   "A plug-in's window (Show/One)",
                                   "A plug-in's window (Show/Two)"};
        QCOMPARE(pluginEntries(), expected);
        // One that has ended is there to be started again.
        send("Kill");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!dock(m_editor));
        QCOMPARE(pluginEntries(), expected);
        entry("Plug-ins", "Structure Editor")->trigger();
        QVERIFY(windowIn(m_editor)->isVisible());
        end();
        takeHostLog(); // "Good" says what it does
    }

    void aPluginThatThrowsAtEveryChangeKeepsNobodyFromFollowing() {
        placeEditor();
        placeView();
        placeTest("Throwing", "Calculate", "Throwing"); // it is told first
        open(plugins(), {"Calculate/Throwing", "Display/View3D", "Edit/Vuxo"});
        const test_data::Chains chains(2, 3);
        const auto picture = [this] { return windowIn(m_view)->centralWidget()->grab().toImage(); };
        const auto isEmpty = [](const QImage& image) {
            QImage plain = image.copy();
            plain.fill(image.pixel(0, 0));
            return image == plain;
        };
        QTRY_VERIFY(!isEmpty(picture()));
        const auto change = [](TAVIK::Compound* item, bool isShown) {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            item->SetVisible(isShown);
        };
        change(chains.entry, false);
        QTRY_VERIFY(isEmpty(picture()));
        QTRY_COMPARE(m_window->status().said(), "+12 atoms hidden");
        change(chains.entry, true);
        QTRY_VERIFY(!isEmpty(picture()));
        // Said where the user looks, once for each change.
        QTRY_COMPARE(m_window->errors().lines().size(), 3);
        QVERIFY(m_window->errors().isVisible());
        for (const QString& line : m_window->errors().lines())
            QVERIFY2(line.contains("not today"), qPrintable(line));
        QCOMPARE(takeHostLog(), m_window->errors().lines());
        takeMessages();
    }
};

REGISTER_TEST(PluginFolderTest)
#include "PluginFolderTest.moc"
