// The menu "Delete": what goes, what stays, and what list, tree and others show of it.
#include "CommandTools.h"
#include "DataAdder.h"
#include "DataMaker.h"
#include "DataPoint.h"
#include "Kinds.h"
#include "Space.h"
#include "WindowTestCase.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "tree/TreeItem.h"
#include "tree/TreeView.h"
#include "window/ListBox.h"

#include <optional>
#include <random>
#include <stdexcept>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

struct Command {
    const char* label;
    QStringList path; ///< the one item of the kind that is selected
    bool takesBond = false;
};

const QStringList met = {"A", "Groups", "MET 1"};
const QStringList bond = {"A", "Bonds", "MET 1 CA-C"};

const std::vector<Command> kinds = {
    {"Chain", {"A"}},         {"Group", met + QStringList("Side chain")},
    {"Residue", met, true},   {"Atom", met + QStringList({"Backbone", "CA"}), true},
    {"Bond", bond},           {"Grid", {"grid"}},
    {"Surface", {"surface"}},
};

void addKindRows() {
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i != kinds.size(); ++i)
        QTest::newRow(kinds[i].label) << int(i);
}

// Every item of the data space with its depth, in order.
void describe(Compound* item, int depth, QStringList& out) {
    out << QString(depth, u' ') + QString::fromLatin1(item->GetName());
    for (Compound** child = item->ChildBegin(); child != item->ChildEnd(); ++child)
        describe(*child, depth + 1, out);
}

QStringList itemsOf(Compound* root) {
    QStringList out;
    describe(root, 0, out);
    return out;
}

// All that the tree shows or would show of its rows.
QStringList looks(const Vuxo& window) {
    QStringList out;
    for (TreeItemIterator at(treeOf(window)); const TreeItem* row = at.current(); ++at) {
        QString line(row->depth(), u' ');
        for (int column = 0; column != 4; ++column)
            line += row->text(column) + u' ';
        line += QStringLiteral("%1%2%3%4").arg(row->isSelected()).arg(row->isOpen());
        out << line.arg(row->isDirty()).arg(row->position());
    }
    const TreeItem* current = treeOf(window)->currentItem();
    out << (current ? current->text(0) : QString());
    return out;
}

// The line of the item at `path`.
QString indented(const QStringList& path) {
    return QString(path.size(), u' ') + path.back();
}

TAVIK::Grid* addGrid(Compound* parent, const std::string& name) {
    TAVIK::GridValues record;
    record.points = {2, 2, 2};
    record.steps = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    record.values.resize(8);
    const DataAdder<Compound> guard(nullptr, parent);
    return TAVIK::DataMaker::makeGrid(parent, name, std::move(record));
}

Compound* addTopLevelSet(const std::vector<Compound*>& members) {
    const DataAdder<Space> guard(nullptr, Space::instance());
    return TAVIK::DataMaker::makeSet(Space::instance(), "set", members);
}

} // namespace

class DeleteCommandsTest : public WindowTestCase {
    Q_OBJECT

    Compound* m_shown = nullptr;
    Compound* m_other = nullptr;

    void showWindow(int entry = 0) {
        openWindow();
        watchRows();
        if (entry >= 0)
            clickEntry(*m_window, entry);
    }
    void remove(const QString& label) { trigger(*m_window, QStringLiteral("Delete"), label); }

    // Whatever the tree's model says first, all of the data are still there.
    struct FirstSign {
        explicit FirstSign(const Vuxo& window) {
            const auto look = [this] {
                if (seen.isEmpty())
                    seen = itemsOf(Space::instance());
            };
            const QAbstractItemModel* model = treeOf(window)->model();
            QObject::connect(model, &QAbstractItemModel::modelAboutToBeReset, &context, look);
            QObject::connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, &context, look);
        }
        QObject context;
        QStringList seen; ///< empty when the tree was not cleared
    };

