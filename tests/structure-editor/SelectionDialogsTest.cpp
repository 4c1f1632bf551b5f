// What may happen around the commands that select: while their dialogs are open, when one is
// cancelled, and in which order the window and the others learn of a change.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "HostUnderTest.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QCheckBox>
#include <QFrame>
#include <QInputDialog>
#include <QPushButton>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

Compound* addTwoResidues(const std::string& name) {
    return addChain(name, {{"R 1", {{"H1", "H", {0, 0, 0, true}}, {"C1", "C", {1, 0, 0, true}}}},
                           {"R 2", {{"C2", "C", {2, 0, 0, true}}}}});
}

QStringList childrenOf(Compound* item) {
    QStringList names;
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        names << QString::fromLatin1((*child)->GetName());
    return names;
}

} // namespace

class SelectionDialogsTest : public WindowTestCase {
    Q_OBJECT

    void call(const QString& entry) {
        trigger(*m_window, entry.section(u'/', 0, 0), entry.section(u'/', 1));
    }
    void press(const QString& word) {
        for (QPushButton* button : panelOf(*m_window)->findChildren<QPushButton*>())
            if (button->text().startsWith(word))
                QTest::mouseClick(button, Qt::LeftButton);
    }

private slots:
    // Destroyed by one who does not care about guards: two of these dialogs stand inside of one.
    void whatVanishesWhileADialogIsOpenIsNoHarm_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<bool>("isLocal");
        QTest::addColumn<QString>("victim");
        for (const char* victim : {"the shown item", "a row of it", "an atom", "the whole space"}) {
            const auto row = [&](const char* entry, bool isLocal) {
                QTest::addRow("%s, %s", entry, victim) << entry << isLocal << victim;
            };
            row("Select/Within rad.", true);
            row("Select/Any w\\ rad.", false);
            row("Select/Atoms by type", false);
            row("Add/Define set", true);
        }
    }
    void whatVanishesWhileADialogIsOpenIsNoHarm() {
        QFETCH(QString, entry);
        QFETCH(bool, isLocal);
        QFETCH(QString, victim);
        Compound* shown = addTwoResidues("1abc");
        Compound* other = addTwoResidues("2abc");
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        bool isShownLeft = false;
        QVERIFY(withDialog<QInputDialog>([&] { call(QString(entry).replace(u'\\', u'/')); },
                                         [&](QInputDialog& dialog) {
                                             if (victim == "the shown item") {
                                                 TAVIK::DataMaker::Destroy(shown);
                                             } else if (victim == "the whole space") {
                                                 TAVIK::DataMaker::Destroy(shown);
                                                 TAVIK::DataMaker::Destroy(other);
                                                 other = nullptr;
                                             } else {
                                                 isShownLeft = true;
                                                 TAVIK::DataMaker::Destroy(
                                                     victim == "an atom"
                                                         ? atomsOf(shown)[2]
                                                         : itemAt(shown, {"A", "Groups", "R 2"}));
                                             }
                                             m_window->commDelete();
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(takeMessages(), QStringList{deleted});
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window).size(),
                 Space::instance()->ChildEnd() - Space::instance()->ChildBegin());
        // The tree was emptied, so that nothing is local any more.
        if (isShownLeft && isLocal)
            QCOMPARE(selectedNames(shown), "H1");
        if (isShownLeft)
            QCOMPARE(childrenOf(shown), QStringList{"A"});
        if (other && isLocal)
            QCOMPARE(selectedNames(other), "");
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        // No guard is left open, and the window goes on.
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            QVERIFY(guard.m_good);
        }
        takeMessages();
        if (other) {
            m_window->Populate(0);
            call(QStringLiteral("Select/Clear"));
            QCOMPARE(entries(*m_window).front().left(3), " _ ");
        }
    }

    void aCancelledDialogRefreshesNothing_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("notified"); // by the guard that ends, where there was one
        QTest::newRow("local radius") << "Select/Within rad." << 1;
        QTest::newRow("global radius") << "Select/Any w\\ rad." << 1;
        QTest::newRow("type") << "Select/Atoms by type" << 0;
        QTest::newRow("set") << "Add/Define set" << 0;
    }
    void aCancelledDialogRefreshesNothing() {
        QFETCH(QString, entry);
        QFETCH(int, notified);
        Compound* shown = addTwoResidues("1abc");
        showWindow();
        OtherPlugin other;
        QVERIFY(withDialog<QInputDialog>([&] { call(QString(entry).replace(u'\\', u'/')); },
                                         [&](QInputDialog& dialog) {
                                             atomsOf(shown)[0]->SetSelected(true);
                                             pressEscape(dialog);
                                         }));
        QCOMPARE(entries(*m_window), QStringList{" _ 1abc"});
        QCOMPARE(selectedNames(shown), "H1");
        QCOMPARE(other.updates, notified);
        QCOMPARE(other.adds + other.deletes, 0);
    }

    void theWindowShowsAChangeBeforeOthersHearOfIt_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("entry");
        const auto row = [](const char* command, const char* answer, const char* entry) {
            QTest::newRow(command) << command << answer << entry;
        };
        row("Select/Clear", "", " _ 1abc");
        row("Select/Invert", "", " / 1abc");
        row("Select/Full groups", "", " / 1abc");
        row("Select/All Fgroups", "", " / 1abc");
        row("Select/Within rad.", "3", " X 1abc");
        row("Select/Any w\\ rad.", "3", " X 1abc");
        row("Select/Atoms by type", "C", " X 1abc");
        row("panel/Union", "", " X 1abc");
        row("panel/Intersection", "", " / 1abc");
        row("panel/Difference", "", " _ 1abc");
    }
    void theWindowShowsAChangeBeforeOthersHearOfIt() {
        QFETCH(QString, command);
        QFETCH(QString, answer);
        QFETCH(QString, entry);
        addTwoResidues("1abc");
        Compound* shown = *Space::instance()->ChildBegin();
        showWindow();
        // Behind the window's back: only the command's own refresh can show it.
        atomsOf(shown)[0]->SetSelected(true);
        QStringList heard;
        OtherPlugin other;
        other.onUpdate = [&] { heard << entries(*m_window) << selectedNames(shown); };
        if (command.startsWith("panel/")) {
            panelOf(*m_window)->show();
            press(command.section(u'/', 1));
        } else if (answer.isEmpty()) {
            call(command);
        } else {
            QVERIFY(withDialog<QInputDialog>([&] { call(command.replace(u'\\', u'/')); },
                                             [&](QInputDialog& dialog) {
                                                 if (dialog.inputMode() ==
                                                     QInputDialog::DoubleInput)
                                                     dialog.setDoubleValue(answer.toDouble());
                                                 else
                                                     dialog.setTextValue(answer);
                                                 pressEnter(dialog);
                                             }));
        }
        QCOMPARE(heard, (QStringList{entry, selectedNames(shown)}));
        takeMessages();
    }

    // First the line, then the set, then the row, then the others.
    void aSetIsLoggedBeforeItIsMadeAndShownBeforeOthersHearOfIt() {
        Compound* shown = addTwoResidues("1abc");
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QStringList order;
        host_under_test::hearLog([&](const std::string& line) {
            order << QString::fromStdString(line) << childrenOf(shown).join(u' ');
        });
        OtherPlugin other;
        other.onAdd = [&] { order << childrenOf(shown).join(u' ') << rows(*m_window).back(); };
        QVERIFY(withDialog<QInputDialog>([&] { call(QStringLiteral("Add/Define set")); },
                                         [](QInputDialog& dialog) { pressEnter(dialog); }));
        QCOMPARE(order, (QStringList{"Defined set 'Set' with 1 members.", "A", "A Set", " Set"}));
    }
};

REGISTER_TEST(SelectionDialogsTest)
#include "SelectionDialogsTest.moc"
