// The page "The first ten minutes", done as it says, with the plug-ins of the build.
#include "BaseWindow.h"
#include "FindBox.h"
#include "Focus.h"
#include "Inspector.h"
#include "MainWindow.h"
#include "Space.h"
#include "StatusLine.h"
#include "TestSupport.h"
#include "services/PluginFolder.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDockWidget>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeView>

#include <functional>
#include <memory>
#include <vector>

using workbench::MainWindow;

class FirstTenMinutesTest : public test_support::TestCase {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<MainWindow> m_window;

    /// The steps of the page: all behind each heading with a number.
    static QStringList steps() {
        QFile file(SOURCE_DIR "/data/help/first-ten-minutes.md");
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(QRegularExpression("\n## \\d+\\. ")).mid(1);
    }
    /// What stands between backquotes in a step.
    static QStringList quoted(const QString& step) {
        QStringList all;
        static const QRegularExpression quote("`([^`]+)`");
        for (auto it = quote.globalMatch(step); it.hasNext();)
            all << it.next().captured(1);
        return all;
    }
    QWidget* editor() const {
        return m_window->findChild<QDockWidget*>("plug-in Edit/Vuxo")->widget();
    }
    void choose(const QString& menu, const QString& label) const {
        for (const QAction* action : qobject_cast<BaseWindow*>(editor())->menuBar()->actions())
            if (action->text().remove('&') == menu)
                for (QAction* each : action->menu()->actions())
                    if (each->text() == label) {
                        each->trigger();
                        return;
                    }
        QFAIL(qPrintable(menu + " > " + label));
    }
    void type(const QString& text) {
        QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(m_window->find().field()->hasFocus());
        QTest::keyClicks(m_window->find().field(), text);
        QTRY_VERIFY(!m_window->find().search().isRunning());
    }
    void press(Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(m_window->find().field(), Qt::Key_Return, modifiers);
    }
    QTreeView* tree() const { return editor()->findChild<QTreeView*>(); }
    QStringList childrenInTree() const {
        QStringList names;
        const QModelIndex root = tree()->model()->index(0, 0);
        for (int row = 0; row < tree()->model()->rowCount(root); ++row)
            names << tree()->model()->index(row, 0, root).data().toString();
        return names;
    }

private slots:
    void cleanup() override {
        memory_host::unloadPlugins();
        m_window.reset();
        takeMessages(); // plug-ins say what they do on the debug stream
        TestCase::cleanup();
    }

    void everyStepShowsWhatThePageSays() {
        const QStringList plugins = memory_host::loadPlugins(STAGE_PLUGINS);
        m_window = std::make_unique<MainWindow>(
            MainWindow::Setup{plugins, SOURCE_DIR "/data", m_folder.filePath("window.ini")});
        m_window->openFiles({SOURCE_DIR "/data/sample.pdb"});
        QVERIFY(m_window->startPlugins());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const auto state = [this] { return m_window->status().state(); };
        const auto said = [this] { return m_window->status().said(); };

        const std::vector<std::function<void(const QStringList&)>> deeds = {
            [&](const QStringList& texts) { QTRY_COMPARE(state(), texts.at(0)); },
            [&](const QStringList& texts) {
                auto* const list = editor()->findChild<QListWidget*>();
                QVERIFY(list->item(0)->text().endsWith(texts.at(0)));
                QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                                  list->visualItemRect(list->item(0)).center());
                QCOMPARE(childrenInTree(), texts.mid(1));
            },
            [&](const QStringList& texts) {
                type(texts.at(0));
                QCOMPARE(m_window->findChild<QLabel*>("count")->text(), texts.at(1));
            },
            [&](const QStringList& texts) {
                press();
                QVERIFY(TAVIK::Focus::item());
                QCOMPARE(QString::fromStdString(TAVIK::Focus::item()->GetName()), texts.at(0));
                QTRY_COMPARE(m_window->inspector().inspection().value("Atoms"), texts.at(1));
            },
            [&](const QStringList& texts) {
                type(texts.at(0));
                press(Qt::ControlModifier | Qt::ShiftModifier);
                QTRY_COMPARE(said(), texts.at(1));
            },
            [&](const QStringList& texts) {
                QTest::keyClick(m_window.get(), Qt::Key_I, Qt::ControlModifier);
                QTRY_COMPARE(said(), texts.at(0));
            },
            [&](const QStringList& texts) {
                QTest::keyClick(m_window.get(), Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
                QTRY_COMPARE(said(), texts.at(0));
            },
            [&](const QStringList& texts) {
                type(texts.at(0));
                press(Qt::ControlModifier);
                QTRY_COMPARE(said(), texts.at(1));
                QTRY_COMPARE(state(), texts.at(2));
            },
            [&](const QStringList& texts) {
                choose("Display", "Hide");
                QTRY_COMPARE(said(), texts.at(0));
            },
            [&](const QStringList& texts) {
                choose("Select", "Clear");
                QTRY_COMPARE(state(), texts.at(0));
            },
            [&](const QStringList& texts) {
                type(texts.at(0));
                press(Qt::ControlModifier);
                QTRY_COMPARE(m_window->inspector().inspection().value("Angle"), texts.at(1));
            },
            [&](const QStringList&) {
                for (QToolButton* button : m_window->inspector().findChildren<QToolButton*>())
                    if (button->text() == "Copy")
                        QTest::mouseClick(button, Qt::LeftButton);
                QVERIFY(QApplication::clipboard()->text().contains("Angle\t108.70"));
            },
            [&](const QStringList&) {
                m_window->close();
                QVERIFY(memory_host::allPluginsDone());
            },
        };
        const QStringList page = steps();
        QCOMPARE(static_cast<std::size_t>(page.size()), deeds.size());
        for (qsizetype i = 0; i < page.size(); ++i) {
            deeds[static_cast<std::size_t>(i)](quoted(page[i]));
            // The steps build on each other.
            if (QTest::currentTestFailed())
                QFAIL(qPrintable("in step " + page[i].section('\n', 0, 0)));
        }
    }
};

REGISTER_TEST(FirstTenMinutesTest)
#include "FirstTenMinutesTest.moc"
