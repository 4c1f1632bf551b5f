// The docks of the main window while its size changes.
#include "MainWindowCase.h"

#include <QDockWidget>
#include <QTest>
#include <QWindow>

class DockWidthsTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// Of the Structure Editor, the view and the inspector.
    QList<int> widths() {
        QTest::qWait(20); // until the docks rest
        return {dock(m_editor)->width(), dock(m_view)->width(), dock("inspector")->width()};
    }
    /// Opens the window as it was remembered.
    void start() {
        const QStringList plugins = memory_host::loadPlugins(STAGE_PLUGINS);
        m_window = std::make_unique<workbench::MainWindow>(workbench::MainWindow::Setup{
            plugins, SOURCE_DIR "/data", m_folder->filePath("window.ini")});
        QVERIFY(m_window->startPlugins());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        takeMessages();
    }
    /// Without the limits of a window manager, which come from the docks.
    void resizeWindow(int width, int height) {
        m_window->windowHandle()->resize(width, height);
        QCoreApplication::processEvents();
        QCOMPARE(m_window->size(), QSize(width, height));
    }
    /// Drags what is between the Structure Editor and the view.
    void dragEdge(int by) {
        const int x =
            dock(m_editor)->mapTo(m_window.get(), QPoint()).x() + dock(m_editor)->width() + 1;
        const QPoint from(x, m_window->height() / 2);
        QTest::mouseMove(m_window.get(), from);
        QTest::mousePress(m_window.get(), Qt::LeftButton, {}, from);
        QTest::mouseMove(m_window.get(), from + QPoint(by / 2, 0));
        QTest::mouseMove(m_window.get(), from + QPoint(by, 0));
        QTest::qWait(20); // it follows later
        QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, from + QPoint(by, 0));
    }

private slots:
    void theViewAloneGrowsAndShrinksWithTheWindow() {
        open();
        const QList<int> usual = widths();
        for (const int width : {1201, 1500, 2500, 1100, 1200}) {
            resizeWindow(width, 700);
            QCOMPARE(widths(), QList<int>({usual[0], usual[1] + width - 1200, usual[2]}));
        }
    }

    void aWindowThatHadNoRoomHasItsWidthsAgain_data() {
        QTest::addColumn<QList<QSize>>("sizes");
        QTest::newRow("1 x 1") << QList<QSize>{{1, 1}};
        QTest::newRow("small") << QList<QSize>{{500, 300}};
        QTest::newRow("by and by") << QList<QSize>{{900, 600}, {700, 500}, {500, 400}, {200, 100},
                                                   {1, 1},     {200, 100}, {600, 400}, {900, 600}};
        QTest::newRow("7680 x 4320") << QList<QSize>{{1, 1}, {7680, 4320}};
    }
    void aWindowThatHadNoRoomHasItsWidthsAgain() {
        QFETCH(QList<QSize>, sizes);
        open();
        const QList<int> usual = widths();
        for (const QSize& size : sizes) {
            resizeWindow(size.width(), size.height());
            widths();
        }
        resizeWindow(1200, 800);
        QCOMPARE(widths(), usual);
    }

    void aWindowSmallerThanItsDocksCanBeIsNotRemembered() {
        open();
        m_window->resize(1100, 700);
        const QList<int> before = widths();
        m_window->close();
        end();
        for (const QSize size : {QSize(1, 1), QSize(200, 900), QSize(900, 100)}) {
            start();
            resizeWindow(size.width(), size.height());
            widths();
            m_window->close();
            end();
        }
        start();
        QCOMPARE(m_window->size(), QSize(1100, 700));
        QCOMPARE(widths(), before);
    }

    void whatTheUserDraggedStays() {
        open();
        const QList<int> usual = widths();
        dragEdge(-60);
        const QList<int> dragged = widths();
        QCOMPARE(dragged, QList<int>({usual[0] - 60, usual[1] + 60, usual[2]}));
        resizeWindow(1, 1);
        widths();
        resizeWindow(1300, 800);
        QCOMPARE(widths(), QList<int>({dragged[0], dragged[1] + 100, dragged[2]}));
    }

    void aDockThatWasClosedMeanwhileStaysClosed() {
        open();
        const QList<int> usual = widths();
        resizeWindow(1, 1);
        dock("inspector")->close();
        widths();
        resizeWindow(1200, 800);
        widths();
        QVERIFY(!dock("inspector")->isVisible());
        QCOMPARE(dock(m_editor)->width(), usual[0]);
        QVERIFY(dock(m_view)->width() > usual[1]);
        resizeWindow(1300, 800);
        widths();
        QCOMPARE(dock(m_editor)->width(), usual[0]);
    }

    void withoutTheViewNothingIsHeld() {
        open();
        dock(m_view)->close();
        widths();
        resizeWindow(1, 1);
        resizeWindow(1200, 800);
        widths();
        QVERIFY(dock(m_editor)->isVisible() && dock("inspector")->isVisible());
    }
};

REGISTER_TEST(DockWidthsTest)
#include "DockWidthsTest.moc"
