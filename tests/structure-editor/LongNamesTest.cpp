// Long names in the window: the tree's other columns stay in sight, and the whole name can be seen.
#include "DataMaker.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "tree/TreeItem.h"
#include "window/ListBox.h"

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QImage>
#include <QScrollBar>
#include <QSplitter>
#include <QTextDocument>
#include <QToolTip>

using namespace window_tools;
using TAVIK::Compound;

namespace {

const std::string longName = "a-name-of-sixty-characters-is-about-as-long-as-this-one-here";

QString toolTipAt(TreeView* tree, const QModelIndex& index) {
    QToolTip::hideText(); // which takes its time
    if (!QTest::qWaitFor([] { return !QToolTip::isVisible(); }))
        return QStringLiteral("the one before");
    const QPoint at = tree->visualRect(index).center();
    QHelpEvent event(QEvent::ToolTip, at, tree->viewport()->mapToGlobal(at));
    QApplication::sendEvent(tree->viewport(), &event);
    QTextDocument shown;
    shown.setHtml(QToolTip::text());
    return QToolTip::isVisible() ? shown.toPlainText() : QString();
}

} // namespace

class LongNamesTest : public WindowTestCase {
    Q_OBJECT

    QFont m_font;

    TreeView* tree() const { return treeOf(*m_window); }
    QHeaderView* header() const { return tree()->header(); }

    /// What is not in sight, or takes more than there is.
    QString outOfSight() const {
        for (int column = 1; column != header()->count(); ++column) {
            const int left = header()->sectionViewportPosition(column);
            if (left < 0 || left + header()->sectionSize(column) > tree()->viewport()->width())
                return QStringLiteral("column %1 ends at %2 of %3 pixels")
                    .arg(column)
                    .arg(left + header()->sectionSize(column))
                    .arg(tree()->viewport()->width());
            if (header()->sectionSize(column) < header()->sectionSizeHint(column))
                return QStringLiteral("column %1 is narrower than its title").arg(column);
        }
        return tree()->horizontalScrollBar()->maximum() == 0 ? QString() : "it can be scrolled";
    }

    /// The room of an atom's name, in pixels.
    int widthOfDeepName() const {
        return tree()
            ->visualRect(rowAt(*m_window, {QString::fromStdString(longName), "A", "Groups", "MET 1",
                                           "Side chain", "CB"}))
            .width();
    }

    /// The window as it first comes, showing a structure of long names, all of it opened.
    void showLongNames() {
        QVERIFY(longName.size() == 60);
        Compound* entry = addStructure(longName);
        addAtomTo(itemAt(entry, {"A", "Groups", "MET 1", "Side chain"}), longName);
        showWindow();
        tree()->expandAll();
        QVERIFY(!m_window->grab().isNull());
    }

private slots:
    void init() override {
        WindowTestCase::init();
        m_font = QApplication::font();
    }
    void cleanup() override {
        QToolTip::hideText();
        m_window.reset();
        QApplication::setFont(m_font);
        WindowTestCase::cleanup();
    }

    void theColumnsStayInAWindowOf400Pixels() {
        showLongNames();
        QCOMPARE(m_window->width(), 400);
        QCOMPARE(outOfSight(), QString());
        // There is room for the names of atoms, and for short names in the list.
        QVERIFY(widthOfDeepName() >= tree()->fontMetrics().horizontalAdvance("HD11"));
        QVERIFY(listOf(*m_window)->width() >= listOf(*m_window)->widthFor(9));
    }

