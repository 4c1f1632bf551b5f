// The host's focus and the tree's current row, each of which follows the other.
#include "Focus.h"
#include "Space.h"
#include "WindowTestCase.h"

#include <QScrollBar>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Focus;

namespace {

/// Another window that follows the focus.
class OtherWindow : public TAVIK::FocusObserver {
public:
    void focusMoved(Compound* item, bool center) override {
        moves << (item ? QString::fromLatin1(item->GetName()) : QStringLiteral("nothing")) +
                     (center ? QStringLiteral(" centred") : QString());
        if (answer)
            answer();
    }

    QStringList moves;
    std::function<void()> answer;
};

QString currentRow(const Vuxo& window) {
    const TreeItem* const row = treeOf(window)->currentItem();
    return row ? row->text(0) : QString();
}

void settle() {
    QCoreApplication::processEvents();
}

const QStringList sulphur = {"1abc", "A", "Groups", "MET 1", "Side chain", "SD"};

} // namespace

class FollowFocusTest : public WindowTestCase {
    Q_OBJECT
private slots:
    void theRowOfTheFocusIsOpenedAndMadeCurrent() {
        Compound* const entry = addStructure("1abc");
        openWindow();
        watchRows();
        Focus::set(itemAt(entry, sulphur.mid(1)), nullptr);
        settle();
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(currentRow(*m_window), "SD");
        for (int length = 1; length < sulphur.size(); ++length)
            QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, sulphur.mid(0, length))));
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A", "Bonds"})));
    }

    void itIsScrolledTo() {
        Compound* const entry = addStructure("1abc");
        Compound* last = nullptr;
        for (int i = 0; i < 100; ++i)
            last = addAtomTo(itemAt(entry, {"A", "Groups", "HOH 2"}), "H" + std::to_string(i));
        showWindow();
        Focus::set(last, nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "H99");
        const TreeView* const tree = treeOf(*m_window);
        const QRect seen = tree->viewport()->rect();
        const auto place = [tree] { return tree->visualRect(tree->currentIndex()); };
        QVERIFY(place().bottom() <= seen.bottom());
        Focus::set(itemAt(entry, {"A", "Groups", "HOH 2", "H50"}), nullptr);
        settle();
        QVERIFY(qAbs(place().center().y() - seen.center().y()) <= place().height());
        // What is in sight stays where it is.
        const int before = tree->verticalScrollBar()->value();
        Focus::set(itemAt(entry, {"A", "Groups", "HOH 2", "H53"}), nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "H53");
        QCOMPARE(tree->verticalScrollBar()->value(), before);
    }

    void theEntryOfTheFocusIsShown() {
        addStructure("1abc");
        Compound* const other = addStructure("2abc");
        showWindow();
        Focus::set(itemAt(other, {"A"}), nullptr);
        settle();
        QCOMPARE(highlighted(*m_window), 1);
        QCOMPARE(rows(*m_window).first(), "2abc");
        QCOMPARE(currentRow(*m_window), "A");
        Focus::set(other, nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "2abc");
    }

    void anEntryThatIsPickedInTheListIsTheFocus() {
        addStructure("1abc");
        Compound* const second = addStructure("2abc");
        openWindow();
        OtherWindow other;
        clickEntry(*m_window, 1);
        settle();
        QCOMPARE(Focus::item(), second);
        QCOMPARE(other.moves, QStringList("2abc"));
        // Within it, the focus stays where it is.
        Focus::set(itemAt(second, sulphur.mid(1)), nullptr);
        settle();
        clickEntry(*m_window, 1);
        settle();
        QCOMPARE(Focus::item(), itemAt(second, sulphur.mid(1)));
    }

    void theSelectionStaysAndNobodyIsToldOfAChange() {
        Compound* const entry = addStructure("1abc");
        itemAt(entry, {"A", "Groups", "HOH 2"})->SetSelected(true);
        showWindow();
        const OtherPlugin others;
        Focus::set(itemAt(entry, sulphur.mid(1)), nullptr);
        settle();
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QVERIFY(!isMarked(*m_window, sulphur));
        QCOMPARE(others.updates, 0);
    }

    void theCurrentRowTakesTheFocusAlong() {
        addStructure("1abc");
        OtherWindow other;
        showWindow();
        settle();
        QCOMPARE(other.moves, QStringList{"1abc"});
        QTest::keyClick(treeOf(*m_window), Qt::Key_Down);
        QTest::keyClick(treeOf(*m_window), Qt::Key_Right);
        QTest::keyClick(treeOf(*m_window), Qt::Key_Down);
        settle();
        // Once for what happened in between.
        QCOMPARE(other.moves, (QStringList{"1abc", "Groups"}));
        QCOMPARE(Focus::item()->GetName(), std::string("Groups"));
        QCOMPARE(currentRow(*m_window), "Groups");
        clickRow(*m_window, {"1abc", "A"});
        settle();
        QCOMPARE(other.moves.last(), "A");
        takeMessages();
    }

    void aDoubleClickAndEnterAskForTheMiddle() {
        addStructure("1abc");
        OtherWindow other;
        showWindow();
        settle();
        QTest::keyClick(treeOf(*m_window), Qt::Key_Enter);
        settle();
        QTest::keyClick(treeOf(*m_window), Qt::Key_Return);
        settle();
        QCOMPARE(other.moves, (QStringList{"1abc", "1abc centred", "1abc centred"}));
        TreeView* const tree = treeOf(*m_window);
        const QPoint place = tree->visualRect(rowAt(*m_window, {"1abc", "A"})).center();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, place);
        settle();
        QCOMPARE(other.moves.last(), "A centred");
        takeMessages();
    }

    void followingMovesNoFocus() {
        Compound* const entry = addStructure("1abc");
        showWindow();
        settle();
        OtherWindow other;
        Focus::set(itemAt(entry, sulphur.mid(1)), &other);
        settle();
        settle();
        QCOMPARE(other.moves, QStringList());
        QCOMPARE(Focus::item(), itemAt(entry, sulphur.mid(1)));
    }

    void whatIsGoneMeanwhileIsNotShown() {
        Compound* const entry = addStructure("1abc");
        showWindow();
        settle();
        Focus::set(itemAt(entry, sulphur.mid(1)), nullptr);
        destroyElsewhere(itemAt(entry, {"A", "Groups", "MET 1"}));
        settle();
        QCOMPARE(takeMessages(), QStringList{deleted});
        QVERIFY(!Focus::item());
        // The focus still shows what there is.
        Focus::set(itemAt(entry, {"A", "Groups", "HOH 2"}), nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "HOH 2");
    }

    void anItemWithoutARowYetShowsWhatHoldsIt() {
        Compound* const entry = addStructure("1abc");
        showWindow();
        Focus::set(
            memory_host::addAtom(itemAt(entry, {"A", "Groups", "HOH 2"}), {"H1", "H", {}, 0.0F, 0}),
            nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "HOH 2");
    }

    void theSpaceAndNothingAreNotShown() {
        addStructure("1abc");
        showWindow();
        settle();
        Focus::set(TAVIK::Space::instance(), nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "1abc");
        Focus::set(nullptr, nullptr);
        settle();
        QCOMPARE(currentRow(*m_window), "1abc");
    }

    void aMoveInTheMiddleOfACommandIsFollowedAfterIt() {
        addStructure("1abc");
        Compound* const second = addStructure("2abc");
        showWindow();
        settle();
        itemAt(TAVIK::Space::instance(), sulphur)->SetSelected(true);
        m_window->commUpdate();
        OtherPlugin others;
        others.onDelete = [&] { Focus::set(itemAt(second, {"A"}), nullptr); };
        m_window->KillAtoms();
        settle();
        QCOMPARE(others.deletes, 1);
        QCOMPARE(rows(*m_window).first(), "2abc");
        QCOMPARE(currentRow(*m_window), "A");
        takeMessages();
    }

    void whoHearsOfTheFocusMayEndTheWindow() {
        addStructure("1abc");
        showWindow();
        settle();
        OtherWindow other;
        other.answer = [this] { m_window.reset(); };
        QTest::keyClick(treeOf(*m_window), Qt::Key_Down);
        settle();
        QVERIFY(!m_window);
        QCOMPARE(other.moves, QStringList{"A"});
    }
};

REGISTER_TEST(FollowFocusTest)
#include "FollowFocusTest.moc"
