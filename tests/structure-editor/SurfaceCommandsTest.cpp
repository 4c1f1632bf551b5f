// Surfaces and the mapping of a grid: what other plug-ins are sent, and what they may do meanwhile.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "RecordingTestCase.h"
#include "RepaintCount.h"
#include "Space.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QInputDialog>

#include <optional>
#include <stdexcept>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

struct Surface {
    const char* slot;
    const char* label; ///< null without a menu entry
    const char* sent;  ///< what stands in the log
    const char* absent;
};

const Surface surfaces[] = {
    {"MakeSurface", "ConnollySurface", "Command Create|SolidVolume|Vuxo|Connolly|Connolly|false",
     "Plug-in Create/SolidVolume is not loaded (Connolly Connolly from Vuxo)"},
    {"MakeSurfaceVdW", "VdWaalsSurface",
     "Command Create|SolidVolume|Vuxo|AddSurfaceVdW|VanderWaals|false",
     "Plug-in Create/SolidVolume is not loaded (AddSurfaceVdW VanderWaals from Vuxo)"},
    {"MakeSurfaceSolv", "SolAccesSurface",
     "Command Create|SolidVolume|Vuxo|AddSurfaceSolv|SolventAccessible|false",
     "Plug-in Create/SolidVolume is not loaded (AddSurfaceSolv SolventAccessible from Vuxo)"},
    {"MakeSurfaceGauss", nullptr, "Command Create|SolidVolume|Vuxo|AddSurfaceG|Gaussian|false",
     "Plug-in Create/SolidVolume is not loaded (AddSurfaceG Gaussian from Vuxo)"},
    {"MakeSurfaceED", nullptr, "Command Create|SolidVolume|Vuxo|AddSurfaceED|ElectronDensity|false",
     "Plug-in Create/SolidVolume is not loaded (AddSurfaceED ElectronDensity from Vuxo)"},
    {"MapGrid2Surf", "MapGrid2Surface",
     "CommandC Calculate|Electrostatics|Vuxo|MapGrid2Surf|Map|false",
     "Plug-in Calculate/Electrostatics is not loaded (MapGrid2Surf Map from Vuxo)"},
};

} // namespace

class SurfaceCommandsTest : public RecordingTestCase {
    Q_OBJECT

    void call(const char* slot) { QVERIFY(QMetaObject::invokeMethod(m_window.get(), slot)); }
    static void addRows() {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(surfaces)); ++i)
            QTest::newRow(surfaces[i].slot) << i;
    }
    bool subSurface(const std::function<void(QInputDialog&)>& answer) {
        return withDialog<QInputDialog>([this] { call("MakeSubSurface"); }, answer);
    }

