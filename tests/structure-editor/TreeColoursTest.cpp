// The colours in the tree: whatever the palette and the colours of items, its text can be read.
#include "Palettes.h"
#include "TreeTools.h"
#include "tree/TreeDelegate.h"

#include <QImage>
#include <QStyleFactory>

using namespace tree_tools;

namespace {

constexpr int depths = 7;

class OpenDelegate : public TreeDelegate {
public:
    using TreeDelegate::initStyleOption;
};

QFont sharpFont() {
    QFont font;
    font.setPixelSize(20);
    font.setStyleStrategy(QFont::NoAntialias);
    return font;
}

QImage picture(TreeView& tree) {
    return tree.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TreeColoursTest : public test_support::TestCase {
    Q_OBJECT

    QPalette m_palette;

    /// Items below each other, opened; the row at the top.
    static TreeItem* showChain(ShownTree& tree) {
        Compound* item = DataMaker::makeCore(space(), "MMMM", "Composite");
        Compound* const top = item;
        for (int depth = 1; depth != depths; ++depth)
            item = DataMaker::makeCore(item, "MMMM", "Composite");
        tree.setFont(sharpFont());
        tree.resize(900, 500);
        TreeItem* const row = tree.populate(top);
        for (TreeItem* open = row; open; open = open->firstChild())
            open->setOpen(true);
        return row;
    }

    static void palettesInEachState() {
        QTest::addColumn<QPalette>("palette");
        QTest::addColumn<QPalette::ColorGroup>("group");
        for (const auto& [name, palette] : palettes::all()) {
            QTest::newRow(qPrintable(name + ", active")) << palette << QPalette::Active;
            QTest::newRow(qPrintable(name + ", inactive")) << palette << QPalette::Inactive;
            QTest::newRow(qPrintable(name + ", disabled")) << palette << QPalette::Disabled;
        }
    }

private slots:
    void init() override {
        TestCase::init();
        m_palette = QApplication::palette();
    }
    void cleanup() override {
        QApplication::setPalette(m_palette);
        TestCase::cleanup();
    }

    void everyNameCanBeReadInEveryPalette_data() { palettesInEachState(); }
    void everyNameCanBeReadInEveryPalette() {
        QFETCH(QPalette, palette);
        QFETCH(QPalette::ColorGroup, group);
        ShownTree tree;
        TreeItem* row = showChain(tree);
        const OpenDelegate delegate;
        for (int depth = 0; row; row = row->firstChild(), ++depth) {
            for (const bool selected : {false, true}) {
                row->setSelected(selected);
                QStyleOptionViewItem option;
                option.palette = palette;
                option.state.setFlag(QStyle::State_Enabled, group != QPalette::Disabled);
                option.state.setFlag(QStyle::State_Active, group == QPalette::Active);
                delegate.initStyleOption(&option, tree.rows()->indexOf(row));
                const QColor text = option.palette.color(group, selected ? QPalette::HighlightedText
                                                                         : QPalette::Text);
                const QColor behind =
                    palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
                QVERIFY2(legible::contrast(text, behind) >= 4.5,
                         qPrintable(QStringLiteral("%1 on %2 at depth %3")
                                        .arg(text.name(), behind.name())
                                        .arg(depth)));
                // What can be read as it is stays as it is.
                const QColor stated = row->textColor(0);
                if (!selected && stated.isValid() && legible::contrast(stated, behind) >= 4.5)
                    QCOMPARE(text, stated);
                row->setSelected(false);
            }
        }
    }

    void alternateRowsAreReadOnTheirOwnBase() {
        ShownTree tree;
        TreeItem* row = showChain(tree);
        const OpenDelegate delegate;
        for (const auto& [name, palette] : palettes::all())
            for (TreeItem* each = row; each; each = each->firstChild()) {
                QStyleOptionViewItem option;
                option.palette = palette;
                option.state |= QStyle::State_Enabled | QStyle::State_Active;
                option.features |= QStyleOptionViewItem::Alternate;
                delegate.initStyleOption(&option, tree.rows()->indexOf(each));
                QVERIFY2(legible::contrast(option.palette.color(QPalette::Text),
                                           palette.color(QPalette::AlternateBase)) >= 4.5,
                         qPrintable(name));
            }
    }

    void theHuesStayThoseThatAreStated() {
        ShownTree tree;
        const TreeItem* row = showChain(tree);
        const OpenDelegate delegate;
        for (; row && row->textColor(0).isValid(); row = row->firstChild())
            for (const auto& [name, palette] : palettes::all()) {
                QStyleOptionViewItem option;
                option.palette = palette;
                option.state |= QStyle::State_Enabled | QStyle::State_Active;
                delegate.initStyleOption(&option, tree.rows()->indexOf(row));
                const QColor text = option.palette.color(QPalette::Text);
                const QColor stated = row->textColor(0);
                if (text.lightness() > 10 && text.lightness() < 245)
                    QVERIFY2(qAbs(text.hslHue() - stated.hslHue()) <= 3,
                             qPrintable(name + u' ' + text.name() + u' ' + stated.name()));
                if (palette.color(QPalette::Base).lightness() < 60)
                    QVERIFY(text.lightness() >= stated.lightness());
            }
    }

    // What is on screen, pixel by pixel.

    void everyPixelOfTextCanBeRead_data() { palettesInEachState(); }
    void everyPixelOfTextCanBeRead() {
        QFETCH(QPalette, palette);
        QFETCH(QPalette::ColorGroup, group);
        QApplication::setPalette(palette);
        ShownTree tree;
        QWidget other;
        TreeItem* top = showChain(tree);
        if (group == QPalette::Inactive)
            other.show();
        QWidget* const active = group == QPalette::Inactive ? &other : &tree;
        active->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(active));
        tree.setEnabled(group != QPalette::Disabled);
        for (const bool selected : {false, true}) {
            for (TreeItem* row = top; row; row = row->firstChild())
                row->setSelected(selected);
            const QImage image = picture(tree);
            for (TreeItem* row = top; row; row = row->firstChild()) {
                const QColor behind =
                    palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
                // Without the frame of the current row.
                const QRect name = cellRect(tree, row, 0).adjusted(2, 2, -2, -2);
                const QString fault = palettes::faultOf(image, name, behind);
                QVERIFY2(fault.isEmpty(), qPrintable(fault));
                const QString mark =
                    palettes::faultOf(image, cellRect(tree, row, 2).adjusted(2, 2, -2, -2),
                                      palette.color(group, QPalette::Base));
                QVERIFY2(mark.isEmpty(), qPrintable(mark));
            }
        }
    }

    void yesAndNoCanBeReadOnEveryColour_data() { palettesInEachState(); }
    void yesAndNoCanBeReadOnEveryColour() {
        QFETCH(QPalette, palette);
        QFETCH(QPalette::ColorGroup, group);
        QApplication::setPalette(palette);
        Compound* molecule = DataMaker::makeCore(space(), "m", "Molecule");
        const QStringList names = QColor::colorNames();
        QVERIFY(names.size() >= 148);
        for (const QString& name : names)
            DataMaker::makeCore(molecule, name.toStdString(), "Residue")
                ->SetColor(Color(QColor(name)));
        ShownTree tree;
        tree.setFont(sharpFont());
        tree.resize(900, 700);
        tree.setEnabled(group != QPalette::Disabled);
        if (group == QPalette::Active)
            QVERIFY(QTest::qWaitForWindowActive(&tree));
        const TreeItem* top = tree.populate(molecule);
        int seen = 0;
        for (const TreeItem* row = top->firstChild(); row; row = row->nextSibling()) {
            if (!tree.viewport()->rect().contains(cellRect(tree, row, 1)))
                tree.scrollTo(tree.rows()->indexOf(row), QAbstractItemView::PositionAtTop);
            const QRect cell = cellRect(tree, row, 1);
            const QImage image =
                tree.viewport()->grab(cell).toImage().convertToFormat(QImage::Format_RGB32);
            const QString fault =
                palettes::faultOf(image, image.rect().adjusted(1, 1, -1, -1), row->cellColor(1));
            QVERIFY2(fault.isEmpty(), qPrintable(row->text(0) + ": " + fault));
            ++seen;
        }
        QCOMPARE(seen, names.size());
    }

    void anotherPaletteIsSeenAtOnce() {
        ShownTree tree;
        TreeItem* top = showChain(tree);
        QVERIFY(QTest::qWaitForWindowExposed(&tree));
        struct Paints : QObject {
            int count = 0;
            bool eventFilter(QObject*, QEvent* event) override {
                count += event->type() == QEvent::Paint ? 1 : 0;
                return false;
            }
        } paints;
        tree.viewport()->installEventFilter(&paints);
        for (const auto& [name, palette] : palettes::all()) {
            QApplication::setPalette(palette);
            QTRY_VERIFY2(paints.count > 0, qPrintable(name));
            paints.count = 0;
            const QRect cell = cellRect(tree, top, 0).adjusted(2, 2, -2, -2);
            const QString fault = palettes::faultOf(
                picture(tree), cell,
                palette.color(tree.isActiveWindow() ? QPalette::Active : QPalette::Inactive,
                              QPalette::Base));
            QVERIFY2(fault.isEmpty(), qPrintable(name + ": " + fault));
            QTest::qWait(0);
            paints.count = 0;
        }
    }
};

REGISTER_TEST(TreeColoursTest)
#include "TreeColoursTest.moc"
