// How the tree looks: how wide its columns are, and what is painted.
#include "Legible.h"
#include "TreeTools.h"

#include <QImage>

using namespace tree_tools;

namespace {

QImage picture(TreeView& tree) {
    return tree.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// How often a colour stands in a part of a picture.
int countOf(const QImage& image, const QRect& part, const QColor& color) {
    int count = 0;
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x)
            if (image.rect().contains(x, y) && image.pixel(x, y) == color.rgb())
                ++count;
    return count;
}

bool isPlain(const QImage& image, const QRect& part) {
    return countOf(image, part, image.pixelColor(part.topLeft())) == part.width() * part.height();
}

// The last step of a row's indentation, where its branch mark stands.
QRect markRect(const ShownTree& tree, const TreeItem* row) {
    const QRect cell = cellRect(tree, row, 0);
    return {cell.left() - tree.indentation(), cell.top(), tree.indentation(), cell.height()};
}

} // namespace

class TreeLookTest : public test_support::TestCase {
    Q_OBJECT

private slots:
    // Widths.

    void columnsGrowWithWhatComesOnScreenAndNeverShrink() {
        Compound* molecule = makeMolecule(300, 0);
        DataMaker::makeCore(molecule, "a residue with an uncommonly long name", "Residue");
        ShownTree tree;
        tree.resize(700, 500);
        tree.populate(molecule);
        QVERIFY(!tree.grab().isNull());
        const int before = tree.columnWidth(0);
        QVERIFY(before < 200);
        tree.verticalScrollBar()->setValue(tree.verticalScrollBar()->maximum());
        const int after = tree.columnWidth(0);
        const int text = tree.fontMetrics().horizontalAdvance(
            QStringLiteral("a residue with an uncommonly long name"));
        QVERIFY(after >= text + tree.indentation());
        QVERIFY(after < text + tree.indentation() + 30);
        tree.verticalScrollBar()->setValue(0);
        QCOMPARE(tree.columnWidth(0), after);
    }

    void columnsAreAsWideAsTheirTitles() {
        const TreeView tree;
        for (int column = 0; column != TreeModel::Columns; ++column)
            QVERIFY(tree.columnWidth(column) >=
                    tree.header()->fontMetrics().horizontalAdvance(
                        tree.model()->headerData(column, Qt::Horizontal).toString()));
    }

    void aWidthThatTheUserChoseStays() {
        Compound* molecule = DataMaker::makeCore(space(), "a rather long name", "Molecule");
        ShownTree tree;
        tree.header()->resizeSection(0, 40);
        tree.populate(molecule);
        QVERIFY(!tree.grab().isNull());
        QCOMPARE(tree.columnWidth(0), 40);
    }

    // Painting.

    void theSelectedRowIsHighlightedInTheFirstColumnAlone() {
        Compound* molecule = makeMolecule(2, 1);
        childOf(molecule, 0)->SetColor(Color(QColor(200, 250, 10)));
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.click(top->child(0));
        const QImage image = picture(tree);
        const QColor highlight = tree.palette().color(QPalette::Highlight);
        const QRect name = cellRect(tree, top->child(0), 0);
        QVERIFY(countOf(image, name, highlight) > name.width() * name.height() / 2);
        QCOMPARE(countOf(image, markRect(tree, top->child(0)), highlight), 0);
        for (const int column : {1, 2, 3})
            QCOMPARE(countOf(image, cellRect(tree, top->child(0), column), highlight), 0);
        const QRect show = cellRect(tree, top->child(0), 1);
        QVERIFY(countOf(image, show, QColor(200, 250, 10)) > show.width() * show.height() / 2);
        QCOMPARE(countOf(image, cellRect(tree, top->child(1), 0), highlight), 0);
    }

