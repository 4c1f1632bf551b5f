// The examples of the page "Surfaces and contours", done as it says, with the plug-ins of the
// build.
#include "FindBox.h"
#include "HelpPage.h"
#include "MainWindowCase.h"
#include "StatusLine.h"

#include <QApplication>
#include <QColorDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QTimer>

#include <cmath>

class SurfacesPageTest : public test_support::MainWindowCase {
    Q_OBJECT

    static QString page() { return help_page::text("surfaces"); }
    QString said() const { return m_window->status().said(); }
    /// Whether this is said, with an area within 1 %: in its last digits it may come to differ.
    bool isSaid(const QString& text) const {
        static const QRegularExpression number("([0-9,.]+) Å²");
        const auto area = [](const QString& line) {
            return number.match(line).captured(1).remove(u',').toDouble();
        };
        const auto words = [](QString line) { return line.remove(number); };
        const double expected = area(text);
        return words(said()) == words(text) && std::abs(area(said()) - expected) < 0.01 * expected;
    }

private slots:
    void cleanup() override {
        takeHostLog(); // what was said
        MainWindowCase::cleanup();
    }

    void everyStepSaysWhatThePageSays() {
        open();
        m_window->openFiles({sample()});
        QTRY_COMPARE(entries(), QStringList("sample"));
        const BaseWindow* const editor = windowIn(m_editor);
        const QList<QStringList> texts = help_page::steps(page());
        QCOMPARE(texts.size(), 5);

        help_page::choose(editor, "Add", "ConnollySurface");
        QVERIFY2(isSaid(texts[0].value(0)), qPrintable(said()));
        QTRY_VERIFY(editor->findChild<QListWidget*>()->item(1));
        QVERIFY(editor->findChild<QListWidget*>()->item(1)->text().endsWith(texts[0].value(1)));

        help_page::choose(editor, "Add", "VdWaalsSurface");
        QVERIFY2(isSaid(texts[1].value(0)), qPrintable(said()));
        help_page::choose(editor, "Add", "SolAccesSurface");
        QVERIFY2(isSaid(texts[1].value(1)), qPrintable(said()));

        QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(m_window->find().field(), texts[2].value(0));
        QTRY_VERIFY(!m_window->find().search().isRunning());
        QTest::keyClick(m_window->find().field(), Qt::Key_Return, Qt::ControlModifier);
        entry("View", "Show Only Selected")->trigger();
        help_page::choose(editor, "Add", "ConnollySurface");
        QVERIFY2(isSaid(texts[2].value(1)), qPrintable(said()));

        QTimer::singleShot(0, this, [] {
            auto* const dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->setCurrentColor(Qt::green);
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        help_page::choose(editor, "Display", "Set color");
        help_page::choose(windowIn(m_view), "View", "Colour surfaces by atoms");
        QCOMPARE(said(), texts[3].value(0));

        help_page::choose(editor, "Select", "Clear");
        help_page::choose(editor, "Add", "MapGrid2Surface");
        QTimer::singleShot(0, this, [&texts] {
            auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->setTextValue(texts[4].value(0));
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        help_page::choose(editor, "Add", "SubSurface");
        QVERIFY2(said().startsWith(texts[4].value(1) + ": "), qPrintable(said()));
    }

    void thePageExplainsEachEntry() {
        const QString text = page();
        for (const char* label : {"ConnollySurface", "VdWaalsSurface", "SolAccesSurface",
                                  "SubSurface", "ContourHi", "ContourLo", "Nearby Grids"})
            QVERIFY2(text.contains(label), label);
        open();
        QVERIFY(entry("Help", "Surfaces and contours"));
    }

    void itsLinksLeadToItsHeadings() { help_page::checkLinks(page(), 6); }
};

REGISTER_TEST(SurfacesPageTest)
#include "SurfacesPageTest.moc"
