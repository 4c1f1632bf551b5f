// The list widget: what a press does to the highlight, and what it reports.
#include "window/ListBox.h"
#include "TestSupport.h"

#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>

#include <memory>

namespace {

QPoint centre(const ListBox& list, int index) {
    return list.visualItemRect(list.item(index)).center();
}

} // namespace

class ListBoxTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<ListBox> makeList(const QStringList& texts) {
        auto list = std::make_unique<ListBox>();
        list->addItems(texts);
        list->resize(200, 120);
        list->show();
        return list;
    }

private slots:
    void anyButtonFirstHighlightsTheEntryAndThenReportsIt_data() {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::newRow("left") << Qt::LeftButton;
        QTest::newRow("right") << Qt::RightButton;
        QTest::newRow("middle") << Qt::MiddleButton;
        QTest::newRow("back") << Qt::BackButton;
    }
    void anyButtonFirstHighlightsTheEntryAndThenReportsIt() {
        QFETCH(Qt::MouseButton, button);
        const auto list = makeList({"one", "two", "three"});
        list->setSelected(0, true);
        int reports = 0;
        connect(list.get(), &ListBox::mouseButtonPressed, this,
                [&](int reported, QListWidgetItem* item, const QPoint& pos) {
                    ++reports;
                    QCOMPARE(reported, static_cast<int>(button));
                    QCOMPARE(item, list->item(2));
                    QCOMPARE(pos, list->viewport()->mapToGlobal(centre(*list, 2)));
                    QCOMPARE(list->currentRow(), 2);
                    QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(2)});
                });
        QTest::mousePress(list->viewport(), button, {}, centre(*list, 2));
        QCOMPARE(reports, 1);
        QTest::mouseRelease(list->viewport(), button, {}, centre(*list, 2));
        QCOMPARE(reports, 1);
    }

    void modifiersChangeNothing() {
        const auto list = makeList({"one", "two"});
        list->setSelected(1, true);
        QSignalSpy reports(list.get(), &ListBox::mouseButtonPressed);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier, centre(*list, 1));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ShiftModifier, centre(*list, 0));
        QCOMPARE(reports.size(), 2);
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(0)});
    }

    void aPressBesideTheEntriesReportsNoneAndKeepsTheHighlight() {
        const auto list = makeList({"one", "two"});
        list->setSelected(1, true);
        QSignalSpy reports(list.get(), &ListBox::mouseButtonPressed);
        for (const Qt::MouseButton button : {Qt::LeftButton, Qt::MiddleButton, Qt::RightButton})
            QTest::mouseClick(list->viewport(), button, {}, QPoint(20, 110));
        QCOMPARE(reports.size(), 3);
        for (const QList<QVariant>& report : reports)
            QCOMPARE(report.at(1).value<QListWidgetItem*>(), nullptr);
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(1)});
    }

    void theReceiverDecidesTheHighlightWhateverTheMouseDoesNext() {
        const auto list = makeList({"one", "two", "three"});
        connect(list.get(), &ListBox::mouseButtonPressed, this,
                [&] { list->setSelected(0, true); });
        QTest::mousePress(list->viewport(), Qt::LeftButton, {}, centre(*list, 1));
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(0)});
        QTest::mouseMove(list->viewport(), centre(*list, 2));
        QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, centre(*list, 2));
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(0)});
        QCOMPARE(list->currentRow(), 0);
    }

    void theSecondPressOfADoubleClickIsNoPress() {
        const auto list = makeList({"one", "two"});
        QSignalSpy reports(list.get(), &ListBox::mouseButtonPressed);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, centre(*list, 1));
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, centre(*list, 1));
        QCOMPARE(reports.size(), 1);
    }

    void theReceiverMayEmptyOrDestroyTheList() {
        auto list = makeList({"one", "two"});
        const QMetaObject::Connection emptying =
            connect(list.get(), &ListBox::mouseButtonPressed, this, [&] { list->clear(); });
        QTest::mouseClick(list->viewport(), Qt::RightButton, {}, centre(*list, 1));
        QCOMPARE(list->count(), 0);
        disconnect(emptying);
        list->addItem("again");
        QPointer<ListBox> watched = list.get();
        connect(list.get(), &ListBox::mouseButtonPressed, this, [&] { list.reset(); });
        QTest::mousePress(list->viewport(), Qt::LeftButton, {}, centre(*list, 0));
        QVERIFY(!watched);
    }

    void changeItemKeepsTheHighlightAndTellsOnlyOfADifferentText() {
        const auto list = makeList({"one", "two", "three"});
        list->setSelected(1, true);
        QSignalSpy changes(list->model(), &QAbstractItemModel::dataChanged);
        list->changeItem("two", 1);
        QCOMPARE(changes.size(), 0);
        list->changeItem("zwei", 1);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(list->item(1)->text(), "zwei");
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(1)});
        QCOMPARE(list->currentRow(), 1);
    }

    void indicesOutsideOfTheListAreIgnored() {
        const auto list = makeList({"one"});
        list->setSelected(0, true);
        for (const int index : {-1, 1, 1000}) {
            list->changeItem("other", index);
            list->setSelected(index, true);
            list->setSelected(index, false);
        }
        QCOMPARE(list->item(0)->text(), "one");
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(0)});
    }

    void anEntryCanBeUnselected() {
        const auto list = makeList({"one", "two"});
        list->setSelected(1, true);
        list->setSelected(0, false);
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(1)});
        list->setSelected(1, false);
        QVERIFY(list->selectedItems().isEmpty());
        list->setSelected(1, true);
        list->clearSelection();
        QVERIFY(list->selectedItems().isEmpty());
    }

    void theSizeHintFollowsTheEntriesBetweenItsBounds() {
        ListBox list;
        const int empty = list.sizeHint().width();
        QVERIFY(empty >= 40 && empty < 200);
        list.addItem(QString(20, u'm'));
        QCOMPARE(list.sizeHint().width(), 200);
        list.item(0)->setText(QString(1'000'000, u'm'));
        QCOMPARE(list.sizeHint().width(), 200);
        list.clear();
        list.addItem(" _ an entry of a name");
        const int usual = list.sizeHint().width();
        QVERIFY(usual > empty && usual < 200);
        list.addItem(" _ an entry of a longer name");
        QVERIFY(list.sizeHint().width() > usual);
    }

    void itsEntriesCanBeReadAtTheHintedWidth() {
        ListBox list;
        list.addItem(" _ an entry of a name");
        list.resize(list.sizeHint());
        list.show();
        QVERIFY(!list.horizontalScrollBar()->isVisible());
    }

    void highlightingDoesNotScroll() {
        QStringList texts;
        for (int i = 0; i < 100; ++i)
            texts << QString::number(i);
        const auto list = makeList(texts);
        list->setSelected(99, true);
        QCOMPARE(list->verticalScrollBar()->value(), 0);
        list->scrollToBottom();
        const int bottom = list->verticalScrollBar()->value();
        QVERIFY(bottom > 0);
        list->setSelected(0, true);
        QCOMPARE(list->verticalScrollBar()->value(), bottom);
    }

    void theKeysMoveTheHighlightIntoSightAndReportNothing() {
        QStringList texts;
        for (int i = 0; i < 100; ++i)
            texts << QString::number(i);
        const auto list = makeList(texts);
        QSignalSpy reports(list.get(), &ListBox::mouseButtonPressed);
        list->setSelected(0, true);
        QTest::keyClick(list.get(), Qt::Key_Down);
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(1)});
        QTest::keyClick(list.get(), Qt::Key_End);
        QCOMPARE(list->selectedItems(), QList<QListWidgetItem*>{list->item(99)});
        QVERIFY(list->viewport()->rect().contains(centre(*list, 99)));
        QTest::keyClick(list.get(), Qt::Key_F2);
        QVERIFY(!list->isPersistentEditorOpen(list->item(99)));
        QCOMPARE(reports.size(), 0);
    }
};

REGISTER_TEST(ListBoxTest)
#include "ListBoxTest.moc"
