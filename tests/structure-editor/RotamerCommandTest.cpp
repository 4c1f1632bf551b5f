// "Rotamers": one command to the rotamer plug-in for each selected residue, seen from a plug-in
// library that the host has loaded, and what that library may do to the data meanwhile.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "PluginManager.h"
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "history/Steps.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "services/PluginFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>
#include <utility>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

// What the plug-in writes when it gets the residue at `address` in the way it must.
QString callFor(quintptr address) {
    const QString hex = QString::number(address, 16);
    return QStringLiteral("Command %1 Create|Rotamer|StructureEditor|Rotamer||%1|0|1").arg(hex);
}

quintptr addressOf(const Compound* item) {
    return reinterpret_cast<quintptr>(item);
}

} // namespace

class RotamerCommandTest : public WindowTestCase {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    Compound* m_shown = nullptr;
    QStringList m_calls; ///< what the plug-in is to see when all selected residues are sent

    void loadPlugin() {
        const QString built = QStringLiteral(TEST_PLUGINS "/libRotamer.so");
        const QString path = m_folder->filePath(QStringLiteral("Create/libRotamer.so"));
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QVERIFY2(QFile::copy(built, path), qPrintable(built));
        QCOMPARE(memory_host::loadPlugins(m_folder->path()), QStringList{"Create/Rotamer"});
    }
    // What the plug-in does from now on when it is asked for rotamers.
    static void plan(std::string deed, Compound* target = nullptr) {
        PluginManager::Execute("Create", "Rotamer", "Test", "Plan", &deed, target);
    }
    void showWindow(int entry = 0) {
        openWindow();
        if (entry >= 0)
            clickEntry(*m_window, entry);
    }
    // A deletion has emptied the tree. Only another entry than the last one fills it.
    void showAgain() {
        clickEntry(*m_window, 1);
        clickEntry(*m_window, 0);
    }
    void rotamers() { trigger(*m_window, QStringLiteral("Add"), QStringLiteral("Rotamers")); }
    Compound* residue(int number) const {
        return itemAt(m_shown, {"A", "Groups", QStringLiteral("R %1").arg(number)});
    }

private slots:
    // The shown item has the residues R 1 to R 5, all selected but R 3.
    void init() override {
        TestCase::init();
        m_folder = std::make_unique<QTemporaryDir>();
        std::vector<ResidueSpec> residues;
        for (int i = 1; i <= 5; ++i)
            residues.push_back({"R " + std::to_string(i), {{"C1", "C", {}}, {"C2", "C", {}}}});
        m_shown = addChain("1abc", residues);
        addChain("2abc", residues)->SetSelected(true);
        m_calls.clear();
        for (const int number : {1, 2, 4, 5}) {
            residue(number)->SetSelected(true);
            m_calls << callFor(addressOf(residue(number)));
        }
        atomsOf(residue(3))[0]->SetSelected(true);
        loadPlugin();
    }

    void cleanup() override {
        m_window.reset();
        memory_host::unloadPlugins();
        WindowTestCase::cleanup();
    }

