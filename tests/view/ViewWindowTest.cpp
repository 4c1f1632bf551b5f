// The window between the data space and the picture: what it reads when, and what becomes of it
// while items come and go.
#include "Legible.h"
#include "PluginManager.h"
#include "Subscriber.h"
#include "ViewTestCase.h"
#include "scene/DataReader.h"
#include "scene/Drawing.h"
#include "services/PluginFolder.h"
#include "window/PictureFile.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <sys/stat.h>

using namespace view_tools;

namespace {

class Throwing : public Subscriber {
public:
    void commUpdate() override { throw std::runtime_error("not today"); }
    void commAdd() override { throw std::runtime_error("not today"); }
    void commDelete() override { throw std::runtime_error("not today"); }
};

/// Runs an event loop when it is told of a deletion, as a dialog would.
class Waiting : public Subscriber {
public:
    void commUpdate() override {}
    void commAdd() override {}
    void commDelete() override { QTest::qWait(30); }
};

} // namespace

class ViewWindowTest : public ViewTestCase {
    Q_OBJECT

    std::size_t atomsInView() { return canvas().order().snapshot.contents->atomCount(); }

    template <class Change> void update(Change change) {
        const DataPoint<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
        change();
    }

private slots:
    void otherEventsHaveTheirTurnWhileMuchIsRead() {
        show();
        memory_host::openFile(structure("6zu5.cif").toStdString());
        int turns = 0;
        QTimer tick;
        tick.setInterval(0);
        connect(&tick, &QTimer::timeout, this, [&] { turns += atomsInView() == 0 ? 1 : 0; });
        tick.start();
        QTRY_VERIFY(atomsInView() > 100'000);
        QVERIFY(turns > 1);
        // Items go, and others look different, while they are being read.
        settle();
        TAVIK::Compound* const entry = *space()->ChildBegin();
        update([&] { entry->SetColor(Color(0xff0000ffU)); });
        QCoreApplication::processEvents();
        update([&] {
            TAVIK::DataMaker::Destroy(*(*(*entry->ChildBegin())->ChildBegin())->ChildBegin());
        });
        settle();
        Items atoms;
        TAVIK::GetAtoms(space(), atoms, true);
        QCOMPARE(atomsInView(), atoms.size());
    }

    void anEmptySpaceIsThePlainBackground() {
        show();
        QImage plain = canvas().drawn().image.copy();
        plain.fill(plain.pixel(0, 0));
        QCOMPARE(canvas().drawn().image, plain);
    }

    void oneAtomIsInTheMiddle() {
        Structure made;
        made.add("UNL 1", {{"A", "C", {1e5F, -3, 7}}});
        made.attach();
        show();
        QCOMPARE(canvas().camera().centre, (view::Point{1e5F, -3, 7}));
        QCOMPARE(canvas().idAt(canvas().rect().center()), view::idOf(0));
    }

    void changesOfOthersAreShown() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint place = placeOf(made.atoms[0]);
        update([&] { made.atoms[0]->SetColor(Color(0xff00ff00U)); });
        settle();
        const QColor colour(canvas().drawn().image.pixel(place));
        // Far from a carbon's grey, with whatever light and depth add.
        QVERIFY(colour.green() > colour.red() + 60 && colour.green() > colour.blue() + 60);
        update([&] { made.atoms[0]->SetVisible(false); });
        settle();
        QCOMPARE(canvas().idAt(place), view::noId);
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(made.atoms[1]);
        }
        settle();
        QCOMPARE(atomsInView(), std::size_t(4));
    }

    void anyNumberOfChangesIsReadOnce() {
        const Structure made = fourAtoms().attach();
        show();
        const QSignalSpy pictures(&canvas(), &view::Canvas::shown);
        for (unsigned int i = 0; i != 1000; ++i)
            update([&] { made.atoms[0]->SetColor(Color(0xff000000U + i)); });
        settle();
        QVERIFY(pictures.count() <= 2);
        QCOMPARE(canvas().order().snapshot.marks->colours[0], 0xff0003e7U);
    }

    void aHiddenWindowReadsNothingUntilItIsShown() {
        const Structure made = fourAtoms().attach();
        m_view->commAdd();
        QTest::qWait(10);
        QCOMPARE(atomsInView(), std::size_t(0));
        show();
        QCOMPARE(atomsInView(), std::size_t(5));
        m_view->hide();
        update([&] { made.atoms[0]->SetVisible(false); });
        QTest::qWait(10);
        QCOMPARE(int(canvas().order().snapshot.marks->shown[0]), 1);
        show();
        QCOMPARE(int(canvas().order().snapshot.marks->shown[0]), 0);
    }

    void anAtomThatMovesIsFollowed() {
        const Structure made = fourAtoms().attach();
        show();
        update([&] {
            memory_host::setAtom(made.atoms[0], {"A", "C", TAVIK::Vertex(-8, 3, 0, true)});
        });
        settle();
        QCOMPARE(canvas().idAt(placeOf(std::array<float, 3>{-8, 3, 0})), view::idOf(0));
    }

    void aModelThatIsSwitchedIsShown() {
        Structure made;
        TAVIK::Compound* residue = made.add(
            "SER 1",
            {{"CA", "C", {0, 0, 0}}, {"CB", "C", {6, 0, 0}, 1}, {"CB", "C", {0, 6, 0}, 2}});
        made.attach();
        show();
        canvas().zoom(0.5); // only what is shown was fitted
        settle();
        QCOMPARE(canvas().idAt(placeOf(made.atoms[1])), view::idOf(1));
        QCOMPARE(canvas().idAt(placeOf(made.atoms[2])), view::noId);
        update([&] { residue->NextModel(); });
        settle();
        QCOMPARE(canvas().idAt(placeOf(made.atoms[1])), view::noId);
        QCOMPARE(canvas().idAt(placeOf(made.atoms[2])), view::idOf(2));
    }

    void othersThatThrowDisturbNothing() {
        const Throwing throwing;
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[0]);
        QCOMPARE(selectedNames(), QString("A"));
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(made.atoms[1]);
        }
        settle();
        QCOMPARE(atomsInView(), std::size_t(4));
        const QStringList log = takeHostLog();
        QVERIFY(log.size() >= 2);
        for (const QString& line : log)
            QVERIFY(line.contains("not today"));
    }

    // An id that a picture shows is no item any more once items were destroyed, and means another
    // one after the next reading.
    void itemsMayGoWhilePicturesAreDrawn() {
        const Waiting waiting;
        Structure made = fourAtoms();
        for (int i = 0; i != 300; ++i)
            made.add("UNL " + std::to_string(i), {{"X", "C", {float(i % 20), float(i / 20), 3}}});
        made.attach();
        show();
        for (int round = 0; round != 20; ++round) {
            canvas().turn(0.2, 0.1);
            QTest::qWait(round % 4);
            {
                const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
                for (int i = 0; i != 5; ++i) {
                    TAVIK::DataMaker::Destroy(made.residues.back());
                    made.residues.pop_back();
                    for (int x = 0; x < canvas().width(); x += 40)
                        hover({x, canvas().height() / 2});
                }
            }
            for (int x = 0; x < canvas().width(); x += 20)
                QTest::mouseClick(&canvas(), Qt::LeftButton, {}, {x, canvas().height() / 2});
        }
        settle();
        QCOMPARE(atomsInView(), std::size_t(205));
        TAVIK::DataMaker::Destroy(made.entry);
        settle();
        QCOMPARE(atomsInView(), std::size_t(0));
    }

    // The last picture is that of a window that has seen no other data.
    void modelsColoursAndVisibilityMayChangeWhilePicturesAreDrawn() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        m_view->setRepresentation(view::Representation::BallAndStick);
        show();
        Items residues;
        TAVIK::GetResidues(space(), residues, true);
        Items atoms;
        TAVIK::GetAtoms(space(), atoms, true);
        for (std::size_t round = 0; round != 30; ++round) {
            canvas().turn(0.2, 0.1);
            update([&] {
                residues[7 * round % residues.size()]->NextModel();
                atoms[11 * round % atoms.size()]->SetColor(Color(0xff00ff00U));
                atoms[13 * round % atoms.size()]->SetVisible(round % 2 == 0);
            });
            QTest::qWait(int(round % 5));
        }
        settle();
        view::DataReader reader;
        reader.read();
        view::Order order = canvas().order();
        order.snapshot = reader.snapshot();
        order.isMoving = false;
        QCOMPARE(canvas().drawn().image, view::Drawing(1).draw(order)->image);
    }

    void atomsInOnePointAreInTheMiddleInEveryRepresentation() {
        Structure made;
        const std::vector<AtomSpec> atoms = {{"N", "N", {1, 2, 3}},
                                             {"CA", "C", {1, 2, 3}},
                                             {"C", "C", {1, 2, 3}},
                                             {"O", "O", {1, 2, 3}}};
        for (int i = 0; i != 50; ++i)
            made.add("ALA " + std::to_string(i), atoms);
        made.bond(0, 1);
        made.attach();
        show();
        for (int i = 0; i <= 6; ++i) {
            QTest::keyClick(&canvas(), Qt::Key(Qt::Key_0 + i));
            QTest::keyClick(&canvas(), Qt::Key_Home);
            settle();
            QCOMPARE(canvas().camera().centre, (view::Point{1, 2, 3}));
            QVERIFY(canvas().idAt(canvas().rect().center()) != view::noId);
        }
    }

    // What is no place is neither drawn nor centred, and the others are where they belong.
    void aLargeStructureIsLocatedWhileTheProgramGoesOn() {
        memory_host::openFile(structure("6zu5.cif").toStdString());
        show();
        QTRY_VERIFY(atomsInView() > 100'000);
        settle();
        const view::Camera whole = canvas().camera();
        canvas().zoom(8);
        canvas().centreOn({1, 2, 3});
        const view::Camera close = canvas().camera();
        QTest::keyClick(&canvas(), Qt::Key_Home);
        QCOMPARE(canvas().camera().centre, close.centre);
        QTRY_COMPARE(canvas().camera().centre, whole.centre);
        QCOMPARE(canvas().camera().height, whole.height);
        // What is asked for last counts.
        Items atoms;
        TAVIK::GetAtoms(space(), atoms, true);
        update([&] { atoms[1000]->SetSelected(true); });
        settle();
        QTest::keyClick(&canvas(), Qt::Key_Home);
        QTest::keyClick(&canvas(), Qt::Key_C);
        const TAVIK::Vertex at = atoms[1000]->GetPosition();
        QTRY_COMPARE(canvas().camera().centre, (view::Point{at[0], at[1], at[2]}));
        QTest::qWait(50);
        QCOMPARE(canvas().camera().centre, (view::Point{at[0], at[1], at[2]}));
        // The window may go meanwhile.
        QTest::keyClick(&canvas(), Qt::Key_Home);
        m_view.reset();
        QCoreApplication::processEvents();
    }

    void coordinatesThatAreNoPlacesLeaveTheOthersInSight() {
        Structure made = fourAtoms();
        made.add("UNL 2", {{"X", "C", {1e30F, 0, 0}},
                           {"Y", "C", {NAN, NAN, NAN}},
                           {"Z", "C", {0, -std::numeric_limits<float>::infinity(), 0}}});
        made.bond(0, 5);
        made.bond(5, 6);
        made.attach();
        show();
        for (std::size_t i = 0; i != 3; ++i)
            QCOMPARE(canvas().idAt(placeOf(made.atoms[i])), view::idOf(i));
        const view::Camera before = canvas().camera();
        made.atoms[5]->SetSelected(true);
        m_view->commUpdate();
        QTest::keyClick(&canvas(), Qt::Key_C);
        settle();
        QCOMPARE(canvas().camera().centre, before.centre);
    }

    void theWindowMayGoWhileAPictureIsDrawn() {
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        for (int i = 0; i != 5; ++i) {
            m_view = std::make_unique<view::View3D>();
            m_view->resize(1200, 900);
            m_view->show();
            canvas().turn(0.1, 0);
            QTest::qWait(2 * i);
            m_view.reset();
        }
    }

    void aPictureHasItsSizeAndWhatTheWindowShows() {
        const Structure made = fourAtoms().attach();
        show();
        canvas().zoom(1.5);
        settle();
        QTemporaryDir folder;
        const QString path = folder.filePath("p.png");
        QCOMPARE(m_view->savePicture(path, canvas().size()), std::string());
        QCOMPARE(QImage(path).convertToFormat(QImage::Format_RGB32), canvas().drawn().image);
        QCOMPARE(m_view->savePicture(path, {123, 45}), std::string());
        QCOMPARE(QImage(path).size(), QSize(123, 45));
    }

    void linesAreAsWideInALargePictureAsInTheWindow() {
        fourAtoms().attach();
        m_view->setRepresentation(view::Representation::Points);
        show();
        const QTemporaryDir folder;
        const auto drawn = [&](int scale) {
            const QString path = folder.filePath("p.png");
            m_view->savePicture(path, canvas().size() * scale);
            const QImage picture(path);
            int pixels = 0;
            for (int y = 0; y != picture.height(); ++y)
                for (int x = 0; x != picture.width(); ++x)
                    pixels += picture.pixel(x, y) != picture.pixel(0, 0);
            return pixels;
        };
        const double once = drawn(1);
        QVERIFY(once >= 5 * 5); // five dots
        const double ratio = drawn(4) / once;
        QVERIFY2(ratio > 10 && ratio < 20, qPrintable(QString::number(ratio)));
    }

    void blackIsSeenOnEitherBackground() {
        fourAtoms().attach();
        update([] {
            Items atoms;
            TAVIK::GetAtoms(space(), atoms, true);
            for (TAVIK::Compound* const atom : atoms)
                atom->SetColor(Color(QColor(Qt::black)));
        });
        m_view->setDepthCue(false);
        for (const bool isLight : {false, true}) {
            m_view->setLightBackground(isLight);
            show();
            const QImage& image = canvas().drawn().image;
            int black = 0;
            for (int y = 0; y != image.height(); ++y)
                for (int x = 0; x != image.width(); ++x)
                    black += image.pixelColor(x, y) == QColor(Qt::black);
            QVERIFY(black > 100);
            QVERIFY(legible::contrast(Qt::black, image.pixelColor(0, 0)) > 1.3);
        }
    }

    void aPictureThatCannotBeWrittenLeavesTheOldFile() {
        fourAtoms().attach();
        QTemporaryDir folder;
        const std::string problem = m_view->savePicture(folder.filePath("missing/p.png"), {10, 10});
        QVERIFY(QString::fromStdString(problem).contains("the picture cannot be written"));
        const QString path = folder.filePath("p.png");
        QCOMPARE(m_view->savePicture(path, {10, 10}), std::string());
        // No size: nothing is drawn.
        QVERIFY(!m_view->savePicture(path, {0, 10}).empty());
        QCOMPARE(QImage(path).size(), QSize(10, 10));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("p.png"));
    }

    void aPictureTakesThePlaceOfNoPipeAndNoFolder() {
        fourAtoms().attach();
        const QTemporaryDir folder;
        const QString pipe = folder.filePath("pipe");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const QString& path : {pipe, folder.path()}) {
            const std::string problem = m_view->savePicture(path, {10, 10});
            QVERIFY(QString::fromStdString(problem).endsWith("it is no regular file"));
        }
        struct stat found {};
        QCOMPARE(stat(QFile::encodeName(pipe).constData(), &found), 0);
        QVERIFY(S_ISFIFO(found.st_mode));
    }

    void unaskedAPictureTakesThePlaceOfAPictureAlone() {
        fourAtoms().attach();
        const QTemporaryDir folder;
        const QString path = folder.filePath("1cbs.pdb");
        const auto write = [&path](const QByteArray& text) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        };
        const QByteArray structure = "HEADER    RETINOIC-ACID TRANSPORT\n";
        write(structure);
        QCOMPARE(QString::fromStdString(m_view->savePicture(path, {10, 10})),
                 path + ": the picture cannot be written: the file that is there is no PNG "
                        "picture, and is kept");
        QFile kept(path);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), structure);
        kept.close();
        // An empty file holds nothing that could be lost, and a picture is drawn again.
        write({});
        QCOMPARE(m_view->savePicture(path, {10, 10}), std::string());
        QCOMPARE(m_view->savePicture(path, {12, 10}), std::string());
        QCOMPARE(QImage(path, "PNG").size(), QSize(12, 10));
    }

    void theMenuAsksForSizeAndFileAndWritesThePicture() {
        fourAtoms().attach();
        show();
        QTemporaryDir folder;
        for (const QString name : {"p.png", "missing/p.png"}) {
            const QString path = folder.filePath(name);
            QTimer::singleShot(0, [&] {
                auto* const dialog = QApplication::activeModalWidget();
                QVERIFY(dialog);
                auto* const save =
                    dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save);
                QVERIFY(!save->isEnabled());
                const auto sides = dialog->findChildren<QSpinBox*>();
                QCOMPARE(QSize(sides[0]->value(), sides[1]->value()), canvas().size());
                sides[0]->setValue(70);
                sides[1]->setValue(50);
                for (auto* const line : dialog->findChildren<QLineEdit*>())
                    if (line->parent() == dialog)
                        line->setText(path);
                QVERIFY(save->isEnabled());
                save->click();
            });
            m_view->askForPicture();
            QTRY_VERIFY(m_view->line().startsWith(path));
        }
        QCOMPARE(QImage(folder.filePath("p.png")).size(), QSize(70, 50));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 2);
        QVERIFY(log[0].contains("p.png is written"));
        QVERIFY(log[1].contains("the picture cannot be written"));
    }

    void aRequestOfAPictureIsAPathAndASize() {
        const auto request = view::pictureRequest("a b.png 16x9");
        QVERIFY(request);
        QCOMPARE(request->path, QString("a b.png"));
        QCOMPARE(request->size, QSize(16, 9));
        for (const char* text : {"", " ", "a.png", " 16x9", "a.png 16", "a.png 16x", "a.png x9",
                                 "a.png 0x9", "a.png -1x9", "a.png 16x9x2", "a.png 40000x1",
                                 "a.png 20000x20000", "a.png 99999999999999999999x1"})
            QVERIFY2(!view::pictureRequest(text), text);
    }

    void theHelpPageHasEveryKeyOfTheMenu() {
        QFile page(QStringLiteral(SOURCE_DIR "/data/help/") + m_view->helpPage() + ".md");
        QVERIFY(page.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(page.readAll());
        int keys = 0;
        for (const QAction* action : m_view->actions()) {
            const QString key = action->shortcut().toString();
            if (key.isEmpty())
                continue;
            ++keys;
            QVERIFY2(text.contains("\n| " + key + " | "), qPrintable(key));
        }
        QCOMPARE(keys, 17);
    }

    void thePluginAnswersItsCommandsAndLeavesNothing() {
        m_view.reset();
        fourAtoms().attach();
        const auto widgets = QApplication::topLevelWidgets().size();
        QTemporaryDir folder;
        const QString file = folder.filePath("plugins/Display/libView3D.so");
        QVERIFY(QDir().mkpath(folder.filePath("plugins/Display")));
        QVERIFY(QFile::copy(QStringLiteral(STAGE_PLUGINS "/Display/libView3D.so"), file));
        QCOMPARE(memory_host::loadPlugins(folder.filePath("plugins")),
                 QStringList("Display/View3D"));
        const std::string path = folder.filePath("p.png").toStdString();
        QVERIFY(
            memory_host::commandPlugin("Display", "View3D", "test", "Picture", path + " 64x48"));
        QCOMPARE(QImage(folder.filePath("p.png")).size(), QSize(64, 48));
        QVERIFY(!memory_host::commandPlugin("Display", "View3D", "test", "Picture", path));
        const QString told = takeHostLog().join(' ');
        QVERIFY(told.contains("is no file and size of a picture"));
        QVERIFY(told.contains("up to 32768 pixels a side"));
        PluginManager::Command("Display", "View3D", "test", "Show", {},
                               static_cast<const void*>(nullptr));
        QVERIFY(!memory_host::allPluginsDone());
        QTest::qWait(20);
        QVERIFY(memory_host::commandPlugin("Display", "View3D", "test", "ShowAll", {}));
        PluginManager::Command("Display", "View3D", "test", "Kill", {},
                               static_cast<const void*>(nullptr));
        QVERIFY(memory_host::allPluginsDone());
        PluginManager::Command("Display", "View3D", "test", "Show", {},
                               static_cast<const void*>(nullptr));
        memory_host::unloadPlugins();
        QCOMPARE(QApplication::topLevelWidgets().size(), widgets);
        QFile maps("/proc/self/maps");
        QVERIFY(maps.open(QIODevice::ReadOnly));
        QVERIFY(!maps.readAll().contains(QFile::encodeName(file)));
        takeMessages(); // the frame's
    }
};

REGISTER_TEST(ViewWindowTest)
#include "ViewWindowTest.moc"
