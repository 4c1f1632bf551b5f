// The focus: who is told of its moves, and that it never stays on an item that is gone.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "DestroyObserver.h"
#include "Focus.h"
#include "TestSupport.h"

#include <memory>
#include <stdexcept>
#include <utility>

using namespace contract;
using namespace TAVIK;

namespace {

/// Writes down what it is told, and then does what `m_answer` says.
class Watcher : public FocusObserver {
public:
    explicit Watcher(QStringList& heard, const QString& name = QStringLiteral("a"))
        : m_heard(heard), m_name(name) {}
    void focusMoved(Compound* item, bool center) override {
        m_heard << m_name + u' ' + (item ? QString::fromLatin1(item->GetName()) : "nothing") +
                       (center ? " centred" : "");
        if (m_answer)
            m_answer(item);
    }

    std::function<void(Compound* item)> m_answer;

private:
    QStringList& m_heard;
    QString m_name;
};

class Destruction : public DestroyObserver {
public:
    void aboutToDestroy(Compound* item) override { m_answer(item); }
    std::function<void(Compound* item)> m_answer;
};

} // namespace

class FocusContractTest : public test_support::TestCase {
    Q_OBJECT

    QStringList m_heard;

    QStringList heard() { return std::exchange(m_heard, {}); }

private slots:
    void init() override {
        TestCase::init();
        m_heard.clear();
    }
    void cleanup() override {
        TestCase::cleanup();
        QVERIFY(!Focus::item());
    }

    void thereIsNoneAtFirst() { QVERIFY(!Focus::item()); }

    void allAreToldButWhoSetIt() {
        Watcher first(m_heard, "first");
        Watcher second(m_heard, "second");
        Compound* const box = make(space(), "Composite", "box");
        Focus::set(box, nullptr);
        QCOMPARE(Focus::item(), box);
        QCOMPARE(heard(), (QStringList{"first box", "second box"}));
        Focus::set(space(), &first, true);
        QCOMPARE(heard(), QStringList("second  centred"));
        Focus::set(nullptr, &second);
        QVERIFY(!Focus::item());
        QCOMPARE(heard(), QStringList("first nothing"));
    }

    void theSameItemTellsOnlyWhenItIsToBeCentred() {
        const Watcher watcher(m_heard);
        Compound* const box = make(space(), "Composite", "box");
        Focus::set(nullptr, nullptr);
        Focus::set(box, nullptr);
        Focus::set(box, nullptr);
        QCOMPARE(heard(), QStringList("a box"));
        Focus::set(box, nullptr, true);
        Focus::set(box, nullptr, true);
        QCOMPARE(heard(), (QStringList{"a box centred", "a box centred"}));
    }

