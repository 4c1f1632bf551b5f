// One session from the first file to the last window, with the built plug-in: files opened, items
// shown, selected, hidden and coloured, models changed, sets made, everything deleted, the window
// closed and the plug-in unloaded. scripts/valgrind-session runs it under valgrind.
#include "Space.h"
#include "TestSupport.h"
#include "Traversal.h"
#include "WindowTools.h"
#include "files/Files.h"
#include "services/PluginFolder.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <functional>

using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

Compound* topLevel(int index) {
    return Space::instance()->ChildBegin()[index];
}

qsizetype topLevelCount() {
    return Space::instance()->ChildEnd() - Space::instance()->ChildBegin();
}

std::size_t atomCount(Compound* root, bool all = true) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(root, atoms, all);
    return atoms.size();
}

template <class Kind> std::size_t countOf(Compound* root) {
    std::vector<Compound*> items;
    TAVIK::GetItems<Kind>(root, items, true, nullptr, true);
    return items.size();
}

} // namespace

class WholeSessionTest : public test_support::TestCase {
    Q_OBJECT

    QMainWindow* m_window = nullptr;

    void open(const QString& name) {
        const memory_host::OpenedFile opened = memory_host::openFile(structure(name).toStdString());
        QVERIFY(!opened.items.empty());
        QCoreApplication::processEvents();
    }

    void start() {
        QVERIFY(memory_host::loadPlugins(STAGE_PLUGINS).contains("Edit/Vuxo"));
        QVERIFY(memory_host::startPlugin("Edit/Vuxo"));
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->inherits("Vuxo"))
                m_window = qobject_cast<QMainWindow*>(widget);
        QVERIFY(m_window);
    }

    QListWidget* list() const { return m_window->findChild<QListWidget*>(); }
    QTreeView* tree() const { return m_window->centralWidget()->findChild<QTreeView*>(); }

    void pressEntry(int index, Qt::MouseButton button = Qt::LeftButton) {
        list()->scrollToItem(list()->item(index));
        click(list()->viewport(), list()->visualItemRect(list()->item(index)).center(), button);
        paint();
    }

    void pressRow(const QStringList& path, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QModelIndex at;
        for (const QString& name : path) {
            const QModelIndex above = at;
            if (above.isValid())
                tree()->expand(above);
            at = {};
            for (int row = 0; row < tree()->model()->rowCount(above) && !at.isValid(); ++row)
                if (tree()->model()->index(row, 0, above).data().toString() == name)
                    at = tree()->model()->index(row, 0, above);
            QVERIFY2(at.isValid(), qPrintable(name));
        }
        tree()->scrollTo(at);
        click(tree()->viewport(), tree()->visualRect(at).center(), Qt::LeftButton, modifiers);
        paint();
    }

    /// Chooses a menu entry; a dialog that comes gets Enter, after `answer`.
    void choose(const QString& menu, const QString& label,
                const std::function<void(QDialog&)>& answer = {}) {
        QTimer timer;
        timer.setSingleShot(true);
        connect(&timer, &QTimer::timeout, this, [&] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                if (answer)
                    answer(*dialog);
                QTest::keyClick(dialog, Qt::Key_Return);
            }
        });
        timer.start(0);
        bool found = false;
        for (const QAction* title : m_window->menuBar()->actions())
            if (title->text() == menu)
                for (QAction* action : title->menu()->actions())
                    if (action->text() == label && !found) {
                        found = true;
                        action->trigger();
                    }
        QVERIFY2(found, qPrintable(menu + u'/' + label));
        paint();
    }

    /// Shows what came of it, as a screen does.
    void paint() {
        QCoreApplication::processEvents();
        m_window->grab();
    }

