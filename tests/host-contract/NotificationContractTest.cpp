// Change guards and subscribers: who may change the data, and who hears of it when.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "TestSupport.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>

using namespace contract;
using namespace TAVIK;

class NotificationContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void init() override {
        TestCase::init();
        m_heard.clear();
    }
    void eachKindOfChangeCallsItsOwnHandler_data();
    void eachKindOfChangeCallsItsOwnHandler();
    void theKindsHaveTheirNumbers();
    void nothingIsToldBeforeTheGuardEnds();
    void whatWasChangedIsThereWhenItIsTold();
    void everybodyHasBeenToldWhenTheGuardHasEnded();
    void aSubscriberHearsFromItsConstructionToItsDestruction();
    void theOriginatorIsNotTold();
    void aNullOriginatorTellsEverybody();
    void subscribersAreToldInOrderOfRegistration();
    void anExceptionThroughAGuardStillEndsIt();
    void aSecondGuardIsRefusedWhileOneIsOpen();
    void aRefusedGuardAnnouncesNothing();
    void aRefusedGuardLeavesTheOpenOneAsItIs();
    void aLockedSpaceRefusesEveryChange();
    void anUnlockedSpaceAllowsChangesAgain();
    void lockingWhileAGuardIsOpenDoesNotStopIt();
    void aGuardMayBeOpenedInsideANotification();
    void aDeletionIsHeardOfBeforeTheAnswersToIt();
    void aGuardRefusedInsideAChangeIsAllowedAfterIt();
    void aSubscriberMayGoInsideANotification();
    void aSubscriberMayDestroyItselfInsideANotification();
    void aSubscriberMayComeInsideANotification();
    void aHandlerThatThrowsIsLoggedAndTheOthersAreTold_data();
    void aHandlerThatThrowsIsLoggedAndTheOthersAreTold();
    void aHandlerThatThrowsWhileAnotherExceptionPasses();
    void anOriginatorMayBeGoneWhenItsGuardEnds();
    void theFlagIsTheGuardsFirstMember();
    void guardsAndSubscribersArePolymorphic();

private:
    QStringList m_heard;
};

namespace {

// A whole change of nothing.
bool change(Publisher::ActionType kind = Publisher::Update, Subscriber* originator = nullptr) {
    const DataPointBase guard(originator, kind);
    return guard.m_good;
}

} // namespace

void NotificationContractTest::eachKindOfChangeCallsItsOwnHandler_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("handler");
    QTest::newRow("update") << 0 << "a update";
    QTest::newRow("add") << 1 << "a add";
    QTest::newRow("delete") << 2 << "a delete";
}

void NotificationContractTest::eachKindOfChangeCallsItsOwnHandler() {
    QFETCH(int, kind);
    QFETCH(QString, handler);
    const Listener listener(m_heard);
    QVERIFY(change(static_cast<Publisher::ActionType>(kind)));
    QCOMPARE(m_heard, QStringList{handler});
}

void NotificationContractTest::theKindsHaveTheirNumbers() {
    QCOMPARE(int(Publisher::Update), 0);
    QCOMPARE(int(Publisher::Add), 1);
    QCOMPARE(int(Publisher::Delete), 2);
}

void NotificationContractTest::nothingIsToldBeforeTheGuardEnds() {
    const Listener listener(m_heard);
    {
        const DataPointBase guard(nullptr, Publisher::Add);
        make(space(), "Composite")->SetSelected(true);
        QVERIFY(m_heard.isEmpty());
    }
    QCOMPARE(m_heard, QStringList{"a add"});
}

void NotificationContractTest::whatWasChangedIsThereWhenItIsTold() {
    Listener listener(m_heard);
    bool selected = false;
    Compound* const item = make(space(), "Composite");
    listener.m_answer = [&] { selected = item->IsSelected(); };
    {
        const DataPointBase guard(nullptr, Publisher::Update);
        item->SetSelected(true);
    }
    QVERIFY(selected);
}