    void itNeedsNoGuardAndTellsNoSubscriber() {
        QStringList changes;
        const Listener listener(changes);
        const Watcher watcher(m_heard);
        Compound* const box = make(space(), "Composite", "box");
        {
            const host_under_test::LockedSpace lock;
            Focus::set(box, nullptr);
        }
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            Focus::set(nullptr, nullptr);
        }
        QCOMPARE(heard(), (QStringList{"a box", "a nothing"}));
        QCOMPARE(changes, QStringList("a update"));
        QCOMPARE(faults(), QString());
    }

    void aDestroyedItemLeavesTheFocusWhileItIsStillThere() {
        const Chain chain(2);
        Watcher watcher(m_heard);
        QStringList seen;
        watcher.m_answer = [&](Compound* item) {
            if (!item)
                seen << QString::fromLatin1(chain.atoms[0]->GetFQName());
        };
        Compound* const outside = make(space(), "Composite", "outside");
        const auto leaves = [&](Compound* focused, Compound* destroyed) {
            Focus::set(focused, nullptr);
            heard();
            DataMaker::Destroy(destroyed);
            const bool isEmpty = !Focus::item();
            Focus::set(nullptr, nullptr);
            return isEmpty && heard() == QStringList("a nothing");
        };
        QVERIFY(!leaves(outside, chain.atoms[7])); // it goes on to be in focus
        QVERIFY(leaves(chain.bonds[5], chain.bonds[5]));
        QVERIFY(leaves(chain.bonds[4], chain.atoms[5])); // a bond goes with its atom
        QVERIFY(leaves(chain.bonds[3], chain.residues[1]));
        QVERIFY(leaves(chain.atoms[3], chain.groups[1]));
        QVERIFY(leaves(chain.molecule, chain.molecule));
        QVERIFY(!seen.isEmpty());
        for (const QString& name : seen)
            QCOMPARE(name, "/A/ALA 1/N");
    }

    void whatIsAboutToBeDestroyedIsNotTaken() {
        const Chain chain(1);
        Compound* const other = make(space(), "Composite", "other");
        Watcher watcher(m_heard);
        const auto tryAll = [&] {
            for (Compound* item : {chain.molecule, chain.atoms[2], chain.bonds[1]})
                Focus::set(item, nullptr, true);
        };
        Destruction destruction;
        destruction.m_answer = [&](Compound*) {
            tryAll();
            QVERIFY(!Focus::item());
            Focus::set(other, nullptr);
        };
        watcher.m_answer = [&](Compound* item) {
            if (!item)
                tryAll();
        };
        Focus::set(chain.atoms[0], nullptr);
        DataMaker::Destroy(chain.molecule);
        QCOMPARE(Focus::item(), other);
        QCOMPARE(heard(), (QStringList{"a N", "a nothing", "a other"}));
        QCOMPARE(takeHostLog(), QStringList());
    }

    void anExceptionIsLoggedAndGoesNoFurther() {
        Watcher first(m_heard, "first");
        const Watcher second(m_heard, "second");
        first.m_answer = [](Compound*) { throw std::runtime_error("no way to look there"); };
        Focus::set(make(space(), "Composite", "box"), nullptr);
        QCOMPARE(heard(), (QStringList{"first box", "second box"}));
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY(log[0].contains("no way to look there"));
        first.m_answer = {};
    }

    void observersMayComeAndGoInside() {
        Compound* const box = make(space(), "Composite", "box");
        Watcher first(m_heard, "first");
        auto second = std::make_unique<Watcher>(m_heard, "second");
        std::unique_ptr<Watcher> third;
        first.m_answer = [&](Compound*) {
            second.reset();
            if (!third)
                third = std::make_unique<Watcher>(m_heard, "third");
        };
        Focus::set(box, nullptr);
        QCOMPARE(heard(), QStringList("first box"));
        Focus::set(nullptr, nullptr);
        QCOMPARE(heard(), (QStringList{"first nothing", "third nothing"}));
        third->m_answer = [&](Compound*) { third.reset(); };
        Focus::set(box, nullptr);
        QCOMPARE(heard(), (QStringList{"first box", "third box"}));
    }

    void theOthersHearOfTheLastMoveOnly() {
        Compound* const one = make(space(), "Composite", "one");
        Compound* const two = make(space(), "Composite", "two");
        Watcher first(m_heard, "first");
        const Watcher second(m_heard, "second");
        first.m_answer = [&](Compound* item) {
            if (item == one)
                Focus::set(two, &first, true);
        };
        Focus::set(one, nullptr);
        QCOMPARE(Focus::item(), two);
        QCOMPARE(heard(), (QStringList{"first one", "second two centred"}));
    }

    void handlersThatAlwaysMoveItComeToAnEnd() {
        Compound* const one = make(space(), "Composite", "one");
        Compound* const two = make(space(), "Composite", "two");
        Watcher first(m_heard, "first");
        Watcher second(m_heard, "second");
        first.m_answer = [&](Compound*) { Focus::set(one, &first, true); };
        second.m_answer = [&](Compound*) { Focus::set(two, &second, true); };
        Focus::set(two, nullptr);
        QVERIFY(heard().size() < 20);
        const QStringList log = takeHostLog();
        QVERIFY(!log.isEmpty() && log.size() < 20);
        for (const QString& line : log)
            QVERIFY(line.contains("focus"));
        // It works afterwards.
        first.m_answer = second.m_answer = {};
        Focus::set(nullptr, nullptr);
        QCOMPARE(heard(), (QStringList{"first nothing", "second nothing"}));
    }

    void aHandlerMayDestroyTheItem() {
        Compound* const one = make(space(), "Composite", "one");
        Watcher first(m_heard, "first");
        const Watcher second(m_heard, "second");
        first.m_answer = [&](Compound* item) {
            if (!item)
                return;
            const DataPointBase guard(nullptr, Publisher::Delete);
            DataMaker::Destroy(item);
        };
        Focus::set(one, nullptr);
        QVERIFY(!Focus::item());
        QCOMPARE(heard(), (QStringList{"first one", "first nothing", "second nothing"}));
        QVERIFY(!space()->HasChildren());
    }
};

REGISTER_TEST(FocusContractTest)
#include "FocusContractTest.moc"
