// The main window as a whole: how it is built, what it listens to, and how it ends.
#include "DataPoint.h"
#include "DestroyObserver.h"
#include "Space.h"
#include "TestSupport.h"
#include "WindowTools.h"
#include "items/Building.h"
#include "services/Settings.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"
#include "window/Vuxo.h"

#include <QApplication>
#include <QFile>
#include <QLayout>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QSplitter>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTranslator>

#include <memory>
#include <type_traits>

using namespace window_tools;
using TAVIK::Compound;

namespace {

// How many rows a tree has when it is hidden.
class RowsWhenHidden : public QObject {
public:
    explicit RowsWhenHidden(TreeView& tree) : m_tree(tree) { tree.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide)
            left = m_tree.rows()->rowCount();
        return false;
    }

    int left = -1;

private:
    TreeView& m_tree;
};

} // namespace

class WindowTest : public test_support::TestCase {
    Q_OBJECT

    std::unique_ptr<Vuxo> m_window;

    void build() { m_window = std::make_unique<Vuxo>(); }

private slots:
    void cleanup() override {
        m_window.reset();
        memory_host::setSettingsFile(QString());
        TestCase::cleanup();
    }

    void aFreshWindowListsTheItemsAndShowsNone() {
        addStructure("1abc");
        addStructure("2abc");
        build();
        QCOMPARE(m_window->windowTitle(), "Structure Editor");
        QCOMPARE(m_window->size(), QSize(400, 600));
        QVERIFY(m_window->isHidden());
        QVERIFY(!m_window->parentWidget());
        QCOMPARE(m_window->objectName(), QString());
        QCOMPARE(entries(*m_window), QStringList({" _ 1abc", " _ 2abc"}));
        QCOMPARE(highlighted(*m_window), -1);
        QVERIFY(rows(*m_window).isEmpty());
        QVERIFY(panelOf(*m_window)->isHidden());
        QCOMPARE(m_window->windowIconText(), "Structure");
        const auto* status = m_window->findChild<QStatusBar*>();
        QVERIFY(status);
        QCOMPARE(status->currentMessage(), QString());
        m_window->show();
        QCOMPARE(m_window->size(), QSize(400, 600));
        QVERIFY(status->isVisible());
        QVERIFY(panelOf(*m_window)->isHidden());
    }

    void itsPartsAreKnownToTheMetaObject() {
        build();
        QCOMPARE(m_window->metaObject()->className(), "Vuxo");
        QCOMPARE(m_window->metaObject()->superClass()->className(), "BaseWindow");
        QCOMPARE(m_window->qt_metacast("Vuxo"), m_window.get());
        QCOMPARE(m_window->qt_metacast("Subscriber"), static_cast<Subscriber*>(m_window.get()));
        QCOMPARE(m_window->qt_metacast("BaseWindow"), static_cast<BaseWindow*>(m_window.get()));
        QCOMPARE(m_window->qt_metacast("QListWidget"), nullptr);
        // What else it hears of comes through its members.
        QVERIFY((!std::is_base_of_v<TAVIK::DestroyObserver, Vuxo>));
        QCOMPARE(m_window->qt_metacast("TAVIK::DestroyObserver"), nullptr);
        const QMetaObject& meta = Vuxo::staticMetaObject;
        QCOMPARE(meta.propertyCount(), meta.propertyOffset());
        const int event = meta.indexOfSlot("ListEvent(int,QListWidgetItem*,QPoint)");
        QVERIFY(event >= meta.methodOffset());
        QCOMPARE(meta.method(event).parameterNames(), QByteArrayList({"button", "item", "pos"}));
        const int branch = meta.indexOfSlot("KillBranch(TreeItem*)");
        QCOMPARE(branch, meta.methodCount() - 1);
        QCOMPARE(meta.method(branch).parameterNames(), QByteArrayList({"Victim"}));
        QCOMPARE(meta.method(branch).access(), QMetaMethod::Private);
        QCOMPARE(meta.method(event).access(), QMetaMethod::Public);
    }

