// The commands that switch residues among their alternative models, through their menu entries and
// keys.
#include "CommandTools.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "WindowTestCase.h"
#include "files/Files.h"
#include "items/Building.h"
#include "items/Invariants.h"
#include "items/SpaceLock.h"
#include "tree/TreeView.h"

#include <algorithm>
#include <set>
#include <stdexcept>

using namespace command_tools;
using namespace window_tools;
using TAVIK::Compound;
using TAVIK::Space;

namespace {

struct Command {
    const char* label;
    Qt::Key key;
    const char* line; ///< written before anything else
};

const Command commands[] = {
    {"FirstModel", Qt::Key_F, "Change to first model in selected Residues"},
    {"Next Model", Qt::Key_N, "Change to next model in selected Residues"},
    {"Prev Model", Qt::Key_P, "Change to previous model in selected Residues"}};
const Command& first = commands[0];
const Command& next = commands[1];
const Command& previous = commands[2];

void addCommandRows() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < int(std::size(commands)); ++i)
        QTest::newRow(commands[i].label) << i;
}

// An atom A that all share, and one a model: A1, A2 ...
ResidueSpec withModels(const std::string& name, const std::string& letter, unsigned int models) {
    ResidueSpec residue{name, {{letter, "C", {}}}};
    for (unsigned int model = 1; model <= models; ++model)
        residue.atoms.push_back({letter + std::to_string(model), "C", {}, model});
    return residue;
}

std::vector<Compound*> residuesOf(Compound* root) {
    std::vector<Compound*> residues;
    TAVIK::GetResidues(root, residues, true);
    return residues;
}

// What a plain reading says that one residue of a file shows.
struct PlainResidue {
    Compound* residue;
    std::vector<unsigned int> models; ///< ascending; empty where there are no alternatives
    std::size_t active = 0;

    explicit PlainResidue(Compound* item) : residue(item) {
        std::set<unsigned int> all;
        for (const Compound* atom : atomsOf(item))
            if (const unsigned int model = modelOf(atom))
                all.insert(model);
        models.assign(all.begin(), all.end());
    }
    static unsigned int modelOf(const Compound* atom) {
        return unsigned(std::stoul(dynamic_cast<const TAVIK::Atom&>(*atom).GetModelNumber()));
    }
    void step(const Command& command) {
        if (models.empty())
            return;
        if (&command == &first)
            active = 0;
        else
            active = (active + (&command == &next ? 1 : models.size() - 1)) % models.size();
    }
    unsigned int activeModel() const { return models.empty() ? 0 : models[active]; }
};

} // namespace

class ModelCommandsTest : public WindowTestCase {
    Q_OBJECT