void NotificationContractTest::everybodyHasBeenToldWhenTheGuardHasEnded() {
    const Listener first(m_heard, "1");
    const Listener second(m_heard, "2");
    change();
    QCOMPARE(m_heard.size(), 2);
}

void NotificationContractTest::aSubscriberHearsFromItsConstructionToItsDestruction() {
    change();
    auto listener = std::make_unique<Listener>(m_heard);
    QVERIFY(m_heard.isEmpty());
    change();
    QCOMPARE(m_heard, QStringList{"a update"});
    listener.reset();
    change();
    QCOMPARE(m_heard, QStringList{"a update"});
}

void NotificationContractTest::theOriginatorIsNotTold() {
    Listener first(m_heard, "1");
    const Listener second(m_heard, "2");
    change(Publisher::Update, &first);
    QCOMPARE(m_heard, QStringList{"2 update"});
}

void NotificationContractTest::aNullOriginatorTellsEverybody() {
    const Listener first(m_heard, "1");
    const Listener second(m_heard, "2");
    change(Publisher::Delete);
    QCOMPARE(m_heard, (QStringList{"1 delete", "2 delete"}));
}

void NotificationContractTest::subscribersAreToldInOrderOfRegistration() {
    QStringList expected;
    std::vector<std::unique_ptr<Listener>> listeners;
    for (int i = 0; i != 20; ++i)
        listeners.push_back(std::make_unique<Listener>(m_heard, QString::number(i)));
    listeners.erase(listeners.begin() + 7);
    listeners.push_back(std::make_unique<Listener>(m_heard, "last"));
    for (int i = 0; i != 20; ++i)
        if (i != 7)
            expected << QString::number(i) + " update";
    change();
    QCOMPARE(m_heard, expected << "last update");
}

void NotificationContractTest::anExceptionThroughAGuardStillEndsIt() {
    const Listener listener(m_heard);
    Compound* const item = make(space(), "Composite");
    try {
        const DataPointBase guard(nullptr, Publisher::Update);
        item->SetVisible(false);
        throw std::runtime_error("in the middle of a change");
    } catch (const std::runtime_error&) {
        QCOMPARE(m_heard, QStringList{"a update"});
    }
    // It is as if it had never been.
    QVERIFY(item->IsVisible());
    QVERIFY(change());
}

void NotificationContractTest::aSecondGuardIsRefusedWhileOneIsOpen() {
    const DataPointBase guard(nullptr, Publisher::Update);
    QVERIFY(guard.m_good);
    for (const auto kind : {Publisher::Update, Publisher::Add, Publisher::Delete})
        QVERIFY(!change(kind));
}

void NotificationContractTest::aRefusedGuardAnnouncesNothing() {
    const Listener listener(m_heard);
    {
        const DataPointBase guard(nullptr, Publisher::Add);
        change(Publisher::Update);
        change(Publisher::Delete);
        QVERIFY(m_heard.isEmpty());
    }
    QCOMPARE(m_heard, QStringList{"a add"});
}

void NotificationContractTest::aRefusedGuardLeavesTheOpenOneAsItIs() {
    const DataPointBase guard(nullptr, Publisher::Update);
    QVERIFY(!change());
    QVERIFY(guard.m_good);
    // It is still open: its place is not free.
    QVERIFY(!change());
}

void NotificationContractTest::aLockedSpaceRefusesEveryChange() {
    const Listener listener(m_heard);
    const host_under_test::LockedSpace lock;
    for (const auto kind : {Publisher::Update, Publisher::Add, Publisher::Delete})
        QVERIFY(!change(kind));
    QVERIFY(m_heard.isEmpty());
}

void NotificationContractTest::anUnlockedSpaceAllowsChangesAgain() {
    const Listener listener(m_heard);
    {
        const host_under_test::LockedSpace outer;
        {
            const host_under_test::LockedSpace inner;
            QVERIFY(!change());
        }
        QVERIFY(!change());
    }
    QVERIFY(change());
    QCOMPARE(m_heard, QStringList{"a update"});
}

