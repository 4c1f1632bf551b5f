// How this host tells subscribers, where the interface leaves it open, and how it ends what would
// never end.
#include "DataPointBase.h"
#include "Sample.h"
#include "Subscriber.h"
#include "TestSupport.h"

#include <functional>
#include <memory>
#include <stdexcept>

using namespace memory_host;

class PublishingTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void aSubscriberThatComesInsideANotificationIsNotToldOfIt();
    void subscribersMayComeAndGoInANotificationInsideAnother();
    void aSubscriberThatAnswersEveryChangeIsStopped();
    void twoSubscribersThatAnswerEachOtherAreStopped();
    void afterAStopChangesGoOn();
    void aFailureIsLoggedWithItsReason();
    void anUnknownFailureIsLoggedToo();
    void aSubscriberDestroyedInsideAChangeIsNotTold();
    void givingUpTheFlagDoesNotKeepOthersOut();
};

namespace {

class Answering : public Subscriber {
public:
    explicit Answering(std::function<void()> answer) : m_answer(std::move(answer)) {}
    void commUpdate() override {
        ++m_told;
        m_answer();
    }
    void commAdd() override {}
    void commDelete() override {}

    int m_told = 0;

private:
    std::function<void()> m_answer;
};

bool change() {
    const DataPointBase guard(nullptr, Publisher::Update);
    return guard.m_good;
}

const QString refused =
    "a change is refused: it answers a change that answers another, 8 times over";

} // namespace

void PublishingTest::aSubscriberThatComesInsideANotificationIsNotToldOfIt() {
    std::unique_ptr<Answering> late;
    const Answering first([&] {
        if (!late)
            late = std::make_unique<Answering>([] {});
    });
    change();
    QCOMPARE(late->m_told, 0);
    change();
    QCOMPARE(late->m_told, 1);
}

void PublishingTest::subscribersMayComeAndGoInANotificationInsideAnother() {
    std::vector<std::unique_ptr<Answering>> others;
    for (int i = 0; i != 4; ++i)
        others.push_back(std::make_unique<Answering>([] {}));
    int depth = 0;
    const Answering first([&] {
        ++depth;
        if (depth < 4) {
            others.erase(others.begin());
            others.push_back(std::make_unique<Answering>([] {}));
            QVERIFY(change());
        }
        --depth;
    });
    Answering last([] {});
    change();
    QCOMPARE(first.m_told, 4);
    QCOMPARE(last.m_told, 4);
    last.m_told = 0;
    depth = 4;
    change();
    QCOMPARE(last.m_told, 1);
    for (const auto& other : others)
        QVERIFY(other->m_told > 0);
}

void PublishingTest::aSubscriberThatAnswersEveryChangeIsStopped() {
    const Answering endless([] { change(); });
    change();
    QCOMPARE(endless.m_told, 8);
    QCOMPARE(takeHostLog(), QStringList{refused});
}

void PublishingTest::twoSubscribersThatAnswerEachOtherAreStopped() {
    const Answering first([] { change(); });
    const Answering second([] { change(); });
    change();
    QCOMPARE(first.m_told, 255);
    const QStringList log = takeHostLog();
    QCOMPARE(log.count(refused), log.size());
}

void PublishingTest::afterAStopChangesGoOn() {
    {
        const Answering endless([] { change(); });
        change();
        takeHostLog();
    }
    int told = 0;
    const Answering counting([&] { ++told; });
    QVERIFY(change());
    QCOMPARE(told, 1);
}

void PublishingTest::aFailureIsLoggedWithItsReason() {
    const Answering failing([] { throw std::runtime_error("no room"); });
    change();
    QCOMPARE(takeHostLog(), QStringList{"a subscriber failed to take in a change: no room"});
}

void PublishingTest::anUnknownFailureIsLoggedToo() {
    const Answering failing([] { throw "text"; });
    change();
    QCOMPARE(takeHostLog(),
             QStringList{"a subscriber failed to take in a change: unknown exception"});
}

void PublishingTest::aSubscriberDestroyedInsideAChangeIsNotTold() {
    auto first = std::make_unique<Answering>([] {});
    const Answering second([] {});
    {
        const DataPointBase guard(nullptr, Publisher::Update);
        first.reset();
    }
    QCOMPARE(second.m_told, 1);
}

void PublishingTest::givingUpTheFlagDoesNotKeepOthersOut() {
    const Answering listening([] {});
    {
        DataPointBase guard(nullptr, Publisher::Update);
        guard.m_good = false;
    }
    QCOMPARE(listening.m_told, 1);
    {
        const DataPointBase open(nullptr, Publisher::Update);
        DataPointBase refusedOne(nullptr, Publisher::Update);
        refusedOne.m_good = true;
    }
    QCOMPARE(listening.m_told, 2);
    QVERIFY(change());
}

REGISTER_TEST(PublishingTest)
#include "PublishingTest.moc"