    void itsTextsAreTranslatedInItsOwnContext() {
        class Recorder : public QTranslator {
        public:
            bool isEmpty() const override { return false; }
            QString translate(const char* context, const char* text, const char*,
                              int) const override {
                asked << QString::fromLatin1(context) + u':' + QString::fromLatin1(text);
                return {};
            }
            mutable QStringList asked;
        } recorder;
        QCoreApplication::installTranslator(&recorder);
        build();
        QCoreApplication::removeTranslator(&recorder);
        for (const char* text :
             {"Structure Editor", "Structure", "Select", "&File", "Exit", "Current tree only"})
            QVERIFY2(recorder.asked.contains(QString("Vuxo:%1").arg(text)), text);
    }

    void theHelpPageIsTheSettings() {
        build();
        QCOMPARE(m_window->helpPage(), QString());
        const QTemporaryDir folder;
        QFile file(folder.filePath("settings.ini"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Vuxo]\nHelp = the editor's page\n");
        file.close();
        memory_host::setSettingsFile(file.fileName());
        build();
        QCOMPARE(m_window->helpPage(), "the editor's page");
    }

    void thePanelIsASeparateWindowOfTheMainWindow() {
        build();
        QFrame* panel = panelOf(*m_window);
        QCOMPARE(panel->windowTitle(), "Select");
        QCOMPARE(panel->windowType(), Qt::Dialog);
        QCOMPARE(panel->parentWidget(), m_window.get());
        QCOMPARE(panel->objectName(), QString());
        QCOMPARE(panel->layout()->contentsMargins(), QMargins(5, 5, 5, 5));
        QCOMPARE(panel->layout()->spacing(), 5);
        m_window->show();
        QVERIFY(panel->isHidden());
    }

    void aWiderWindowGivesTheExtraWidthToTheTree() {
        addStructure("1abc");
        build();
        m_window->show();
        const int list = listOf(*m_window)->width();
        const int tree = treeOf(*m_window)->width();
        QVERIFY(list >= 40);
        m_window->resize(900, 600);
        QCOMPARE(listOf(*m_window)->width(), list);
        QCOMPARE(treeOf(*m_window)->width(), tree + 500);
        QVERIFY(listOf(*m_window)->geometry().right() < treeOf(*m_window)->geometry().left());
    }

    void theListNeverGetsNarrowerThan40AndNothingIsFoldedAway() {
        addStructure("1abc");
        build();
        m_window->show();
        auto* splitter = qobject_cast<QSplitter*>(m_window->centralWidget());
        QVERIFY(splitter);
        QCOMPARE(splitter->orientation(), Qt::Horizontal);
        QSplitterHandle* handle = splitter->handle(1);
        const QPoint grip = handle->rect().center();
        // What the splitter folds away it only moves out of the window.
        for (const int distance : {-300, 600}) {
            QTest::mousePress(handle, Qt::LeftButton, {}, grip);
            QTest::mouseMove(handle, grip + QPoint(distance, 0));
            QTest::mouseRelease(handle, Qt::LeftButton, {}, grip + QPoint(distance, 0));
            QVERIFY(!listOf(*m_window)->visibleRegion().isEmpty());
            QVERIFY(!treeOf(*m_window)->visibleRegion().isEmpty());
            QVERIFY(distance > 0 || listOf(*m_window)->width() == 40);
        }
        m_window->resize(m_window->minimumSizeHint());
        QVERIFY(listOf(*m_window)->width() >= 40);
    }

    void deletingTheWindowClosesItsOpenPanel() {
        build();
        const QPointer<QFrame> panel = panelOf(*m_window);
        m_window->show();
        panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel));
        m_window.reset();
        QVERIFY(!panel);
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void whatChangesWhileItIsHiddenIsThereWhenItIsShown() {
        Compound* entry = addStructure("1abc");
        build();
        m_window->show();
        clickEntry(*m_window, 0);
        m_window->close();
        QVERIFY(m_window->isHidden());
        selectElsewhere(itemAt(entry, {"A", "Groups", "HOH 2"}), true);
        addAtomTo(itemAt(entry, {"A", "Groups", "HOH 2"}), "H1");
        addStructure("2abc");
        m_window->show();
        QCOMPARE(entries(*m_window), QStringList({" / 1abc", " _ 2abc"}));
        QVERIFY(rows(*m_window).contains("    H1"));
        QCOMPARE(cells(*m_window, {"1abc", "A", "Groups", "HOH 2"}),
                 QStringList({"HOH 2", "Yes", "No", "Yes"}));
        m_window->showMinimized();
        destroyElsewhere(entry);
        takeMessages();
        m_window->showNormal();
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
    }