void NotificationContractTest::lockingWhileAGuardIsOpenDoesNotStopIt() {
    const Listener listener(m_heard);
    {
        std::optional<host_under_test::LockedSpace> lock;
        const DataPointBase guard(nullptr, Publisher::Update);
        lock.emplace();
        QVERIFY(guard.m_good);
    }
    QCOMPARE(m_heard, QStringList{"a update"});
}

void NotificationContractTest::aGuardMayBeOpenedInsideANotification() {
    Listener first(m_heard, "1");
    const Listener second(m_heard, "2");
    bool good = false;
    first.m_answer = [&] {
        first.m_answer = nullptr;
        good = change(Publisher::Add, &first);
    };
    change();
    QVERIFY(good);
    QCOMPARE(m_heard, (QStringList{"1 update", "2 add", "2 update"}));
}

void NotificationContractTest::aDeletionIsHeardOfBeforeTheAnswersToIt() {
    Listener first(m_heard, "1");
    Listener second(m_heard, "2");
    const Listener third(m_heard, "3");
    first.m_answer = [&] {
        first.m_answer = nullptr;
        change(Publisher::Update, &first);
    };
    change(Publisher::Delete);
    QCOMPARE(m_heard, (QStringList{"1 delete", "2 delete", "3 delete", "2 update", "3 update"}));
    m_heard.clear();
    // Also one of several changes that go on.
    first.m_answer = [&] {
        first.m_answer = nullptr;
        change(Publisher::Delete, &first);
    };
    second.m_answer = [&] {
        second.m_answer = nullptr;
        change(Publisher::Add, &second);
    };
    change(Publisher::Update);
    QCOMPARE(m_heard, (QStringList{"1 update", "2 delete", "3 delete", "1 add", "3 add", "2 update",
                                   "3 update"}));
}

void NotificationContractTest::aGuardRefusedInsideAChangeIsAllowedAfterIt() {
    {
        const DataPointBase guard(nullptr, Publisher::Update);
        QVERIFY(!change());
    }
    QVERIFY(change());
}

void NotificationContractTest::aSubscriberMayGoInsideANotification() {
    Listener first(m_heard, "1");
    auto second = std::make_unique<Listener>(m_heard, "2");
    auto third = std::make_unique<Listener>(m_heard, "3");
    const Listener fourth(m_heard, "4");
    third->m_answer = [&] { second.reset(); };
    first.m_answer = [&] { third.reset(); };
    change();
    QCOMPARE(m_heard, (QStringList{"1 update", "2 update", "4 update"}));
    m_heard.clear();
    first.m_answer = [&] { second.reset(); };
    change();
    QCOMPARE(m_heard, (QStringList{"1 update", "4 update"}));
}

void NotificationContractTest::aSubscriberMayDestroyItselfInsideANotification() {
    auto first = std::make_unique<Listener>(m_heard, "1");
    const Listener second(m_heard, "2");
    // Moved out first: a function that is running must not be destroyed.
    first->m_answer = [&] {
        const auto running = std::move(first->m_answer);
        first.reset();
    };
    change();
    QCOMPARE(m_heard, (QStringList{"1 update", "2 update"}));
    change();
    QCOMPARE(m_heard, (QStringList{"1 update", "2 update", "2 update"}));
}

void NotificationContractTest::aSubscriberMayComeInsideANotification() {
    Listener first(m_heard, "1");
    std::vector<std::unique_ptr<Listener>> late;
    first.m_answer = [&] {
        // Enough of them that no list keeps its place.
        for (int i = 0; i != 100; ++i)
            late.push_back(std::make_unique<Listener>(m_heard, "late"));
        first.m_answer = nullptr;
    };
    const Listener second(m_heard, "2");
    change();
    QVERIFY(m_heard.contains("1 update"));
    QVERIFY(m_heard.contains("2 update"));
    m_heard.clear();
    change();
    QCOMPARE(m_heard.size(), 102);
}

