// What assistive programs are told of the window.
#include "WindowTestCase.h"
#include "tree/TreeItem.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QAccessible>
#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace window_tools;
using TAVIK::Compound;

namespace {

QString nameOf(QWidget* widget) {
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(widget);
    return told ? told->text(QAccessible::Name) : QStringLiteral("nothing");
}

QString cellText(QWidget* view, int row, int column = 0) {
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(view);
    QAccessibleTableInterface* const table = told ? told->tableInterface() : nullptr;
    QAccessibleInterface* const cell = table ? table->cellAt(row, column) : nullptr;
    return cell ? cell->text(QAccessible::Name) : QStringLiteral("nothing");
}

} // namespace

class AccessibilityTest : public WindowTestCase {
    Q_OBJECT

    /// What is told of the rows that are in sight, in their order.
    QStringList told() const {
        QStringList texts;
        int row = 0;
        for (const TreeItem* item = treeOf(*m_window)->firstChild(); item; item = item->itemBelow())
            texts << cellText(treeOf(*m_window), row++);
        return texts;
    }

private slots:
    void listAndTreeHaveNamesAndRoles() {
        addStructure("1abc");
        showWindow();
        QCOMPARE(nameOf(listOf(*m_window)), "Entries");
        QCOMPARE(nameOf(treeOf(*m_window)), "Structure tree");
        QCOMPARE(QAccessible::queryAccessibleInterface(listOf(*m_window))->role(),
                 QAccessible::List);
        QCOMPARE(QAccessible::queryAccessibleInterface(treeOf(*m_window))->role(),
                 QAccessible::Tree);
    }

    void fieldsAreCalledByTheirLabels() {
        openWindow();
        m_window->showQuery();
        QFrame* const panel = panelOf(*m_window);
        const QList<QLabel*> labels = panel->findChildren<QLabel*>();
        const QList<QLineEdit*> fields = panel->findChildren<QLineEdit*>();
        const QStringList expected = {"Chain", "Residue", "Atom"};
        QCOMPARE(labels.size(), 3);
        QCOMPARE(fields.size(), 3);
        for (qsizetype i = 0; i != 3; ++i) {
            QCOMPARE(labels[i]->text(), expected[i]);
            QCOMPARE(labels[i]->buddy(), fields[i]);
            QCOMPARE(nameOf(fields[i]), expected[i]);
        }
        QCOMPARE(nameOf(panel->findChild<QCheckBox*>()), "Current tree only");
    }

    void buttonsAreReadWithoutTheirPadding() {
        openWindow();
        QStringList names;
        for (QPushButton* button : panelOf(*m_window)->findChildren<QPushButton*>())
            names << nameOf(button);
        QCOMPARE(names, QStringList({"Union ( A | B )", "Intersection ( A & B )",
                                     "Difference ( A - B )", "Close"}));
    }

    void entriesTellTheirStateInWords() {
        addStructure("plain");
        selectElsewhere(addStructure("whole"), true);
        selectElsewhere(itemAt(addStructure("part"), {"A", "Groups", "HOH 2"}), true);
        Compound* hidden = addStructure("hidden");
        showElsewhere(hidden, false);
        openWindow();
        ListBox* const list = listOf(*m_window);
        QCOMPARE(cellText(list, 0), "plain, shown, not selected");
        QCOMPARE(cellText(list, 1), "whole, shown, wholly selected");
        QCOMPARE(cellText(list, 2), "part, shown, partly selected");
        QCOMPARE(cellText(list, 3), "hidden, hidden, not selected");
        selectElsewhere(hidden, true);
        QCOMPARE(cellText(list, 3), "hidden, hidden, wholly selected");
        QCOMPARE(list->item(3)->text(), "OX hidden"); // what is seen stays as it is
    }

    void rowsTellTheirStateInWords() {
        Compound* entry = addStructure("1abc");
        showWindow();
        QCOMPARE(told(), QStringList({"1abc, shown, not selected", "A, shown, not selected"}));
        selectElsewhere(itemAt(entry, {"A", "Groups", "HOH 2"}), true);
        showElsewhere(itemAt(entry, {"A", "Groups", "MET 1"}), false);
        treeOf(*m_window)->expandAll();
        const QStringList rows = told();
        QCOMPARE(rows.mid(0, 4),
                 QStringList({"1abc, shown, partly selected", "A, shown, partly selected",
                              "Groups, shown, partly selected", "MET 1, hidden, not selected"}));
        QVERIFY2(rows.contains("HOH 2, shown, wholly selected"), qPrintable(rows.join(u'\n')));
        QVERIFY(rows.contains("O, shown, wholly selected"));
        // The other columns say what is seen in them.
        QCOMPARE(cellText(treeOf(*m_window), 0, 1), "Yes");
        QCOMPARE(cellText(treeOf(*m_window), 0, 2), "No");
    }

    void rowsAreToldWhatTheUserSelects() {
        addStructure("1abc");
        showWindow();
        clickRow(*m_window, {"1abc", "A"});
        QCOMPARE(told(),
                 QStringList({"1abc, shown, wholly selected", "A, shown, wholly selected"}));
    }

    void nothingIsToldOfRowsThatAreGone() {
        Compound* entry = addStructure("1abc");
        showWindow();
        QCOMPARE(told().size(), 2);
        destroyElsewhere(entry);
        QCOMPARE(takeMessages(), QStringList(deleted));
        QCOMPARE(told(), QStringList());
        QCOMPARE(
            QAccessible::queryAccessibleInterface(treeOf(*m_window))->tableInterface()->rowCount(),
            0);
    }
};

REGISTER_TEST(AccessibilityTest)
#include "AccessibilityTest.moc"
