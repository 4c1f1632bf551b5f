// Surfaces and contours from the Structure Editor's menu, with the plug-ins of the build: clicked
// as a user clicks, and used as any other item.
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "Geometry.h"
#include "MainWindowCase.h"
#include "StatusLine.h"
#include "Traversal.h"

#include <QApplication>
#include <QColorDialog>
#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QTimer>
#include <QTreeView>

#include <cmath>
#include <functional>

using TAVIK::Compound;
using TAVIK::Surface;

class AddSurfacesTest : public test_support::MainWindowCase {
    Q_OBJECT

    BaseWindow* editor() const { return windowIn(m_editor); }
    QTreeView* tree() const { return editor()->findChild<QTreeView*>(); }
    QListWidget* list() const { return editor()->findChild<QListWidget*>(); }

    /// The entries of one of a window's menus that are visible.
    static QStringList labels(const BaseWindow* window, const QString& menu) {
        QStringList all;
        for (const QAction* title : window->menuBar()->actions())
            if (title->text().remove('&') == menu)
                for (const QAction* action : title->menu()->actions())
                    if (action->isVisible() && !action->isSeparator())
                        all << action->text().remove('&');
        return all;
    }
    /// Opens a menu and clicks on an entry, with the mouse.
    static void choose(const BaseWindow* window, const QString& menu, const QString& label) {
        QMenuBar* const bar = window->menuBar();
        for (QAction* title : bar->actions()) {
            if (title->text().remove('&') != menu)
                continue;
            // A menu bar that is too narrow hides its last menus behind an arrow.
            if (bar->actionGeometry(title).isValid() &&
                bar->rect().contains(bar->actionGeometry(title).center()))
                QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(title).center());
            else
                title->menu()->popup(bar->mapToGlobal(QPoint()));
            QTRY_VERIFY(title->menu()->isVisible());
            for (QAction* action : title->menu()->actions())
                if (action->text().remove('&') == label) {
                    QVERIFY(action->isVisible() && action->isEnabled());
                    QTest::mouseClick(title->menu(), Qt::LeftButton, {},
                                      title->menu()->actionGeometry(action).center());
                    return;
                }
        }
        QFAIL(qPrintable(menu + " > " + label));
    }
    /// The same for an entry that opens a dialog, which `answer` closes.
    template <class Dialog>
    static void choose(const BaseWindow* window, const QString& menu, const QString& label,
                       const std::function<void(Dialog&)>& answer) {
        bool wasAsked = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            if (auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
                timer.stop();
                wasAsked = true;
                answer(*dialog);
            }
        });
        timer.start(10);
        choose(window, menu, label);
        QVERIFY2(wasAsked, qPrintable(label));
    }
    void typeLimit(const QString& entry, const QString& text) {
        choose<QInputDialog>(editor(), "Add", entry, [&text](QInputDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), "Limit");
            auto* const field = dialog.findChild<QLineEdit*>();
            field->selectAll();
            QTest::keyClicks(field, text);
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
    }
    QString said() const { return m_window->status().said(); }

    void showInTree(const QString& name) {
        for (int row = 0; row != list()->count(); ++row)
            if (list()->item(row)->text().mid(3) == name) {
                QTest::mouseClick(list()->viewport(), Qt::LeftButton, {},
                                  list()->visualItemRect(list()->item(row)).center());
                QCOMPARE(tree()->model()->index(0, 0).data().toString(), name);
                return;
            }
        QFAIL(qPrintable(name));
    }
    /// A right click on a cell of the tree's first row.
    void rightClick(int column) {
        const QRect cell = tree()->visualRect(tree()->model()->index(0, column));
        QTest::mouseClick(tree()->viewport(), Qt::RightButton, {}, cell.center());
    }
    static Surface* surfaceNamed(const char* name) {
        TAVIK::Space* const space = TAVIK::Space::instance();
        for (Compound** item = space->ChildBegin(); item != space->ChildEnd(); ++item)
            if ((*item)->GetName() == name)
                return dynamic_cast<Surface*>(*item);
        return nullptr;
    }
    /// Opens a file with a ligand of two atoms of copper.
    void openPair() {
        QFile file(m_folder->filePath("pair.pdb"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(
            "HETATM    1 CU1  CU  A   1       0.000   0.000   0.000  1.00 20.00          CU\n"
            "HETATM    2 CU2  CU  A   1       2.000   0.000   0.000  1.00 20.00          CU\n"
            "END\n");
        file.close();
        m_window->openFiles({file.fileName()});
        QTRY_VERIFY(entries().contains("pair"));
    }
    static void addMap() {
        TAVIK::GridValues values;
        values.points = {21, 21, 21};
        values.origin = {-10, -10, -10};
        values.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
        for (int z = -10; z <= 10; ++z)
            for (int y = -10; y <= 10; ++y)
                for (int x = -10; x <= 10; ++x)
                    values.values.push_back(-static_cast<float>(std::hypot(x, y, z)));
        const DataAdder<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        TAVIK::DataMaker::makeGrid(TAVIK::Space::instance(), "map", std::move(values));
    }

private slots:
    void cleanup() override {
        takeHostLog(); // what was said
        MainWindowCase::cleanup();
    }

    void theEntriesAreThere() {
        open();
        const QStringList all = labels(editor(), "Add");
        for (const char* label : {"ContourHi", "ContourLo", "ConnollySurface", "VdWaalsSurface",
                                  "SolAccesSurface", "SubSurface"})
            QVERIFY2(all.contains(label), label);
    }

    void eachSurfaceIsARowOfItsOwn() {
        open();
        openPair();
        for (const auto& [entry, name, title] :
             {std::tuple("ConnollySurface", "Connolly pair", "Solvent-excluded surface"),
              std::tuple("VdWaalsSurface", "VanderWaals pair", "Van der Waals surface"),
              std::tuple("SolAccesSurface", "SolventAccessible pair",
                         "Solvent-accessible surface")}) {
            choose(editor(), "Add", entry);
            QVERIFY(surfaceNamed(name));
            QVERIFY2(said().startsWith(QString(title) + " of pair: "), qPrintable(said()));
            QVERIFY(said().endsWith(" Å² around 2 atoms"));
            QTRY_COMPARE(list()->count(), int(entries().size()));
            showInTree(name);
        }
    }

    void contoursAtTheTypedLevelStandBesideEachOther() {
        open();
        addMap();
        typeLimit("ContourHi", "-4");
        QVERIFY2(said().startsWith("High contour of map at -4 ("), qPrintable(said()));
        typeLimit("ContourHi", "-2.5");
        typeLimit("ContourLo", "-9");
        QCOMPARE(entries(), QStringList({"map", "ContourHigh map -4", "ContourHigh map -2.5",
                                         "ContourLow map -9"}));
        typeLimit("ContourHi", "inf");
        QCOMPARE(said(), "High contour: nothing is made: the level is no number");
        typeLimit("ContourHi", "1e300");
        QVERIFY(said().startsWith("High contour: nothing is made: no value in the shown part"));
        typeLimit("SubSurface", "1");
        QCOMPARE(said(), "Part of a surface: nothing is made: no surface with values is selected "
                         "or shown");
        QCOMPARE(entries().size(), 4);
        showInTree("ContourHigh map -2.5");
    }

    // Fitting the map to the selection first.
    void nearbyGridsBoundsTheContour() {
        open();
        openPair();
        addMap();
        Compound* const pair = *TAVIK::Space::instance()->ChildBegin();
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            pair->SetSelected(true);
        }
        choose(editor(), "Select", "Nearby Grids");
        const auto* const map =
            dynamic_cast<TAVIK::Grid*>(TAVIK::Space::instance()->ChildBegin()[1]);
        QVERIFY(map && map->m_lower[0] > 0 && map->m_upper[0] < 21);
        typeLimit("ContourHi", "-1e3");
        const Surface* const contour = surfaceNamed("ContourHigh map -1000");
        QVERIFY(contour);
        // All of the shown part, and nothing else.
        for (const std::size_t axis : {0, 1, 2}) {
            float low = 1e9F;
            float high = -1e9F;
            for (const auto& vertex : TAVIK::GetSurfaceMesh(contour)->vertices) {
                low = std::min(low, vertex[axis]);
                high = std::max(high, vertex[axis]);
            }
            QCOMPARE(low, float(map->m_lower[axis] - 10));
            QCOMPARE(high, float(map->m_upper[axis] - 1 - 10));
        }
    }

    void aSurfaceIsHiddenSelectedColouredAndDeletedAsAnyItem() {
        open();
        openPair();
        choose(editor(), "Add", "VdWaalsSurface");
        QTRY_COMPARE(list()->count(), 2);
        showInTree("VanderWaals pair");
        Surface* const surface = surfaceNamed("VanderWaals pair");
        rightClick(1);
        QVERIFY(!surface->IsVisible());
        rightClick(1);
        QVERIFY(surface->IsVisible());
        rightClick(2);
        QVERIFY(surface->IsSelected());
        choose<QColorDialog>(editor(), "Display", "Set color", [](QColorDialog& dialog) {
            dialog.setCurrentColor(QColor(18, 52, 86));
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        QCOMPARE(surface->GetColor().rgba(), 0xff123456U);
        QVERIFY(!TAVIK::HasDefaultColor(surface));
        choose(editor(), "Display", "Default color");
        QVERIFY(TAVIK::HasDefaultColor(surface));
        rightClick(2); // That has cleared the selection.
        choose(editor(), "Delete", "Tree");
        QVERIFY(!surfaceNamed("VanderWaals pair"));
        QTRY_COMPARE(list()->count(), 1);
    }

    void theViewColoursSurfacesByTheirAtomsAgain() {
        open();
        openPair();
        choose(editor(), "Add", "VdWaalsSurface");
        BaseWindow* const view = windowIn(m_view);
        const QString label = QStringLiteral("Colour surfaces by atoms");
        QVERIFY(labels(view, "View").contains(label));
        std::vector<Compound*> atoms;
        TAVIK::GetAtoms(TAVIK::Space::instance(), atoms, true);
        {
            const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            for (Compound* atom : atoms)
                atom->SetColor(Color(0xff00ff00U));
            surfaceNamed("VanderWaals pair")->SetColor(Color(0xff123456U));
        }
        choose(view, "View", label);
        QCOMPARE(said(), "One surface has the colours of its atoms");
        const Surface* const surface = surfaceNamed("VanderWaals pair");
        QVERIFY(TAVIK::HasDefaultColor(surface));
        for (const std::uint32_t color : TAVIK::GetSurfaceMesh(surface)->colors)
            QCOMPARE(color, 0xff00ff00U);
    }

    void withoutThePluginTheViewDoesNotOfferIt() {
        QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkpath("Display"));
        QVERIFY(QFile::copy(STAGE_PLUGINS "/Display/libView3D.so",
                            folder.filePath("Display/libView3D.so")));
        open(folder.path(), {"Display/View3D"});
        QVERIFY(labels(windowIn(m_view), "View").contains("Centre selection"));
        QVERIFY(!labels(windowIn(m_view), "View").contains("Colour surfaces by atoms"));
        end();
    }
};

REGISTER_TEST(AddSurfacesTest)
#include "AddSurfacesTest.moc"
