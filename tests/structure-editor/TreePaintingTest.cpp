// What the tree asks its style to paint, and what its widths and its scrolling follow.
#include "TreeTools.h"

#include <QPixmap>
#include <QProxyStyle>
#include <QStyleOption>

using namespace tree_tools;

namespace {

/// Writes down the branch cells that are painted, each as "x y" in steps and rows with what the
/// style is told: Item, Children, Open, Sibling.
class BranchRecorder : public QProxyStyle {
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_IndicatorBranch)
            cells << QStringLiteral("%1 %2 %3%4%5%6")
                         .arg(option->rect.x() / 20)
                         .arg(option->rect.y() / option->rect.height())
                         .arg(option->state & State_Item ? u"I" : u"")
                         .arg(option->state & State_Children ? u"C" : u"")
                         .arg(option->state & State_Open ? u"O" : u"")
                         .arg(option->state & State_Sibling ? u"S" : u"");
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    mutable QStringList cells;
};

} // namespace

class TreePaintingTest : public SpyTestCase {
    Q_OBJECT

private slots:
    // Lines run down beside a row to the later siblings of those above it, and to no others.
    void branchesAreMarkedWithWhatFollowsBelow() {
        BranchRecorder style;
        ShownTree tree;
        tree.setStyle(&style);
        TreeItem* top = tree.populate(makeMolecule(2, 2));
        top->child(0)->setOpen(true);
        top->child(1)->setOpen(true);
        QApplication::processEvents();
        style.cells.clear();
        tree.grab();
        style.cells.sort();
        const QStringList expected = {"0 1 ICOS", "0 2 S",  "0 3 S", "0 4 ICO", "0 5 ",
                                      "0 6 ",     "1 2 IS", "1 3 I", "1 5 IS",  "1 6 I"};
        QCOMPARE(style.cells, expected);
    }

    void columnsFollowALargerFont() {
        ShownTree tree;
        tree.populate(makeMolecule(3, 1));
        QApplication::processEvents();
        const int before = tree.columnWidth(1);
        QFont large = tree.font();
        large.setPointSize(60);
        tree.setFont(large);
        tree.triggerUpdate();
        const int text = QFontMetrics(large).horizontalAdvance(QStringLiteral("Yes"));
        QVERIFY(before < text);
        QVERIFY(tree.columnWidth(1) >= text);
    }

    // Of a row that is higher than the view the upper edge is shown.
    void scrollingToARowHigherThanTheViewShowsItsUpperEdge() {
        ShownTree tree;
        TreeItem* top = tree.populate(makeMolecule(50, 0));
        tree.setMinimumHeight(1);
        tree.resize(300, tree.header()->height() + 2 * tree.frameWidth() + 8);
        QApplication::processEvents();
        QVERIFY(tree.viewport()->height() < cellRect(tree, top, 0).height());
        tree.key(Qt::Key_End);
        QCOMPARE(tree.current(), "R50");
        QCOMPARE(cellRect(tree, tree.currentItem(), 0).top(), 0);
    }
};

REGISTER_TEST(TreePaintingTest)
#include "TreePaintingTest.moc"
