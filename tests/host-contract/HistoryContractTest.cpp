// Changes are taken back and done again exactly, whoever made them and whatever they changed.
#include "History.h"

#include "ActiveModel.h"
#include "ContractTools.h"
#include "DataLines.h"
#include "DataPointBase.h"
#include "Geometry.h"
#include "ManyAtoms.h"
#include "TestSupport.h"

#include <random>

using namespace contract;
using namespace TAVIK;
using test_support::dataLines;
using test_support::firstDifference;

namespace {

using Lines = QStringList;

TAVIK::SurfaceMesh triangle(float at) {
    TAVIK::SurfaceMesh mesh;
    mesh.vertices = {{at, 0, 0}, {at, 1, 0}, {at, 0, 1}};
    mesh.normals = {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
    mesh.triangles = {{0, 1, 2}};
    mesh.values = {1, 2, 3};
    return mesh;
}

TAVIK::GridValues smallGrid() {
    return {{3, 4, 5}, {}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, std::vector<float>(60, 1)};
}

void collect(Compound* item, Items& all) {
    for (Compound* child : childrenOf(item)) {
        all.push_back(child);
        collect(child, all);
    }
}

Items allItems() {
    Items all;
    collect(space(), all);
    return all;
}

// Runs a change under a guard with a label.
template <class Function>
void change(Publisher::ActionType kind, const char* label, const Function& function) {
    const DataPointBase guard(nullptr, kind, label);
    QVERIFY(guard.m_good);
    function();
}

// Everything that can be done to the data, at random.
class Anything {
public:
    explicit Anything(unsigned int seed) : m_random(seed) {}

    void some() {
        const DataPointBase guard(nullptr, Publisher::Update, "anything");
        for (unsigned int i = 0, count = 1 + pick(6); i != count; ++i)
            one();
    }

private:
    unsigned int pick(unsigned int below) { return unsigned(m_random() % below); }
    Compound* any() {
        const Items all = allItems();
        return all.empty() ? space() : all[pick(unsigned(all.size()))];
    }
    template <class Kind> Kind* anyOf() {
        std::vector<Kind*> found;
        for (Compound* item : allItems())
            if (auto* const one = dynamic_cast<Kind*>(item))
                found.push_back(one);
        return found.empty() ? nullptr : found[pick(unsigned(found.size()))];
    }
    Compound* anyComposite() {
        Compound* const found = anyOf<Composite>();
        return found ? found : space();
    }

    void one() {
        switch (pick(20)) {
        case 0:
        case 1:
            any()->SetSelected(pick(2) == 0);
            break;
        case 2:
        case 3:
            any()->SetVisible(pick(2) == 0);
            break;
        case 4:
            any()->SetColor(Color(pick(5)));
            break;
        case 5:
            any()->RestoreColor();
            break;
        case 6:
        case 7:
            if (auto* const residue = anyOf<Residue>())
                residue->NextModel();
            break;
        case 8:
            SetAtomPosition(anyOf<Atom>(), Vertex(float(pick(9)), 1, 2, pick(3) != 0));
            break;
        case 9:
            SetAtomModel(anyOf<Atom>(), pick(4));
            break;
        case 10:
            reshape();
            break;
        case 11:
            bound();
            break;
        case 12:
        case 13:
        case 14:
            if (Compound* const item = any(); item != space())
                DataMaker::Destroy(item);
            break;
        case 15:
            atom(anyComposite(), float(pick(5)), "X", pick(3));
            break;
        case 16:
            make();
            break;
        case 17:
            if (Atom* const a = anyOf<Atom>())
                if (Atom* const b = anyOf<Atom>(); a != b)
                    DataMaker::makeBond(anyComposite(), a, b);
            break;
        case 18:
            set();
            break;
        default:
            selectMany();
        }
    }
    void reshape() {
        auto* const surface = anyOf<Surface>();
        if (!surface)
            return;
        if (pick(2) == 0)
            SetSurfaceMesh(surface, triangle(float(pick(9))));
        else if (GetSurfaceMesh(surface))
            SetSurfaceColors(surface, {pick(9), 2, 3});
    }
    void bound() {
        auto* const grid = anyOf<Grid>();
        if (!grid)
            return;
        grid->m_lower[pick(3)] = int(pick(2));
        grid->m_upper[pick(3)] = 2 + int(pick(2));
    }
    void make() {
        Compound* const parent = anyComposite();
        switch (pick(5)) {
        case 0:
            DataMaker::makeSurface(parent, "surface", triangle(1));
            break;
        case 1:
            DataMaker::makeGrid(parent, "grid", smallGrid());
            break;
        case 2:
            DataMaker::makePolyLine(parent, "line", {Vertex(1, 2, 3, true)});
            break;
        case 3:
            contract::make(parent, "Composite");
            break;
        default:
            contract::make(parent, "Molecule");
        }
    }
    void set() {
        Items members;
        for (unsigned int i = 0, count = pick(4); i != count; ++i)
            members.push_back(any());
        std::erase(members, space());
        DataMaker::makeSet(anyComposite(), "set", members);
    }
    void selectMany() {
        Items atoms;
        for (Compound* item : allItems())
            if (dynamic_cast<Atom*>(item) && pick(3) == 0)
                atoms.push_back(item);
        SelectAtoms(atoms, pick(2) == 0);
    }

    std::mt19937 m_random;
};

} // namespace

class HistoryContractTest : public test_support::TestCase {
    Q_OBJECT

