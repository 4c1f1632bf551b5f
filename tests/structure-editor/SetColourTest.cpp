// "Set color": the colour dialog, what gets the chosen colour, and what happens meanwhile.
#include "ColourTestCase.h"
#include "Space.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"

#include <optional>

using namespace colour_tools;
using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class SetColourTest : public ColourTestCase {
    Q_OBJECT

private slots:
    void theColourDialogStartsWithOpaqueWhiteEveryTime() {
        addLine("1abc", {0})->SetSelected(true);
        showWindow();
        for (int turn = 0; turn < 2; ++turn)
            QVERIFY(run(setColor, [this](QColorDialog& dialog) {
                QCOMPARE(dialog.currentColor().rgba(), qRgba(255, 255, 255, 255));
                QVERIFY(dialog.testOption(QColorDialog::ShowAlphaChannel));
                QCOMPARE(dialog.parentWidget(), m_window.get());
                QVERIFY(dialog.isModal());
                QVERIFY(dialog.objectName().isEmpty());
                dialog.setCurrentColor(teal.toQColor());
                pressEnter(dialog);
            }));
        QCOMPARE(takeMessages(), (QStringList{setColor.line, setColor.line}));
    }

    void theChosenColourGoesToSelectedItemsOfEveryKind() {
        Compound* shown = addChain(
            "1abc", {{"R 1", {{"C1", "C", {}}, {"C2", "C", {}}}}, {"R 2", {{"C3", "C", {}}}}});
        Compound* other = addLine("2abc", {0});
        other->SetSelected(true);
        itemAt(shown, {"A", "Groups", "R 1"})->SetSelected(true);
        itemAt(shown, {"A", "Bonds"})->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor));
        QStringList painted;
        for (const Compound* item : itemsOf(shown)) {
            QCOMPARE(item->GetColor() == teal, item->IsSelected());
            if (item->GetColor() == teal)
                painted << QString::fromLatin1(item->GetName());
        }
        QCOMPARE(painted, (QStringList{"R 1", "Group", "C1", "C2", "Bonds", "R 1 C1-C2"}));
        QCOMPARE(atomsOf(other)[0]->GetColor(), carbon);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    // All atoms are selected, and so is the entry; "Bonds" is not, because one bond is not.
    void aSelectedBondAmongUnselectedOnesGetsTheColour() {
        Compound* shown = addLine("1abc", {0, 1, 2});
        Compound* const box = itemAt(shown, {"A", "Bonds"});
        const std::vector<Compound*> bonds(box->ChildBegin(), box->ChildEnd());
        for (Compound* atom : atomsOf(shown))
            atom->SetSelected(true);
        bonds[1]->SetSelected(true);
        QVERIFY(shown->IsSelected() && !box->IsSelected());
        showWindow();
        QVERIFY(run(setColor));
        for (const Compound* item : itemsOf(shown))
            QCOMPARE(item->GetColor() == teal, item->IsSelected());
        QCOMPARE(bonds[1]->GetColor(), teal);
        QVERIFY(bonds[0]->GetColor() != teal);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theSelectionStays() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor));
        QCOMPARE(selectedNames(shown), "C1");
        QCOMPARE(takeMessages().size(), 1);
    }

    void theChosenAlphaIsKept() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, seeThrough));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), seeThrough);
        QCOMPARE(atomsOf(shown)[0]->GetColor().rgba(), 0x40123456U);
        QCOMPARE(takeMessages().size(), 1);
    }

    // Rows are visited, not data.
    void whatHasNoRowIsNotColoured() {
        Compound* shown = addLine("1abc", {0});
        showWindow();
        Compound* group = itemAt(shown, {"A", "Groups", "UNL 1", "Group"});
        memory_host::addAtom(group, {"X", "C", {}, 0.0F, 0}); // nobody is told
        shown->SetSelected(true);
        QVERIFY(run(setColor));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{teal, carbon}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void rowsOfClosedBranchesAreVisitedToo() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QVERIFY(run(setColor));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        QCOMPARE(takeMessages().size(), 1);
    }

    void aCancelledDialogChangesNothing_data() {
        QTest::addColumn<bool>("closed");
        QTest::newRow("Escape") << false;
        QTest::newRow("closed") << true;
    }
    void aCancelledDialogChangesNothing() {
        QFETCH(bool, closed);
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        const std::vector<Color> before = coloursOf(itemsOf(shown));
        showWindow();
        OtherPlugin other;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            dialog.setCurrentColor(teal.toQColor());
            if (closed)
                dialog.close();
            else
                pressEscape(dialog);
        }));
        QCOMPARE(coloursOf(itemsOf(shown)), before);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theDialogComesAlsoWithoutATree() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        openWindow();
        OtherPlugin other;
        QVERIFY(run(setColor));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }

    void theGuardIsTakenAfterTheDialog() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        // While the question is open others may change what they like.
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            selectElsewhere(atomsOf(shown)[0], false);
            selectElsewhere(atomsOf(shown)[1], true);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        // And a refusal that comes meanwhile holds.
        std::optional<memory_host::SpaceLock> lock;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            lock.emplace();
            pressEnter(dialog);
        }));
        QCOMPARE(coloursOf(atomsOf(shown)), (std::vector<Color>{carbon, teal}));
        QCOMPARE(takeMessages(), (QStringList{setColor.line, setColor.line, refused}));
    }

    void theShownItemDestroyedWhileTheDialogIsOpenEndsTheCommand() {
        Compound* shown = addLine("1abc", {0});
        addLine("2abc", {0})->SetSelected(true);
        shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            destroyElsewhere(shown);
            addLine("3abc", {0})->SetSelected(true); // maybe at the same address
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(entries(*m_window), (QStringList{" X 2abc", " _ 3abc"}));
        QCOMPARE(rows(*m_window), QStringList());
        for (Compound* atom : atomsOf(Space::instance()))
            QCOMPARE(atom->GetColor(), carbon);
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), (QStringList{setColor.line, deleted}));
    }

    void aSelectedItemDestroyedWhileTheDialogIsOpenIsNoHarm() {
        Compound* shown = addLine("1abc", {0, 1});
        shown->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            destroyElsewhere(atomsOf(shown)[0]);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        // The tree was emptied; without it there is nothing to colour.
        QCOMPARE(coloursOf(atomsOf(shown)), std::vector<Color>{carbon});
        QCOMPARE(takeMessages(), (QStringList{setColor.line, deleted}));
    }

    void whatTheTreeShowsWhenTheDialogEndsIsColoured() {
        Compound* shown = addLine("1abc", {0});
        Compound* other = addLine("2abc", {0});
        shown->SetSelected(true);
        other->SetSelected(true);
        showWindow();
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            m_window->Populate(1);
            dialog.setCurrentColor(teal.toQColor());
            pressEnter(dialog);
        }));
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(atomsOf(other)[0]->GetColor(), teal);
        QCOMPARE(takeMessages().size(), 1);
    }

    void aWindowThatGoesWhileTheDialogIsOpenIsNoHarm() {
        Compound* shown = addLine("1abc", {0});
        shown->SetSelected(true);
        showWindow();
        QPointer<QColorDialog> asked;
        QVERIFY(run(setColor, [&](QColorDialog& dialog) {
            asked = &dialog;
            m_window.reset();
        }));
        QVERIFY(!asked);
        QCOMPARE(atomsOf(shown)[0]->GetColor(), carbon);
        QCOMPARE(takeMessages(), QStringList{setColor.line});
    }
};

REGISTER_TEST(SetColourTest)
#include "SetColourTest.moc"