    void itHearsOfChangesThroughItsBaseToo() {
        Compound* entry = addStructure("1abc");
        build();
        entry->SetSelected(true);
        Subscriber& subscriber = *m_window;
        subscriber.commUpdate();
        QCOMPARE(entries(*m_window), QStringList(" X 1abc"));
    }

    void itHearsNothingAfterItsEnd() {
        Compound* entry = addStructure("1abc");
        build();
        m_window->show();
        clickEntry(*m_window, 0);
        m_window.reset();
        selectElsewhere(entry, true);
        destroyElsewhere(entry);
        QCOMPARE(takeMessages(), QStringList());
    }

    void noRowIsLeftWhenItsWidgetsGo() {
        Compound* item = addStructure("1abc");
        OtherPlugin other; // told before the window is
        build();
        m_window->show();
        clickEntry(*m_window, 0);
        RowsWhenHidden watch(*treeOf(*m_window));
        other.onDelete = [this] { m_window.reset(); };
        destroyElsewhere(item);
        QVERIFY(!m_window);
        QCOMPARE(watch.left, 0);
    }

    void twoWindowsFollowEachOther() {
        addStructure("1abc");
        build();
        Vuxo second;
        m_window->show();
        second.show();
        clickEntry(*m_window, 0);
        clickEntry(second, 0);
        clickRow(*m_window, {"1abc", "A"});
        QVERIFY(isMarked(second, {"1abc", "A", "Groups", "MET 1"}));
        clickEntry(second, 0, Qt::RightButton);
        QCOMPARE(entries(*m_window), QStringList("O_ 1abc"));
        QVERIFY(withQuestion([&] { clickEntry(second, 0, Qt::MiddleButton); }, pressOk));
        QVERIFY(entries(*m_window).isEmpty());
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
    }

    void anExceptionUnderAGuardStillTellsTheWindow() {
        Compound* entry = addStructure("1abc");
        build();
        try {
            const DataPoint<Compound> guard(nullptr, entry);
            entry->SetSelected(true);
            throw std::runtime_error("in the middle of a command");
        } catch (const std::runtime_error&) {
        }
        // The change is taken back, of which the window knows.
        QCOMPARE(entries(*m_window), QStringList(" _ 1abc"));
        const DataPoint<Compound> next(nullptr, entry);
        QVERIFY(next.m_good);
    }

    void exitClosesTheWindowAndKeepsIt() {
        addStructure("1abc");
        build();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        clickEntry(*m_window, 0);
        QTest::keyClick(m_window.get(), Qt::Key_F, Qt::AltModifier);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QCOMPARE(menu->title(), "&File");
        QTest::keyClick(menu, Qt::Key_Down);
        QCOMPARE(menu->activeAction()->text(), "Exit");
        QTest::keyClick(menu, Qt::Key_Return);
        QVERIFY(m_window->isHidden());
        m_window->show();
        QCOMPARE(rows(*m_window).front(), "1abc");
        QCOMPARE(highlighted(*m_window), 0);
    }
};

REGISTER_TEST(WindowTest)
#include "WindowTest.moc"
