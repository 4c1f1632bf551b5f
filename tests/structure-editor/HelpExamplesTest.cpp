// The examples of the help page, done as the page says, on the structure that it speaks of.
#include "CommandTools.h"
#include "DataMaker.h"
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "WindowTools.h"
#include "files/Files.h"
#include "plain/PlainMenus.h"
#include "services/Settings.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QFrame>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QSet>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTextFrame>
#include <QTextTable>

#include <algorithm>
#include <memory>

using namespace command_tools;
using namespace window_tools;

namespace {

QTextBrowser* browser() {
    for (const QWidget* widget : QApplication::topLevelWidgets())
        if (widget->objectName() == "HelpViewer")
            return widget->findChild<QTextBrowser*>();
    return nullptr;
}

/// What the page that is shown says, without its line ends.
QString page() {
    return browser()->toPlainText().simplified();
}

QString readme() {
    QFile file(SOURCE_DIR "/README.md");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).simplified()
                                          : QString();
}

/// The tables of the page that is shown: rows of cells, as a reader sees them.
QList<QList<QStringList>> tables() {
    QList<QList<QStringList>> all;
    for (const QTextFrame* frame : browser()->document()->rootFrame()->childFrames()) {
        const auto* table = qobject_cast<const QTextTable*>(frame);
        if (!table)
            continue;
        QList<QStringList> rows;
        for (int row = 0; row < table->rows(); ++row) {
            QStringList cells;
            for (int column = 0; column < table->columns(); ++column) {
                QTextCursor cell = table->cellAt(row, column).firstCursorPosition();
                cell.setPosition(table->cellAt(row, column).lastPosition(),
                                 QTextCursor::KeepAnchor);
                cells << cell.selectedText();
            }
            rows << cells;
        }
        all << rows;
    }
    return all;
}

/// The rows below the titles of the table that has these first titles.
QList<QStringList> table(const QStringList& titles) {
    for (const QList<QStringList>& rows : tables())
        if (rows.front().mid(0, titles.size()) == titles)
            return rows.mid(1);
    return {};
}

} // namespace

class HelpExamplesTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;

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
    QCheckBox* currentOnly() const { return panelOf(*m_window)->findChild<QCheckBox*>(); }
    qsizetype selectedCount() const {
        std::vector<TAVIK::Compound*> atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, false);
        return qsizetype(atoms.size());
    }

