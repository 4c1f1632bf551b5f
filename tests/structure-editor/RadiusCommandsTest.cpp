// "Within rad." and "Any w/ rad.": the question about the radius, and what is selected.
#include "DataDelete.h"
#include "DataMaker.h"
#include "SelectionTestCase.h"
#include "files/Files.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace command_tools;
using namespace selection_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;
using TAVIK::Vertex;

class RadiusCommandsTest : public SelectionTestCase {
    Q_OBJECT

private slots:
    void theRadiusDialogAsksAsItShould_data() {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("label");
        QTest::newRow("local") << "Within rad."
                               << "Enter (local) selection radius";
        QTest::newRow("global") << "Any w/ rad."
                                << "Enter (global) selection radius";
    }
    void theRadiusDialogAsksAsItShould() {
        QFETCH(QString, entry);
        QFETCH(QString, label);
        Compound* shown = addLine("1abc", {0, 4, 5});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select(entry); },
                                         [&](QInputDialog& dialog) {
                                             QCOMPARE(dialog.windowTitle(), "Radius");
                                             QCOMPARE(dialog.labelText(), label);
                                             QCOMPARE(dialog.doubleValue(), 4.0);
                                             QCOMPARE(dialog.doubleMinimum(), 0.0);
                                             QCOMPARE(dialog.doubleMaximum(), 10000.0);
                                             QCOMPARE(dialog.doubleDecimals(), 3);
                                             QVERIFY(!dialog.parentWidget());
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void aCancelledRadiusChangesNothing() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        for (const char* entry : {"Within rad.", "Any w/ rad."})
            QVERIFY(withDialog<QInputDialog>([&] { select(entry); }, pressEscape));
        QCOMPARE(selectedNames(shown), "C0");
    }

    void aRadiusAroundNothingSelectsNothing() {
        Compound* shown = addLine("1abc", {0, 0, 1});
        showWindow();
        QVERIFY(selectWith("Within rad.", "10000"));
        QCOMPARE(selectedNames(shown), "");
    }

    void radiusZeroSelectsTheSamePlaceOnly() {
        Compound* shown = addLine("1abc", {1, 1, std::nextafter(1.0F, 2.0F)});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "0"));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void whatLiesExactlyAtTheRadiusIsSelected() {
        Compound* shown = addLine("1abc", {0, 2.5F, std::nextafter(2.5F, 3.0F)});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "2.5"));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    void theSelectionGrowsByOneStepOnly() {
        Compound* shown = addLine("1abc", {0, 1, 2, 3});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1");
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1 C2");
    }

    void anAtomWithoutAPositionIsNotSelectedButCountsAsACentre() {
        Compound* shown = addChain("1abc", {{"R 1",
                                             {{"C0", "C", {0, 0, 0, false}},
                                              {"C1", "C", {0, 0, 0, true}},
                                              {"C2", "C", {9, 0, 0, false}},
                                              {"C3", "C", {9, 0, 0, true}}}}});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[3]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1 C3");
    }

    void positionsThatAreNoNumbersAreNearNothing() {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        constexpr float infinity = std::numeric_limits<float>::infinity();
        Compound* shown = addLine("1abc", {0, nan, infinity, infinity, 1});
        for (const int i : {0, 1, 2})
            atomsOf(shown)[std::size_t(i)]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "10000"));
        QCOMPARE(selectedNames(shown), "C0 C1 C2 C4");
    }

    void theLocalRadiusStaysInTheShownItemAndTheGlobalOneDoesNot() {
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {1, 2});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(other)[1]->SetSelected(true);
        showWindow();
        QVERIFY(selectWith("Within rad.", "0.5"));
        QCOMPARE(selectedNames(shown), "C0");
        QVERIFY(selectWith("Within rad.", "1"));
        QCOMPARE(selectedNames(shown), "C0 C1");
        QCOMPARE(selectedNames(other), "C1");
        QVERIFY(selectWith("Any w/ rad.", "0"));
        QCOMPARE(selectedNames(other), "C0 C1");
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " X 2abc"}));
    }

    // While the question about the radius is open the guard is, too: others are refused.
    void othersCannotDestroyWhileTheRadiusIsAsked() {
        Compound* shown = addLine("1abc", {0, 1});
        atomsOf(shown)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select("Within rad."); },
                                         [&](QInputDialog& dialog) {
                                             const DataDelete<Compound> guard(nullptr, shown);
                                             QVERIFY(!guard.m_good);
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(selectedNames(shown), "C0 C1");
    }

    // One that does not care about guards, and destroys all the same.
    void anItemDestroyedWhileTheRadiusIsAskedEndsTheCommand_data() {
        QTest::addColumn<QString>("entry");
        QTest::newRow("local") << "Within rad.";
        QTest::newRow("global") << "Any w/ rad.";
    }
    void anItemDestroyedWhileTheRadiusIsAskedEndsTheCommand() {
        QFETCH(QString, entry);
        Compound* shown = addLine("1abc", {0, 1});
        Compound* other = addLine("2abc", {0, 1});
        shown->SetSelected(true);
        atomsOf(other)[0]->SetSelected(true);
        showWindow();
        QVERIFY(withDialog<QInputDialog>([&] { select(entry); },
                                         [&](QInputDialog& dialog) {
                                             TAVIK::DataMaker::Destroy(shown);
                                             m_window->commDelete();
                                             pressEnter(dialog);
                                         }));
        QCOMPARE(rows(*m_window), QStringList());
        QCOMPARE(entries(*m_window), QStringList{entry == "Within rad." ? " / 2abc" : " X 2abc"});
        QCOMPARE(takeMessages(), QStringList{"Vuxo::commDelete(): Did somebody killed my data?"});
    }

    // The whole way on a real structure: what the command selects is what the plain definition
    // says.
    void aRealStructureIsSelectedToTheBit() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        const std::vector<Compound*> atoms = atomsOf(shown);
        std::size_t selected = 0;
        for (const double radius : {0.0, 1.5, 4.0, 7.25, 30.0}) {
            shown->SetSelected(false);
            for (std::size_t i = 0; i < atoms.size(); i += 97)
                atoms[i]->SetSelected(true);
            std::vector<bool> expected;
            for (const Compound* atom : atoms) {
                bool near = atom->IsSelected();
                for (std::size_t i = 0; i < atoms.size() && !near; i += 97) {
                    const Vertex p = atom->GetPosition();
                    const Vertex c = atoms[i]->GetPosition();
                    const float dx = p[0] - c[0], dy = p[1] - c[1], dz = p[2] - c[2];
                    const float d2 = dx * dx + dy * dy + dz * dz;
                    near = p.isValid() && radius * radius >= static_cast<double>(d2);
                }
                expected.push_back(near);
            }
            m_window.reset();
            showWindow();
            QVERIFY(selectWith("Within rad.", QString::number(radius)));
            for (std::size_t i = 0; i != atoms.size(); ++i)
                QCOMPARE(atoms[i]->IsSelected(), expected[i]);
            selected += std::size_t(std::count(expected.begin(), expected.end(), true));
        }
        QVERIFY(selected > atoms.size());
    }
};

REGISTER_TEST(RadiusCommandsTest)
#include "RadiusCommandsTest.moc"
