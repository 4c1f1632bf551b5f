// The example of the page "Potentials on surfaces", done as it says, with the plug-ins of the
// build.
#include "HelpPage.h"
#include "Inspection.h"
#include "MainWindowCase.h"
#include "Space.h"
#include "StatusLine.h"

#include <QApplication>
#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QTimer>

#include <cmath>

class PotentialsPageTest : public test_support::MainWindowCase {
    Q_OBJECT

    static QString page() { return help_page::text("potentials"); }
    QString said() const { return m_window->status().said(); }
    /// Whether two lines say the same, with numbers that differ by so much at most: those that are
    /// measured on a mesh may come to differ in their last digits.
    static bool isNearly(const QString& line, const QString& other, double share) {
        static const QRegularExpression number("[-0-9.,]*[0-9]");
        QList<double> a;
        QList<double> b;
        for (const auto& [from, to] : {std::pair(line, &a), std::pair(other, &b)})
            for (auto it = number.globalMatch(from); it.hasNext();)
                to->append(it.next().captured().remove(u',').toDouble());
        bool isSame = a.size() == b.size();
        for (qsizetype i = 0; isSame && i != a.size(); ++i)
            isSame = std::abs(a[i] - b[i]) <= share * std::abs(b[i]);
        return isSame && QString(line).remove(number) == QString(other).remove(number);
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
        QCOMPARE(texts.size(), 3);

        help_page::choose(editor, "Add", "ConnollySurface");
        QVERIFY2(isNearly(said(), texts[0].value(0), 0.01), qPrintable(said()));

        help_page::choose(editor, "Add", "MapGrid2Surface");
        const QString& line = texts[1].value(0);
        // The range and all of the charges are exact, but not the extremes.
        QVERIFY2(isNearly(said(), line, 0.1), qPrintable(said()));
        QVERIFY2(said().section("; ", 1) == line.section("; ", 1), qPrintable(said()));

        TAVIK::Compound* const surface = TAVIK::Space::instance()->ChildBegin()[1];
        const workbench::Inspection seen = workbench::inspectItem(surface);
        QCOMPARE(seen.value("Values"), texts[1].value(1));
        QCOMPARE("Colours " + seen.value("Colours"), texts[1].value(2));

        QTimer::singleShot(0, this, [] {
            auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        help_page::choose(editor, "Add", "SubSurface");
        QVERIFY2(isNearly(said(), texts[2].value(1), 0.05), qPrintable(said()));
    }

    void thePageIsInTheMenu() {
        open();
        QVERIFY(entry("Help", "Potentials on surfaces"));
    }

    void itsLinksLeadToItsHeadings() { help_page::checkLinks(page(), 4); }
};

REGISTER_TEST(PotentialsPageTest)
#include "PotentialsPageTest.moc"
