// Another plug-in that was there before the window, and hears of every change first: what it does
// with the window then, which has not heard yet that items are gone.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "DestroyObserver.h"
#include "SlotTools.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "window/ListBox.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QMessageBox>

using namespace command_tools;
using namespace slot_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::DataMaker;
using TAVIK::Space;

namespace {

constexpr const char* victims[] = {"the shown entry", "a residue of it", "the other entry",
                                   "everything"};

// All that assistive programs can read of the tree.
int readAloud(QAccessibleInterface* interface) {
    int read = 0;
    for (int i = 0; interface && i < interface->childCount(); ++i)
        if (QAccessibleInterface* const child = interface->child(i)) {
            read += !child->text(QAccessible::Name).isEmpty();
            child->state();
        }
    return read;
}

// Looks at the rows at the moment when items are about to go.
class Watcher : public TAVIK::DestroyObserver {
public:
    explicit Watcher(const Vuxo& window) : m_window(window) {}
    void aboutToDestroy(Compound* item) override {
        seen << QString::fromLatin1(item->GetName()) + ": " +
                    QString::number(rows(m_window).size()) + " rows";
    }

    QStringList seen;

private:
    const Vuxo& m_window;
};

} // namespace

class OlderSubscriberTest : public WindowTestCase {
    Q_OBJECT

    std::unique_ptr<OtherPlugin> m_older;
    Compound* m_shown = nullptr;
    Compound* m_second = nullptr;
    int m_heard = 0;

    void destroy(const QString& victim) {
        const DataDelete<Space> guard(nullptr, Space::instance());
        QVERIFY(guard.m_good);
        if (victim == "a residue of it")
            DataMaker::Destroy(itemAt(m_shown, {"A", "Groups", "MET 1"}));
        else if (victim == "a residue of the second")
            DataMaker::Destroy(itemAt(m_second, {"A", "Groups", "HOH 2"}));
        else if (victim == "the shown entry")
            DataMaker::Destroy(m_shown);
        else if (victim == "the other entry")
            DataMaker::Destroy(m_second);
        else
            while (Space::instance()->HasChildren())
                DataMaker::Destroy(*Space::instance()->ChildBegin());
    }

    // Has something destroyed, and the older subscriber do that when it hears of it.
    void destroyWhile(const QString& victim, const std::function<void()>& deed) {
        m_older->onDelete = [&] {
            ++m_heard;
            m_older->onDelete = {};
            QCOMPARE(rows(*m_window), QStringList());
            deed();
        };
        destroy(victim);
        QCOMPARE(m_heard, 1);
        QCOMPARE(windowFaults(*m_window).join(u'\n'), QString());
        QCOMPARE(rows(*m_window), QStringList());
    }

    static void addVictims() {
        QTest::addColumn<QString>("victim");
        for (const char* victim : victims)
            QTest::newRow(victim) << victim;
    }

private slots:
    void init() override {
        TestCase::init();
        m_heard = 0;
        m_older = std::make_unique<OtherPlugin>();
        m_shown = addStructure("1abc");
        m_second = addStructure("2abc");
        addEmpty("map", "Grid");
        showWindow();
        watchRows();
        QApplication::processEvents();
        QVERIFY(!rows(*m_window).isEmpty());
    }
    void cleanup() override {
        m_older.reset();
        WindowTestCase::cleanup();
    }

