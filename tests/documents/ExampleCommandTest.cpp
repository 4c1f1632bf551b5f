// The command that docs/architecture.md adds to the window as an example. It is compiled from the
// document; here it is used through its menu entry.
#include "CommandTools.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"

#include <QMenu>
#include <QMenuBar>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;

class ExampleCommandTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;
    Compound* m_other = nullptr;

    void unselectHidden() { trigger(*m_window, "Select", "Unselect hidden"); }
    bool isMarked(const QString& atom) const {
        return window_tools::isMarked(*m_window, {"1abc", "A", "Groups", "UNL 1", "Group", atom});
    }

private slots:
    // Two structures with everything selected, and C1 hidden in both; the tree shows the first.
    void init() override {
        TestCase::init();
        m_shown = addLine("1abc", {0, 1, 2});
        m_other = addLine("2abc", {0, 1, 2});
        for (Compound* item : {m_shown, m_other}) {
            item->SetSelected(true);
            atomsOf(item)[1]->SetVisible(false);
        }
        showWindow();
    }

    void itsEntryStandsWhereTheDocumentSays() {
        QStringList labels;
        for (const QAction* title : m_window->menuBar()->actions())
            if (title->text() == "Select")
                for (const QAction* action : title->menu()->actions())
                    labels << action->text();
        QCOMPARE(labels.mid(0, 4),
                 (QStringList{"Clear", "Invert", "Unselect hidden", "Full groups"}));
    }

    void itUnselectsTheHiddenAtomsOfTheShownItemOnly() {
        unselectHidden();
        QCOMPARE(selectedNames(m_shown), "C0 C2");
        QCOMPARE(visibleNames(m_shown), "C0 C2");
        QCOMPARE(selectedNames(m_other), "C0 C1 C2");
    }

    void rowsAndEntriesFollow() {
        QVERIFY(isMarked("C1"));
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " X 2abc"}));
        unselectHidden();
        QVERIFY(isMarked("C0"));
        QVERIFY(!isMarked("C1"));
        QCOMPARE(cells(*m_window, {"1abc"}), (QStringList{"1abc", "Yes", "No", "Yes"}));
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", " X 2abc"}));
    }

    void othersHearOnceWhenTheWindowShowsItAlready() {
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] { seen = entries(*m_window); };
        unselectHidden();
        QCOMPARE(other.updates, 1);
        QCOMPARE(other.adds + other.deletes, 0);
        QCOMPARE(seen.value(0), " / 1abc");
    }

    void aRefusedChangeIsSaidAndChangesNothing() {
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            unselectHidden();
        }
        QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
        QCOMPARE(selectedNames(m_shown), "C0 C1 C2");
        QCOMPARE(other.updates, 0);
    }

    void withoutAShownItemItDoesNothing() {
        OtherPlugin other;
        destroyElsewhere(m_shown);
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        unselectHidden();
        QCOMPARE(selectedNames(m_other), "C0 C1 C2");
        QCOMPARE(other.updates, 0);
    }
};

REGISTER_TEST(ExampleCommandTest)
#include "ExampleCommandTest.moc"
