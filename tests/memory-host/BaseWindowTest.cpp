#include "BaseWindow.h"
#include "TestSupport.h"
#include "WidgetFactory.h"

#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QScreen>
#include <QTextBrowser>

#include <memory>

namespace {

class Window : public BaseWindow {
public:
    explicit Window(bool flag = false, QWidget* parent = nullptr, const char* name = nullptr)
        : BaseWindow(QStringLiteral("A window"), QSize(400, 300), QStringLiteral("some-page"), flag,
                     parent, name) {}

    WidgetFactory* factory() const { return m_Factory; }
};

QWidget* helpViewer() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "HelpViewer")
            return widget;
    }
    return nullptr;
}

} // namespace

class BaseWindowTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    void cleanup() override {
        delete helpViewer();
        TestCase::cleanup();
    }

    void aNewWindowIsHiddenWithItsTitleSizeAndHelpPage() {
        const Window window;
        QVERIFY(window.isHidden());
        QCOMPARE(window.windowTitle(), "A window");
        QCOMPARE(window.size(), QSize(400, 300));
        QCOMPARE(window.helpPage(), "some-page");
        QCOMPARE(window.objectName(), QString());
        QVERIFY(window.isWindow());
        QCOMPARE(Window(false, nullptr, "n\xe4me").objectName(), QString::fromLatin1("n\xe4me"));
    }

    void everyWindowHasAFactoryThatMakesWidgets() {
        Window window;
        QVERIFY(window.factory());
        const QPointer<QLineEdit> edit = window.factory()->CreateQLineEdit(&window);
        QCOMPARE(edit->window(), &window);
    }

    void theFlagMakesItADialogOfItsParent() {
        QWidget parent;
        QCOMPARE(Window(true, &parent).windowType(), Qt::Dialog);
        QCOMPARE(Window(false, &parent).windowType(), Qt::Window);
        QCOMPARE(Window(true, nullptr).windowType(), Qt::Window);
    }

    void closingHidesAndNeverDeletes() {
        QPointer<Window> window = new Window;
        window->setAttribute(Qt::WA_DeleteOnClose);
        for (int i = 0; i < 2; ++i) {
            window->show();
            QVERIFY(window->isVisible());
            QVERIFY(window->close());
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
            QVERIFY(window);
            QVERIFY(window->isHidden());
        }
        delete window;
    }

    void closingAHiddenWindowIsHarmless() {
        Window window;
        QVERIFY(window.close());
        QVERIFY(window.isHidden());
        window.show();
        QVERIFY(window.isVisible());
    }

    void aWindowThatIsClosedWhileMinimisedIsNeitherShownNorMinimised() {
        Window window;
        window.showMinimized();
        QVERIFY(window.isMinimized());
        QVERIFY(window.close());
        QVERIFY(window.isHidden());
        QVERIFY(!window.isMinimized());
    }

    void closingKeepsTheSizeThatTheUserGave() {
        Window window;
        window.show();
        window.resize(333, 222);
        window.close();
        window.show();
        QCOMPARE(window.size(), QSize(333, 222));
    }

    void closingAMaximisedWindowKeepsItMaximised() {
        Window window;
        window.showMaximized();
        window.close();
        window.show();
        QVERIFY(window.isMaximized());
    }

    void killClosesTheWindowThatItIsGiven() {
        Window window;
        Window other;
        window.show();
        other.show();
        window.Kill(&other);
        QVERIFY(other.isHidden());
        QVERIFY(window.isVisible());
        window.Kill(&window);
        QVERIFY(window.isHidden());
        window.Kill(nullptr);
    }

    void aWindowIsNeverLargerThanTheScreenNorBesideIt() {
        Window window;
        const QRect area = window.screen()->availableVirtualGeometry();
        window.resize(area.size() * 2);
        window.move(area.bottomRight() + QPoint(500, 500));
        window.show();
        QCOMPARE(window.size(), area.size());
        QVERIFY(area.intersects(window.frameGeometry()));
    }

    void f1ShowsTheHelpPage() {
        Window window;
        auto* const edit = new QLineEdit(&window);
        window.setCentralWidget(edit);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        edit->setFocus();
        QVERIFY(!helpViewer());
        QTest::keyClick(edit, Qt::Key_F1);
        QVERIFY(helpViewer() && helpViewer()->isVisible());
        // No such page stands in the data folder; the viewer says which one was asked for.
        const QString shown = helpViewer()->findChild<QTextBrowser*>()->toPlainText();
        QVERIFY2(shown.contains("some-page"), qPrintable(shown));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.first().contains("some-page"), qPrintable(log.first()));
    }

    void deletingAVisibleWindowIsSafe() {
        auto window = std::make_unique<Window>();
        window->show();
        window.reset();
        QCoreApplication::processEvents();
    }
};

REGISTER_TEST(BaseWindowTest)
#include "BaseWindowTest.moc"