private slots:
    void eachSlotSendsItsSixValues_data() { addRows(); }
    void eachSlotSendsItsSixValues() {
        QFETCH(int, index);
        showWindow();
        call(surfaces[index].slot);
        QCOMPARE(takeHostLog(), QStringList(surfaces[index].sent));
        // What the plug-in wrote into the value is not sent again.
        call(surfaces[index].slot);
        QCOMPARE(takeHostLog(), QStringList(surfaces[index].sent));
    }

    void theMenuEntriesSendTheSame() {
        showWindow();
        for (const Surface& each : surfaces) {
            if (!each.label)
                continue;
            trigger(*m_window, QStringLiteral("Add"), QString::fromLatin1(each.label));
            QCOMPARE(takeHostLog(), QStringList(each.sent));
        }
    }

    void eachSlotRepaintsTheTreeOnce_data() { addRows(); }
    void eachSlotRepaintsTheTreeOnce() {
        QFETCH(int, index);
        for (const bool withPlugins : {true, false}) {
            showWindow(withPlugins);
            const RepaintCount repaints;
            call(surfaces[index].slot);
            QCOMPARE(repaints.calls(), 1);
            takeHostLog();
            m_window.reset();
            m_plugins.reset();
        }
    }

    void withoutThePluginASlotDoesNothing_data() { addRows(); }
    void withoutThePluginASlotDoesNothing() {
        QFETCH(int, index);
        showWindow(false);
        const QStringList before = rows(*m_window);
        OtherPlugin other;
        call(surfaces[index].slot);
        QCOMPARE(takeHostLog(), QStringList(surfaces[index].absent));
        QCOMPARE(rows(*m_window), before);
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
    }

    void nothingIsChangedAndNoGuardTaken_data() { addRows(); }
    void nothingIsChangedAndNoGuardTaken() {
        QFETCH(int, index);
        itemAt(m_shown, {"A", "Groups", "MET 1"})->SetSelected(true);
        showWindow();
        OtherPlugin other;
        m_plugins->during([] {
            const DataPoint<Space> guard(nullptr, Space::instance());
            QVERIFY(guard.m_good);
        });
        const QString selected = selectedNames(m_shown);
        call(surfaces[index].slot);
        QCOMPARE(other.updates, 1); // the plug-in's
        {
            const memory_host::SpaceLock lock;
            m_plugins->during({});
            call(surfaces[index].slot);
        }
        QCOMPARE(takeHostLog(), QStringList({surfaces[index].sent, surfaces[index].sent}));
        QCOMPARE(selectedNames(m_shown), selected);
        QCOMPARE(other.updates + other.adds + other.deletes, 1);
    }

    void anEmptyTreeAndAnEmptySpaceAreSentToo_data() { addRows(); }
    void anEmptyTreeAndAnEmptySpaceAreSentToo() {
        QFETCH(int, index);
        destroyElsewhere(m_shown);
        m_shown = nullptr;
        showWindow();
        call(surfaces[index].slot);
        QCOMPARE(takeHostLog(), QStringList(surfaces[index].sent));
    }

    void aPluginThatThrowsIsLoggedAndDoesNoHarm_data() { addRows(); }
    void aPluginThatThrowsIsLoggedAndDoesNoHarm() {
        QFETCH(int, index);
        showWindow();
        const QStringList before = rows(*m_window);
        m_plugins->during([] { throw std::runtime_error("no surface today"); });
        const RepaintCount repaints;
        call(surfaces[index].slot);
        QCOMPARE(repaints.calls(), 1);
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        QCOMPARE(log.front(), surfaces[index].sent);
        QVERIFY2(log.back().contains("no surface today"), qPrintable(log.back()));
        QCOMPARE(rows(*m_window), before);
        clickRow(*m_window, {"1abc", "A"});
        QVERIFY(m_shown->IsSelected());
    }

    void whatThePluginAddsIsShown_data() { addRows(); }
    void whatThePluginAddsIsShown() {
        QFETCH(int, index);
        showWindow();
        m_plugins->during([this] {
            const DataAdder<Space> guard(nullptr, Space::instance());
            TAVIK::DataMaker::makeCore(Space::instance(), "surface", "Surface");
            TAVIK::DataMaker::makeCore(m_shown, "inner", "Surface");
        });
        call(surfaces[index].slot);
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ surface"}));
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(rows(*m_window).back(), " inner");
        takeHostLog();
    }

    void aPluginMayDeleteTheShownItem_data() { addRows(); }
    void aPluginMayDeleteTheShownItem() {
        QFETCH(int, index);
        addStructure("2abc");
        showWindow();
        m_plugins->during([this] { destroyElsewhere(m_shown); });
        call(surfaces[index].slot);
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        m_plugins->during({});
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "2abc");
        takeHostLog();
    }

    void aPluginMayEndTheWindow_data() { addRows(); }
    void aPluginMayEndTheWindow() {
        QFETCH(int, index);
        showWindow();
        m_plugins->during([this] { m_window.reset(); });
        if (surfaces[index].label)
            trigger(*m_window, QStringLiteral("Add"), QString::fromLatin1(surfaces[index].label));
        else
            call(surfaces[index].slot);
        QVERIFY(!m_window);
        QCOMPARE(takeHostLog(), QStringList(surfaces[index].sent));
    }

    void aSubSurfaceAsksForItsLimit() {
        showWindow();
        QVERIFY(subSurface([](QInputDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), "Limit");
            QCOMPARE(dialog.labelText(), "Enter minimum contour value for surface");
            QCOMPARE(dialog.textValue(), "0");
            QCOMPARE(dialog.textEchoMode(), QLineEdit::Normal);
            QVERIFY(!dialog.parentWidget());
            QVERIFY(dialog.isModal());
            QCOMPARE(takeHostLog(), QStringList());
            pressEnter(dialog);
        }));
        QCOMPARE(takeHostLog(),
                 QStringList(RecordingPlugins::sent("SubSurface", "AddSurface", "0")));
    }

    void aSubSurfaceIsReachedByItsMenuEntry() {
        showWindow();
        QVERIFY(withDialog<QInputDialog>(
            [this] { trigger(*m_window, QStringLiteral("Add"), QStringLiteral("SubSurface")); },
            pressEnter));
        QCOMPARE(takeHostLog(),
                 QStringList(RecordingPlugins::sent("SubSurface", "AddSurface", "0")));
    }
};

REGISTER_TEST(SurfaceCommandsTest)
#include "SurfaceCommandsTest.moc"