private slots:
    void everythingInOneSession() {
        // Files.
        for (const char* name : {"1ubq.pdb", "1ejg.pdb", "1cbs.cif.gz", "1jzv.ccp4"})
            open(name);
        QCOMPARE(topLevelCount(), 4);
        start();
        QCOMPARE(list()->count(), 4);
        open("1d3z.pdb"); // while the window is there
        QCOMPARE(list()->count(), topLevelCount());

        // Selecting.
        pressEntry(0);
        Compound* ubiquitin = topLevel(0);
        pressRow({"1ubq", "A", "Groups", "MET 1"});
        QVERIFY(ubiquitin->HasSelected());
        pressRow({"1ubq", "A", "Groups", "ILE 3"}, Qt::ControlModifier);
        pressRow({"1ubq", "A", "Groups", "LYS 6"}, Qt::ShiftModifier);
        const std::size_t some = atomCount(ubiquitin, false);
        choose("Select", "Within rad.");
        QVERIFY(atomCount(ubiquitin, false) > some);
        choose("Select", "Full groups");
        choose("Select", "Any w/ rad.");
        choose("Select", "All Fgroups");
        choose("Select", "Invert");
        choose("Select", "Nearby Grids");
        choose("Select", "Clear");
        QVERIFY(!ubiquitin->HasSelected());
        choose("Select", "Atoms by type",
               [](QDialog& dialog) { dialog.findChild<QLineEdit*>()->setText("O"); });
        QVERIFY(ubiquitin->HasSelected());

        // The set algebra.
        choose("Select", "Query");
        QWidget* panel = QApplication::activeWindow();
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->windowTitle() == QLatin1String("Select"))
                panel = widget;
        QVERIFY(panel && panel != m_window);
        panel->findChildren<QLineEdit*>().at(2)->setText("(N|CA|C)");
        for (QPushButton* button : panel->findChildren<QPushButton*>())
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(panel->isHidden());

        // Displaying.
        pressRow({"1ubq", "A"});
        QVERIFY(atomCount(ubiquitin, false) == atomCount(ubiquitin));
        choose("Display", "Hide");
        QVERIFY(!atomCount(ubiquitin, false) || !(*ubiquitin->ChildBegin())->IsVisible());
        choose("Display", "Show");
        choose("Display", "Set color");
        choose("Display", "Color by Temp");
        pressRow({"1ubq", "A", "Groups", "LYS 6"});
        choose("Modify", "Colour Atoms by Residue");
        choose("Display", "Hide unselected");
        choose("Display", "Hide All unsels");
        choose("Display", "Default color");
        pressEntry(2, Qt::RightButton);
        pressEntry(2, Qt::RightButton);

        // Models.
        pressEntry(1);
        pressRow({"1ejg"});
        for (const char* label : {"Next Model", "Next Model", "Prev Model", "FirstModel"})
            choose("Modify", label);
        choose("Display", "Show");

        // What is added.
        choose("Add", "Define set");
        choose("Add", "Rotamers");
        choose("Add", "Cartesian");
        QCOMPARE(list()->count(), topLevelCount());

        // What is deleted.
        pressEntry(0);
        pressRow({"1ubq", "A", "Groups", "LYS 6"});
        choose("Delete", "Residue");
        pressRow({"1ubq", "A", "Groups", "MET 1", "Side chain"});
        choose("Delete", "Group");
        pressRow({"1ubq", "A", "Bonds"});
        choose("Delete", "Bond");
        pressRow({"1ubq", "A"});
        choose("Delete", "Atom");
        QCOMPARE(atomCount(ubiquitin), std::size_t(0));
        pressEntry(2);
        pressRow({"1cbs", "A"});
        choose("Delete", "Chain");
        pressEntry(1);
        const qsizetype before = topLevelCount();
        QVERIFY(withQuestion(
            [this] {
                click(list()->viewport(), list()->visualItemRect(list()->item(1)).center(),
                      Qt::MiddleButton);
            },
            pressOk));
        QCOMPARE(topLevelCount(), before - 1);
        pressEntry(0);
        pressRow({"1ubq"});
        choose("Delete", "Grid");
        choose("Delete", "Surface");
        choose("Delete", "Tree");
        choose("Delete", "All");
        QCOMPARE(topLevelCount(), 0);

        // The end.
        choose("Help", "Show");
        choose("&File", "Exit");
        QVERIFY(m_window->isHidden());
        QVERIFY(memory_host::allPluginsDone());
        memory_host::unloadPlugins();
        QVERIFY(memory_host::loadPlugins(STAGE_PLUGINS).contains("Edit/Vuxo")); // and once more
        memory_host::unloadPlugins();
        for (QWidget* widget : QApplication::topLevelWidgets())
            widget->close();
        QCoreApplication::processEvents();
        // What is written on the way is the business of other tests.
        takeMessages();
        takeHostLog();
    }
};

REGISTER_TEST(WholeSessionTest)
#include "WholeSessionTest.moc"
