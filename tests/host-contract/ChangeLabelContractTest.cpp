// Labels of changes: what a guard does, it does with and without one; and the words of a label.
#include "ChangeData.h"
#include "Changed.h"
#include "ContractTools.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "TestSupport.h"

#include <memory>
#include <stdexcept>

using namespace contract;
using namespace TAVIK;

class ChangeLabelContractTest : public test_support::TestCase {
    Q_OBJECT

    QStringList m_heard;

    template <template <class> class Guard> void announces(const QString& kind) {
        {
            Guard<Compound> guard(nullptr, space(), "Label at the start");
            QVERIFY(guard.m_good);
            guard.setLabel("Label that is known later");
            QVERIFY(m_heard.isEmpty());
        }
        QCOMPARE(std::exchange(m_heard, {}), QStringList{"a " + kind});
    }

private slots:
    void init() override {
        TestCase::init();
        m_heard.clear();
    }

    void aGuardWithALabelAnnouncesItsKind() {
        const Listener listener(m_heard);
        announces<DataPoint>("update");
        announces<DataAdder>("add");
        announces<DataDelete>("delete");
    }

    void aLabelIsNoPartOfTheItem() {
        const DataPoint<Compound> guard(nullptr, space(), "Label");
        QCOMPARE(guard.data(), space());
    }

    void nullDataWarnsWithALabelToo() {
        const DataDelete<Compound> guard(nullptr, nullptr, "Label");
        QCOMPARE(takeMessages(),
                 QStringList{"In file ../../include/DataDelete, line 78: Out of memory"});
    }

    void theOriginatorIsNotToldOfALabelledChange() {
        Listener window(m_heard, "window");
        const Listener other(m_heard, "other");
        { const DataPointBase guard(&window, Publisher::Update, "Label"); }
        QCOMPARE(m_heard, QStringList{"other update"});
    }

    void aRefusedGuardTakesALabelAndDoesNothing() {
        const Listener listener(m_heard);
        {
            const host_under_test::LockedSpace lock;
            DataPointBase guard(nullptr, Publisher::Update, "Label");
            QVERIFY(!guard.m_good);
            guard.setLabel("Another label");
            QVERIFY(!guard.m_good);
        }
        QVERIFY(m_heard.isEmpty());
        QVERIFY(DataPointBase(nullptr, Publisher::Update).m_good);
    }

    void aRefusedGuardInsideAnotherLeavesThatOneAlone() {
        const Listener listener(m_heard);
        {
            const DataPointBase outer(nullptr, Publisher::Add, "Outer");
            DataPointBase inner(nullptr, Publisher::Update, "Inner");
            inner.setLabel("Inner still");
            QVERIFY(outer.m_good && !inner.m_good);
        }
        QCOMPARE(m_heard, QStringList{"a add"});
    }

    void anyTextIsALabel() {
        const Listener listener(m_heard);
        for (const std::string& label :
             {std::string(), std::string(1 << 20, 'x'), std::string("a\0\n%1 \xe9", 7)}) {
            DataPointBase guard(nullptr, Publisher::Update, label);
            QVERIFY(guard.m_good);
            guard.setLabel(label);
        }
        QCOMPARE(m_heard, QStringList(3, "a update"));
    }

    void anExceptionEndsALabelledGuardToo() {
        const Listener listener(m_heard);
        const auto fail = [] {
            changeData(DataPointBase(nullptr, Publisher::Update, "Label"),
                       [](DataPointBase&) { throw std::runtime_error("stop"); });
        };
        QVERIFY_EXCEPTION_THROWN(fail(), std::runtime_error);
        QCOMPARE(m_heard, QStringList{"a update"});
        QVERIFY(DataPointBase(nullptr, Publisher::Update).m_good);
    }

