// The bar of errors: what came last is in sight.
#include "ErrorBar.h"
#include "TestSupport.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>

using workbench::ErrorBar;

class ErrorBarTest : public test_support::TestCase {
    Q_OBJECT

    static QString longLine(int number) {
        return QString::number(number) + u' ' + QString("accepted are coordinates ").repeated(10);
    }
    static bool isNewestInSight(const ErrorBar& bar) {
        const QScrollBar* const scroll = bar.findChild<QPlainTextEdit*>()->verticalScrollBar();
        return scroll->maximum() > 0 && scroll->value() == scroll->maximum();
    }

private slots:
    void theNewestLineIsInSightAfterTheUserHasReadAnOlderOne() {
        ErrorBar bar;
        bar.resize(600, 80);
        bar.show();
        for (int i = 0; i < 10; ++i)
            bar.add(longLine(i));
        QVERIFY(isNewestInSight(bar));
        bar.findChild<QPlainTextEdit*>()->verticalScrollBar()->setValue(0);
        QVERIFY(!isNewestInSight(bar));
        bar.add(longLine(10));
        QVERIFY(isNewestInSight(bar));
    }

    void theNewestLineStaysInSightWhenLinesBreakElsewhere() {
        ErrorBar bar;
        bar.resize(600, 80);
        bar.show();
        for (int i = 0; i < 10; ++i)
            bar.add(longLine(i));
        for (const int width : {3000, 300, 600, 1}) {
            bar.resize(width, 80);
            QTRY_VERIFY2(isNewestInSight(bar), qPrintable(QString::number(width)));
        }
    }
};

REGISTER_TEST(ErrorBarTest)
#include "ErrorBarTest.moc"
