// Orders and the pictures that come of them, on this thread and on one of their own.
#include "scene/Drawing.h"
#include "scene/DataReader.h"
#include "window/DrawingThread.h"

#include "SceneTools.h"
#include "TestSupport.h"

#include <atomic>
#include <mutex>
#include <semaphore>
#include <thread>

using namespace scene_tools;
using view::Drawing;
using view::Order;

namespace {

constexpr view::Colour background = 0xff101010;

/// A carbon in the middle of a picture of 40 x 30 pixels, ten of them an Å.
Order orderOf(const view::Snapshot& snapshot) {
    Order order;
    order.snapshot = snapshot;
    order.look.representation = view::Representation::Spheres;
    order.camera.height = 6;
    order.width = 80;
    order.height = 60;
    order.look.background = background;
    return order;
}

TAVIK::Compound* addCarbon() {
    Structure made;
    made.add("UNL 1", {{"C", "C", {0, 0, 0}}});
    return made.attach().atoms[0];
}

} // namespace

class DrawingTest : public test_support::TestCase {
    Q_OBJECT

    view::DataReader m_reader;

    Order readOrder() {
        m_reader.read();
        return orderOf(m_reader.snapshot());
    }

private slots:
    void aWholePictureHasTheOrdersSizeNumberAndGeneration() {
        addCarbon();
        Order order = readOrder();
        order.number = 7;
        const auto drawn = Drawing(2).draw(order);
        QVERIFY(drawn);
        QCOMPARE(drawn->image.size(), QSize(80, 60));
        QCOMPARE(drawn->number, std::uint64_t(7));
        QCOMPARE(drawn->generation, m_reader.snapshot().generation);
        QVERIFY(drawn->isWhole);
        QCOMPARE(drawn->picture->ids[30 * 80 + 40], view::idOf(0));
        QCOMPARE(drawn->picture->ids[0], view::noId);
        QCOMPARE(drawn->image.pixel(0, 0), background);
    }

    void aQuickPictureIsNotWhole() {
        addCarbon();
        Order order = readOrder();
        order.isMoving = true;
        const auto drawn = Drawing(1).draw(order);
        QVERIFY(drawn && !drawn->isWhole);
        QCOMPARE(drawn->image.size(), QSize(80, 60));
    }

    // Far more than 40 ms can draw, whatever the machine: the picture is large.
    void quickPicturesBecomeCoarserUntilTheyAreQuick() {
        Structure made;
        for (int i = 0; i != 4000; ++i)
            made.add("UNL " + std::to_string(i),
                     {{"C", "C", {float(i % 20), float(i / 20 % 20), float(i / 400)}}});
        made.attach();
        Order order = readOrder();
        order.camera.height = 20;
        order.camera.centre = {10, 10, 0};
        order.width = 6000;
        order.height = 4000;
        order.isMoving = true;
        Drawing drawing(1);
        const auto first = drawing.draw(order);
        QCOMPARE(first->image.size(), QSize(6000, 4000));
        order.camera.turn(0.1, 0);
        const auto second = drawing.draw(order);
        QCOMPARE(second->image.size(), QSize(3000, 2000));
        // The ids are those of the atoms at every effort.
        order.camera.turn(0.1, 0);
        const auto third = drawing.draw(order);
        QCOMPARE(third->image.size(), QSize(3000, 2000));
        QVERIFY(*std::max_element(third->picture->ids.begin(), third->picture->ids.end()) <= 4000);
    }

    void aSelectionIsAnOutlineOnTheSamePicture() {
        TAVIK::Compound* atom = addCarbon();
        Order order = readOrder();
        Drawing drawing(1);
        order.outline = 0xffff00ff;
        const auto plain = drawing.draw(order);
        atom->SetSelected(true);
        m_reader.refresh();
        order.snapshot = m_reader.snapshot();
        const auto marked = drawing.draw(order);
        QCOMPARE(marked->picture, plain->picture);
        QVERIFY(marked->image != plain->image);
        int outlined = 0;
        for (int y = 0; y != 60; ++y)
            for (int x = 0; x != 80; ++x) {
                if (marked->image.pixel(x, y) == plain->image.pixel(x, y))
                    continue;
                ++outlined;
                QCOMPARE(marked->image.pixel(x, y), 0xffff00ffU);
                QCOMPARE(marked->picture->ids[std::size_t(y * 80 + x)], view::idOf(0));
            }
        // A ring of two pixels along the inside of a circle of 17 pixels.
        const double expected = 3.14159265 * (17 * 17 - 15 * 15);
        QVERIFY(std::abs(outlined - expected) < 0.15 * expected);
        order.outline.reset();
        QCOMPARE(drawing.draw(order)->image, plain->image);
    }

