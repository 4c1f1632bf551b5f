// Batches of points that are searched, on a second thread where there is one.
#include "radius/SearchQueue.h"
#include "TestSupport.h"

#include <algorithm>
#include <random>

namespace {

std::vector<Point> somePoints(std::size_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> coordinate(0.0F, 50.0F);
    std::vector<Point> points(count);
    for (Point& point : points)
        point = {coordinate(random), coordinate(random), coordinate(random)};
    return points;
}

using Answers = std::vector<std::vector<std::uint32_t>>;

/// Each batch's answers, in the order in which they come back.
Answers searched(const RadiusSearch& search, const std::vector<std::vector<Point>>& batches,
                 bool isEager) {
    SearchQueue queue(search, 500);
    Answers answers;
    std::vector<std::size_t> order;
    const auto pop = [&] {
        order.push_back(queue.oldest());
        const auto near = queue.pop();
        answers.emplace_back(near.begin(), near.end());
    };
    for (std::size_t i = 0; i != batches.size(); ++i) {
        if (queue.isFull())
            pop();
        if (!queue.points().empty() || queue.number() != i % SearchQueue::batches)
            return {};
        queue.points() = batches[i];
        queue.push();
        while (isEager && !queue.isEmpty() && queue.isReady())
            pop();
    }
    while (!queue.isEmpty())
        pop();
    for (std::size_t i = 0; i != order.size(); ++i)
        if (order[i] != i % SearchQueue::batches)
            return {};
    return answers;
}

} // namespace

class SearchQueueTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    // Few batches are searched without a second thread.
    void batchesComeBackInOrderWithTheirAnswers_data() {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("isEager");
        for (const int count : {0, 1, 3, 4, 5, 9, 400})
            for (const bool isEager : {false, true})
                QTest::addRow("%d, %s", count, isEager ? "as soon as ready" : "when full")
                    << count << isEager;
    }
    void batchesComeBackInOrderWithTheirAnswers() {
        QFETCH(int, count);
        QFETCH(bool, isEager);
        const RadiusSearch search(somePoints(200, 1), 4.0);
        std::vector<std::vector<Point>> batches;
        Answers expected;
        for (int i = 0; i != count; ++i) {
            batches.push_back(somePoints(std::size_t(1 + i * 37 % 500), std::uint32_t(i)));
            std::vector<std::uint8_t> near;
            search.search(batches.back(), near);
            std::vector<std::uint32_t>& found = expected.emplace_back();
            for (std::uint32_t at = 0; at != near.size(); ++at)
                if (near[at])
                    found.push_back(at);
        }
        QCOMPARE(searched(search, batches, isEager), expected);
        if (count == 400)
            QVERIFY(
                std::ranges::any_of(expected, [](const auto& found) { return found.size() > 10; }));
    }

    // The second thread ends with the queue, whatever is left in it.
    void aQueueMayEndBeforeItsBatchesAreTakenBack() {
        const RadiusSearch search(somePoints(200, 1), 4.0);
        for (int turn = 0; turn != 50; ++turn) {
            SearchQueue queue(search, 500);
            for (std::uint32_t i = 0; i != 12; ++i) {
                if (queue.isFull())
                    queue.pop();
                queue.points() = somePoints(500, i);
                queue.push();
            }
            QVERIFY(!queue.isEmpty());
        }
    }
};

REGISTER_TEST(SearchQueueTest)
#include "SearchQueueTest.moc"
