// Deleting a top-level item by a middle press on its entry: the question, and what may happen while
// it is open.
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "items/SpaceLock.h"
#include "window/ListBox.h"

#include <memory>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class TopLevelDeleteTest : public WindowTestCase {
    Q_OBJECT

private slots:
    void aMiddlePressAsksAndCancelDeletesNothing() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [this](QMessageBox& question) {
                                 QCOMPARE(question.windowTitle(), "Warning");
                                 QCOMPARE(question.text(), "Delete 1abc?");
                                 QCOMPARE(question.icon(), QMessageBox::Warning);
                                 QCOMPARE(question.parentWidget(), m_window.get());
                                 QCOMPARE(question.standardButtons(),
                                          QMessageBox::Ok | QMessageBox::Cancel);
                                 pressCancel(question);
                             }));
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QCOMPARE(rows(*m_window).front(), "1abc");
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(other.deletes, 0);
    }

    void escapeIsCancelAndEnterIsOk() {
        addStructure("1abc");
        openWindow();
        const auto answerWith = [this](Qt::Key key) {
            return withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                                [&](QMessageBox& question) { QTest::keyClick(&question, key); });
        };
        QVERIFY(answerWith(Qt::Key_Escape));
        QCOMPARE(listOf(*m_window)->count(), 1);
        QVERIFY(answerWith(Qt::Key_Return));
        QCOMPARE(listOf(*m_window)->count(), 0);
    }

    void closingTheQuestionIsCancel() {
        addStructure("1abc");
        openWindow();
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [](QMessageBox& question) { question.close(); }));
        QCOMPARE(listOf(*m_window)->count(), 1);
    }

    void aNameIsAskedForAsItReads() {
        addEmpty("<b>%1 &x\xe9");
        openWindow();
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [](QMessageBox& question) {
                                 QCOMPARE(question.text(),
                                          QString::fromUtf8("Delete <b>%1 &x\u00e9?"));
                                 QCOMPARE(question.textFormat(), Qt::PlainText);
                                 pressCancel(question);
                             }));
    }

    void deletingTheShownEntryEmptiesTheTreeAndLeavesNoHighlight() {
        addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); }, pressOk));
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(other.deletes, 1);
        // Nothing is shown: the entry that took the index can be picked.
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "2abc");
    }

    void deletingAnotherEntryEmptiesTheTreeToo() {
        addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 1, Qt::MiddleButton); }, pressOk));
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
    }

    void aRefusedDeletionIsSilent() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        OtherPlugin other;
        std::unique_ptr<memory_host::SpaceLock> lock;
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [&](QMessageBox& question) {
                                 lock = std::make_unique<memory_host::SpaceLock>();
                                 pressOk(question);
                             }));
        lock.reset();
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        QCOMPARE(rows(*m_window).front(), "1abc");
        QCOMPARE(highlighted(*m_window), 0);
        QCOMPARE(other.deletes, 0);
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); }, pressOk));
        QVERIFY(entries(*m_window).isEmpty());
    }

    void anItemThatIsDeletedDuringTheQuestionEndsItQuietly() {
        Compound* first = addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 1);
        OtherPlugin other;
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [&](QMessageBox& question) {
                                 destroyElsewhere(first);
                                 pressOk(question);
                             }));
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(other.deletes, 1);
    }

    void anItemThatTookTheDeletedOnesPlaceIsLeftAlone() {
        // Many turns: an address is used again sooner or later.
        Compound* current = addStructure("1abc");
        openWindow();
        for (int turn = 0; turn < 50; ++turn) {
            QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                                 [&](QMessageBox& question) {
                                     destroyElsewhere(current);
                                     current = addStructure("1abc");
                                     pressOk(question);
                                 }));
            QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        }
        QCOMPARE(takeMessages().size(), 50);
    }

    void anItemThatMovedUpDuringTheQuestionIsStillTheOneDeleted() {
        Compound* first = addStructure("1abc");
        addStructure("2abc");
        addStructure("3abc");
        openWindow();
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 1, Qt::MiddleButton); },
                             [&](QMessageBox& question) {
                                 QCOMPARE(question.text(), "Delete 2abc?");
                                 destroyElsewhere(first);
                                 pressOk(question);
                             }));
        takeMessages();
        QCOMPARE(entries(*m_window), QStringList(" _ 3abc"));
    }

    void theSpaceEmptiedDuringTheQuestionEndsItQuietly() {
        addStructure("1abc");
        addStructure("2abc");
        openWindow();
        clickEntry(*m_window, 0);
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 1, Qt::MiddleButton); },
                             [](QMessageBox& question) {
                                 Space* space = Space::instance();
                                 while (space->ChildBegin() != space->ChildEnd())
                                     destroyElsewhere(*space->ChildBegin());
                                 pressOk(question);
                             }));
        QCOMPARE(takeMessages().size(), 2);
        QVERIFY(entries(*m_window).isEmpty());
        QVERIFY(rows(*m_window).isEmpty());
    }

    void theWindowMayEndDuringTheQuestion() {
        addStructure("1abc");
        openWindow();
        clickEntry(*m_window, 0);
        QPointer<QMessageBox> watched;
        QVERIFY(withQuestion([&] { clickEntry(*m_window, 0, Qt::MiddleButton); },
                             [&](QMessageBox& question) {
                                 watched = &question;
                                 m_window.reset();
                             }));
        QVERIFY(!watched);
        QCOMPARE(Space::instance()->ChildEnd() - Space::instance()->ChildBegin(), 1);
    }
};

REGISTER_TEST(TopLevelDeleteTest)
#include "TopLevelDeleteTest.moc"