    void theTreeIsEmptyBeforeTheFirstItemGoes_data() { addVictims(); }
    void theTreeIsEmptyBeforeTheFirstItemGoes() {
        QFETCH(QString, victim);
        Watcher watcher(*m_window);
        destroy(victim);
        QVERIFY(!watcher.seen.isEmpty());
        for (const QString& line : watcher.seen)
            QVERIFY2(line.endsWith(": 0 rows"), qPrintable(line));
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void aMessageBoxMayBeShown_data() { addVictims(); }
    void aMessageBoxMayBeShown() {
        QFETCH(QString, victim);
        destroyWhile(victim, [this] {
            const bool asked = withDialog<QMessageBox>(
                [this] {
                    m_window->update();
                    treeOf(*m_window)->viewport()->update();
                    QMessageBox box(QMessageBox::Information, "deleted", "Something is gone");
                    box.exec();
                },
                [this](QMessageBox& box) {
                    treeOf(*m_window)->viewport()->repaint();
                    QApplication::processEvents();
                    box.accept();
                });
            QVERIFY(asked);
        });
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void theWindowMayBeShownAgain_data() { addVictims(); }
    void theWindowMayBeShownAgain() {
        QFETCH(QString, victim);
        m_window->hide();
        destroyWhile(victim, [this] {
            m_window->show();
            m_window->resize(500, 700);
            QApplication::processEvents();
        });
        QVERIFY(m_window->isVisible());
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void aPictureOfTheWindowMayBeTaken_data() { addVictims(); }
    void aPictureOfTheWindowMayBeTaken() {
        QFETCH(QString, victim);
        const QImage before = treeOf(*m_window)->viewport()->grab().toImage();
        destroyWhile(victim, [&] {
            const QImage picture = treeOf(*m_window)->viewport()->grab().toImage();
            QVERIFY(picture != before);
            const QColor base = treeOf(*m_window)->palette().base().color();
            for (int y = 0; y != picture.height(); ++y)
                for (int x = 0; x != picture.width(); ++x)
                    QCOMPARE(picture.pixelColor(x, y), base);
        });
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void rowsMayBeAskedForTooltipsAndReadAloud_data() { addVictims(); }
    void rowsMayBeAskedForTooltipsAndReadAloud() {
        QFETCH(QString, victim);
        QAccessibleInterface* const spoken =
            QAccessible::queryAccessibleInterface(treeOf(*m_window));
        const int header = treeOf(*m_window)->model()->columnCount();
        QVERIFY(readAloud(spoken) > header);
        destroyWhile(victim, [&] {
            QCOMPARE(readAloud(spoken), header);
            QWidget* const viewport = treeOf(*m_window)->viewport();
            for (int y = 2; y < viewport->height(); y += 10) {
                const QPoint at(30, y);
                QHelpEvent help(QEvent::ToolTip, at, viewport->mapToGlobal(at));
                QApplication::sendEvent(viewport, &help);
                QTest::mouseMove(viewport, at);
            }
        });
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void theTreeMayBeClicked_data() { addVictims(); }
    void theTreeMayBeClicked() {
        QFETCH(QString, victim);
        const QPoint row = treeOf(*m_window)->visualRect(rowAt(*m_window, {"1abc", "A"})).center();
        destroyWhile(victim, [&] {
            for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton})
                click(treeOf(*m_window)->viewport(), row, button);
            QTest::keyClick(treeOf(*m_window), Qt::Key_Down);
            QTest::keyClick(treeOf(*m_window), Qt::Key_Space);
        });
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void everyCommandMayBeTriggered_data() {
        QTest::addColumn<QString>("victim");
        QTest::addColumn<QString>("slot");
        for (const char* victim : victims)
            for (const QString& slot : allSlots())
                if (!slot.startsWith("ListEvent("))
                    QTest::addRow("%s, %s", victim, qPrintable(slot)) << victim << slot;
    }
    void everyCommandMayBeTriggered() {
        QFETCH(QString, victim);
        QFETCH(QString, slot);
        Space::instance()->SetSelected(true);
        m_window->commUpdate();
        destroyWhile(victim, [&] {
            withDialog<QDialog>([&] { QVERIFY(invoke(*m_window, slot.toLatin1())); },
                                [](QDialog& dialog) { pressEnter(dialog); });
        });
        QStringList messages = takeMessages();
        QCOMPARE(messages.removeAll(deleted), 1);
        for (const QString& line : messages)
            QVERIFY2(!line.startsWith("ASSERT") || slot == "UpdateList()", qPrintable(line));
        takeHostLog();
    }

    void aPressOnAnEntryWhoseItemIsGoneDoesNothing_data() {
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::newRow("left") << Qt::LeftButton;
        QTest::newRow("right") << Qt::RightButton;
        QTest::newRow("middle") << Qt::MiddleButton;
    }
    void aPressOnAnEntryWhoseItemIsGoneDoesNothing() {
        QFETCH(Qt::MouseButton, button);
        bool asked = true;
        QStringList shown;
        m_older->onDelete = [&] {
            QCOMPARE(entries(*m_window).size(), 3);
            asked = withQuestion([&] { clickEntry(*m_window, 0, button); }, pressOk);
            shown = rows(*m_window);
        };
        destroy("the shown entry");
        QVERIFY(!asked);
        QCOMPARE(shown, QStringList());
        QCOMPARE(entries(*m_window), (QStringList{" _ 2abc", " _ map"}));
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void aPressOnTheLastEntryWhenAllAreFewerDoesNothing() {
        m_older->onDelete = [this] { clickEntry(*m_window, 2, Qt::RightButton); };
        destroy("the other entry");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ map"}));
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void aPressOnAnEntryThatStaysIsDone() {
        QStringList rowsThen;
        m_older->onDelete = [&] {
            clickEntry(*m_window, 1);
            rowsThen = rows(*m_window);
        };
        destroy("a residue of it");
        QCOMPARE(rowsThen.value(0), "2abc");
        QCOMPARE(rows(*m_window), QStringList()); // the window has heard of the deletion by now
        m_older->onDelete = [&] { clickEntry(*m_window, 1, Qt::RightButton); };
        destroy("a residue of the second");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", "O_ 2abc", " _ map"}));
        QCOMPARE(takeMessages(), (QStringList{deleted, deleted}));
    }

    void whatIsShownBetweenTwoDestructionsIsEmptiedAgain() {
        Watcher watcher(*m_window);
        {
            const DataDelete<Space> guard(nullptr, Space::instance());
            DataMaker::Destroy(itemAt(m_shown, {"A", "Groups", "MET 1"}));
            QCOMPARE(rows(*m_window), QStringList());
            // A progress window of the one who deletes lets the user go on.
            m_window->Populate(0);
            QVERIFY(rows(*m_window).size() > 1);
            DataMaker::Destroy(m_shown);
        }
        QCOMPARE(watcher.seen, (QStringList{"MET 1: 0 rows", "1abc: 0 rows"}));
        QCOMPARE(takeMessages(), QStringList{deleted});
    }

    void destructionsBelowAGuardOfAnotherKindAreSeen_data() {
        QTest::addColumn<bool>("adds");
        QTest::newRow("update") << false;
        QTest::newRow("add") << true;
    }
    void destructionsBelowAGuardOfAnotherKindAreSeen() {
        QFETCH(bool, adds);
        if (adds) {
            const DataAdder<Space> guard(nullptr, Space::instance());
            DataMaker::Destroy(m_shown);
        } else {
            const DataPoint<Space> guard(nullptr, Space::instance());
            DataMaker::Destroy(m_shown);
        }
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(windowFaults(*m_window).join(u'\n'), QString());
        QCOMPARE(takeMessages(), QStringList());
    }

    void itemsThatStandOutsideOfTheDataLeaveTheTreeAsItIs() {
        const QStringList before = rows(*m_window);
        DataMaker::Destroy(memory_host::makeDetached("aside", "Composite"));
        QCOMPARE(rows(*m_window), before);
    }

    // The window's own deletions find the tree empty, and fill it again before anyone hears.
    void ownDeletionsShowTheSameItemAgain() {
        clickRow(*m_window, {"1abc", "A"});
        trigger(*m_window, "Select", "Clear");
        clickRow(*m_window, {"1abc", "A"});
        QStringList seen;
        m_older->onDelete = [&] { seen = rows(*m_window); };
        trigger(*m_window, "Delete", "Chain");
        QCOMPARE(seen, QStringList{"1abc"});
        QCOMPARE(rows(*m_window), seen);
        clickEntry(*m_window, 1); // an entry that is up to date
        QCOMPARE(rows(*m_window).value(0), "2abc");
        QCOMPARE(takeMessages(), QStringList());
    }
};

REGISTER_TEST(OlderSubscriberTest)
#include "OlderSubscriberTest.moc"
