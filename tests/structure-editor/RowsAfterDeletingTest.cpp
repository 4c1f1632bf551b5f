// The rows that the tree shows again after a command deleted something else: those of the items
// that exist then, as new.
#include "DataMaker.h"
#include "WindowTestCase.h"
#include "tree/TreeItem.h"
#include "tree/TreeModel.h"

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;

class RowsAfterDeletingTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_entry = nullptr;
    const QStringList m_backbone = {"1abc", "A", "Groups", "MET 1", "Backbone"};

    Compound* backbone() const { return itemAt(m_entry, {"A", "Groups", "MET 1", "Backbone"}); }
    TreeItem* row(const QStringList& path) const {
        return TreeModel::itemOf(rowAt(*m_window, path));
    }

    /// Deletes the water, and with it nothing that the rows of the backbone show.
    void deleteWater() {
        selectElsewhere(m_entry, false);
        selectElsewhere(itemAt(m_entry, {"A", "Groups", "HOH 2"}), true);
        m_window->KillResidues();
        QVERIFY(!itemAt(m_entry, {"A", "Groups", "HOH 2"}));
    }
    QStringList shownBackbone() const {
        QStringList names;
        for (const TreeItem* child : row(m_backbone)->children())
            names << child->text(0);
        return names;
    }

private slots:
    void init() override {
        TestCase::init();
        m_entry = addStructure("1abc");
        openWindow();
        watchRows();
        clickEntry(*m_window, 0);
    }

    void whatWasNotTouchedComesBackAsItWasMade() {
        deleteWater();
        QCOMPARE(shownBackbone(), QStringList({"N", "CA", "C"}));
        const QStringList again = rows(*m_window);
        treeOf(*m_window)->clear();
        clickEntry(*m_window, 0);
        QCOMPARE(again, rows(*m_window));
    }

    void rowsThatTheUserOpenedComeBackClosed() {
        TreeItem* const atom = row(m_backbone + QStringList("CA"));
        atom->setOpen(true);
        row(m_backbone)->setOpen(true);
        deleteWater();
        QVERIFY(!row(m_backbone)->isOpen());
        QCOMPARE(row(m_backbone + QStringList("CA")), atom);
        QVERIFY(!atom->isOpen());
    }

    void rowsThatTheUserSelectedComeBackClean() {
        TreeItem* const atom = row(m_backbone + QStringList("CA"));
        atom->setSelected(true);
        deleteWater();
        QCOMPARE(row(m_backbone + QStringList("CA")), atom);
        QVERIFY(!atom->isDirty());
        QVERIFY(!atom->isSelected());
    }

    // The window has not heard of the new atom, and as many as before are left.
    void anAtomThatCameForADeletedOneIsShown_data() {
        QTest::addColumn<QString>("deleted");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("the first") << "N" << QStringList({"CA", "C", "OXT"});
        QTest::newRow("the last") << "C" << QStringList({"N", "CA", "OXT"});
    }
    void anAtomThatCameForADeletedOneIsShown() {
        QFETCH(QString, deleted);
        QFETCH(QStringList, left);
        DataMaker::makeCore(backbone(), "OXT", "Atom");
        selectElsewhere(m_entry, false);
        selectElsewhere(itemAt(backbone(), {deleted}), true);
        m_window->KillAtoms();
        QCOMPARE(shownBackbone(), left);
    }
    void compositesThatCameAmongAtomsAreLookedInto() {
        Compound* const box = DataMaker::makeCore(backbone(), "more", "Composite");
        deleteWater();
        QCOMPARE(shownBackbone(), QStringList({"N", "CA", "C", "more"}));
        DataMaker::makeCore(box, "X", "Atom");
        selectElsewhere(m_entry, false);
        selectElsewhere(itemAt(m_entry, {"A", "Groups", "MET 1", "Side chain"}), true);
        m_window->KillGroups();
        QCOMPARE(row(m_backbone + QStringList("more"))->childCount(), 1);
    }
};

REGISTER_TEST(RowsAfterDeletingTest)
#include "RowsAfterDeletingTest.moc"
