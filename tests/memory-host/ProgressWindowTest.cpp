// The window that says how far long work is: names are plain text, and fit into it.
#include "services/ProgressWindow.h"

#include "TestSupport.h"
#include "services/ElidedLine.h"

#include <QApplication>
#include <QImage>
#include <QTextDocument>

using memory_host::ElidedLine;
using memory_host::ProgressWindow;

class ProgressWindowTest : public test_support::TestCase {
    Q_OBJECT

    static QList<ElidedLine*> linesOf(const ProgressWindow& window) {
        return window.findChildren<ElidedLine*>();
    }
    static QString toolTipOf(const ElidedLine* line) {
        QTextDocument shown;
        shown.setHtml(line->toolTip());
        return shown.toPlainText();
    }

private slots:
    void aNameIsPlainText() {
        ProgressWindow window("Opening files");
        window.show();
        const QString name = "Opening <b>bold</b> &amp; <br> &x.pdb";
        window.setTitleLine(name);
        window.setStage("reading <i>it</i>", -1);
        QCOMPARE(linesOf(window).at(0)->text(), name);
        QCOMPARE(linesOf(window).at(1)->text(), "reading <i>it</i>");
        for (const ElidedLine* line : linesOf(window))
            QCOMPARE(line->textFormat(), Qt::PlainText);
    }

    // It comes up while the user types elsewhere.
    void keysDoNotCancelButEscapeDoes() {
        ProgressWindow window("Opening files");
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_C}) {
            QWidget* const focus = QApplication::focusWidget();
            QTest::keyClick(focus ? focus : &window, key);
            QVERIFY(!window.wasCancelled());
        }
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(window.wasCancelled());
    }

    void aLongNameLeavesTheWindowAsItIs() {
        ProgressWindow window("Opening files");
        window.setTitleLine("Opening a.pdb");
        window.setStage("reading the file", -1);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QSize before = window.size();
        const QSize least = window.minimumSizeHint();
        for (const QString& name :
             {QString(2000, u'm'), QString("two\nlines\r\nor more.pdb").repeated(50),
              QString("a b ").repeated(400)}) {
            window.setTitleLine("Opening " + name + " (1 of 2)");
            window.setStage(name, 0.5);
            QTest::qWait(50);
            QCOMPARE(window.size(), before);
            QCOMPARE(window.minimumSizeHint(), least);
            for (const ElidedLine* line : linesOf(window)) {
                QVERIFY(line->geometry().right() < window.width());
                QVERIFY(line->fontMetrics().horizontalAdvance(line->text()) <= line->width());
                QVERIFY(!line->text().contains(u'\n'));
                QVERIFY(line->text().contains(u'\u2026'));
            }
            // Which file it is, and how many there are, stay.
            QVERIFY(linesOf(window).at(0)->text().startsWith("Opening "));
            QVERIFY(linesOf(window).at(0)->text().endsWith("(1 of 2)"));
        }
    }

    void aWindowThatIsShownLateKeepsItsWidthAsWell() {
        ProgressWindow brief("Opening files");
        brief.setTitleLine("Opening a.pdb");
        brief.show();
        ProgressWindow window("Opening files");
        window.setTitleLine("Opening " + QString(2000, u'm'));
        window.show();
        QCOMPARE(window.width(), brief.width());
    }

    void aWiderWindowShowsMore() {
        ProgressWindow window("Opening files");
        window.show();
        const QString name = "Opening " + QString(60, u'm') + ".pdb";
        window.setTitleLine(name);
        const ElidedLine* line = linesOf(window).at(0);
        QVERIFY(line->text() != name);
        QCOMPARE(toolTipOf(line), name);
        window.resize(2000, window.height());
        QTRY_COMPARE(line->text(), name);
        QCOMPARE(line->toolTip(), QString());
        QCOMPARE(line->accessibleName(), name);
    }
};

REGISTER_TEST(ProgressWindowTest)
#include "ProgressWindowTest.moc"
