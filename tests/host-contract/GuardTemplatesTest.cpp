// The guard templates that plug-ins compile in, and the order that every command keeps with them.
#include "ContractTools.h"
#include "DataAdder.h"
#include "DataDelete.h"
#include "DataPoint.h"
#include "TestSupport.h"

#include <stdexcept>
#include <type_traits>

using namespace contract;
using namespace TAVIK;

class GuardTemplatesTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void init() override {
        TestCase::init();
        m_heard.clear();
    }
    void eachGuardAnnouncesItsKind();
    void theyAreGuardsOfTheHost();
    void anyKindOfItemCanBeGuarded();
    void theGuardedItemIsGivenBack();
    void askingARefusedGuardForItsItemWarnsAndGoesOn();
    void nullDataOnlyWarns();
    void nullDataInARefusedGuardWarnsToo();
    void aRefusedGuardSaysNothingItself();
    void anExceptionThroughAGuardStillAnnounces();
    void theOriginatorIsNotTold();
    void aNullOriginatorTellsEverybody();
    void aCommandThatIsRefusedChangesNothingAndSaysSoOnce();
    void aCommandRefusedInsideAnotherChangeSaysSo();
    void theWindowShowsItsChangeBeforeOthersHearOfIt();

private:
    QStringList m_heard;
};

namespace {

// A window with one command, in the order that all commands keep.
class Window : public Listener {
public:
    using Listener::Listener;

    void hide(Compound* item) {
        const DataPoint<Compound> guard(this, item);
        if (!guard.m_good) {
            qDebug("%s", "Cannot update CDB!");
            return;
        }
        guard.data()->SetVisible(false);
        commUpdate();
    }
};

} // namespace

void GuardTemplatesTest::eachGuardAnnouncesItsKind() {
    const Listener listener(m_heard);
    { const DataPoint<Compound> guard(nullptr, space()); }
    QCOMPARE(m_heard.takeLast(), QString("a update"));
    { const DataAdder<Compound> guard(nullptr, space()); }
    QCOMPARE(m_heard.takeLast(), QString("a add"));
    { const DataDelete<Compound> guard(nullptr, space()); }
    QCOMPARE(m_heard.takeLast(), QString("a delete"));
    QVERIFY(m_heard.isEmpty());
}

void GuardTemplatesTest::theyAreGuardsOfTheHost() {
    static_assert(std::is_base_of_v<DataPointBase, DataPoint<Compound>>);
    static_assert(std::is_base_of_v<DataPointBase, DataAdder<Compound>>);
    static_assert(std::is_base_of_v<DataPointBase, DataDelete<Compound>>);
    static_assert(std::has_virtual_destructor_v<DataPoint<Compound>>);
    static_assert(std::has_virtual_destructor_v<DataAdder<Space>>);
    static_assert(std::has_virtual_destructor_v<DataDelete<Compound>>);
    // One member of their own: the pointer.
    static_assert(sizeof(DataPoint<Compound>) == sizeof(DataPointBase) + sizeof(void*));
}

void GuardTemplatesTest::anyKindOfItemCanBeGuarded() {
    { QVERIFY(DataPoint<Space>(nullptr, Space::instance()).m_good); }
    { QVERIFY(DataAdder<Space>(nullptr, Space::instance()).m_good); }
    { QVERIFY(DataDelete<Space>(nullptr, Space::instance()).m_good); }
    auto* const residue = dynamic_cast<Residue*>(make(space(), "Residue"));
    QCOMPARE(DataPoint<Residue>(nullptr, residue).data(), residue);
}

void GuardTemplatesTest::theGuardedItemIsGivenBack() {
    Compound* const item = make(space(), "Composite");
    const DataPoint<Compound> guard(nullptr, item);
    QCOMPARE(guard.data(), item);
}

void GuardTemplatesTest::askingARefusedGuardForItsItemWarnsAndGoesOn() {
    const host_under_test::LockedSpace lock;
    const DataPoint<Compound> guard(nullptr, space());
    QVERIFY(!guard.m_good);
    QCOMPARE(guard.data(), space());
    QCOMPARE(takeMessages(), QStringList{"ASSERT: \"m_good\" in ../../include/DataPoint (101)"});
}