    static QStringList labels(const std::vector<HistoryStep>& steps) {
        QStringList all;
        for (const HistoryStep& step : steps)
            all << QString::fromLatin1(step.label) + (step.onlySelects ? " (selects)" : "");
        return all;
    }
    static void fill() {
        const DataPointBase guard(nullptr, Publisher::Add, "fill");
        for (int i = 0; i != 2; ++i) {
            const Chain chain(3);
            atom(chain.groups[0], 1, "A", 1);
            atom(chain.groups[0], 2, "A", 2);
            DataMaker::makeSet(space(), "set", {chain.residues[0], chain.atoms[5], chain.bonds[1]});
        }
        DataMaker::makeGrid(space(), "grid", smallGrid());
        DataMaker::makeSurface(space(), "surface", triangle(0));
    }

private slots:
    void aChangeIsTakenBackAndDoneAgain() {
        const Chain chain(2);
        change(Publisher::Update, "Hide it", [&] { chain.molecule->SetVisible(false); });
        const Lines hidden = dataLines();
        change(Publisher::Delete, "Delete 1 residue",
               [&] { DataMaker::Destroy(chain.residues[0]); });
        const Lines deleted = dataLines();
        QCOMPARE(labels(History::undoable()), QStringList({"Delete 1 residue", "Hide it"}));
        QCOMPARE(labels(History::undoable(1)), QStringList("Delete 1 residue"));
        QVERIFY(History::undo());
        QCOMPARE(firstDifference(dataLines(), hidden), QString());
        QCOMPARE(labels(History::redoable()), QStringList("Delete 1 residue"));
        QVERIFY(History::redo());
        QCOMPARE(firstDifference(dataLines(), deleted), QString());
        QVERIFY(!History::redo());
        QVERIFY(History::undo(2));
        QVERIFY(chain.residues[0]->IsVisible());
        QVERIFY(!History::undo());
        QCOMPARE(labels(History::redoable()), QStringList({"Hide it", "Delete 1 residue"}));
        // What is changed now follows what is there.
        change(Publisher::Update, "Colour", [&] { chain.molecule->SetColor(Color(7)); });
        QVERIFY(History::redoable().empty());
        QCOMPARE(labels(History::undoable()), QStringList("Colour"));
        QCOMPARE(faults(), QString());
    }

    void whatChangesNothingIsNoStep() {
        const Chain chain(1);
        change(Publisher::Update, "Show it", [&] { chain.molecule->SetVisible(true); });
        change(Publisher::Update, "Unselect", [&] { chain.molecule->SetSelected(false); });
        change(Publisher::Update, "Colour",
               [&] { chain.molecule->SetColor(chain.molecule->GetColor()); });
        QVERIFY(History::undoable().empty());
    }

