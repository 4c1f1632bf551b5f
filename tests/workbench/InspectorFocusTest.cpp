// The inspector as a way to what it names: double clicks and Enter on its lines.
#include "BaseWindow.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "Focus.h"
#include "Inspector.h"
#include "MainWindowCase.h"
#include "TestData.h"

#include <QTableWidget>
#include <QTreeView>

class InspectorFocusTest : public test_support::MainWindowCase {
    Q_OBJECT

    /// What the focus is told.
    struct Moves : TAVIK::FocusObserver {
        void focusMoved(TAVIK::Compound* item, bool center) override {
            seen << QString::fromStdString(item ? item->GetFQName() : "nothing") +
                        (center ? " centred" : "");
        }
        QStringList seen;
    };

    QTableWidget* table() const { return m_window->inspector().findChild<QTableWidget*>(); }
    void select(TAVIK::Compound* item) {
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            item->SetSelected(true);
        }
        QTRY_VERIFY(m_window->inspector().isUpToDate());
    }
    int rowOf(const QString& label) const {
        for (int row = 0; row != table()->rowCount(); ++row)
            if (table()->item(row, 0)->text() == label)
                return row;
        return -1;
    }
    void doubleClick(const QString& label) const {
        const int row = rowOf(label);
        QVERIFY2(row >= 0, qPrintable(label));
        const QPoint place = table()->visualItemRect(table()->item(row, 1)).center();
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, place);
    }
    QString currentRow() const {
        const auto* const tree = dock(m_editor)->findChild<QTreeView*>();
        return tree->currentIndex().siblingAtColumn(0).data().toString();
    }

private slots:
    void eachMeasuredAtomIsGoneTo() {
        open();
        const test_data::Chains chains(2, 3);
        select(chains.atom(1, 2, 0));
        select(chains.atom(0, 0, 1));
        const Moves moves;
        doubleClick("Atom 1");
        QCOMPARE(TAVIK::Focus::item(), chains.atom(1, 2, 0));
        QTRY_COMPARE(currentRow(), "N"); // of the tree, which is opened to it
        doubleClick("Atom 2");
        QCOMPARE(TAVIK::Focus::item(), chains.atom(0, 0, 1));
        QTRY_COMPARE(currentRow(), "CA");
        QCOMPARE(moves.seen, (QStringList{"/made/B/Groups/GLY 3/N centred",
                                          "/made/A/Groups/GLY 1/CA centred"}));
        // What is measured stays.
        QCOMPARE(m_window->inspector().inspection().value("Atom 1"), "/made/B/Groups/GLY 3/N");
        // The distance is no place.
        doubleClick("Distance");
        QCOMPARE(moves.seen.size(), 2);
    }

    void enterGoesThereToo() {
        open();
        const test_data::Chains chains(2, 3);
        select(chains.atom(0, 1, 0));
        const Moves moves;
        table()->setFocus();
        table()->setCurrentCell(rowOf("Element"), 1);
        QTest::keyClick(table(), Qt::Key_Return);
        QCOMPARE(moves.seen, QStringList("/made/A/Groups/GLY 2/N centred"));
    }

    void whatIsInFocusIsGoneBackTo() {
        open();
        const test_data::Chains chains(2, 3);
        TAVIK::Focus::set(chains.residue(1, 1), nullptr);
        QTRY_COMPARE(m_window->inspector().inspection().title, "/made/B/Groups/GLY 2");
        const Moves moves;
        doubleClick("Atoms");
        QCOMPARE(moves.seen, QStringList("/made/B/Groups/GLY 2 centred"));
    }

    void whatIsGoneIsNotGoneTo() {
        open();
        const test_data::Chains chains(2, 3);
        select(chains.atom(1, 2, 0));
        select(chains.atom(0, 0, 1));
        const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        TAVIK::DataMaker::Destroy(chains.chain(1));
        const Moves moves;
        doubleClick("Atom 1");
        doubleClick("Atom 2");
        QCOMPARE(moves.seen, QStringList());
    }
};

REGISTER_TEST(InspectorFocusTest)
#include "InspectorFocusTest.moc"
