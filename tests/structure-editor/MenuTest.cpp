// The menu bar and the slots of the window, row by row.
#include "HelpViewer.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "items/Building.h"
#include "plain/PlainCommands.h"
#include "plain/PlainMenus.h"
#include "services/PluginFolder.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFrame>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QTemporaryDir>

using namespace window_tools;
using plain::menuEntries;
using plain::MenuEntry;

namespace {

/// The titles of the menus, in order.
QStringList titlesInTable() {
    QStringList titles;
    for (const MenuEntry& entry : menuEntries())
        titles << QString::fromLatin1(entry.menu);
    titles.removeDuplicates();
    return titles;
}

/// The labels of a menu in order, when those plug-ins are there.
QStringList labelsInTable(const QString& menu, const QStringList& plugins) {
    QStringList labels;
    for (const MenuEntry& entry : menuEntries())
        if (menu == QLatin1String(entry.menu) &&
            (!*entry.plugin || plugins.contains(QLatin1String(entry.plugin))))
            labels << QString::fromLatin1(entry.label);
    return labels;
}

QStringList labelsOf(const QMenu* menu) {
    QStringList labels;
    for (const QAction* action : menu->actions())
        labels << action->text();
    return labels;
}

QMenu* menuOf(const Vuxo& window, const QString& title) {
    for (const QAction* action : window.menuBar()->actions())
        if (action->text() == title)
            return action->menu();
    return nullptr;
}

// An empty plug-in library stands for the real one: whether it is there is all that the menu asks.
QString pluginFolder(const QTemporaryDir& folder, const QStringList& plugins) {
    for (const QString& plugin : plugins) {
        const QString type = plugin.section(u'/', 0, 0);
        QDir(folder.path()).mkpath(type);
        QFile::copy(QStringLiteral(TEST_PLUGINS "/libGood.so"),
                    folder.path() +
                        QStringLiteral("/%1/lib%2.so").arg(type, plugin.section(u'/', 1)));
    }
    return folder.path();
}

/// Both plug-ins that bring entries, for as long as this lives.
class BothPlugins {
public:
    BothPlugins() {
        memory_host::loadPlugins(
            pluginFolder(m_folder, {"Calculate/Electrostatics", "Create/SolidVolume"}));
    }
    ~BothPlugins() {
        memory_host::unloadPlugins();
        test_support::TestCase::takeHostLog();
        test_support::TestCase::takeMessages();
    }
    BothPlugins(const BothPlugins&) = delete;
    BothPlugins& operator=(const BothPlugins&) = delete;

private:
    const QTemporaryDir m_folder;
};

} // namespace

class MenuTest : public WindowTestCase {
    Q_OBJECT