    void theCurrentRowHasAFrameAlsoWhileTheKeyboardIsElsewhere() {
        Compound* molecule = makeMolecule(2, 1);
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        tree.setCurrentItem(top->child(1));
        tree.clearFocus();
        const QColor highlight = tree.palette().color(QPalette::Highlight);
        const QColor color = legible::text(highlight, tree.palette().color(QPalette::Base));
        const auto isFramed = [&](const TreeItem* row) {
            const QRect name = cellRect(tree, row, 0);
            const QImage image = picture(tree);
            const int upper = countOf(image, {name.topLeft(), QSize(name.width(), 1)}, color);
            const int left = countOf(image, {name.topLeft(), QSize(1, name.height())}, color);
            return upper == name.width() && left == name.height();
        };
        QVERIFY(!tree.hasFocus());
        QVERIFY(isFramed(top->child(1)));
        QVERIFY(!isFramed(top->child(0)));
        tree.setCurrentItem(top->child(0));
        QVERIFY(isFramed(top->child(0)));
        QVERIFY(!isFramed(top->child(1)));
        // With the keyboard it is dotted.
        tree.activateWindow();
        tree.setFocus();
        QTRY_VERIFY(tree.hasFocus());
        QVERIFY(!isFramed(top->child(0)));
    }

    void namesArePaintedInTheColourOfTheirDepth() {
        Compound* item = DataMaker::makeCore(space(), "MMMM", "Composite");
        for (int depth = 1; depth != 7; ++depth)
            item = DataMaker::makeCore(item, "MMMM", "Composite");
        ShownTree tree;
        QFont font = tree.font();
        font.setPixelSize(40);
        font.setStyleStrategy(QFont::NoAntialias);
        tree.setFont(font);
        tree.resize(1000, 600);
        TreeItem* row = tree.populate(*space()->ChildBegin());
        for (TreeItem* open = row; open; open = open->firstChild())
            open->setOpen(true);
        tree.setCurrentItem(row);
        const QImage image = picture(tree);
        const QColor normal = tree.palette().color(QPalette::Text);
        const QColor base = tree.palette().color(QPalette::Base);
        for (const QColor& stated :
             {QColor(Qt::darkMagenta), QColor(Qt::magenta), QColor(Qt::darkGreen),
              QColor(Qt::darkBlue), QColor(Qt::red), normal, normal}) {
            const QColor color = legible::text(stated, base);
            QVERIFY2(countOf(image, cellRect(tree, row, 0), color) > 50,
                     qPrintable(color.name() + " at depth " + QString::number(row->depth())));
            QVERIFY(countOf(image, cellRect(tree, row, 2), normal) > 20);
            row = row->firstChild();
        }
    }

    void onlyRowsSetUpWithChildrenShowAMark() {
        Compound* molecule = makeMolecule(3, 0);
        DataMaker::makeCore(childOf(molecule, 0), "a", "Atom");
        ShownTree tree;
        TreeItem* top = tree.populate(molecule);
        // Lines between siblings would cross the cells of the marks.
        tree.setStyleSheet(QStringLiteral("QTreeView::branch { image: none; background: white; }"
                                          "QTreeView::branch:has-children { background: red; }"));
        const auto marked = [&](int child) {
            return countOf(picture(tree), markRect(tree, top->child(child)), Qt::red) > 0;
        };
        QVERIFY(marked(0));
        QVERIFY(!marked(1));
        QVERIFY(!marked(2));

        DataMaker::makeCore(childOf(molecule, 1), "b", "Atom");
        top->commAdd();
        QVERIFY(!marked(1));
        top->child(1)->setup();
        tree.triggerUpdate();
        QVERIFY(marked(1));
        // Opening sets a row up, too.
        DataMaker::makeCore(childOf(molecule, 2), "c", "Atom");
        top->commAdd();
        QVERIFY(!marked(2));
        tree.doubleClick(tree.cell(top->child(2), 0));
        QVERIFY(marked(2));
    }

    void theTopRowHasNoMark() {
        ShownTree tree;
        const TreeItem* top = tree.populate(makeMolecule(2, 1));
        QCOMPARE(cellRect(tree, top, 0).left(), 0);
        QCOMPARE(cellRect(tree, top->child(0), 0).left(), 20);
        const QImage image = picture(tree);
        QVERIFY(!isPlain(image, markRect(tree, top->child(0))));
    }

    void aChangeInTheHostIsSeenAfterTriggerUpdate() {
        Compound* molecule = makeMolecule(1, 1);
        ShownTree tree;
        const TreeItem* top = tree.populate(molecule);
        const QRect cell = cellRect(tree, top, 1);
        QVERIFY(countOf(picture(tree), cell, Qt::green) == 0);
        molecule->SetColor(Color(QColor(Qt::green)));
        tree.triggerUpdate();
        QVERIFY(countOf(picture(tree), cell, Qt::green) > 50);
    }
};

REGISTER_TEST(TreeLookTest)
#include "TreeLookTest.moc"