    void thePluginGetsEverySelectedResidueOfTheShownItemInOrder() {
        showWindow();
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList());
    }

    void noGuardIsOpenedAndNobodyIsToldButTheWindowIsRefreshed() {
        showWindow();
        OtherPlugin other;
        Space::instance()->ChildBegin()[1]->SetVisible(false); // nobody is told
        rotamers();
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", "OX 2abc"}));
        QCOMPARE(takeHostLog(), m_calls);
    }

    void aLockedSpaceDoesNotStopTheCommandsAndIsNotReported() {
        showWindow();
        plan("add to the residue");
        const QStringList before = rows(*m_window);
        {
            const memory_host::SpaceLock lock;
            rotamers();
        }
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList());
        QCOMPARE(rows(*m_window), before); // it is the plug-in's guard that was refused
    }

    void withoutATreeNothingIsSent() {
        showWindow(-1);
        Space::instance()->ChildBegin()[1]->SetVisible(false); // nobody is told
        rotamers();
        QCOMPARE(takeHostLog(), QStringList());
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", " X 2abc"})); // nor a refresh
    }

    void withNothingSelectedNothingIsSentButTheWindowIsRefreshed() {
        m_shown->SetSelected(false);
        showWindow();
        Space::instance()->ChildBegin()[1]->SetVisible(false); // nobody is told
        rotamers();
        QCOMPARE(takeHostLog(), QStringList());
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", "OX 2abc"}));
    }

    void withoutThePluginTheHostSaysSoAndNothingElseHappens() {
        memory_host::unloadPlugins();
        showWindow();
        const QStringList before = rows(*m_window);
        rotamers();
        QCOMPARE(takeHostLog(), QStringList(4, "Plug-in Create/Rotamer is not loaded (Rotamer from "
                                               "StructureEditor)"));
        QCOMPARE(takeMessages(), QStringList());
        QCOMPARE(rows(*m_window), before);
    }

    void aPluginThatThrowsIsSentTheOthersToo() {
        showWindow();
        const QStringList before = rows(*m_window);
        plan("throw");
        rotamers();
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 8);
        for (qsizetype i = 0; i != m_calls.size(); ++i) {
            QCOMPARE(log[2 * i], m_calls[i]);
            QVERIFY2(log[2 * i + 1].contains("Create/Rotamer") &&
                         log[2 * i + 1].contains("no rotamers here"),
                     qPrintable(log[2 * i + 1]));
        }
        QCOMPARE(rows(*m_window), before);
        plan("");
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
    }

    void whatThePluginAddsIsShown() {
        showWindow();
        OtherPlugin other;
        plan("add to the residue");
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(other.adds, 4);
        QStringList expected{"1abc", " A", "  Groups"};
        for (int i = 1; i <= 5; ++i) {
            expected << QStringLiteral("   R %1").arg(i) << "    Group"
                     << "     C1"
                     << "     C2";
            if (i != 3)
                expected << "    Rotamer";
        }
        expected << "  Bonds";
        for (int i = 1; i <= 5; ++i)
            expected << QStringLiteral("   R %1 C1-C2").arg(i);
        QCOMPARE(rows(*m_window), expected);
        QCOMPARE(takeMessages(), QStringList());
    }

    // What comes while the commands are sent is not sent itself.
    void residuesThatThePluginAddsAreNotSent() {
        showWindow();
        plan("add to the target", itemAt(m_shown, {"A", "Groups"}));
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(rows(*m_window).filter("NEW 1").size(), 4);
    }

    void aLaterResidueThatThePluginDestroysIsNotSent() {
        showWindow();
        plan("destroy the target", residue(4));
        rotamers();
        m_calls.removeAt(2);
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList{deleted});
        QVERIFY(!residue(4));
        QCOMPARE(rows(*m_window), QStringList()); // as after every deletion
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", " X 2abc"}));
        showAgain();
        QCOMPARE(rows(*m_window).filter("   R ").filter("C1").size(), 4); // the bonds
    }

    // Others move up in the order of the residues, and are still found.
    void anEarlierResidueThatThePluginDestroysStopsNothing() {
        showWindow();
        OtherPlugin other;
        int turn = 0;
        other.onDelete = [&] {
            if (++turn == 1) // after the first command: one before and one after the next
                for (const int number : {3, 4})
                    destroyElsewhere(residue(number));
        };
        plan("destroy the residue");
        rotamers();
        m_calls.removeAt(2);
        QCOMPARE(takeHostLog(), m_calls);
        QVERIFY(!itemAt(m_shown, {"A", "Groups"})->HasChildren());
        QCOMPARE(takeMessages(), QStringList(5, deleted));
    }

    void theShownItemMayMoveUpInTheList() {
        addChain("3abc", {{"R 1", {{"C", "C", {}}}}})->SetSelected(true);
        showWindow(2);
        Compound* last = Space::instance()->ChildBegin()[2];
        const QString call = callFor(addressOf(itemAt(last, {"A", "Groups", "R 1"})));
        plan("destroy the target", m_shown);
        rotamers();
        QCOMPARE(takeHostLog(), QStringList{call});
        QCOMPARE(takeMessages(), QStringList{deleted});
        showAgain();
        clickEntry(*m_window, 1);
        plan("add to the residue");
        rotamers();
        QCOMPARE(takeHostLog(), QStringList{call});
    }

    void residuesInEveryPlaceAreSentInTheHostsOrder() {
        Compound* entry = TAVIK::DataMaker::makeCore(Space::instance(), "3abc", "Composite");
        Compound* chain = TAVIK::DataMaker::makeCore(entry, "A", "Molecule");
        Compound* groups = TAVIK::DataMaker::makeCore(chain, "Groups", "Composite");
        std::vector<Compound*> made;
        for (Compound* parent : {groups, chain, entry, groups}) {
            made.push_back(TAVIK::DataMaker::makeCore(parent, "R", "Residue"));
            memory_host::addAtom(made.back(), {"C", "C", {}, 0.0F, 0});
        }
        // One that holds nothing is selected by its own mark.
        made.push_back(TAVIK::DataMaker::makeCore(groups, "empty", "Residue"));
        entry->SetSelected(true);
        showWindow(2);
        rotamers();
        QStringList expected;
        for (const std::size_t i : {0, 3, 4, 1, 2})
            expected << callFor(addressOf(made[i]));
        QCOMPARE(takeHostLog(), expected);
    }

    void aResidueThatIsShownItselfIsSent() {
        Compound* alone = TAVIK::DataMaker::makeCore(Space::instance(), "R 1", "Residue");
        memory_host::addAtom(alone, {"C", "C", {}, 0.0F, 0});
        alone->SetSelected(true);
        showWindow(2);
        rotamers();
        QCOMPARE(takeHostLog(), QStringList{callFor(addressOf(alone))});
    }

    // The window is the one that destroys, and is not told of that.
    void aCommandOfTheWindowItselfMayDestroyLaterResidues() {
        showWindow();
        OtherPlugin other;
        other.onAdd = [&] {
            other.onAdd = {};
            trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Residue"));
        };
        plan("add to the residue");
        rotamers();
        QCOMPARE(takeHostLog(), m_calls.first(1));
        QCOMPARE(takeMessages(), QStringList());
        QVERIFY(residue(3));
        QCOMPARE(atomsOf(m_shown).size(), 2U);
        QCOMPARE(rows(*m_window).filter("   R ").size(), 2); // the residue and its bond
    }

    void rotamersAskedForInsideOfRotamersAreSentInTheirTurn() {
        showWindow();
        OtherPlugin other;
        other.onAdd = [&] {
            other.onAdd = {};
            rotamers();
        };
        plan("add to the residue");
        rotamers();
        const QStringList log = takeHostLog();
        QCOMPARE(log.front(), m_calls.front());
        QCOMPARE(log.last(3), m_calls.last(3));
    }

    void whatHoldsLaterResiduesMayBeDestroyed() {
        showWindow();
        plan("destroy the target", itemAt(m_shown, {"A"}));
        rotamers();
        QCOMPARE(takeHostLog(), m_calls.first(1));
        QCOMPARE(takeMessages(), QStringList{deleted});
        QCOMPARE(entries(*m_window).size(), 2);
    }

    void everyResidueMayBeDestroyedInItsOwnCommand() {
        showWindow();
        plan("destroy the residue");
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList(4, deleted));
        QVERIFY(residue(3));
        QCOMPARE(atomsOf(m_shown).size(), 2U);
        showAgain();
        QCOMPARE(rows(*m_window), (QStringList{"1abc", " A", "  Groups", "   R 3", "    Group",
                                               "     C1", "     C2", "  Bonds", "   R 3 C1-C2"}));
    }

    void anotherTopLevelItemMayBeDestroyed() {
        showWindow();
        plan("destroy the target", Space::instance()->ChildBegin()[1]);
        rotamers();
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList{deleted});
        QCOMPARE(entries(*m_window), QStringList{" / 1abc"});
    }

    void theShownItemMayBeDestroyed() {
        showWindow();
        plan("destroy the target", m_shown);
        rotamers();
        QCOMPARE(takeHostLog(), m_calls.first(1));
        QCOMPARE(takeMessages(), QStringList{deleted});
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(entries(*m_window), QStringList{" X 2abc"});
    }

    void theWholeSpaceMayBeEmptied() {
        showWindow();
        plan("destroy everything");
        rotamers();
        QCOMPARE(takeHostLog(), m_calls.first(1));
        QCOMPARE(takeMessages(), (QStringList{deleted, deleted}));
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(entries(*m_window), QStringList());
        rotamers(); // and the window still works
        QCOMPARE(takeHostLog(), QStringList());
    }

    // At the address of a residue that is gone another one may stand by now: it was not selected
    // when the command was called.
    void aResidueThatTookTheDestroyedOnesPlaceIsNotSent() {
        showWindow();
        OtherPlugin other;
        // Destroyed items keep their places as long as that can be taken back.
        memory_host::setHistoryBytes(0);
        bool samePlace = false;
        for (int turn = 0; turn < 50; ++turn) {
            Compound* target =
                addChain("3abc", {{"R 1", {{"C", "C", {}}}}, {"R 2", {{"C", "C", {}}}}});
            target->SetSelected(true);
            clickEntry(*m_window, 2);
            std::vector<Compound*> residues;
            TAVIK::GetResidues(target, residues, true);
            const quintptr kept = addressOf(residues[0]);
            const quintptr gone = addressOf(residues[1]);
            other.onDelete = [&, done = false]() mutable {
                if (std::exchange(done, true))
                    return;
                Compound* groups = itemAt(target, {"A", "Groups"});
                const DataAdder<Compound> guard(nullptr, groups);
                Compound* made = TAVIK::DataMaker::makeCore(groups, "R 3", "Residue");
                made->SetSelected(true);
                samePlace = samePlace || addressOf(made) == gone;
            };
            plan("destroy the target", residues[1]);
            rotamers();
            QCOMPARE(takeHostLog(), QStringList{callFor(kept)});
            destroyElsewhere(target);
        }
        memory_host::setHistoryBytes(memory_host::defaultHistoryBytes);
#ifndef __SANITIZE_ADDRESS__ // It keeps freed addresses from being used again.
        QVERIFY(samePlace);
#endif
        QCOMPARE(takeMessages(), QStringList(100, deleted));
    }

    void aWindowThatGoesMeanwhileIsNoHarm() {
        showWindow();
        OtherPlugin other;
        other.onAdd = [&] { m_window.reset(); };
        plan("add to the residue");
        rotamers();
        QVERIFY(!m_window);
        QCOMPARE(takeHostLog(), m_calls);
        QCOMPARE(takeMessages(), QStringList());
    }
};

REGISTER_TEST(RotamerCommandTest)
#include "RotamerCommandTest.moc"
