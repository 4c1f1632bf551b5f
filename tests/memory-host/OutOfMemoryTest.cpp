// Memory that runs out in the middle of a change: the change fails as a whole, and what needs no
// memory goes on.
#include "Ancestry.h"
#include "DataPointBase.h"
#include "FailingMemory.h"
#include "Logger.h"
#include "Sample.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "services/Log.h"

#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <limits>
#include <memory>
#include <new>

using namespace memory_host;
using namespace TAVIK;

class OutOfMemoryTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void makingFailsAsAWhole_data();
    void makingFailsAsAWhole();
    void attachingFailsAsAWhole();
    void newValuesAreTakenAsAWhole();
    void subscribingFailsAsAWhole();
    void changingAndDestroyingNeedNoMemory();
    void theLogNeedsNoMemory();
    void aSubscriberThatFailsForWantOfMemoryIsLogged();
};

namespace {

// Runs `operation` with one allocation refused: at first the first one, then the second, until none
// is left to refuse. `check` is called after each failure.
int failEachAllocation(const std::function<void()>& operation, const std::function<void()>& check) {
    for (int granted = 0;; ++granted) {
        bool failed = false;
        int refused = 0;
        {
            const FailingMemory memory(granted, 1, 0);
            try {
                operation();
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            refused = FailingMemory::refusals();
        }
        if (refused == 0)
            return granted;
        if (!failed)
            return -1; // the failure was swallowed
        check();
    }
}

using Making = std::function<Compound*(const Sample&, const std::string& name)>;

} // namespace

void OutOfMemoryTest::makingFailsAsAWhole_data() {
    QTest::addColumn<Making>("making");
    const auto row = [](const char* name, const Making& making) { QTest::newRow(name) << making; };
    for (const char* kind :
         {"Composite", "Molecule", "Residue", "Group", "Atom", "Bond", "Surface", "Grid"})
        row(kind, [kind](const Sample&, const std::string& name) {
            return DataMaker::makeCore(space(), name, kind);
        });
    row("PolyLine", [](const Sample&, const std::string& name) {
        static const std::vector<Vertex> points(3);
        return DataMaker::makePolyLine(space(), name, points);
    });
    row("Set", [](const Sample& sample, const std::string& name) {
        static Items members;
        members = sample.atoms;
        members.push_back(sample.chain);
        return DataMaker::makeSet(space(), name, members);
    });
    row("atom with values", [](const Sample&, const std::string& name) {
        return addAtom(space(), {name, name, Vertex(1, 2, 3, true), 1.0F, 1});
    });
    row("bond with atoms", [](const Sample& sample, const std::string&) {
        return addBond(space(), sample.atoms[0], sample.atoms[7]);
    });
    row("grid with values", [](const Sample&, const std::string& name) {
        return DataMaker::makeGrid(space(), name, {{1, 1, 1}, {}, {}, std::vector<float>(1)});
    });
}

void OutOfMemoryTest::makingFailsAsAWhole() {
    QFETCH(Making, making);
    const Sample sample;
    Compound* const other = DataMaker::makeSet(space(), "other", {sample.atoms[0]});
    const Items before = childrenOf(space());
    // A name of its own for each row, so that it is new to the host and needs memory.
    static int rows = 0;
    const std::string name =
        "a name that is too long to stand in a string itself " + std::to_string(++rows);
    Compound* made = nullptr;
    const int granted = failEachAllocation([&] { made = making(sample, name); },
                                           [&] {
                                               QCOMPARE(childrenOf(space()), before);
                                               QCOMPARE(faults(), QString());
                                           });
    // A bond has no name of its own, and may find room in a slab.
    QVERIFY(granted > 0 || (granted == 0 && made->GetType() == "Bond"));
    QVERIFY(made != nullptr);
    QCOMPARE(childrenOf(space()).size(), before.size() + 1);
    sample.chain->SetSelected(true);
    QVERIFY(other->IsSelected());
    QCOMPARE(faults(), QString());
}

void OutOfMemoryTest::attachingFailsAsAWhole() {
    Compound* const branch = makeDetached("branch", "Composite");
    makeAtom(branch);
    const int granted = failEachAllocation([&] { attach(branch, space()); },
                                           [&] { QVERIFY(TAVIK::GetParent(branch) == nullptr); });
    QVERIFY(granted >= 0);
    QCOMPARE(childrenOf(space()), (Items{branch}));
    QCOMPARE(faults(), QString());
}

void OutOfMemoryTest::newValuesAreTakenAsAWhole() {
    Compound* const residue = make(space(), "Residue");
    Compound* const atom = makeAtom(residue, 1);
    makeAtom(residue, 2);
    const int granted = failEachAllocation(
        [&] {
            setAtom(atom,
                    {"", "an element that nobody has named before this test did", {}, 9.0F, 2});
        },
        [&] {
            QCOMPARE(activeModel(residue), 1U);
            QCOMPARE(atom->GetPosition()[0], 1.0F);
            QCOMPARE(dynamic_cast<Atom*>(atom)->GetTemperature(), 15.0F);
            QCOMPARE(faults(), QString());
        });
    QVERIFY(granted > 0);
    QCOMPARE(activeModel(residue), 2U);
    QCOMPARE(faults(), QString());
}

namespace {

class Deaf : public Subscriber {
public:
    void commUpdate() override {}
    void commAdd() override {}
    void commDelete() override {}
};

} // namespace

void OutOfMemoryTest::subscribingFailsAsAWhole() {
    std::vector<std::unique_ptr<Deaf>> subscribers;
    subscribers.reserve(1000);
    for (int i = 0; i != 100; ++i)
        QVERIFY(failEachAllocation([&] { subscribers.push_back(std::make_unique<Deaf>()); },
                                   [] {}) > 0);
    QCOMPARE(subscribers.size(), std::size_t(100));
}

void OutOfMemoryTest::changingAndDestroyingNeedNoMemory() {
    const Sample sample(3);
    Compound* const alternative = makeAtom(sample.residues[0], 1);
    makeAtom(sample.residues[0], 2);
    Compound* const inner = DataMaker::makeSet(space(), "inner", sample.atoms);
    DataMaker::makeSet(sample.entry, "outer", {inner, sample.entry, sample.bonds[0]});
    int refusals = 0;
    {
        const FailingMemory memory(0, std::numeric_limits<int>::max(), 0);
        for (const bool on : {true, false}) {
            inner->SetSelected(on);
            sample.entry->SetVisible(!on);
            sample.atoms[0]->SetSelected(on);
            sample.atoms[5]->ToggleVisible();
            sample.residues[0]->NextModel();
            sample.bonds[1]->SetColor(Color());
            sample.bonds[1]->RestoreColor();
        }
        DataMaker::Destroy(alternative);
        DataMaker::Destroy(sample.atoms[1]);
        DataMaker::Destroy(sample.residues[1]);
        inner->PartBegin();
        sample.bondsBox->ChildBegin();
        DataMaker::Destroy(sample.bonds[9]);
        refusals = FailingMemory::refusals();
    }
    QCOMPARE(refusals, 0);
    QCOMPARE(faults(), QString());
    {
        const FailingMemory memory(0, std::numeric_limits<int>::max(), 0);
        DataMaker::Destroy(sample.entry);
        DataMaker::Destroy(inner);
        refusals = FailingMemory::refusals();
    }
    QCOMPARE(refusals, 0);
    QVERIFY(!space()->HasChildren());
}

void OutOfMemoryTest::theLogNeedsNoMemory() {
    const QTemporaryDir folder;
    const QString file = folder.filePath("log");
    const std::string line = "a line that does not fit into a string: " + std::string("\xe4\n!");
    setLogFile(file);
    Logger::Write("the file is open");
    {
        const FailingMemory memory(0, std::numeric_limits<int>::max(), 0,
                                   FailingMemory::Of::OwnCode);
        Logger::Write(line);
        QVERIFY(FailingMemory::refusals() > 0);
    }
    setLogFile(QString());
    QCOMPARE(takeHostLog(), QStringList({"the file is open", QString::fromLatin1(line.c_str())}));
    QFile log(file);
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(log.readAll()).split(u'\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY2(lines.at(1).endsWith(" a line that does not fit into a string: ?"
                                  "?!"),
             qPrintable(lines.at(1)));
}

void OutOfMemoryTest::aSubscriberThatFailsForWantOfMemoryIsLogged() {
    class Hungry : public Deaf {
        void commUpdate() override { m_room.resize(100); }
        std::vector<int> m_room;
    } const hungry;
    {
        const FailingMemory memory(0, std::numeric_limits<int>::max(), 0,
                                   FailingMemory::Of::OwnCode);
        const DataPointBase guard(nullptr, Publisher::Update);
    }
    QCOMPARE(takeHostLog(),
             QStringList("a subscriber failed to take in a change: not enough memory"));
}

REGISTER_TEST(OutOfMemoryTest)
#include "OutOfMemoryTest.moc"
