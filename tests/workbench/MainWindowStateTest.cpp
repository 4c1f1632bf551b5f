// The main window's size, its floating panels, the whole screen, and the help of what has the
// keyboard.
#include "BaseWindow.h"
#include "FindBox.h"
#include "Inspector.h"
#include "MainWindowCase.h"

#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QTableWidget>

class MainWindowStateTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// The view's widget that takes the keys.
    QWidget* canvas() const { return windowIn(m_view)->centralWidget(); }
    static QWidget* helpWindow() {
        for (QWidget* const window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->windowTitle().startsWith("Help: "))
                return window;
        return nullptr;
    }
    /// The page that F1 shows, where the keyboard is; closes it.
    QString helpPage() {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
        QWidget* const help = helpWindow();
        if (!help)
            return {};
        const QString title = help->windowTitle();
        help->close();
        m_window->activateWindow();
        return QTest::qWaitForWindowActive(m_window.get()) ? title : QString();
    }

private slots:
    void theSizeOfTheWindowIsRemembered() {
        open();
        const QSize size(731, 622);
        m_window->resize(size);
        m_window->close();
        end();
        const QStringList plugins = memory_host::loadPlugins(STAGE_PLUGINS);
        m_window = std::make_unique<workbench::MainWindow>(workbench::MainWindow::Setup{
            plugins, SOURCE_DIR "/data", m_folder->filePath("window.ini")});
        QVERIFY(m_window->startPlugins());
        m_window->show();
        QCOMPARE(m_window->size(), size);
        takeMessages();
    }

    void aFloatingPanelComesBack() {
        open();
        for (const QString& name : {m_editor, m_view, QString("inspector")}) {
            const int width = dock(name)->width();
            dock(name)->setFloating(true);
            QVERIFY(dock(name)->isWindow() && dock(name)->isVisible());
            dock(name)->setFloating(false);
            QTRY_VERIFY(!dock(name)->isWindow());
            QVERIFY(dock(name)->isVisible());
            dock(name)->setFloating(true);
            entry("View", "Usual Places")->trigger();
            QTRY_VERIFY(!dock(name)->isWindow() && dock(name)->isVisible());
            QTRY_VERIFY(std::abs(dock(name)->width() - width) < 10);
        }
    }

    void theWholeScreenIsFilledFromAnywhere() {
        open();
        entry("View", "Full Screen")->trigger();
        QVERIFY(m_window->isFullScreen());
        entry("View", "Full Screen")->trigger();
        QVERIFY(!m_window->isFullScreen());
        for (QWidget* const widget :
             {static_cast<QWidget*>(windowIn(m_editor)->findChild<QListWidget*>()), canvas(),
              static_cast<QWidget*>(m_window->inspector().findChild<QTableWidget*>()),
              static_cast<QWidget*>(m_window->find().field())}) {
            widget->setFocus();
            QTest::keyClick(widget, Qt::Key_F11);
            QVERIFY(m_window->isFullScreen());
            QTest::keyClick(widget, Qt::Key_F11);
            QVERIFY(!m_window->isFullScreen());
        }
    }

    void theHelpIsOfWhatHasTheKeyboard() {
        open();
        m_window->find().begin();
        QCOMPARE(helpPage(), "Help: Find");
        m_window->inspector().findChild<QTableWidget*>()->setFocus();
        QCOMPARE(helpPage(), "Help: Inspector");
        canvas()->setFocus();
        QCOMPARE(helpPage(), "Help: View");
        m_window->setFocus();
        QCOMPARE(helpPage(), "Help: The first ten minutes");
    }
};

REGISTER_TEST(MainWindowStateTest)
#include "MainWindowStateTest.moc"
