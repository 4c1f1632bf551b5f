// The view while memory runs out: each allocation of a reading and of a picture is refused once,
// alone and with all that follow. What it had stays as it was, or the whole of the new is there;
// and the next reading and the next picture are as if nothing had happened.
#include "DataPoint.h"
#include "FailingMemory.h"
#include "ViewTestCase.h"
#include "scene/DataReader.h"
#include "scene/Drawing.h"

#include <cmath>
#include <functional>
#include <limits>
#include <new>

using namespace view_tools;
using view::DataReader;
using view::Drawing;
using view::Order;

namespace {

constexpr int all = std::numeric_limits<int>::max();

/// Whether every array has an element for each item.
bool isWhole(const view::Snapshot& snapshot) {
    return snapshot.marks->colours.size() == snapshot.contents->itemCount() &&
           snapshot.marks->shown.size() == snapshot.contents->itemCount() &&
           snapshot.marks->bonds.size() == snapshot.contents->bonds.size() &&
           snapshot.selection->size() == snapshot.contents->itemCount();
}

bool isSame(const view::Snapshot& a, const view::Snapshot& b) {
    return a.contents->positions == b.contents->positions && *a.marks == *b.marks &&
           *a.selection == *b.selection;
}

/// A helix of alanines with a ligand, in two models.
Structure helix() {
    Structure made;
    for (int i = 0; i != 12; ++i) {
        const float angle = 100.0F * 3.14159265F / 180 * static_cast<float>(i);
        const auto at = [&](float radius, float turn, float rise) {
            return std::array<float, 3>{radius * std::cos(angle + turn),
                                        radius * std::sin(angle + turn),
                                        1.5F * static_cast<float>(i) + rise};
        };
        made.add("ALA " + std::to_string(i + 1), {{"N", "N", at(1.55F, -0.49F, -0.9F)},
                                                  {"CA", "C", at(2.3F, 0, 0), 1},
                                                  {"CA", "C", at(2.4F, 0.02F, 0.1F), 2},
                                                  {"C", "C", at(1.65F, 0.46F, 1.1F)},
                                                  {"O", "O", at(2.0F, 0.55F, 2.3F)}});
    }
    made.add("REA 20", {{"C1", "C", {12, 0, 0}}, {"O1", "O", {13.2F, 0, 0}}});
    made.bond(60, 61);
    made.bond(0, 1);
    return made;
}

Order orderOf(const view::Snapshot& snapshot, view::Representation representation) {
    Order order;
    order.snapshot = snapshot;
    order.look.representation = representation;
    order.camera.height = 40;
    order.width = 200;
    order.height = 150;
    order.outline = 0xffffe000;
    return order;
}

} // namespace

class ViewMemoryFaultTest : public ViewTestCase {
    Q_OBJECT

    /// Does it, with one allocation after another refused, until none is; calls `check` after each
    /// with whether it was done.
    void failAtEach(int refused, const std::function<void()>& prepare,
                    const std::function<void()>& act, const std::function<bool(bool)>& check) {
        for (int granted = 0;; ++granted) {
            prepare();
            bool isDone = true;
            int refusals = 0;
            {
                const FailingMemory memory(granted, refused, 0, FailingMemory::Of::OwnCode);
                try {
                    act();
                } catch (const std::bad_alloc&) {
                    isDone = false;
                }
                refusals = FailingMemory::refusals();
            }
            QVERIFY2(check(isDone), qPrintable(QStringLiteral("allocation %1").arg(granted)));
            if (refusals == 0)
                break;
        }
    }

private slots:
    void aReadingThatFailsLeavesWhatWasRead_data() {
        QTest::addColumn<int>("refused");
        QTest::newRow("one") << 1;
        QTest::newRow("all that follow") << all;
    }
    void aReadingThatFailsLeavesWhatWasRead() {
        QFETCH(int, refused);
        helix().attach();
        DataReader expected;
        expected.read();
        std::unique_ptr<DataReader> reader;
        failAtEach(
            refused, [&] { reader = std::make_unique<DataReader>(); }, [&] { reader->read(); },
            [&](bool isDone) {
                if (!isWhole(reader->snapshot()))
                    return false;
                if (isDone != isSame(reader->snapshot(), expected.snapshot()))
                    return false;
                reader->read();
                return isSame(reader->snapshot(), expected.snapshot()) &&
                       reader->item(1, reader->snapshot().generation) != nullptr;
            });
    }