    void changeDataEndsTheGuardWithTheChange() {
        const Listener listener(m_heard);
        int changes = 0;
        changeData(DataPoint<Compound>(nullptr, space()), [&](DataPointBase& guard) {
            ++changes;
            QVERIFY(guard.m_good);
            QVERIFY(!DataPointBase(nullptr, Publisher::Update).m_good);
            QVERIFY(m_heard.isEmpty());
        });
        QCOMPARE(changes, 1);
        QCOMPARE(m_heard, QStringList{"a update"});
    }

    void changeDataSaysThatAChangeIsRefusedUnlessItIsToBeSilent() {
        const host_under_test::LockedSpace lock;
        const auto neverCalled = [](const DataPointBase&) { QFAIL("changed"); };
        changeData(DataPointBase(nullptr, Publisher::Update), neverCalled);
        QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
        changeData(DataPointBase(nullptr, Publisher::Update), neverCalled, Refusal::Silent);
        QCOMPARE(takeMessages(), QStringList());
    }

    void itemsAreCounted() {
        QCOMPARE(Changed().text(), std::string());
        QCOMPARE(Changed("atom").text(), std::string("no atoms"));
        QCOMPARE(Changed("atom", 1).text(), std::string("1 atom"));
        QCOMPARE(Changed("atom", 40).text(), std::string("40 atoms"));
        QCOMPARE(Changed("entry", 2).text(), std::string("2 entries"));
    }

    void aSingleItemIsToldByKindAndName_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("text");
        QTest::newRow("composite") << "Composite"
                                   << "it";
        QTest::newRow("chain") << "Molecule"
                               << "chain it";
        QTest::newRow("residue") << "Residue"
                                 << "residue it";
        QTest::newRow("group") << "Group"
                               << "group it";
        QTest::newRow("atom") << "Atom"
                              << "atom it";
        QTest::newRow("surface") << "Surface"
                                 << "surface it";
        QTest::newRow("grid") << "Grid"
                              << "grid it";
    }
    void aSingleItemIsToldByKindAndName() {
        QFETCH(QString, kind);
        QFETCH(QString, text);
        Compound* const item = make(space(), kind.toStdString(), "it");
        QCOMPARE(QString::fromStdString(Changed(*item).text()), text);
        QCOMPARE(QString::fromStdString(Changed("thing", {item}).text()), text);
        Changed counted("thing");
        counted.add(item);
        QCOMPARE(QString::fromStdString(counted.text()), text);
        counted.add(item);
        QCOMPARE(counted.text(), std::string("2 things"));
    }

    void ofALongNameTheBeginningIsTold() {
        const std::string longest(40, 'x');
        QCOMPARE(Changed(*make(space(), "Residue", longest)).text(), "residue " + longest);
        QCOMPARE(Changed(*make(space(), "Residue", longest + 'x')).text(),
                 "residue " + std::string(37, 'x') + "...");
    }

    void theNameOfADestroyedItemIsKept() {
        Compound* const item = make(space(), "Residue", "MET 1");
        const Changed one(*item);
        const Changed alone("residue", {item});
        DataMaker::Destroy(item);
        QCOMPARE(one.text(), std::string("residue MET 1"));
        QCOMPARE(alone.text(), std::string("residue MET 1"));
    }

    void itemsOfSeveralKindsAreItems() {
        Compound* const one = atom(space());
        Compound* const two = atom(space());
        Changed changed;
        changed.addOfAnyKind(one);
        QCOMPARE(changed.text(), std::string("atom CA"));
        changed.addOfAnyKind(two);
        QCOMPARE(changed.text(), std::string("2 atoms"));
        changed.addOfAnyKind(space());
        changed.addOfAnyKind(one);
        QCOMPARE(changed.text(), std::string("4 items"));
        Changed nameless;
        for (const char* name : {"a", "b"})
            nameless.addOfAnyKind(make(space(), "Composite", name));
        QCOMPARE(nameless.text(), std::string("2 items"));
    }
};

REGISTER_TEST(ChangeLabelContractTest)
#include "ChangeLabelContractTest.moc"
