// A program that gives the windows of plug-ins a place in its own.
#include "services/WindowPlaces.h"
#include "PluginTestCase.h"

#include <QPointer>

namespace {

/// Takes every window of a plug-in into a widget.
class Shelf : public memory_host::WindowPlaces {
public:
    Shelf() { memory_host::setWindowPlaces(this); }
    ~Shelf() override {
        memory_host::setWindowPlaces(nullptr);
        if (window)
            window->setParent(nullptr);
    }
    void aboutToShow(BaseWindow& shown, const QString& plugin) override {
        told << "show " + plugin;
        if (plugin.isEmpty())
            return;
        window = &shown;
        if (shown.parentWidget() != &place)
            shown.setParent(&place, Qt::Widget);
    }
    void wasHidden(BaseWindow&) override { told << "hide"; }

    QWidget place;
    QPointer<BaseWindow> window;
    QStringList told;
};

} // namespace

using namespace memory_host;
using namespace plugin_tools;

class WindowPlacesTest : public PluginTestCase {
    Q_OBJECT

    static void sendToWindow(const std::string& command) {
        PluginManager::Command("Create", "Window", "Tester", command, "",
                               static_cast<const void*>(nullptr));
    }

private slots:
    void aWindowGoesToItsPlaceWheneverItIsShown() {
        loadOne("Window");
        Shelf shelf;
        QVERIFY(startPlugin("Create/Window"));
        QVERIFY(shelf.window);
        QVERIFY(!shelf.window->isWindow());
        // It is seen when its place is, and only then does its plug-in show something.
        QVERIFY(!shelf.window->isVisible() && !shelf.window->isHidden());
        QVERIFY(allPluginsDone());
        shelf.place.show();
        QVERIFY(shelf.window->isVisible());
        QVERIFY(!allPluginsDone());
        shelf.window->close();
        QVERIFY(allPluginsDone());
        sendToWindow("Show");
        QVERIFY(shelf.window->isVisible());
        QCOMPARE(shelf.told, QStringList({"show Create/Window", "hide", "show Create/Window"}));
        unloadPlugins();
        takeMessages();
    }

    void killAndCleanupDestroyItWhereItIs() {
        const QString file = loadOne("Window");
        Shelf shelf;
        shelf.place.show();
        QVERIFY(startPlugin("Create/Window"));
        sendToWindow("Kill");
        QVERIFY(!shelf.window);
        QVERIFY(startPlugin("Create/Window"));
        QVERIFY(shelf.window);
        unloadPlugins();
        QVERIFY(!shelf.window);
        QVERIFY(!isInMemory(file));
        takeMessages();
    }

    void aWindowOfNoPluginIsToldAsSuch() {
        Shelf shelf;
        BaseWindow own("Own", QSize(100, 100), QString(), false, nullptr, nullptr);
        own.show();
        QVERIFY(own.isWindow() && own.isVisible());
        QCOMPARE(shelf.told, QStringList("show "));
    }

    void withoutPlacesItIsAWindowOfItsOwn() {
        loadOne("Window");
        {
            Shelf shelf;
            QVERIFY(startPlugin("Create/Window"));
        }
        QVERIFY(!windowPlaces());
        sendToWindow("Show");
        QVERIFY(windowTitled("A plug-in's window"));
        QVERIFY(!allPluginsDone());
        unloadPlugins();
        takeMessages();
    }
};

REGISTER_TEST(WindowPlacesTest)
#include "WindowPlacesTest.moc"