    void aRefreshThatFailsCanBeMadeAgain_data() { aReadingThatFailsLeavesWhatWasRead_data(); }
    void aRefreshThatFailsCanBeMadeAgain() {
        QFETCH(int, refused);
        Structure made = helix();
        made.attach();
        DataReader reader;
        reader.read();
        bool on = false;
        std::unique_ptr<DataReader> expected;
        failAtEach(
            refused,
            [&] {
                on = !on;
                const DataPoint<TAVIK::Compound> guard(nullptr, made.entry);
                made.residues[3]->SetSelected(on);
                made.residues[4]->SetVisible(!on);
                made.atoms[0]->SetColor(Color(on ? 0xff123456U : 0xff654321U));
                expected = std::make_unique<DataReader>();
                expected->read();
            },
            [&] { reader.refresh(); },
            [&](bool isDone) {
                if (!isWhole(reader.snapshot()) ||
                    (isDone && !isSame(reader.snapshot(), expected->snapshot())))
                    return false;
                reader.refresh();
                return isSame(reader.snapshot(), expected->snapshot());
            });
    }

    void theWindowGoesOnAfterAFailure_data() { aReadingThatFailsLeavesWhatWasRead_data(); }
    void theWindowGoesOnAfterAFailure() {
        QFETCH(int, refused);
        float x = 0;
        failAtEach(
            refused,
            [&] {
                TestCase::init();
                m_view = std::make_unique<view::View3D>();
                m_view->setRepresentation(view::Representation::Sticks);
                show();
                x += 10;
                Structure made;
                made.add("UNL 1", {{"A", "C", {x, 0, 0}}, {"B", "C", {x + 4, 0, 0}}});
                made.attach();
            },
            [&] {
                m_view->commAdd();
                m_view->bringUpToDate();
            },
            [&](bool) {
                takeHostLog();
                m_view->commUpdate();
                settle();
                return canvas().order().snapshot.contents->atomCount() == 2 &&
                       canvas().camera().centre == view::Point{x + 2, 0, 0} &&
                       canvas().idAt(canvas().rect().center() / 4) == view::noId &&
                       canvas().idAt(placeOf({x, 0, 0})) == view::idOf(0);
            });
        QCOMPARE(takeHostLog(), QStringList());
    }

    void theThreadGoesOnAfterAFailure() {
        helix().attach();
        show();
        {
            const FailingMemory memory(0, all);
            m_view->resize(500, 350);
            QTRY_VERIFY(FailingMemory::refusals() > 0);
            QTest::qWait(50);
        }
        QVERIFY(!takeHostLog().filter("the picture cannot be drawn").isEmpty());
        m_view->resize(400, 300);
        settle();
        QCOMPARE(canvas().drawn().image.size(), canvas().size());
    }

    void aPictureThatFailsCanBeMadeAgain_data() {
        QTest::addColumn<int>("refused");
        QTest::addColumn<int>("representation");
        for (int i = 0; i != 7; ++i) {
            QTest::addRow("%d, one", i) << 1 << i;
            QTest::addRow("%d, all that follow", i) << all << i;
        }
    }
    void aPictureThatFailsCanBeMadeAgain() {
        QFETCH(int, refused);
        QFETCH(int, representation);
        Structure made = helix();
        made.attach();
        DataReader reader;
        Drawing drawing(1);
        Order first;
        Order second;
        QImage firstImage;
        QImage secondImage;
        const auto orderNow = [&] {
            reader.refresh();
            return orderOf(reader.snapshot(), view::Representation(representation));
        };
        reader.read();
        first = orderNow();
        {
            const DataPoint<TAVIK::Compound> guard(nullptr, made.entry);
            for (int i = 2; i != 9; ++i)
                made.residues[std::size_t(i)]->NextModel();
            made.atoms[60]->SetColor(Color(0xff00ffffU));
            made.residues[11]->SetSelected(true);
        }
        second = orderNow();
        firstImage = Drawing(1).draw(first)->image;
        secondImage = Drawing(1).draw(second)->image;
        QVERIFY(firstImage != secondImage);
        std::unique_ptr<Drawing> drawer;
        failAtEach(
            refused,
            [&] {
                drawer = std::make_unique<Drawing>(1);
                drawer->draw(first);
            },
            [&] { drawer->draw(second); },
            [&](bool) {
                return drawer->draw(first)->image == firstImage &&
                       drawer->draw(second)->image == secondImage;
            });
    }
};

REGISTER_TEST(ViewMemoryFaultTest)
#include "ViewMemoryFaultTest.moc"
