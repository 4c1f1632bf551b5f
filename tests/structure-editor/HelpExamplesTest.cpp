// The examples of the help page, done as the page says, on the structure that it speaks of.
#include "CommandTools.h"
#include "Files.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "WindowTools.h"

#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>

#include <memory>

using namespace command_tools;
using namespace window_tools;

namespace {

// The rows of the table with these first titles, each a list of its cells without quotes.
QList<QStringList> table(const QString& page, const QStringList& titles) {
    // A bar that belongs to a cell has a backslash before it.
    static const QRegularExpression bar(QStringLiteral(R"((?<!\\)\|)"));
    QList<QStringList> rows;
    bool inside = false;
    for (const QString& line : page.split(u'\n')) {
        QStringList cells;
        if (line.startsWith(u'|'))
            for (const QString& cell : line.split(bar).mid(1))
                cells << cell.trimmed().remove(u'`').replace(QStringLiteral("\\|"), "|");
        if (cells.mid(0, titles.size()) == titles)
            inside = true;
        else if (cells.isEmpty())
            inside = false;
        else if (inside && !cells[0].startsWith(QStringLiteral("---")))
            rows << cells;
    }
    return rows;
}

} // namespace

class HelpExamplesTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;
    QString m_page;

    void press(const QString& button, const QStringList& fields) {
        QFrame* panel = panelOf(*m_window);
        const QList<QLineEdit*> edits = panel->findChildren<QLineEdit*>();
        QCOMPARE(edits.size(), 3);
        for (int i = 0; i < 3; ++i) {
            edits[i]->clear();
            QTest::keyClicks(edits[i], fields[i]);
        }
        for (QPushButton* each : panel->findChildren<QPushButton*>())
            if (each->text().startsWith(button))
                QTest::mouseClick(each, Qt::LeftButton);
    }
    qsizetype selectedCount() const {
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, false);
        return qsizetype(atoms.size());
    }

private slots:
    void init() override {
        TestCase::init();
        QFile file(QStringLiteral(SOURCE_DIR "/data/help/structure-editor.md"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_page = QString::fromUtf8(file.readAll());
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        clickEntry(*m_window, 0);
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Query"));
    }
    void cleanup() override {
        m_window.reset();
        TestCase::cleanup();
    }

    void theExamplesSelectWhatThePageSays() {
        const QList<QStringList> rows = table(m_page, {"Chain", "Residue", "Atom"});
        QVERIFY(rows.size() >= 10);
        for (const QStringList& row : rows) {
            trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Clear"));
            press(QStringLiteral("Union"), row.mid(0, 3));
            QVERIFY2(selectedCount() == row[4].toLongLong(),
                     qPrintable(row[3] + QStringLiteral(": %1").arg(selectedCount())));
        }
    }

    void theStepsFollowOneAnotherAsThePageSays() {
        const QList<QStringList> rows = table(m_page, {"Button", "Chain", "Residue", "Atom"});
        QVERIFY(rows.size() >= 4);
        for (const QStringList& row : rows) {
            press(row[0], row.mid(1, 3));
            QVERIFY2(selectedCount() == row[5].toLongLong(),
                     qPrintable(row[4] + QStringLiteral(": %1").arg(selectedCount())));
        }
    }

    void everyMenuEntryIsExplained() {
        for (const char* label : {"Clear",
                                  "Invert",
                                  "Full groups",
                                  "Within rad.",
                                  "All Fgroups",
                                  "Any w/ rad.",
                                  "Atoms by type",
                                  "Nearby Grids",
                                  "Query",
                                  "Hide",
                                  "Hide unselected",
                                  "Hide All unsels",
                                  "Show",
                                  "Set color",
                                  "Color by Temp",
                                  "Default color",
                                  "FirstModel",
                                  "Prev Model",
                                  "Next Model",
                                  "Colour Atoms by Residue",
                                  "Rotamers",
                                  "ContourHi",
                                  "ContourLo",
                                  "ConnollySurface",
                                  "VdWaalsSurface",
                                  "SolAccesSurface",
                                  "SubSurface",
                                  "Define set",
                                  "Cartesian",
                                  "MapGrid2Surface",
                                  "Tree",
                                  "Chain",
                                  "Group",
                                  "Residue",
                                  "Atom",
                                  "Bond",
                                  "Grid",
                                  "Surface",
                                  "All"}) {
            const QRegularExpression cell(
                QStringLiteral("^\\|( | .*, )%1( |, .*)\\|")
                    .arg(QRegularExpression::escape(QLatin1String(label))),
                QRegularExpression::MultilineOption);
            QVERIFY2(cell.match(m_page).hasMatch(), label);
        }
    }
};

REGISTER_TEST(HelpExamplesTest)
#include "HelpExamplesTest.moc"