void GuardTemplatesTest::nullDataOnlyWarns() {
    const Listener listener(m_heard);
    {
        const DataPoint<Compound> guard(nullptr, nullptr);
        QVERIFY(guard.m_good);
        QVERIFY(guard.data() == nullptr);
        QCOMPARE(takeMessages(),
                 QStringList{"In file ../../include/DataPoint, line 78: Out of memory"});
    }
    {
        const DataAdder<Compound> guard(nullptr, nullptr);
        QVERIFY(guard.m_good);
        QCOMPARE(takeMessages(),
                 QStringList{"In file ../../include/DataAdder, line 78: Out of memory"});
    }
    {
        const DataDelete<Compound> guard(nullptr, nullptr);
        QVERIFY(guard.m_good);
        QCOMPARE(takeMessages(),
                 QStringList{"In file ../../include/DataDelete, line 78: Out of memory"});
    }
    QCOMPARE(m_heard, (QStringList{"a update", "a add", "a delete"}));
}

void GuardTemplatesTest::nullDataInARefusedGuardWarnsToo() {
    const host_under_test::LockedSpace lock;
    const DataPoint<Compound> guard(nullptr, nullptr);
    QVERIFY(!guard.m_good);
    QCOMPARE(takeMessages(),
             QStringList{"In file ../../include/DataPoint, line 78: Out of memory"});
}

void GuardTemplatesTest::aRefusedGuardSaysNothingItself() {
    const Listener listener(m_heard);
    const host_under_test::LockedSpace lock;
    { const DataPoint<Compound> guard(nullptr, space()); }
    { const DataAdder<Compound> guard(nullptr, space()); }
    { const DataDelete<Compound> guard(nullptr, space()); }
    QVERIFY(m_heard.isEmpty());
    QVERIFY(takeMessages().isEmpty());
}

void GuardTemplatesTest::anExceptionThroughAGuardStillAnnounces() {
    const Listener listener(m_heard);
    const auto fail = [](auto&& guard) {
        if (guard.m_good)
            throw std::runtime_error("stop");
    };
    for (int i = 0; i != 2; ++i) {
        QVERIFY_EXCEPTION_THROWN(fail(DataPoint<Compound>(nullptr, space())), std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(fail(DataAdder<Space>(nullptr, Space::instance())),
                                 std::runtime_error);
        QVERIFY_EXCEPTION_THROWN(fail(DataDelete<Compound>(nullptr, space())), std::runtime_error);
    }
    QCOMPARE(m_heard,
             (QStringList{"a update", "a add", "a delete", "a update", "a add", "a delete"}));
}

void GuardTemplatesTest::theOriginatorIsNotTold() {
    Listener window(m_heard, "window");
    const Listener other(m_heard, "other");
    { const DataPoint<Compound> guard(&window, space()); }
    { const DataAdder<Compound> guard(&window, space()); }
    { const DataDelete<Compound> guard(&window, space()); }
    QCOMPARE(m_heard, (QStringList{"other update", "other add", "other delete"}));
}

void GuardTemplatesTest::aNullOriginatorTellsEverybody() {
    const Listener window(m_heard, "window");
    const Listener other(m_heard, "other");
    { const DataPoint<Compound> guard(nullptr, space()); }
    QCOMPARE(m_heard, (QStringList{"window update", "other update"}));
}

void GuardTemplatesTest::aCommandThatIsRefusedChangesNothingAndSaysSoOnce() {
    Window window(m_heard, "window");
    const Listener other(m_heard, "other");
    Compound* const item = make(space(), "Composite");
    {
        const host_under_test::LockedSpace lock;
        window.hide(item);
    }
    QVERIFY(item->IsVisible());
    QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
    QVERIFY(m_heard.isEmpty());
    // Its guard has ended: the next command goes ahead.
    window.hide(item);
    QVERIFY(!item->IsVisible());
}

void GuardTemplatesTest::aCommandRefusedInsideAnotherChangeSaysSo() {
    Window window(m_heard, "window");
    Compound* const item = make(space(), "Composite");
    {
        const DataPoint<Compound> outer(nullptr, space());
        window.hide(item);
    }
    QVERIFY(item->IsVisible());
    QCOMPARE(takeMessages(), QStringList{"Cannot update CDB!"});
    QCOMPARE(m_heard, QStringList{"window update"});
}

void GuardTemplatesTest::theWindowShowsItsChangeBeforeOthersHearOfIt() {
    const Listener before(m_heard, "before");
    Window window(m_heard, "window");
    const Listener after(m_heard, "after");
    window.hide(make(space(), "Composite"));
    QCOMPARE(m_heard, (QStringList{"window update", "before update", "after update"}));
}

REGISTER_TEST(GuardTemplatesTest)
#include "GuardTemplatesTest.moc"