    void stepsThatOnlySelectCanBeSkipped() {
        const Chain chain(1);
        QCOMPARE(History::toLastOfData(), std::size_t{0});
        change(Publisher::Update, "Select", [&] { chain.atoms[0]->SetSelected(true); });
        QCOMPARE(History::toLastOfData(), std::size_t{0});
        change(Publisher::Update, "Hide", [&] { chain.atoms[0]->SetVisible(false); });
        change(Publisher::Update, "Select", [&] { chain.atoms[1]->SetSelected(true); });
        change(Publisher::Update, "Select", [&] { chain.atoms[2]->SetSelected(true); });
        QCOMPARE(labels(History::undoable()),
                 QStringList({"Select (selects)", "Select (selects)", "Hide", "Select (selects)"}));
        QCOMPARE(History::toLastOfData(), std::size_t{3});
        QVERIFY(History::undo(History::toLastOfData()));
        QVERIFY(chain.atoms[0]->IsVisible());
        QVERIFY(chain.atoms[0]->IsSelected());
        QVERIFY(!chain.atoms[2]->IsSelected());
    }

    void subscribersAreToldWhatHasHappened() {
        const Chain chain(2);
        QStringList heard;
        change(Publisher::Delete, "Delete", [&] { DataMaker::Destroy(chain.residues[0]); });
        change(Publisher::Update, "Hide", [&] { chain.molecule->SetVisible(false); });
        const Listener listener(heard);
        QVERIFY(History::undo());
        QCOMPARE(std::exchange(heard, {}), QStringList("a update"));
        QVERIFY(History::undo());
        QCOMPARE(std::exchange(heard, {}), QStringList({"a add", "a update"}));
        QVERIFY(History::redo());
        QCOMPARE(std::exchange(heard, {}), QStringList({"a delete", "a update"}));
        QVERIFY(History::redo());
        QCOMPARE(std::exchange(heard, {}), QStringList("a update"));
        QVERIFY(History::undo(2));
        QCOMPARE(std::exchange(heard, {}), QStringList({"a add", "a update"}));
    }

    void observersAreToldOfNewSteps() {
        class Watcher : public HistoryObserver {
        public:
            void historyChanged() override { ++m_count; }
            int m_count = 0;
        } watcher;
        const Chain chain(1);
        const auto hide = [&] { chain.molecule->SetVisible(false); };
        watcher.m_count = 0;
        change(Publisher::Update, "Hide", hide);
        QCOMPARE(watcher.m_count, 1);
        change(Publisher::Update, "Hide", hide);
        QCOMPARE(watcher.m_count, 1);
        QVERIFY(History::undo());
        QCOMPARE(watcher.m_count, 2);
        QVERIFY(!History::undo());
        QCOMPARE(watcher.m_count, 2);
    }

    void nothingIsTakenBackWhileTheDataAreInUse() {
        const Chain chain(1);
        change(Publisher::Update, "Hide", [&] { chain.molecule->SetVisible(false); });
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            QVERIFY(!History::undo());
        }
        {
            const host_under_test::LockedSpace locked;
            QVERIFY(!History::undo());
        }
        QStringList heard;
        Listener listener(heard);
        bool isUndone = false;
        listener.m_answer = [&] { isUndone = isUndone || History::undo(); };
        change(Publisher::Update, "Select", [&] { chain.molecule->SetSelected(true); });
        QVERIFY(!isUndone);
        QVERIFY(!chain.molecule->IsVisible());
        listener.m_answer = {};
        QVERIFY(History::undo(2));
    }

    void anExceptionTakesAChangeBack() {
        const Chain chain(1);
        const Lines before = dataLines();
        QStringList heard;
        const Listener listener(heard);
        try {
            const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
            chain.atoms[0]->SetVisible(false);
            DataMaker::Destroy(chain.residues[0]);
            throw std::runtime_error("in the middle of a change");
        } catch (const std::runtime_error&) {
        }
        QCOMPARE(firstDifference(dataLines(), before), QString());
        QCOMPARE(heard, QStringList("a delete"));
        QVERIFY(History::undoable().empty());
        QCOMPARE(faults(), QString());
    }