private slots:
    void init() override {
        TestCase::init();
        m_shown = addStructure("1abc");
        addGrid(m_shown, "grid");
        {
            const DataAdder<Compound> guard(nullptr, m_shown);
            TAVIK::DataMaker::makeCore(m_shown, "surface", "Surface");
        }
        m_other = addStructure("2abc");
    }

    void eachKindGoesAndNothingElse_data() { addKindRows(); }
    void eachKindGoesAndNothingElse() {
        QFETCH(int, index);
        const Command& kind = kinds[std::size_t(index)];
        Compound* victim = itemAt(m_shown, kind.path);
        QVERIFY(victim);
        QStringList expected = itemsOf(m_shown);
        // What is in an item follows it.
        const QStringList gone = itemsOf(victim);
        const qsizetype first = expected.indexOf(indented(kind.path));
        QVERIFY(first > 0);
        expected.remove(first, gone.size());
        if (kind.takesBond)
            QCOMPARE(expected.removeAll(indented(bond)), 1);
        selectElsewhere(victim, true);
        m_other->SetSelected(true);
        const QStringList others = itemsOf(m_other);
        showWindow();
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        OtherPlugin other;
        QStringList told;
        other.onDelete = [&] { told = rows(*m_window); };

        remove(kind.label);

        QCOMPARE(itemsOf(m_shown), expected);
        QCOMPARE(itemsOf(m_other), others);
        QCOMPARE(rows(*m_window), expected);
        QCOMPARE(told, expected);
        QCOMPARE(other.deletes, 1);
        QCOMPARE(other.updates + other.adds, 0);
        QCOMPARE(highlighted(*m_window), 0);
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc"})));
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QCOMPARE(treeOf(*m_window)->currentItem(), treeOf(*m_window)->firstChild());
        QCOMPARE(entries(*m_window),
                 (QStringList{m_shown->HasSelected() ? " / 1abc" : " _ 1abc", " X 2abc"}));
        QCOMPARE(takeMessages(), QStringList());
    }

    void twoSelectedAtomsGoAndTheListShowsThatNothingIsSelected() {
        for (const char* name : {"N", "SD"})
            itemAt(m_shown, met + QStringList(name[0] == 'N' ? "Backbone" : "Side chain") +
                                QStringList(name))
                ->SetSelected(true);
        showWindow();
        QCOMPARE(entries(*m_window).front(), " / 1abc");
        remove("Atom");
        QCOMPARE(atomsOf(m_shown).size(), std::size_t(4));
        QCOMPARE(selectedNames(m_shown), "");
        QCOMPARE(entries(*m_window).front(), " _ 1abc");
    }

    void theTreeIsClearedBeforeTheFirstItemGoes_data() {
        QTest::addColumn<QString>("label");
        for (const char* label :
             {"Tree", "Chain", "Group", "Residue", "Atom", "Bond", "Grid", "Surface", "All"})
            QTest::newRow(label) << QString::fromLatin1(label);
    }
    void theTreeIsClearedBeforeTheFirstItemGoes() {
        QFETCH(QString, label);
        m_shown->SetSelected(true);
        showWindow();
        const QStringList before = itemsOf(Space::instance());
        const FirstSign sign(*m_window);
        remove(label);
        QCOMPARE(sign.seen, before);
        QVERIFY(itemsOf(Space::instance()).size() < before.size());
    }

    void withoutASelectedItemTheTreeIsRebuiltAndNothingGoes_data() { addKindRows(); }
    void withoutASelectedItemTheTreeIsRebuiltAndNothingGoes() {
        QFETCH(int, index);
        m_other->SetSelected(true);
        showWindow();
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        const QStringList before = itemsOf(Space::instance());
        const FirstSign sign(*m_window);
        OtherPlugin other;
        remove(kinds[std::size_t(index)].label);
        QCOMPARE(itemsOf(Space::instance()), before);
        QVERIFY(!sign.seen.isEmpty());
        QCOMPARE(rows(*m_window), itemsOf(m_shown));
        QVERIFY(!treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QCOMPARE(other.deletes, 1);
    }

    void afterADeletionTheTreeIsAsIfItHadJustBeenMade() {
        for (unsigned seed = 0; seed != 150; ++seed) {
            std::mt19937 random(seed);
            Compound* shown = addStructure("3abc");
            Compound* groups = itemAt(shown, {"A", "Groups"});
            for (int i = 0; i != 6; ++i)
                addAtomTo(groups, "X" + std::to_string(i));
            showWindow(2);
            TreeView* tree = treeOf(*m_window);
            for (TreeItemIterator row(tree); row.current(); ++row) {
                if (random() % 3 == 0)
                    row.current()->setOpen(true);
                if (random() % 4 == 0)
                    row.current()->compound()->SetSelected(true);
            }
            if (random() % 4 == 0) // without a word to anybody
                TAVIK::DataMaker::makeCore(groups, "unknown", "Atom");
            if (random() % 3 != 0)
                m_window->commUpdate();
            if (random() % 4 == 0) {
                const memory_host::SpaceLock lock;
                QTest::keyClick(tree, Qt::Key_A, Qt::ControlModifier);
                takeMessages();
            }
            if (random() % 4 == 0)
                itemAt(shown, {"A"})->SetSelected(random() % 2 == 0);
            remove(kinds[random() % kinds.size()].label);

            Vuxo fresh;
            fresh.show();
            clickEntry(fresh, 2);
            QCOMPARE(looks(*m_window), looks(fresh));
            QCOMPARE(itemsOf(shown), rows(*m_window));
            QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
            // The rows go on as new ones do.
            addAtomTo(shown, "late");
            m_window->commUpdate();
            fresh.commUpdate();
            QCOMPARE(looks(*m_window), looks(fresh));
            m_tester.reset();
            m_window.reset();
            destroyElsewhere(shown);
            takeMessages();
        }
    }

    void treeDeletesTheShownItemIfAllOfItIsSelected() {
        selectElsewhere(m_shown, true);
        showWindow();
        OtherPlugin other;
        QStringList told;
        other.onDelete = [&] { told = entries(*m_window); };
        remove("Tree");
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QCOMPARE(told, QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(other.deletes, 1);
        clickEntry(*m_window, 0); // is not taken for the one shown before
        QCOMPARE(rows(*m_window).front(), "2abc");
    }

    void treeLeavesAnItemThatIsPartlySelected() {
        itemAt(m_shown, met)->SetSelected(true);
        m_other->SetSelected(true);
        showWindow();
        const QStringList before = itemsOf(Space::instance());
        const FirstSign sign(*m_window);
        OtherPlugin other;
        remove("Tree");
        QCOMPARE(itemsOf(Space::instance()), before);
        QVERIFY(sign.seen.isEmpty());
        QCOMPARE(rows(*m_window), itemsOf(m_shown));
        QCOMPARE(other.deletes, 0);
    }

    void allDeletesEverythingWithoutAQuestion() {
        addStructure("3abc");
        showWindow();
        OtherPlugin other;
        QVERIFY(!withQuestion([this] { remove("All"); }, pressCancel));
        QVERIFY(Space::instance()->ChildBegin() == Space::instance()->ChildEnd());
        QVERIFY(entries(*m_window).isEmpty());
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(other.deletes, 1);
        QCOMPARE(takeMessages(), QStringList());
        remove("All"); // and again, on nothing
        QCOMPARE(other.deletes, 2);
    }

    void afterAllANewFileCanBeOpened() {
        showWindow();
        remove("All");
        memory_host::openFile(structure("1ubq.pdb").toStdString());
        QCOMPARE(entries(*m_window), QStringList(" _ 1ubq"));
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "1ubq");
        QVERIFY(rows(*m_window).contains("   MET 1"));
        Space::instance()->SetSelected(true);
        remove("Residue");
        QVERIFY(atomsOf(Space::instance()).empty());
        QCOMPARE(rows(*m_window), itemsOf(*Space::instance()->ChildBegin()));
        remove("All");
        QVERIFY(entries(*m_window).isEmpty());
    }

    void withAnEmptyTreeOnlyAllDoesAnything() {
        Space::instance()->SetSelected(true);
        showWindow(-1);
        const QStringList before = itemsOf(Space::instance());
        OtherPlugin other;
        remove("Tree");
        for (const Command& kind : kinds)
            remove(kind.label);
        QCOMPARE(itemsOf(Space::instance()), before);
        QCOMPARE(other.deletes, 0);
        remove("All");
        QCOMPARE(itemsOf(Space::instance()).size(), 1);
        QVERIFY(entries(*m_window).isEmpty());
    }

    void aRefusedGuardIsSilentAndChangesNothing() {
        m_shown->SetSelected(true);
        showWindow();
        treeOf(*m_window)->expand(rowAt(*m_window, {"1abc", "A"}));
        const QStringList before = itemsOf(Space::instance());
        OtherPlugin other;
        const FirstSign sign(*m_window);
        {
            const memory_host::SpaceLock lock;
            for (const Command& kind : kinds)
                remove(kind.label);
            remove("Tree");
            remove("All");
        }
        QCOMPARE(itemsOf(Space::instance()), before);
        QVERIFY(sign.seen.isEmpty());
        QVERIFY(treeOf(*m_window)->isExpanded(rowAt(*m_window, {"1abc", "A"})));
        QCOMPARE(other.deletes, 0);
        QCOMPARE(takeMessages(), QStringList());
        remove("Tree");
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
    }

    void aDeletedAtomLeavesItsBondsAndItsSets() {
        Compound* alpha = itemAt(m_shown, met + QStringList({"Backbone", "CA"}));
        Compound* set = addTopLevelSet({alpha, itemAt(m_shown, met)});
        alpha->SetSelected(true);
        showWindow();
        remove("Atom");
        QVERIFY(!itemAt(m_shown, {"A", "Bonds"})->HasChildren());
        QCOMPARE(set->PartEnd() - set->PartBegin(), 1);
        itemAt(m_shown, met)->SetSelected(true);
        remove("Residue");
        QVERIFY(set->PartEnd() == set->PartBegin());
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ 2abc", " _ set"}));
    }

    void aShownSetLosesMembersEachOnceThoughItNamesThemTwice() {
        // A residue, and the composite that holds it.
        addTopLevelSet({itemAt(m_shown, met), itemAt(m_shown, {"A", "Groups"}), m_other});
        Space::instance()->SetSelected(true);
        showWindow(2);
        remove("Residue");
        QVERIFY(!itemAt(m_shown, met));
        QVERIFY(!itemAt(m_other, met));
        QCOMPARE(rows(*m_window).front(), "set");
        QCOMPARE(highlighted(*m_window), 2);
    }

    void aShownSetThatNamesAChainAndAnotherOneInsideOfItLosesBoth() {
        Compound* outer = itemAt(m_shown, {"A"});
        Compound* inner = TAVIK::DataMaker::makeCore(itemAt(outer, {"Groups"}), "B", "Molecule");
        Compound* innermost = TAVIK::DataMaker::makeCore(inner, "C", "Molecule");
        addTopLevelSet({innermost, inner, outer, itemAt(outer, {"Groups"})});
        Space::instance()->SetSelected(true);
        for (Compound* chain : {innermost, inner, outer})
            QVERIFY(chain->IsSelected());
        showWindow(2);
        remove("Chain");
        QVERIFY(!itemAt(m_shown, {"A"}));
        QVERIFY(itemAt(m_other, {"A"}));
        QCOMPARE(rows(*m_window), QStringList("set"));
    }

    void aShownSetWithTopLevelMembersKeepsItsPlaceInTheList() {
        Compound* map = addGrid(Space::instance(), "map");
        addTopLevelSet({map});
        map->SetSelected(true);
        showWindow(3);
        QCOMPARE(rows(*m_window), QStringList("set"));
        remove("Grid");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ 2abc", " _ set"}));
        QCOMPARE(rows(*m_window), QStringList("set"));
        QCOMPARE(highlighted(*m_window), 2);
        clickEntry(*m_window, 0);
        QCOMPARE(rows(*m_window).front(), "1abc");
    }

    void aShownBondGoesWithItsAtoms() {
        const std::vector<Compound*> atoms = atomsOf(m_shown);
        {
            const DataAdder<Space> guard(nullptr, Space::instance());
            memory_host::addBond(Space::instance(), atoms[0], atoms[1]);
        }
        Space::instance()->SetSelected(true);
        showWindow(2);
        QCOMPARE(rows(*m_window).size(), 1);
        remove("Atom");
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(entries(*m_window), (QStringList{" X 1abc", " X 2abc"}));
        QCOMPARE(highlighted(*m_window), -1);
        QCOMPARE(atomsOf(m_shown).size(), atoms.size() - 2);
    }

    void aBranchTakesTheMarksOfTheListAlong() {
        itemAt(m_shown, met)->SetSelected(true);
        showWindow();
        QVERIFY(withQuestion(
            [this] { clickRow(*m_window, QStringList("1abc") + met, Qt::MiddleButton); }, pressOk));
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", " _ 2abc"}));
    }

    void aRequestForTheTopRowOrNoRow() {
        showWindow();
        TreeItem* top = treeOf(*m_window)->firstChild();
        QVERIFY(!withQuestion(
            [this] {
                QMetaObject::invokeMethod(m_window.get(), "KillBranch", Q_ARG(TreeItem*, nullptr));
            },
            pressOk));
        QVERIFY(withQuestion(
            [&] { QMetaObject::invokeMethod(m_window.get(), "KillBranch", Q_ARG(TreeItem*, top)); },
            [](QMessageBox& question) {
                QCOMPARE(question.text(), "Delete 1abc?");
                pressOk(question);
            }));
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        QVERIFY(rows(*m_window).isEmpty());
    }

    void whatOthersDoWhenTheyAreToldIsShownToo() {
        m_shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        other.onDelete = [&] {
            other.onDelete = {};
            addStructure("new");
            destroyElsewhere(m_other);
        };
        remove("Residue");
        QCOMPARE(entries(*m_window).size(), 2);
        QCOMPARE(entries(*m_window).back(), " _ new");
        QVERIFY(rows(*m_window).isEmpty());
        QCOMPARE(takeMessages(), QStringList("Vuxo::commDelete(): Did somebody killed my data?"));
    }

    void aHandlerThatThrowsDoesNotStopADeletion() {
        m_shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        other.onDelete = [] { throw std::runtime_error("cannot take this"); };
        remove("Tree");
        QCOMPARE(takeHostLog().size(), 1);
        QCOMPARE(entries(*m_window), QStringList(" _ 2abc"));
        const DataPoint<Space> guard(nullptr, Space::instance());
        QVERIFY(guard.m_good);
    }

    void killItemsDoesNothing() {
        Space::instance()->SetSelected(true);
        showWindow();
        const QStringList before = itemsOf(Space::instance());
        OtherPlugin other;
        const FirstSign sign(*m_window);
        QVERIFY(QMetaObject::invokeMethod(m_window.get(), "KillItems"));
        QCOMPARE(itemsOf(Space::instance()), before);
        QVERIFY(sign.seen.isEmpty());
        QCOMPARE(other.deletes, 0);
    }
};

REGISTER_TEST(DeleteCommandsTest)
#include "DeleteCommandsTest.moc"
