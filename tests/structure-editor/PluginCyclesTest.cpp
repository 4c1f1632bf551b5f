// The built plug-in, loaded, shown, used, killed, cleaned up and unloaded again and again: nothing
// may be left behind that grows. PLUGIN_CYCLES in the environment is how often.
#include "PluginManager.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Subscribers.h"
#include "services/PluginFolder.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QTemporaryDir>
#include <QTreeView>

#include <dlfcn.h>
#include <malloc.h>
#include <memory>

using namespace window_tools;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int usualCycles = 200;
#else
constexpr int usualCycles = 1000;
#endif

/// What must not grow from cycle to cycle.
struct Held {
    qsizetype files =
        QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
    qsizetype widgets = QApplication::topLevelWidgets().size();
    std::size_t subscribers = memory_host::subscriberCount();
    std::size_t heap = mallinfo2().uordblks;
};

QWidget* editor() {
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->inherits("Vuxo"))
            return widget;
    return nullptr;
}

void send(const char* command) {
    PluginManager::Command("Edit", "Vuxo", "Test", command, "", static_cast<const void*>(nullptr));
}

} // namespace

class PluginCyclesTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_library;

    void useWindow() {
        QWidget* window = editor();
        QVERIFY(window && window->isVisible());
        auto* list = window->findChild<QListWidget*>();
        click(list->viewport(), list->visualItemRect(list->item(0)).center(), Qt::LeftButton);
        auto* tree = window->findChild<QTreeView*>();
        QVERIFY(tree->model()->hasChildren());
        click(tree->viewport(), tree->visualRect(tree->model()->index(0, 0)).center(),
              Qt::LeftButton);
        QCoreApplication::processEvents();
    }

    void cycle() {
        QCOMPARE(memory_host::loadPlugins(m_folder->path()), QStringList("Edit/Vuxo"));
        QVERIFY(memory_host::startPlugin("Edit/Vuxo"));
        useWindow();
        send("Kill");
        QVERIFY(!editor());
        send("Show");
        useWindow();
        memory_host::unloadPlugins();
        QVERIFY(!editor());
        QCoreApplication::processEvents();
        void* const left =
            dlopen(QFile::encodeName(m_library).constData(), RTLD_LAZY | RTLD_NOLOAD);
        QVERIFY(!left); // it really is loaded anew each time
        takeMessages();
    }

private slots:
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        m_library = m_folder->filePath("Edit/libVuxo.so.0");
        QVERIFY(QDir(m_folder->path()).mkdir("Edit"));
        QVERIFY(QFile::copy(QStringLiteral(STAGE_PLUGINS "/Edit/libVuxo.so.0"), m_library));
    }

    void nothingGrowsFromCycleToCycle() {
        constexpr int settled = 100; // until then caches and pools find their sizes
        bool isSet = false;
        const int asked = qEnvironmentVariableIntValue("PLUGIN_CYCLES", &isSet);
        const int cycles = isSet ? asked : usualCycles;
        QVERIFY2(cycles > settled, "PLUGIN_CYCLES must be more than 100");
        addStructure("1abc");
        for (int i = 0; i != settled && !QTest::currentTestFailed(); ++i)
            cycle();
        const Held before;
        for (int i = settled; i != cycles && !QTest::currentTestFailed(); ++i)
            cycle();
        const Held after;
        std::printf("INFO   : %d cycles; heap %zu bytes after %d of them, %zu in the end\n", cycles,
                    before.heap, settled, after.heap);
        QCOMPARE(after.files, before.files);
        QCOMPARE(after.widgets, before.widgets);
        QCOMPARE(after.subscribers, before.subscribers);
#ifndef __SANITIZE_ADDRESS__ // whose heap is another one; it finds leaks by itself
        // Caches come and go by some 3000 bytes; one lost object a cycle would be more than this.
        QVERIFY(after.heap < before.heap + std::size_t(cycles - settled) * 8);
#endif
    }
};

REGISTER_TEST(PluginCyclesTest)
#include "PluginCyclesTest.moc"