private slots:
    void init() override {
        TestCase::init();
        memory_host::setSettingsFile(QStringLiteral(SOURCE_DIR "/data/settings.ini"));
        memory_host::openFile(SOURCE_DIR "/data/sample.pdb");
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        clickEntry(*m_window, 0);
        trigger(*m_window, QStringLiteral("Help"), QStringLiteral("Show"));
        QVERIFY(browser() && browser()->isVisible());
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Query"));
    }
    void cleanup() override {
        m_window.reset();
        if (browser())
            browser()->window()->close();
        memory_host::setSettingsFile(QString());
        TestCase::cleanup();
    }

    void theExamplesSelectWhatThePageSays() {
        const QList<QStringList> rows = table({"Chain", "Residue", "Atom"});
        QVERIFY(rows.size() >= 10);
        for (const QStringList& row : rows) {
            trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Clear"));
            press(QStringLiteral("Union"), row.mid(0, 3));
            QVERIFY2(selectedCount() == row[4].toLongLong(),
                     qPrintable(row[3] + QStringLiteral(": %1").arg(selectedCount())));
        }
    }

    void withCurrentTreeOnlyOffTheChainFieldBeginsWithTheEntry() {
        const QList<QStringList> rows = table({"Chain, any entry", "Residue", "Atom"});
        QVERIFY(rows.size() >= 4);
        currentOnly()->click();
        QVERIFY(!currentOnly()->isChecked());
        for (const QStringList& row : rows) {
            TAVIK::Space::instance()->SetSelected(false);
            press(QStringLiteral("Union"), row.mid(0, 3));
            QVERIFY2(selectedCount() == row[4].toLongLong(),
                     qPrintable(row[3] + QStringLiteral(": %1").arg(selectedCount())));
        }
    }

    void asManyCharactersStandBeforeANameAsPageAndReadmeSay() {
        const QStringList numbers = {"no", "one", "two", "three", "four"};
        const auto before = entries(*m_window).front().indexOf("sample");
        const QString number = numbers.value(before);
        QVERIFY2(
            page().contains(number + " characters stand before each name", Qt::CaseInsensitive),
            qPrintable(number));
        QVERIFY2(readme().contains("begins with " + number + " characters"), qPrintable(number));
    }

    void aSecondRightClickShowsEverythingAgainAsThePageSays() {
        QVERIFY(page().contains("the second one shows everything in it again"));
        QVERIFY(readme().contains("the next one shows everything in it again"));
        const std::vector<TAVIK::Compound*> atoms = atomsOf(TAVIK::Space::instance());
        const auto visible = [&atoms] {
            return std::count_if(atoms.begin(), atoms.end(),
                                 [](const TAVIK::Compound* atom) { return atom->IsVisible(); });
        };
        const auto all = visible();
        for (std::size_t i = 0; i < atoms.size(); i += 2)
            atoms[i]->SetVisible(false);
        QVERIFY(visible() > 0 && visible() < all);
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(visible(), 0);
        clickEntry(*m_window, 0, Qt::RightButton);
        QCOMPARE(visible(), all);
    }

    void aMapThatIsAnEntryIsDeletedByTheMiddleClickAndNotByGrid() {
        QVERIFY(
            page().contains("Grid deletes maps that stand inside the item in the tree. A map that "
                            "is an entry of the list goes with a middle click on its entry"));
        TAVIK::Compound* map = TAVIK::DataMaker::makeCore(TAVIK::Space::instance(), "map", "Grid");
        m_window->commAdd();
        clickEntry(*m_window, 1);
        map->SetSelected(true);
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Grid"));
        QCOMPARE(entries(*m_window).size(), 2);
        QVERIFY(withQuestion([this] { clickEntry(*m_window, 1, Qt::MiddleButton); }, pressOk));
        QCOMPARE(entries(*m_window).size(), 1);
    }

    void theStepsFollowOneAnotherAsThePageSays() {
        const QList<QStringList> rows = table({"Button", "Chain", "Residue", "Atom"});
        QVERIFY(rows.size() >= 4);
        for (const QStringList& row : rows) {
            press(row[0], row.mid(1, 3));
            QVERIFY2(selectedCount() == row[5].toLongLong(),
                     qPrintable(row[4] + QStringLiteral(": %1").arg(selectedCount())));
        }
    }

    void theWatersAreDeletedAsThePageSays() {
        using TAVIK::Compound;
        std::vector<Compound*> before;
        TAVIK::GetResidues(TAVIK::Space::instance(), before, true);
        const auto waters =
            std::count_if(before.begin(), before.end(), [](const Compound* residue) {
                return residue->GetName().starts_with("HOH ");
            });
        QVERIFY(waters > 600);
        atomsOf(before.front())[0]->SetSelected(true);
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Clear"));
        press(QStringLiteral("Union"), {".*", "HOH .*", ".*"});
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Residue"));
        std::vector<Compound*> after;
        TAVIK::GetResidues(TAVIK::Space::instance(), after, true);
        QCOMPARE(after.size(), before.size() - std::size_t(waters));
        for (const Compound* residue : after)
            QVERIFY(!residue->GetName().starts_with("HOH "));
        QCOMPARE(rows(*m_window).front(), "sample");
    }

    void aBindingSiteIsShownAsThePageSays() {
        using TAVIK::Compound;
        std::vector<Compound*> residues;
        TAVIK::GetResidues(TAVIK::Space::instance(), residues, true);
        const auto ligand =
            std::find_if(residues.begin(), residues.end(), [](const Compound* residue) {
                return residue->GetName().starts_with("SO4 ");
            });
        QVERIFY(ligand != residues.end());
        (*ligand)->SetSelected(true);
        QVERIFY(withDialog<QInputDialog>(
            [this] { trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Any w/ rad.")); },
            pressEnter));
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Full groups"));
        trigger(*m_window, QStringLiteral("Display"), QStringLiteral("Hide unselected"));
        qsizetype visible = 0;
        for (const Compound* atom : atomsOf(TAVIK::Space::instance())) {
            QVERIFY(atom->IsSelected() || !atom->IsVisible());
            visible += atom->IsVisible();
        }
        QVERIFY(visible > 5 && visible < 200);
    }

    void everyMenuEntryIsExplained() {
        QSet<QString> explained;
        for (const QList<QStringList>& rows : tables())
            for (const QStringList& row : rows)
                for (const QString& entry : row.front().split(QStringLiteral(", ")))
                    explained << entry;
        // Those of other plug-ins, too, none of which is here.
        QStringList labels = {"ContourHi",       "ContourLo",  "ConnollySurface", "VdWaalsSurface",
                              "SolAccesSurface", "SubSurface", "MapGrid2Surface"};
        for (const QAction* menu : m_window->menuBar()->actions())
            for (const QAction* entry : menu->menu()->actions())
                labels << entry->text();
        labels.removeOne(QStringLiteral("Exit"));
        QCOMPARE(std::size_t(labels.size()), plain::menuEntries().size() - 1);
        for (const QString& label : labels)
            QVERIFY2(explained.contains(label), qPrintable(label));
    }

    void everyPageThatTheSettingNamesIsShownAsItIsNow() {
        const QTemporaryDir folder;
        QFile settings(folder.filePath("settings.ini"));
        const QString title = browser()->window()->windowTitle();
        QCOMPARE(title, "Help: Structure Editor");
        for (const QByteArray name : {"one", "two"}) {
            QVERIFY(settings.open(QIODevice::WriteOnly | QIODevice::Truncate));
            settings.write("[Vuxo]\nHelp = no such page " + name + "\n");
            settings.close();
            memory_host::setSettingsFile(settings.fileName());
            trigger(*m_window, QStringLiteral("Help"), QStringLiteral("Show"));
            QVERIFY(browser()->toPlainText().contains("no such page " + name));
            const QStringList log = takeHostLog();
            QCOMPARE(log.size(), 1);
            QVERIFY(log.front().contains("no such page " + name));
        }
    }

    void withoutASettingThePageOfNoNameIsAskedFor() {
        memory_host::setSettingsFile(QString());
        trigger(*m_window, QStringLiteral("Help"), QStringLiteral("Show"));
        QVERIFY(browser()->toPlainText().startsWith("Help page not found"));
        QCOMPARE(takeHostLog().size(), 1);
    }
};

REGISTER_TEST(HelpExamplesTest)
#include "HelpExamplesTest.moc"
