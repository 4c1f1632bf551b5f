// The count that tells whoever keeps a copy of the selection that it may be out of date.
#include "ContractTools.h"
#include "DataPointBase.h"
#include "SelectionChanges.h"
#include "TestSupport.h"

#include <map>
#include <random>
#include <utility>

using namespace contract;
using namespace TAVIK;

namespace {

using Answers = std::map<Compound*, std::pair<bool, bool>>;

void collect(Compound* item, Answers& answers) {
    answers[item] = {item->IsSelected(), item->HasSelected()};
    for (Compound* child : childrenOf(item))
        collect(child, answers);
}

Answers answersNow() {
    Answers answers;
    collect(space(), answers);
    return answers;
}

// Whether an item that is there now and was there before answers something else.
bool differ(const Answers& before, const Answers& now) {
    return std::any_of(now.begin(), now.end(), [&before](const auto& each) {
        const auto found = before.find(each.first);
        return found != before.end() && found->second != each.second;
    });
}

} // namespace

class SelectionChangesContractTest : public test_support::TestCase {
    Q_OBJECT

    // Does something after which answers differ: the count must have risen.
    static bool rises(const std::function<void()>& change) {
        const Answers before = answersNow();
        const std::uint64_t count = SelectionChanges();
        change();
        return differ(before, answersNow()) && SelectionChanges() > count;
    }

private slots:
    void itRisesWithAnItemsOwnMark() {
        const Chain chain(2);
        QVERIFY(rises([&] { chain.atoms[0]->SetSelected(true); }));
        QVERIFY(rises([&] { chain.atoms[0]->ToggleSelected(); }));
        QVERIFY(rises([&] { chain.molecule->SetSelected(true); }));
        QVERIFY(rises([&] { chain.residues[1]->SetSelected(false); }));
        Compound* const empty = make(space(), "Composite");
        QVERIFY(rises([&] { empty->SetSelected(true); }));
        QVERIFY(rises([&] { space()->SetSelected(false); }));
    }

    void itRisesWithWhatASetMarks() {
        const Chain chain(2);
        Compound* const inner = DataMaker::makeSet(space(), "inner", {chain.atoms[3]});
        Compound* const set = DataMaker::makeSet(space(), "set", {chain.atoms[0], inner});
        QVERIFY(rises([&] { set->SetSelected(true); }));
        QVERIFY(rises([&] { chain.atoms[3]->SetSelected(false); }));
        QVERIFY(!set->IsSelected());
    }

    void itRisesWithWhatComesAndGoes() {
        const Chain chain(1);
        chain.groups[1]->SetSelected(true);
        Compound* added = nullptr;
        QVERIFY(rises([&] { added = atom(chain.groups[1]); }));
        QVERIFY(rises([&] { DataMaker::Destroy(added); }));
        Compound* const set =
            DataMaker::makeSet(space(), "set", {chain.atoms[0], *chain.groups[1]->ChildBegin()});
        QVERIFY(!set->IsSelected());
        QVERIFY(rises([&] { DataMaker::Destroy(chain.atoms[0]); }));
        QVERIFY(set->IsSelected());
    }

    void itRisesWhateverTheKindOfTheGuard() {
        const Chain chain(1);
        for (const Publisher::ActionType kind :
             {Publisher::Update, Publisher::Add, Publisher::Delete}) {
            const DataPointBase guard(nullptr, kind);
            QVERIFY(rises([&] { chain.atoms[0]->ToggleSelected(); }));
        }
    }

    void itHasRisenWhenTheChangeIsTold() {
        const Chain chain(1);
        QStringList heard;
        Listener listener(heard);
        std::uint64_t told = 0;
        listener.m_answer = [&told] { told = SelectionChanges(); };
        const std::uint64_t before = SelectionChanges();
        {
            const DataPointBase guard(nullptr, Publisher::Update);
            chain.molecule->SetSelected(true);
        }
        QVERIFY(told > before);
        QCOMPARE(SelectionChanges(), told);
    }

    void anyAnswerThatDiffersHasRaisedIt() {
        static constexpr const char* kinds[] = {"Composite", "Residue", "Group", "Surface"};
        std::mt19937 random(5);
        const auto pick = [&random](std::size_t below) { return random() % below; };
        const Chain chain(3);
        int differences = 0;
        int rests = 0;
        for (int turn = 0; turn != 3000; ++turn) {
            const Answers before = answersNow();
            Items all;
            for (const auto& each : before)
                all.push_back(each.first);
            const auto any = [&] { return all[pick(all.size())]; };
            const std::uint64_t count = SelectionChanges();
            Compound* const item = any();
            Compound* const box = dynamic_cast<Composite*>(item) ? item : space();
            switch (pick(all.size() > 60 ? 7 : 6)) {
            case 0:
                item->SetSelected(pick(2) == 0);
                break;
            case 1:
                item->ToggleSelected();
                break;
            case 2:
                item->SetVisible(pick(2) == 0);
                item->SetColor(Color(static_cast<unsigned int>(pick(1000))));
                item->NextModel();
                break;
            case 3:
                atom(box, 0.0F, "CA", static_cast<unsigned int>(pick(3)));
                break;
            case 4:
                // Neither a group in a group nor a residue in a residue: those are refused.
                make(space(), kinds[pick(4)]);
                break;
            case 5:
                DataMaker::makeSet(box, "set", {any(), any()});
                break;
            default:
                if (item != space())
                    DataMaker::Destroy(item);
                break;
            }
            const bool isOther = differ(before, answersNow());
            QVERIFY2(!isOther || SelectionChanges() > count, qPrintable(QString::number(turn)));
            QVERIFY(SelectionChanges() >= count);
            differences += isOther;
            rests += SelectionChanges() == count;
        }
        QVERIFY(differences > 300);
        QVERIFY(rests > 300); // a count that always rises would tell nothing
        takeMessages();
        QCOMPARE(faults(), QString());
    }
};

REGISTER_TEST(SelectionChangesContractTest)
#include "SelectionChangesContractTest.moc"