    void showWindow() {
        openWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

private slots:
    void theSlotsStandInTheOrderOfTheTable() {
        const QMetaObject& meta = Vuxo::staticMetaObject;
        QCOMPARE(meta.className(), "Vuxo");
        QCOMPARE(meta.superClass(), &BaseWindow::staticMetaObject);
        const std::vector<plain::Command>& commands = plain::commands();
        QCOMPARE(meta.methodCount() - meta.methodOffset(), int(commands.size()));
        QCOMPARE(meta.propertyCount(), meta.propertyOffset());
        for (int i = 0; i < int(commands.size()); ++i) {
            const plain::Command& command = commands[size_t(i)];
            const QMetaMethod method = meta.method(meta.methodOffset() + i);
            QCOMPARE(method.methodSignature(), QByteArray(command.slot));
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            QCOMPARE(method.access(),
                     command.isPrivate ? QMetaMethod::Private : QMetaMethod::Public);
            QCOMPARE(QByteArray(method.typeName()), QByteArray("void"));
        }
        const auto parametersOf = [&](const char* slot) {
            return meta.method(meta.indexOfSlot(slot)).parameterNames();
        };
        QCOMPARE(parametersOf("ListEvent(int,QListWidgetItem*,QPoint)"),
                 (QList<QByteArray>{"button", "item", "pos"}));
        QCOMPARE(parametersOf("KillBranch(TreeItem*)"), QList<QByteArray>{"Victim"});
    }

    void theMenusStandInTheOrderOfTheTable_data() {
        QTest::addColumn<QStringList>("plugins");
        QTest::newRow("no plug-in") << QStringList();
        QTest::newRow("solid volume") << QStringList{"Create/SolidVolume"};
        QTest::newRow("electrostatics") << QStringList{"Calculate/Electrostatics"};
        QTest::newRow("both") << QStringList{"Calculate/Electrostatics", "Create/SolidVolume"};
    }
    void theMenusStandInTheOrderOfTheTable() {
        QFETCH(QStringList, plugins);
        const QTemporaryDir folder;
        QCOMPARE(memory_host::loadPlugins(pluginFolder(folder, plugins)), plugins);
        showWindow();
        const QList<QAction*> titles = m_window->menuBar()->actions();
        const QStringList expected = titlesInTable();
        QCOMPARE(titles.size(), expected.size());
        for (qsizetype i = 0; i < titles.size(); ++i) {
            QCOMPARE(titles[i]->text(), expected[i]);
            QCOMPARE(labelsOf(titles[i]->menu()), labelsInTable(expected[i], plugins));
            for (const QAction* action : titles[i]->menu()->actions()) {
                QVERIFY(action->isEnabled() && !action->isSeparator() && !action->isCheckable());
                QVERIFY(action->icon().isNull());
            }
        }
        m_window.reset();
        memory_host::unloadPlugins();
        takeHostLog();
        takeMessages();
    }

    // A plug-in that comes later does not add its entries; one that goes leaves them in place.
    void theMenuStaysAsItWasWhenPluginsComeOrGo() {
        const QTemporaryDir folder;
        const QString path = pluginFolder(folder, {"Create/SolidVolume"});
        showWindow();
        const QStringList without = labelsOf(menuOf(*m_window, "Add"));
        QCOMPARE(without, labelsInTable("Add", {}));
        const QStringList with = labelsInTable("Add", {"Create/SolidVolume"});
        QVERIFY(with.size() > without.size());
        QCOMPARE(memory_host::loadPlugins(path), QStringList{"Create/SolidVolume"});
        QCOMPARE(labelsOf(menuOf(*m_window, "Add")), without);
        Vuxo later;
        QCOMPARE(labelsOf(menuOf(later, "Add")), with);
        memory_host::unloadPlugins();
        QCOMPARE(labelsOf(menuOf(later, "Add")), with);
        takeHostLog();
        takeMessages();
    }

    void everyEntryCallsItsSlot_data() {
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("label");
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QString>("shortcut");
        for (const MenuEntry& entry : menuEntries())
            QTest::newRow(nameOf(entry).c_str()) << QString(entry.menu) << QString(entry.label)
                                                 << QByteArray(entry.slot) << QString(entry.key);
    }
    // Which slot an entry calls is asked of Qt itself: disconnecting it must succeed, once.
    void everyEntryCallsItsSlot() {
        QFETCH(QString, menu);
        QFETCH(QString, label);
        QFETCH(QByteArray, slot);
        QFETCH(QString, shortcut);
        const BothPlugins plugins;
        Vuxo window;
        const QList<QAction*> actions = menuOf(window, menu)->actions();
        const auto found = std::find_if(actions.begin(), actions.end(),
                                        [&](const QAction* a) { return a->text() == label; });
        QVERIFY(found != actions.end());
        QCOMPARE((*found)->shortcut(), QKeySequence(shortcut));
        QVERIFY((*found)->disconnect(SIGNAL(triggered()), &window, "1" + slot) ||
                (*found)->disconnect(SIGNAL(triggered(bool)), &window, "1" + slot));
        QVERIFY(!(*found)->disconnect(&window));
    }

    void fPAndNWorkFromListTreeAndWindow() {
        addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        const QList<QPair<Qt::Key, QString>> keys = {
            {Qt::Key_F, "Change to first model in selected Residues"},
            {Qt::Key_P, "Change to previous model in selected Residues"},
            {Qt::Key_N, "Change to next model in selected Residues"}};
        const QList<QWidget*> places = {listOf(*m_window), treeOf(*m_window), m_window.get()};
        for (QWidget* place : places) {
            place->setFocus();
            for (const auto& [key, line] : keys) {
                QTest::keyClick(place, key);
                QCOMPARE(takeMessages(), QStringList{line});
            }
        }
    }

    void fPAndNAreTextInTheQueryPanel() {
        addStructure("1abc");
        showWindow();
        clickEntry(*m_window, 0);
        m_window->showQuery();
        QFrame* panel = panelOf(*m_window);
        QVERIFY(QTest::qWaitForWindowActive(panel));
        auto* field = panel->findChild<QLineEdit*>();
        field->setFocus();
        field->clear();
        QTest::keyClicks(field, QStringLiteral("fpnFPN"));
        QCOMPARE(field->text(), "fpnFPN");
        QCOMPARE(takeMessages(), QStringList());
    }

    // Alt leads to the menu bar, and the arrows and Enter do the rest.
    void everyEntryIsReachedByKeyboardAlone() {
        const BothPlugins plugins;
        addStructure("1abc");
        showWindow();
        QStringList reached;
        const QList<QAction*> titles = m_window->menuBar()->actions();
        for (int i = 0; i < titles.size(); ++i) {
            const QMenu* menu = titles[i]->menu();
            for (int row = 0; row < menu->actions().size(); ++row) {
                const QAction* triggered = nullptr;
                QAction* wanted = menu->actions()[row];
                wanted->disconnect(m_window.get());
                connect(wanted, &QAction::triggered, this, [&] { triggered = wanted; });
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Alt);
                QCOMPARE(QApplication::focusWidget(), m_window->menuBar());
                for (int step = 0; step < i; ++step)
                    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
                const auto* open = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                QCOMPARE(open, menu);
                for (int step = 0; step < row; ++step)
                    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
                QCOMPARE(open->activeAction(), wanted);
                QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
                QCOMPARE(triggered, wanted);
                wanted->disconnect(this);
                reached << wanted->text();
            }
        }
        QCOMPARE(reached.size(), qsizetype(menuEntries().size()));
        // Nor do the keys stay with the menu bar.
        QCOMPARE(QApplication::focusWidget()->window(), m_window.get());
        QVERIFY(QApplication::focusWidget() != m_window->menuBar());
    }

    void exitClosesTheWindowAndItCanBeShownAgain() {
        showWindow();
        menuOf(*m_window, "&File")->actions().front()->trigger();
        QVERIFY(!m_window->isVisible());
        m_window->show();
        QVERIFY(m_window->isVisible());
    }
};

REGISTER_TEST(MenuTest)
#include "MenuTest.moc"
