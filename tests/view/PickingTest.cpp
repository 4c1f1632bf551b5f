// Selecting by clicks, and what the pointer is over.
#include "Focus.h"
#include "ViewTestCase.h"

#include <algorithm>

using namespace view_tools;

namespace {

/// Counts what the host tells.
class Counter : public Subscriber {
public:
    void commUpdate() override { ++updates; }
    void commAdd() override {}
    void commDelete() override {}
    int updates = 0;
};

} // namespace

class PickingTest : public ViewTestCase {
    Q_OBJECT
private slots:
    void aClickSelectsOnlyTheAtomUnderThePointer() {
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[0]);
        QCOMPARE(selectedNames(), QString("A"));
        click(made.atoms[2]);
        QCOMPARE(selectedNames(), QString("C"));
        // What is behind is not hit.
        click(made.atoms[3]);
        QCOMPARE(selectedNames(), QString("B"));
    }

    void shiftAddsAndCtrlToggles() {
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[0]);
        click(made.atoms[2], Qt::ShiftModifier);
        QCOMPARE(selectedNames(), QString("A C"));
        click(made.atoms[2], Qt::ShiftModifier);
        QCOMPARE(selectedNames(), QString("A C"));
        click(made.atoms[1], Qt::ControlModifier);
        QCOMPARE(selectedNames(), QString("A B C"));
        click(made.atoms[0], Qt::ControlModifier);
        QCOMPARE(selectedNames(), QString("B C"));
    }

    void aClickOnNothingClearsAndWithAKeyDoesNot() {
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[0]);
        clickOnNothing(Qt::ShiftModifier);
        clickOnNothing(Qt::ControlModifier);
        QCOMPARE(selectedNames(), QString("A"));
        clickOnNothing();
        QCOMPARE(selectedNames(), QString());
        const Counter counter;
        clickOnNothing();
        QCOMPARE(counter.updates, 0);
    }

    void everyClickIsOneChangeThatTheOthersAreToldOf() {
        const Structure made = fourAtoms().attach();
        show();
        const Counter counter;
        click(made.atoms[0]);
        QCOMPARE(counter.updates, 1);
        click(made.atoms[0], Qt::ControlModifier);
        QCOMPARE(counter.updates, 2);
    }

    void aRefusedGuardSaysSoAndLosesNothing() {
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[0]);
        {
            const DataPoint<TAVIK::Space> other(nullptr, TAVIK::Space::instance());
            QTest::mouseClick(&canvas(), Qt::LeftButton, {}, placeOf(made.atoms[1]));
            QCOMPARE(takeMessages(), QStringList("Cannot update CDB!"));
            QCOMPARE(takeHostLog().size(), 1);
            QVERIFY(m_view->line().contains("data are being changed"));
            QCOMPARE(selectedNames(), QString("A"));
        }
        settle();
        click(made.atoms[1]);
        QCOMPARE(selectedNames(), QString("B"));
    }

    void aDragIsNoClick() {
        const Structure made = fourAtoms().attach();
        show();
        drag(Qt::LeftButton, placeOf(made.atoms[0]), placeOf(made.atoms[0]) + QPoint(30, 0));
        QCOMPARE(selectedNames(), QString());
    }

    void thePointerNamesTheItemThatItIsOver() {
        const Structure made = fourAtoms().attach();
        show();
        hover(placeOf(made.atoms[2]));
        QCOMPARE(m_view->line(), QString("/1abc/A/Groups/UNL 1/C"));
        hover({2, 2});
        QCOMPARE(m_view->line(), QString());
    }

    void thePointerNamesAnAtomOfARealFileByItsQualifiedName() {
        memory_host::openFile(structure("1cbs.cif.gz").toStdString());
        m_view->setRepresentation(view::Representation::Points);
        show();
        Items atoms;
        TAVIK::GetAtoms(space(), atoms, true);
        const auto arginine = std::find_if(atoms.begin(), atoms.end(), [](const auto* atom) {
            return atom->GetFQName() == "/1cbs/A/Groups/ARG 111/CZ";
        });
        QVERIFY(arginine != atoms.end());
        TAVIK::Focus::set(*arginine, nullptr, true);
        canvas().zoom(8);
        settle();
        hover(placeOf(*arginine));
        QCOMPARE(m_view->line(), QString("/1cbs/A/Groups/ARG 111/CZ"));
        hover(placeOf(*arginine) + QPoint(2, -1));
        QCOMPARE(m_view->line(), QString("/1cbs/A/Groups/ARG 111/CZ"));
    }

    void aDoubleClickCentresTheAtomAndSelectsOnce() {
        const Structure made = fourAtoms().attach();
        show();
        const QPoint place = placeOf(made.atoms[2]);
        const Counter counter;
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(&canvas(), Qt::LeftButton, {}, place);
        settle();
        QCOMPARE(canvas().camera().centre, (view::Point{0, 10, 0}));
        QCOMPARE(selectedNames(), QString("C"));
        QCOMPARE(counter.updates, 1);
    }

    // The picture still shows what is gone.
    void aClickOnWhatWasDestroyedMeanwhileIsNoClickOnNothing() {
        const Structure made = fourAtoms().attach();
        show();
        click(made.atoms[2]);
        const QPoint place = placeOf(made.atoms[0]);
        {
            const DataDelete<TAVIK::Space> guard(nullptr, TAVIK::Space::instance());
            TAVIK::DataMaker::Destroy(made.atoms[0]);
            hover(place);
            QCOMPARE(m_view->line(), QString());
            QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        }
        QCOMPARE(selectedNames(), QString("C"));
        settle();
        QTest::mouseClick(&canvas(), Qt::LeftButton, {}, place);
        QCOMPARE(selectedNames(), QString());
    }

    void aSelectionIsMarkedWithAnOutlineWhenTheHostSaysSo() {
        const Structure made = fourAtoms().attach();
        show();
        const QImage before = canvas().drawn().image;
        click(made.atoms[0]);
        const QImage marked = canvas().drawn().image;
        QVERIFY(marked != before);
        TAVIK::Space::SetShowSelection(false);
        { const DataPoint<TAVIK::Space> any(nullptr, TAVIK::Space::instance()); }
        settle();
        const QImage unmarked = canvas().drawn().image;
        TAVIK::Space::SetShowSelection(true);
        QCOMPARE(unmarked, before);
    }
};

REGISTER_TEST(PickingTest)
#include "PickingTest.moc"