    void whereTheUserLeavesNoRoomNamesKeepTheirsAndTheColumnsCanBeScrolledTo() {
        showLongNames();
        auto* panes = qobject_cast<QSplitter*>(m_window->centralWidget());
        const QList<int> before = panes->sizes();
        for (const int list : {200, 300}) {
            panes->setSizes({list, panes->width() - list - panes->handleWidth()});
            QCOMPARE(listOf(*m_window)->width(), list);
            QVERIFY(!m_window->grab().isNull());
            QVERIFY(widthOfDeepName() >= tree()->fontMetrics().horizontalAdvance("CA"));
            QScrollBar* const bar = tree()->horizontalScrollBar();
            QVERIFY(bar->maximum() > 0);
            bar->setValue(bar->maximum());
            const int last = header()->count() - 1;
            QCOMPARE(header()->sectionViewportPosition(last) + header()->sectionSize(last),
                     tree()->viewport()->width());
        }
        panes->setSizes(before);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(outOfSight(), QString());
    }

    void namesTakeTheWidthThatTheWindowGets() {
        showLongNames();
        const int narrow = tree()->columnWidth(0);
        m_window->resize(1200, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(outOfSight(), QString());
        const int wide = tree()->columnWidth(0);
        const int whole = tree()->fontMetrics().horizontalAdvance(QString::fromStdString(longName));
        QVERIFY(wide >= whole + 5 * tree()->indentation());
        QVERIFY(wide < whole + 5 * tree()->indentation() + 30); // and no more than they need
        m_window->resize(400, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(tree()->columnWidth(0), narrow);
    }

    void aWideWindowGivesTheListItsHint() {
        addStructure(longName);
        openWindow();
        m_window->close();
        m_window = std::make_unique<Vuxo>();
        m_window->resize(900, 600);
        m_window->show();
        QCOMPARE(listOf(*m_window)->width(), 200);
    }

    void shortNamesAreWholeInTheList() {
        addStructure("1d3z-2.10");
        openWindow();
        const ListBox* list = listOf(*m_window);
        QCOMPARE(list->visualItemRect(list->item(0)).width(), list->viewport()->width());
        QVERIFY(list->viewport()->width() >=
                ListDelegate::widthOf(list->item(0)->text(), list->fontMetrics(), list));
    }

    void aWidthThatTheUserChoseStays() {
        showLongNames();
        header()->resizeSection(0, 300);
        m_window->resize(420, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(tree()->columnWidth(0), 300);
        header()->resizeSection(2, 90);
        m_window->resize(400, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(tree()->columnWidth(0), 300);
        QCOMPARE(tree()->columnWidth(2), 90);
    }

    void aLargerFontKeepsTheColumnsWhereTheyFit() {
        QFont large = m_font;
        large.setPointSizeF(m_font.pointSizeF() * 1.3);
        QApplication::setFont(large);
        showLongNames();
        m_window->resize(500, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(outOfSight(), QString());
    }

    void aLongNameIsElidedInTheMiddle() {
        showLongNames();
        QCOMPARE(tree()->textElideMode(), Qt::ElideMiddle);
        QCOMPARE(TreeModel::itemOf(rowAt(*m_window, {QString::fromStdString(longName)}))->text(0),
                 QString::fromStdString(longName));
    }

    void onlyANameThatIsElidedHasAToolTip() {
        showLongNames();
        const QString name = QString::fromStdString(longName);
        QCOMPARE(toolTipAt(tree(), rowAt(*m_window, {name})), name);
        QCOMPARE(toolTipAt(tree(), rowAt(*m_window, {name, "A"})), QString());
        QCOMPARE(toolTipAt(tree(), rowAt(*m_window, {name}).siblingAtColumn(1)), QString());
        m_window->resize(1200, 600);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(toolTipAt(tree(), rowAt(*m_window, {name})), QString());
    }

    void nothingInANameIsMarkup() {
        const std::string name = "<b>bold</b> &amp; " + std::string(60, 'm') + " <img src=x>";
        addStructure(
            TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), name, "Composite")->GetName());
        showWindow();
        QVERIFY(!m_window->grab().isNull());
        const QString shown = treeOf(*m_window)->model()->index(0, 0).data().toString();
        QCOMPARE(toolTipAt(tree(), tree()->model()->index(0, 0)), shown);
    }
};

REGISTER_TEST(LongNamesTest)
#include "LongNamesTest.moc"