void NotificationContractTest::aHandlerThatThrowsIsLoggedAndTheOthersAreTold_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("handler");
    QTest::addColumn<int>("thrower");
    QTest::addColumn<std::function<void()>>("answer");
    QTest::addColumn<QString>("text");
    const char* const handlers[] = {"update", "add", "delete"};
    for (const int kind : {0, 1, 2})
        for (const int thrower : {0, 1, 2}) {
            const QString handler = QLatin1String(handlers[kind]);
            QTest::addRow("an exception at %s, %d", handlers[kind], thrower)
                << kind << handler << thrower
                << std::function<void()>([] { throw std::runtime_error("the disk is full"); })
                << "the disk is full";
            QTest::addRow("something else at %s, %d", handlers[kind], thrower)
                << kind << handler << thrower << std::function<void()>([] { throw 42; }) << "";
        }
}

void NotificationContractTest::aHandlerThatThrowsIsLoggedAndTheOthersAreTold() {
    QFETCH(int, kind);
    QFETCH(QString, handler);
    QFETCH(int, thrower);
    QFETCH(std::function<void()>, answer);
    QFETCH(QString, text);
    std::vector<std::unique_ptr<Listener>> listeners;
    QStringList expected;
    for (const char* name : {"1", "2", "3"}) {
        listeners.push_back(std::make_unique<Listener>(m_heard, name));
        expected << name + QString(u' ') + handler;
    }
    listeners[std::size_t(thrower)]->m_answer = answer;
    // Every time: whoever threw is still told.
    for (int i = 0; i != 2; ++i) {
        m_heard.clear();
        QVERIFY(change(static_cast<Publisher::ActionType>(kind)));
        QCOMPARE(m_heard, expected);
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY(log.first().contains(text));
    }
}

void NotificationContractTest::aHandlerThatThrowsWhileAnotherExceptionPasses() {
    Listener first(m_heard, "1");
    const Listener second(m_heard, "2");
    first.m_answer = [] { throw std::runtime_error("inside"); };
    QString passed;
    try {
        const DataPointBase guard(nullptr, Publisher::Update);
        throw std::runtime_error("outside");
    } catch (const std::exception& error) {
        passed = error.what();
    }
    QCOMPARE(passed, QString("outside"));
    QCOMPARE(m_heard, (QStringList{"1 update", "2 update"}));
    QCOMPARE(takeHostLog().size(), 1);
}

void NotificationContractTest::anOriginatorMayBeGoneWhenItsGuardEnds() {
    auto originator = std::make_unique<Listener>(m_heard, "1");
    const Listener second(m_heard, "2");
    {
        const DataPointBase guard(originator.get(), Publisher::Update);
        originator.reset();
    }
    QCOMPARE(m_heard, QStringList{"2 update"});
}

void NotificationContractTest::theFlagIsTheGuardsFirstMember() {
    const DataPointBase guard(nullptr, Publisher::Update);
    // Right behind the pointer to the virtual functions.
    const auto* const begin = reinterpret_cast<const char*>(&guard);
    const auto* const flag = reinterpret_cast<const char*>(&guard.m_good);
    QCOMPARE(flag - begin, std::ptrdiff_t(sizeof(void*)));
    static_assert(std::is_same_v<decltype(guard.m_good), bool>);
}

void NotificationContractTest::guardsAndSubscribersArePolymorphic() {
    static_assert(std::has_virtual_destructor_v<DataPointBase>);
    static_assert(std::has_virtual_destructor_v<Subscriber>);
    static_assert(std::is_abstract_v<Subscriber>);
    static_assert(!std::is_copy_constructible_v<DataPointBase>);
    static_assert(!std::is_copy_constructible_v<Subscriber>);
}

REGISTER_TEST(NotificationContractTest)
#include "NotificationContractTest.moc"