    void aChangeAfterOneThatAnExceptionEndedIsTakenBack() {
        const Chain chain(1);
        Compound* set = nullptr;
        change(Publisher::Add, "Define set",
               [&] { set = DataMaker::makeSet(space(), "Set", chain.atoms); });
        const Lines before = dataLines();
        for (Compound* member : {chain.atoms[0], chain.atoms[1]}) {
            try {
                const DataPointBase guard(nullptr, Publisher::Delete, "Delete");
                DataMaker::Destroy(member);
                throw std::runtime_error("in the middle of a change");
            } catch (const std::runtime_error&) {
            }
            QCOMPARE(firstDifference(dataLines(), before), QString());
        }
        change(Publisher::Delete, "Delete", [&] { DataMaker::Destroy(chain.atoms[2]); });
        QCOMPARE(partsOf(set).size(), chain.atoms.size() - 1);
        QVERIFY(History::undo());
        QCOMPARE(firstDifference(dataLines(), before), QString());
        QCOMPARE(faults(), QString());
    }

    void aChangeWithoutAGuardEndsWhatCanBeTakenBack() {
        const Chain chain(2);
        change(Publisher::Delete, "Delete", [&] { DataMaker::Destroy(chain.residues[0]); });
        DataMaker::Destroy(chain.residues[1]);
        QVERIFY(History::undoable().empty());
        QVERIFY(!History::undo());
        QCOMPARE(faults(), QString());
    }

    // Colours that were taken back would not fit another mesh.
    void aMeshWithoutAGuardEndsWhatCanBeTakenBack() {
        Surface* const surface = DataMaker::makeSurface(
            space(), "surface", {{{0, 0, 0}}, {{1, 0, 0}}, {}, {}, {}, {}, {}, {}});
        const auto paint = [&] {
            change(Publisher::Update, "Paint", [&] { QVERIFY(SetSurfaceColors(surface, {7})); });
            QCOMPARE(History::undoable().size(), std::size_t{1});
        };
        paint();
        QVERIFY(SetSurfaceMesh(
            surface, {{{0, 0, 0}, {1, 1, 1}}, {{1, 0, 0}, {1, 0, 0}}, {}, {}, {}, {}, {}, {}}));
        QVERIFY(!History::undo());
        QVERIFY(SetSurfaceMesh(surface, {{{0, 0, 0}}, {{1, 0, 0}}, {}, {}, {}, {}, {}, {}}));
        paint();
        QVERIFY(SetSurfaceColors(surface, {}));
        QVERIFY(!History::undo());
        QCOMPARE(faults(), QString());
    }

    void anySequenceIsTakenBackAndDoneAgain_data() {
        QTest::addColumn<unsigned int>("seed");
        for (unsigned int seed = 1; seed != 41; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    void anySequenceIsTakenBackAndDoneAgain() {
        QFETCH(unsigned int, seed);
        fill();
        Anything anything(seed);
        std::mt19937 random(seed);
        // What the data were after each step that can be taken back.
        std::vector<Lines> after = {dataLines()};
        const std::size_t start = History::undoable().size();
        for (int i = 0; i != 60; ++i) {
            const std::size_t back = random() % 4 == 0 ? random() % after.size() : 0;
            if (back != 0) {
                QVERIFY(History::undo(back));
                QCOMPARE(firstDifference(dataLines(), after[after.size() - 1 - back]), QString());
                const std::size_t again = random() % (back + 1);
                QCOMPARE(History::redo(again), again != 0);
                QCOMPARE(firstDifference(dataLines(), after[after.size() - 1 - back + again]),
                         QString());
                after.resize(after.size() - back + again);
            }
            anything.some();
            QCOMPARE(faults(), QString());
            const std::size_t count = History::undoable().size() - start;
            if (count == after.size())
                after.push_back(dataLines());
            else
                QCOMPARE(count, after.size() - 1);
            QCOMPARE(firstDifference(dataLines(), after.back()), QString());
        }
        takeMessages();
        for (std::size_t i = after.size() - 1; i != 0; --i) {
            QVERIFY(History::undo());
            QCOMPARE(firstDifference(dataLines(), after[i - 1]), QString());
            QCOMPARE(faults(), QString());
        }
        for (std::size_t i = 1; i != after.size(); ++i) {
            QVERIFY(History::redo());
            QCOMPARE(firstDifference(dataLines(), after[i]), QString());
            QCOMPARE(faults(), QString());
        }
        QVERIFY(History::undo(after.size() - 1 + start));
        QVERIFY(!space()->HasChildren());
    }
};

REGISTER_TEST(HistoryContractTest)
#include "HistoryContractTest.moc"
