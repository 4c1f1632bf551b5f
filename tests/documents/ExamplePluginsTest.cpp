// The plug-ins that docs/architecture.md makes as examples: compiled from the document, loaded by
// the host and used.
#include "DataPoint.h"
#include "PluginManager.h"
#include "Space.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "items/Building.h"
#include "services/PluginFolder.h"

#include <QApplication>
#include <QLabel>

using TAVIK::Compound;
using TAVIK::Space;

class ExamplePluginsTest : public test_support::TestCase {
    Q_OBJECT

    Compound* m_carbon = nullptr;
    Compound* m_hydrogen = nullptr;

    static void send(const char* command) {
        PluginManager::Command("Modify", "Hydrogens", "a test", command, "",
                               static_cast<void*>(nullptr));
    }
    static QString textOfTheWindow() {
        for (const QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->windowTitle() == "Counter")
                return window->findChild<QLabel*>()->text();
        return {};
    }

private slots:
    void init() override {
        TestCase::init();
        Compound* const molecule = memory_host::makeDetached("A", "Molecule");
        m_carbon = memory_host::addAtom(molecule, {"C1", "C", {}, 0, 0, {}});
        m_hydrogen = memory_host::addAtom(molecule, {"H1", "H", {}, 0, 0, {}});
        memory_host::attach(molecule, Space::instance());
        QCOMPARE(memory_host::loadPlugins(EXAMPLE_PLUGINS),
                 (QStringList{"Modify/Hydrogens", "View/Counter"}));
    }
    void cleanup() override {
        memory_host::unloadPlugins();
        // What the frame of a window writes when there is none.
        QStringList messages = takeMessages();
        messages.removeAll("GUIPlugin::Cleanup()");
        QCOMPARE(messages, QStringList());
        TestCase::cleanup();
    }

    void theWindowFollowsTheData() {
        m_carbon->SetSelected(true);
        QVERIFY(memory_host::startPlugin("View/Counter"));
        QCOMPARE(textOfTheWindow(), "1 atoms are selected");
        {
            const DataPoint<Space> guard(nullptr, Space::instance());
            QVERIFY(guard.m_good);
            Space::instance()->SetSelected(true);
        }
        QCOMPARE(textOfTheWindow(), "2 atoms are selected");
        QCOMPARE(takeMessages(), QStringList{"GUIPlugin::CommandC: Execution successful"});
        memory_host::unloadPlugins();
        QCOMPARE(textOfTheWindow(), QString());
        QVERIFY(takeMessages().contains("GUIPlugin: fKill"));
    }

    void theOtherHidesHydrogensInOneChange() {
        struct Listener : Subscriber {
            int updates = 0;
            void commUpdate() override { ++updates; }
            void commAdd() override {}
            void commDelete() override {}
        } listener;
        send("HideHydrogens");
        QVERIFY(!m_hydrogen->IsVisible());
        QVERIFY(m_carbon->IsVisible());
        QCOMPARE(listener.updates, 1);
    }

    void theOtherSaysWhatItCannotDo() {
        send("HideCarbons");
        QVERIFY(takeHostLog().join(u' ').contains("'HideCarbons' not recognized"));
        const DataPoint<Space> guard(nullptr, Space::instance());
        send("HideHydrogens");
        QVERIFY(takeHostLog().join(u' ').contains("another change is under way"));
        QVERIFY(m_hydrogen->IsVisible());
    }
};

REGISTER_TEST(ExamplePluginsTest)
#include "ExamplePluginsTest.moc"
