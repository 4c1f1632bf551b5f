// The column that docs/architecture.md adds to the tree as an example. It is compiled from the
// document; here it is read, clicked and fitted into the window.
#include "TreeTools.h"

using namespace tree_tools;

class ExampleColumnTest : public test_support::TestCase {
    Q_OBJECT

    static QString idOf(const Compound* item) { return QString::number(item->GetId()); }

private slots:
    void itSaysTheIdOfEachItem() {
        Compound* const molecule = makeMolecule(3, 2);
        ShownTree tree;
        const TreeItem* top = tree.populate(molecule);
        QCOMPARE(top->text(TreeModel::Id), idOf(molecule));
        for (int residue = 0; residue != 3; ++residue) {
            QCOMPARE(top->child(residue)->text(TreeModel::Id), idOf(childOf(molecule, residue)));
            const QModelIndex index =
                tree.model()->index(residue, TreeModel::Id, tree.model()->index(0, 0));
            QCOMPARE(index.data().toString(), idOf(childOf(molecule, residue)));
        }
    }

    void itIsAsWideAsItsIds() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(3, 2));
        QVERIFY(!tree.grab().isNull());
        QVERIFY(tree.columnWidth(TreeModel::Id) >=
                tree.fontMetrics().horizontalAdvance(top->child(2)->text(TreeModel::Id)));
    }

    void namesLeaveItInSight() {
        Compound* const molecule = makeMolecule(3, 2);
        DataMaker::makeCore(molecule, std::string(100, 'x'), "Residue");
        ShownTree tree;
        tree.resize(400, 300);
        tree.populate(molecule);
        QVERIFY(!tree.grab().isNull());
        QCOMPARE(tree.header()->length(), tree.viewport()->width());
        QCOMPARE(tree.horizontalScrollBar()->maximum(), 0);
    }

    void aRightClickOnItOnlyMakesTheRowTheCurrentOne() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(3, 2));
        tree.clickCell(top->child(1), TreeModel::Id, Qt::RightButton);
        QCOMPARE(tree.currentItem(), top->child(1));
        QCOMPARE(tree.hostUpdates, 0);
        QCOMPARE(tree.takeSelections(), 0);
    }
};

REGISTER_TEST(ExampleColumnTest)
#include "ExampleColumnTest.moc"
