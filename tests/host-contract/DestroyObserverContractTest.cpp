// Hearing of items before they are destroyed.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "DestroyObserver.h"
#include "TestSupport.h"
#include "Traversal.h"

#include <memory>
#include <stdexcept>

using namespace contract;
using namespace TAVIK;

namespace {

/// Writes down the names of the items that are about to go, and then does what `m_answer` says.
class Watcher : public DestroyObserver {
public:
    explicit Watcher(QStringList& heard) : m_heard(heard) {}
    void aboutToDestroy(Compound* item) override {
        m_heard << QString::fromLatin1(item->GetFQName());
        if (m_answer)
            m_answer();
    }

    std::function<void()> m_answer;

private:
    QStringList& m_heard;
};

} // namespace

class DestroyObserverContractTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void allThatGoesIsStillThere() {
        const Chain chain(2);
        Compound* const set = DataMaker::makeSet(space(), "set", chain.atoms);
        QStringList heard;
        Watcher watcher(heard);
        Items atoms;
        std::size_t members = 0;
        watcher.m_answer = [&] {
            GetAtoms(chain.residues[0], atoms, true);
            members = partsOf(set).size();
        };
        DataMaker::Destroy(chain.residues[0]);
        QCOMPARE(heard.size(), 1);
        QCOMPARE(atoms, Items(chain.atoms.begin(), chain.atoms.begin() + 4));
        QCOMPARE(members, chain.atoms.size());
        QCOMPARE(partsOf(set).size(), chain.atoms.size() - 4);
    }

    void eachDestructionIsToldOnce() {
        Compound* const box = make(space(), "Composite", "box");
        Compound* const first = atom(box, 0.0F, "C1");
        Compound* const second = atom(box, 0.0F, "C2");
        DataMaker::makeBond(space(), first, second);
        make(box, "Composite", "inner");
        QStringList heard;
        const Watcher watcher(heard);
        DataMaker::Destroy(first); // and with it the bond
        DataMaker::Destroy(box);
        QCOMPARE(heard, (QStringList{"/box/C1", "/box"}));
        QVERIFY(!space()->HasChildren());
    }

    void whatDestroysNothingTellsNothing() {
        QStringList heard;
        const Watcher watcher(heard);
        DataMaker::Destroy(nullptr);
        DataMaker::Destroy(space());
        QCOMPARE(takeMessages().size(), 1);
        QCOMPARE(heard, QStringList());
    }

    void itIsToldBeforeSubscribersHearOfTheChange() {
        Compound* const box = make(space(), "Composite", "box");
        QStringList heard;
        const Listener listener(heard);
        const Watcher watcher(heard);
        {
            const DataPointBase guard(nullptr, Publisher::Delete);
            QVERIFY(guard.m_good);
            DataMaker::Destroy(box);
            QCOMPARE(heard, QStringList{"/box"});
        }
        QCOMPARE(heard, (QStringList{"/box", "a delete"}));
    }

    void observersAreToldInTheOrderInWhichTheyCame() {
        QStringList heard;
        Watcher first(heard);
        Watcher second(heard);
        first.m_answer = [&] { heard << "first"; };
        second.m_answer = [&] { heard << "second"; };
        DataMaker::Destroy(make(space(), "Composite", "box"));
        QCOMPARE(heard, (QStringList{"/box", "first", "/box", "second"}));
    }

    void anObserverThatIsGoneHearsNothing() {
        QStringList heard;
        { const Watcher watcher(heard); }
        DataMaker::Destroy(make(space(), "Composite", "box"));
        QCOMPARE(heard, QStringList());
    }

    void observersMayComeAndGoInside() {
        QStringList heard;
        Watcher first(heard);
        auto second = std::make_unique<Watcher>(heard);
        std::unique_ptr<Watcher> third;
        first.m_answer = [&] {
            second.reset();
            if (!third)
                third = std::make_unique<Watcher>(heard);
        };
        DataMaker::Destroy(make(space(), "Composite", "one"));
        heard.clear();
        DataMaker::Destroy(make(space(), "Composite", "two"));
        QCOMPARE(heard, (QStringList{"/two", "/two"}));
    }

    void anObserverMayDestroyItselfInside() {
        QStringList heard;
        auto self = std::make_unique<Watcher>(heard);
        const Watcher next(heard);
        self->m_answer = [&] { self.reset(); };
        DataMaker::Destroy(make(space(), "Composite", "box"));
        QCOMPARE(heard, (QStringList{"/box", "/box"}));
    }

    void anExceptionIsLoggedAndGoesNoFurther() {
        QStringList heard;
        Watcher throws(heard);
        throws.m_answer = [] { throw std::runtime_error("cannot let go"); };
        const Watcher next(heard);
        DataMaker::Destroy(make(space(), "Composite", "box"));
        QCOMPARE(heard, (QStringList{"/box", "/box"}));
        QVERIFY(!space()->HasChildren());
        const QStringList log = takeHostLog();
        QCOMPARE(log.size(), 1);
        QVERIFY(log[0].contains("cannot let go"));
    }
};

REGISTER_TEST(DestroyObserverContractTest)
#include "DestroyObserverContractTest.moc"