    void whileMovingAPictureIsDrawnIntoTheMemoryOfOneThatNobodyShows() {
        addCarbon();
        Order order = readOrder();
        order.isMoving = true;
        Drawing drawing(1);
        auto first = drawing.draw(order);
        const auto* const memory = first->picture->ids.data();
        const std::vector<view::Id> ids = first->picture->ids;
        const QImage image = first->image.copy();
        const auto turned = [&] {
            order.camera.move(0.5, 0);
            return drawing.draw(order);
        };
        const auto second = turned();
        const auto third = turned();
        QVERIFY(second->picture->ids.data() != memory && third->picture->ids.data() != memory);
        QCOMPARE(first->picture->ids, ids);
        QCOMPARE(first->image, image);
        first.reset();
        const auto fourth = turned();
        QCOMPARE(fourth->picture->ids.data(), memory);
        const auto alone = Drawing(1).draw(order);
        QCOMPARE(fourth->image, alone->image);
        QCOMPARE(fourth->picture->ids, alone->picture->ids);
        QVERIFY(fourth->image != image);
    }

    void memoryOfPicturesIsKeptOnlyIfWanted() {
        view::PictureMemory memory;
        const auto picture = [] {
            view::Picture made;
            made.ids.assign(1000, view::noId);
            return made;
        };
        memory.share(picture());
        QVERIFY(memory.take().ids.empty());
        memory.setKeeping(true);
        memory.share(picture());
        QCOMPARE(memory.take().ids.size(), std::size_t(1000));
        QVERIFY(memory.take().ids.empty());
        memory.share(picture());
        memory.setKeeping(false);
        QVERIFY(memory.take().ids.empty());
    }

    void aPictureMayOutliveItsMemory() {
        std::shared_ptr<const view::Picture> picture;
        {
            view::PictureMemory memory;
            memory.setKeeping(true);
            view::Picture made;
            made.ids.assign(3, 7);
            picture = memory.share(std::move(made));
        }
        QCOMPARE(picture->ids, (std::vector<view::Id>{7, 7, 7}));
    }

    void nothingIsDrawnWithoutASizeOrAfterAStop() {
        addCarbon();
        Order order = readOrder();
        order.width = 0;
        QVERIFY(!Drawing(1).draw(order));
        order = readOrder();
        std::stop_source stop;
        stop.request_stop();
        Drawing drawing(1);
        QVERIFY(!drawing.draw(order, stop.get_token()));
        QVERIFY(drawing.draw(order));
    }

    void whatIsNoPlaceIsLeftOut() {
        Structure made;
        made.add("UNL 1", {{"C", "C", {0, 0, 0}}});
        made.add("UNL 2", {{"C", "C", {NAN, 0, 0}}, {"C", "C", {1e30F, 0, 0}}});
        made.bond(0, 1);
        made.bond(1, 2);
        made.attach();
        Order order = readOrder();
        for (int representation = 0; representation <= 6; ++representation) {
            order.look.representation = static_cast<view::Representation>(representation);
            for (const bool isMoving : {false, true}) {
                order.isMoving = isMoving;
                const auto drawn = Drawing(1).draw(order);
                QVERIFY(drawn);
                for (const view::Id id : drawn->picture->ids)
                    QVERIFY(id == view::noId || id == view::idOf(0));
            }
        }
        const std::vector<view::Point> points =
            view::drawnPoints(*order.snapshot.contents, *order.snapshot.marks, order.look);
        view::Camera camera;
        camera.fit(points, 1, 1);
        QCOMPARE(camera.centre, (view::Point{0, 0, 0}));
    }

    void aHiddenStructureIsThePlainBackground() {
        addCarbon()->SetVisible(false);
        const auto drawn = Drawing(1).draw(readOrder());
        QVERIFY(drawn);
        QImage plain(80, 60, QImage::Format_RGB32);
        plain.fill(background);
        QCOMPARE(drawn->image, plain);
    }

    void theThreadDrawsTheLastOrder() {
        addCarbon();
        const Order order = readOrder();
        std::mutex mutex;
        std::vector<std::uint64_t> numbers;
        {
            view::DrawingThread thread([&](view::Drawn drawn) {
                const std::lock_guard lock(mutex);
                numbers.push_back(drawn.number);
            });
            for (std::uint64_t i = 1; i <= 100; ++i) {
                Order next = order;
                next.number = i;
                next.camera.turn(0.01 * double(i), 0);
                next.isMoving = i % 2 == 0;
                thread.order(next);
            }
            const auto last = [&] {
                const std::lock_guard lock(mutex);
                return numbers.empty() ? 0 : numbers.back();
            };
            QTRY_COMPARE(last(), std::uint64_t(100));
        }
        QVERIFY(std::is_sorted(numbers.begin(), numbers.end()));
    }

    // The first picture is in the works while many orders come.
    void aWholePictureIsFinishedHoweverFastOrdersCome() {
        addCarbon();
        Order order = readOrder();
        order.width = 1200;
        order.height = 900;
        std::atomic<int> finished = 0;
        view::DrawingThread thread([&](const view::Drawn&) { ++finished; });
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (finished < 2 && std::chrono::steady_clock::now() < end) {
            order.camera.turn(0.01, 0);
            thread.order(order);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        QVERIFY(finished >= 2);
    }

    void aThreadEndsInTheMiddleOfAPicture() {
        addCarbon();
        Order order = readOrder();
        order.width = 4000;
        order.height = 3000;
        for (int i = 0; i != 5; ++i) {
            view::DrawingThread thread([](const view::Drawn&) {});
            thread.order(order);
            std::this_thread::sleep_for(std::chrono::milliseconds(i));
        }
    }
};

REGISTER_TEST(DrawingTest)
#include "DrawingTest.moc"
