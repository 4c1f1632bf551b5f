// Another plug-in's window beside the Structure Editor: each shows at once what the other changes.
#include "CommandTools.h"
#include "Space.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "services/PluginFolder.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <QApplication>
#include <QLabel>
#include <QMenuBar>

#include <memory>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

class SecondViewTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;
    QMainWindow* m_second = nullptr;
    Compound* m_shown = nullptr;

    QString second() const { return qobject_cast<QLabel*>(m_second->centralWidget())->text(); }
    void inSecond(const QString& label) {
        for (QAction* action : m_second->menuBar()->actions())
            if (action->text() == label)
                action->trigger();
    }

private slots:
    void init() override {
        TestCase::init();
        m_shown = addStructure("1abc");
        addStructure("2abc");
        m_window = std::make_unique<Vuxo>();
        m_window->show();
        clickEntry(*m_window, 0);
        QCOMPARE(memory_host::loadPlugins(QStringLiteral(EDITOR_TEST_PLUGINS "/second-view")),
                 QStringList("View/SecondView"));
        QVERIFY(memory_host::startPlugin(QStringLiteral("View/SecondView")));
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->windowTitle() == QLatin1String("Second view"))
                m_second = qobject_cast<QMainWindow*>(widget);
        QVERIFY(m_second && m_second->isVisible());
        takeMessages();
        QCOMPARE(second(), "2 items, 0 of 12 atoms");
    }

    void cleanup() override {
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        m_window.reset();
        const QStringList before = takeMessages();
        memory_host::unloadPlugins();
        takeMessages(); // the frame's lines
        QCOMPARE(before, QStringList());
        TestCase::cleanup();
    }

    void whatIsSelectedHereShowsThere() {
        clickRow(*m_window, {"1abc", "A"});
        QCOMPARE(second(), "2 items, 6 of 12 atoms");
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Clear"));
        QCOMPARE(second(), "2 items, 0 of 12 atoms");
    }

    void whatIsSelectedThereShowsHere() {
        inSecond(QStringLiteral("Select all"));
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " X 2abc"}));
        QVERIFY(isMarked(*m_window, {"1abc", "A", "Groups", "HOH 2"}));
        QCOMPARE(cells(*m_window, {"1abc", "A"}).at(2), "Yes");
    }

    void whatIsAddedHereShowsThere() {
        trigger(*m_window, QStringLiteral("Add"), QStringLiteral("Cartesian"));
        QCOMPARE(second(), "3 items, 0 of 12 atoms");
    }

    void whatIsAddedThereShowsHere() {
        inSecond(QStringLiteral("Add"));
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ 2abc", " _ mine"}));
        QCOMPARE(highlighted(*m_window), 0);
    }

    void whatIsDeletedHereShowsThere() {
        itemAt(m_shown, {"A", "Groups", "HOH 2"})->SetSelected(true);
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("Atom"));
        QCOMPARE(second(), "2 items, 0 of 11 atoms");
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("All"));
        QCOMPARE(second(), "0 items, 0 of 0 atoms");
    }

    void whatIsDeletedThereShowsHere() {
        inSecond(QStringLiteral("Delete first"));
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
    }

    void theyTakeTurns() {
        inSecond(QStringLiteral("Select all"));
        trigger(*m_window, QStringLiteral("Select"), QStringLiteral("Invert"));
        QCOMPARE(takeMessages(), QStringList("Vuxo::InvertSelection"));
        QCOMPARE(second(), "2 items, 6 of 12 atoms");
        QCOMPARE(entries(*m_window), (QStringList{" / 1abc", " X 2abc"})); // the bond stays
        trigger(*m_window, QStringLiteral("Delete"), QStringLiteral("All"));
        inSecond(QStringLiteral("Add"));
        QCOMPARE(second(), "1 items, 0 of 0 atoms");
        QCOMPARE(entries(*m_window), QStringList(" _ mine"));
        inSecond(QStringLiteral("Delete first"));
        QVERIFY(entries(*m_window).isEmpty());
        takeMessages();
    }

    void eitherGoesOnWithoutTheOther() {
        m_window.reset();
        inSecond(QStringLiteral("Select all"));
        QCOMPARE(second(), "2 items, 12 of 12 atoms");
        m_window = std::make_unique<Vuxo>();
        memory_host::unloadPlugins();
        takeMessages();
        clickEntry(*m_window, 1, Qt::RightButton);
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", "O_ 2abc"}));
    }
};

REGISTER_TEST(SecondViewTest)
#include "SecondViewTest.moc"