    void modify(const Command& command) {
        trigger(*m_window, QStringLiteral("Modify"), command.label);
    }
    static QStringList lines(const std::vector<const Command*>& called) {
        QStringList all;
        for (const Command* command : called)
            all << command->line;
        return all;
    }

private slots:
    void everySelectedResidueIsSwitchedAndWrapsByItself() {
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 2), withModels("R 2", "B", 3),
                                            withModels("R 3", "C", 0), withModels("R 4", "D", 1),
                                            withModels("R 5", "E", 2)});
        Compound* other = addChain("2abc", {withModels("R 1", "F", 2)});
        for (const std::size_t i : {0, 1, 2, 3})
            residuesOf(shown)[i]->SetSelected(true);
        other->SetSelected(true);
        showWindow();
        QCOMPARE(visibleNames(shown), "A A1 B B1 C D D1 E E1");
        modify(next);
        QCOMPARE(visibleNames(shown), "A A2 B B2 C D D1 E E1");
        modify(next);
        QCOMPARE(visibleNames(shown), "A A1 B B3 C D D1 E E1");
        modify(next);
        QCOMPARE(visibleNames(shown), "A A2 B B1 C D D1 E E1");
        modify(previous);
        QCOMPARE(visibleNames(shown), "A A1 B B3 C D D1 E E1");
        modify(previous);
        QCOMPARE(visibleNames(shown), "A A2 B B2 C D D1 E E1");
        modify(first);
        QCOMPARE(visibleNames(shown), "A A1 B B1 C D D1 E E1");
        modify(first);
        QCOMPARE(visibleNames(shown), "A A1 B B1 C D D1 E E1");
        QCOMPARE(visibleNames(other), "F F1");
        // The selection stays.
        QVERIFY(residuesOf(shown)[1]->IsSelected() && !residuesOf(shown)[4]->HasSelected());
        QCOMPARE(takeMessages(),
                 lines({&next, &next, &next, &previous, &previous, &first, &first}));
    }

    void theKeysSwitchToo() {
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 3)});
        shown->SetSelected(true);
        showWindow();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        treeOf(*m_window)->setFocus();
        const QList<QPair<const Command*, QString>> steps = {
            {&previous, "A A3"}, {&previous, "A A2"}, {&first, "A A1"}, {&next, "A A2"}};
        for (const auto& [command, visible] : steps) {
            QTest::keyClick(treeOf(*m_window), command->key);
            QCOMPARE(visibleNames(shown), visible);
            QCOMPARE(takeMessages(), QStringList{command->line});
        }
    }

    void whatWasHiddenStaysHiddenInEveryModel() {
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 2)});
        shown->SetSelected(true);
        atomsOf(shown)[0]->SetVisible(false); // shared
        atomsOf(shown)[2]->SetVisible(false); // of model 2
        showWindow();
        QCOMPARE(visibleNames(shown), "A1");
        modify(next);
        QCOMPARE(visibleNames(shown), "");
        modify(next);
        QCOMPARE(visibleNames(shown), "A1");
        modify(previous);
        modify(first);
        QCOMPARE(visibleNames(shown), "A1");
        QCOMPARE(takeMessages().size(), 4);
    }

    void theWindowShowsTheVisibleModelBeforeOthersHear() {
        Compound* shown = addChain("1abc", {{"R 1", {{"A1", "C", {}, 1}, {"A2", "C", {}, 2}}}});
        shown->SetSelected(true);
        atomsOf(shown)[1]->SetVisible(false);
        showWindow();
        OtherPlugin other;
        QStringList seen;
        other.onUpdate = [&] {
            seen << entries(*m_window)
                 << cells(*m_window, {"1abc", "A", "Groups", "R 1", "Group", "A1"}).at(1);
        };
        modify(next);
        QCOMPARE(seen, (QStringList{"OX 1abc", "No"}));
        seen.clear();
        modify(next);
        QCOMPARE(seen, (QStringList{" X 1abc", "Yes"}));
        QCOMPARE(other.updates, 2);
        QCOMPARE(takeMessages(), lines({&next, &next}));
    }

    void withNoResidueSelectedOnlyTheTreeIsRefreshed_data() { addCommandRows(); }
    void withNoResidueSelectedOnlyTheTreeIsRefreshed() {
        QFETCH(int, index);
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 3)});
        residuesOf(shown)[0]->NextModel();
        Compound* second = addLine("2abc", {0});
        showWindow();
        second->SetVisible(false); // nobody is told
        OtherPlugin other;
        modify(commands[index]);
        QCOMPARE(visibleNames(shown), "A A2");
        QCOMPARE(entries(*m_window), (QStringList{" _ 1abc", "O_ 2abc"}));
        QCOMPARE(other.updates, 1);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
    }

    void aSelectedAtomIsNotItsResidue() {
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 2)});
        atomsOf(shown)[0]->SetSelected(true);
        atomsOf(shown)[1]->SetSelected(true);
        showWindow();
        modify(next);
        QCOMPARE(visibleNames(shown), "A A1");
        atomsOf(shown)[2]->SetSelected(true); // now all of them are
        modify(next);
        QCOMPARE(visibleNames(shown), "A A2");
        QCOMPARE(takeMessages(), lines({&next, &next}));
    }

    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens_data() { addCommandRows(); }
    void theLineIsWrittenAlsoWithoutATreeAndNothingElseHappens() {
        QFETCH(int, index);
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 3)});
        residuesOf(shown)[0]->NextModel();
        shown->SetSelected(true);
        openWindow();
        OtherPlugin other;
        const memory_host::SpaceLock lock; // a guard would be refused, and that said
        modify(commands[index]);
        QCOMPARE(visibleNames(shown), "A A2");
        QCOMPARE(other.updates, 0);
        QCOMPARE(takeMessages(), QStringList{commands[index].line});
    }

    void aRefusedCommandChangesNothingAndSaysSoOnce_data() { addCommandRows(); }
    void aRefusedCommandChangesNothingAndSaysSoOnce() {
        QFETCH(int, index);
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 3)});
        residuesOf(shown)[0]->NextModel();
        shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        {
            const memory_host::SpaceLock lock;
            modify(commands[index]);
        }
        QCOMPARE(takeMessages(), (QStringList{commands[index].line, refused}));
        QCOMPARE(visibleNames(shown), "A A2");
        QCOMPARE(other.updates + other.adds + other.deletes, 0);
        modify(commands[index]);
        QVERIFY(visibleNames(shown) != "A A2");
        QCOMPARE(other.updates, 1);
        takeMessages();
    }

    void whatOthersDoWhenTheyHearIsNoHarm_data() {
        QTest::addColumn<QString>("deed");
        for (const char* deed :
             {"throws", "destroys the shown item", "destroys the active model", "ends the window"})
            QTest::newRow(deed) << deed;
    }
    void whatOthersDoWhenTheyHearIsNoHarm() {
        QFETCH(QString, deed);
        Compound* shown = addChain("1abc", {withModels("R 1", "A", 3)});
        shown->SetSelected(true);
        showWindow();
        OtherPlugin other;
        other.onUpdate = [&] {
            if (deed == "throws")
                throw std::runtime_error("cannot take this");
            if (deed == "destroys the shown item")
                destroyElsewhere(shown);
            if (deed == "destroys the active model")
                destroyElsewhere(atomsOf(shown)[2]);
            if (deed == "ends the window")
                m_window.reset();
        };
        modify(next);
        QStringList expected{next.line};
        if (deed.startsWith("destroys")) {
            expected << "Vuxo::commDelete(): Did somebody killed my data?";
            QCOMPARE(rows(*m_window), QStringList());
        }
        QCOMPARE(takeMessages(), expected);
        QCOMPARE(takeHostLog().size(), deed == "throws" ? 1 : 0);
        if (deed == "throws" || deed == "ends the window")
            QCOMPARE(visibleNames(shown), "A A2");
        if (deed == "destroys the active model")
            QCOMPARE(visibleNames(shown), "A A1");
    }

    // Two and three conformers, and positions where they are not even the same residue.
    void aRealStructureSwitchesAsAPlainReadingSays() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        std::vector<PlainResidue> plain;
        for (Compound* residue : residuesOf(shown))
            plain.emplace_back(residue);
        QCOMPARE(plain.size(), 46U);
        const auto withConformers = [&](std::size_t count) {
            return std::count_if(plain.begin(), plain.end(), [count](const PlainResidue& each) {
                return each.models.size() == count;
            });
        };
        QCOMPARE(withConformers(2), 14);
        QCOMPARE(withConformers(3), 3);
        QCOMPARE(withConformers(0), 29);

        std::set<const Compound*> hidden;
        const std::vector<Compound*> atoms = atomsOf(shown);
        for (std::size_t i = 0; i < atoms.size(); i += 7) {
            atoms[i]->SetVisible(false);
            hidden.insert(atoms[i]);
        }
        shown->SetSelected(true);
        plain[7].residue->SetSelected(false); // one with alternatives does not take part
        QCOMPARE(plain[7].models.size(), 2U);
        showWindow();
        OtherPlugin other;
        const std::vector<const Command*> steps = {
            &next,     &next,     &next,  &next,     &previous, &next,  &previous, &previous,
            &previous, &previous, &first, &previous, &first,    &first, &next};
        for (const Command* command : steps) {
            modify(*command);
            for (PlainResidue& each : plain) {
                if (&each != &plain[7])
                    each.step(*command);
                QCOMPARE(memory_host::activeModel(each.residue), each.activeModel());
                for (const Compound* atom : atomsOf(each.residue)) {
                    const unsigned int model = PlainResidue::modelOf(atom);
                    const bool visible =
                        !hidden.contains(atom) && (model == 0 || model == each.activeModel());
                    QVERIFY2(atom->IsVisible() == visible, atom->GetFQName().c_str());
                }
            }
            QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        }
        QCOMPARE(other.updates, int(steps.size()));
        QCOMPARE(takeMessages(), lines(steps));
    }

    void aPositionWithTwoResidueNamesShowsOneOfThem() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        Compound* shown = *Space::instance()->ChildBegin();
        shown->SetSelected(true);
        showWindow();
        const auto visibleAt = [&](const QString& residue) {
            QStringList names = visibleNames(itemAt(shown, {"A", "Groups", residue})).split(u' ');
            names.removeIf([](const QString& name) { return name.startsWith(u'H'); });
            names.sort();
            return names.join(u' ');
        };
        const QString proline = "C CA CB CD CG N O";
        const QString serine = "C CA CB N O OG";
        const QString leucine = "C CA CB CD1 CD2 CG N O";
        const QString isoleucine = "C CA CB CD1 CG1 CG2 N O";
        const QList<QPair<QString, QString>> turns = {{proline, leucine},
                                                      {serine, isoleucine},
                                                      {serine, isoleucine},
                                                      {proline, leucine},
                                                      {serine, isoleucine}};
        for (const auto& [at22, at25] : turns) {
            QCOMPARE(visibleAt("PRO,SER 22"), at22);
            QCOMPARE(visibleAt("LEU,ILE 25"), at25);
            modify(next);
        }
        // Three models: two steps back from the last are the first.
        modify(previous);
        modify(previous);
        QCOMPARE(visibleAt("PRO,SER 22"), proline);
        modify(previous);
        QCOMPARE(visibleAt("LEU,ILE 25"), isoleucine);
        modify(first);
        QCOMPARE(visibleAt("LEU,ILE 25"), leucine);
        QCOMPARE(takeMessages().size(), turns.size() + 4);
    }
};

REGISTER_TEST(ModelCommandsTest)
#include "ModelCommandsTest.moc"
