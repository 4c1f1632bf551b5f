// Rotamers as models of residues: what is added, what stays, and what Next and Prev Model show.
#include "ActiveModel.h"
#include "Conformation.h"
#include "NearAtoms.h"
#include "Residues.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "files/Files.h"
#include "items/Invariants.h"
#include "services/Log.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

using namespace rotamer_testing;
using rotamer::Point;

namespace {

/// What a subscriber hears.
class Listener : public Subscriber {
public:
    void commUpdate() override { heard << "update"; }
    void commAdd() override { heard << "add"; }
    void commDelete() override { heard << "delete"; }
    QStringList heard;
};

QStringList shown(Compound* residue) {
    QStringList names;
    for (const Compound* atom : atomsOf(residue))
        if (atom->IsVisible())
            names << QString::fromLatin1(atom->GetName());
    names.sort();
    return names;
}

QStringList namesOf(const Items& atoms) {
    QStringList names;
    for (const Compound* atom : atoms)
        names << QString::fromLatin1(atom->GetName());
    names.sort();
    return names;
}

} // namespace

class RotamerModelsTest : public test_support::TestCase {
    Q_OBJECT

    QString add(Compound* residue) {
        QString details;
        const QString line = addRotamers(residue, &details);
        m_log += takeHostLog();
        if (!details.isEmpty())
            m_log << details;
        return line;
    }
    // The atoms that each model has must be those of the first, at the table's angles.
    void checkRotamers(Compound* residue, unsigned int first) {
        const std::string type = typeOf(residue);
        const auto rotamers = rotamer::rotamersOf(type == "MSE" ? "MET" : type);
        const QStringList names = namesOf(atomsOfModel(residue, *modelsOf(residue).begin()));
        for (std::size_t i = 0; i != rotamers.size(); ++i) {
            const Items atoms = atomsOfModel(residue, first + unsigned(i));
            QCOMPARE(namesOf(atoms), names);
            const std::vector<double> chis = chisOf(type, placesOf(atoms));
            for (std::size_t chi = 0; chi != chis.size(); ++chi)
                QVERIFY(turnBetween(chis[chi], rotamers[i].chi[chi]) < 1e-3); // in floats
        }
    }

    QStringList m_log;

private slots:
    void init() override {
        TestCase::init();
        m_log.clear();
    }
    void cleanup() override {
        memory_host::setLogLevel(memory_host::LogLevel::Usual);
        QCOMPARE(memory_host::checkInvariants(), std::vector<std::string>());
        TestCase::cleanup();
    }

    void rotamersAreModelsAfterTheFirst() {
        Compound* const entry = addEntry("1abc", {{"LEU 1", leucine()}, {"SER 9", serine(20)}});
        Compound* const leu = residue("LEU 1");
        const QStringList before = shown(leu);
        const QStringList other = described(residue("SER 9"));
        Listener listener;
        memory_host::setLogLevel(memory_host::LogLevel::Debug);
        QCOMPARE(add(leu), "5 rotamers of LEU 1 are its models 2 to 6; model 1 is 0° from mt. "
                           "Best: model 6, mt (59 %), with no clash.");
        QCOMPARE(listener.heard, QStringList("add"));
        QCOMPARE(modelsOf(leu), (std::set<unsigned int>{1, 2, 3, 4, 5, 6}));
        checkRotamers(leu, 2);
        QCOMPARE(TAVIK::GetActiveModel(leu), 1U);
        QCOMPARE(shown(leu), before);
        QCOMPARE(described(residue("SER 9")), other);
        // The backbone is shared: only what turns is there once a model.
        QCOMPARE(atomsOf(leu).size(), 5U + 6 * 3);
        QCOMPARE(atomsOf(entry).size(), 5U + 6 * 3 + 7);
        QCOMPARE(m_log.filter("Add 5 rotamers of LEU 1").size(), 1);
    }

    void theFilesModelStaysWhereItIs() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        Compound* const leu = residue("LEU 1");
        const auto places = placesOf(atomsOf(leu));
        add(leu);
        QVERIFY(placesOf(atomsOfModel(leu, 1)) == places);
    }

    void everyRotamerHasTheBondsOfTheFile() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        for (const char* name : {"ARG 12", "TRP 47", "ILE 27"}) {
            Compound* const item = residue(name);
            if (!item)
                QFAIL(name);
            const QStringList before = bondsOf(item, 1);
            add(item);
            QVERIFY(modelsOf(item).size() > 5);
            for (const unsigned int model : modelsOf(item))
                QCOMPARE(bondsOf(item, model), before);
        }
    }

    void copiesHaveTheValuesOfTheirAtoms() {
        addEntry("1abc", {{"SER 1", serine()}});
        Compound* const ser = residue("SER 1");
        for (Compound* atom : atomsOf(ser))
            if (atom->GetName() == "OG")
                atom->SetColor(Color(0xff123456U));
        add(ser);
        int copies = 0;
        for (const Compound* item : atomsOf(ser)) {
            const auto& atom = dynamic_cast<const TAVIK::Atom&>(*item);
            QCOMPARE(atom.GetTemperature(), 12.5F);
            const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(&atom);
            QCOMPARE(details.occupancy, 0.75F);
            const bool isCopy = modelOf(item) > 1;
            QCOMPARE(details.serial, isCopy ? TAVIK::AtomDetails::noSerial : 17);
            if (item->GetName() == "OG")
                QCOMPARE(item->GetColor().rgba(), 0xff123456U);
            copies += isCopy ? 1 : 0;
        }
        QCOMPARE(copies, 3 * 2); // OG and HG in three rotamers
    }

    // So that Next Model works on what was selected before.
    void whatIsSelectedStaysWhollySelected() {
        addEntry("1abc", {{"LEU 1", leucine()}, {"SER 9", serine(20)}});
        residue("LEU 1")->SetSelected(true);
        add(residue("LEU 1"));
        QVERIFY(residue("LEU 1")->IsSelected());
        add(residue("SER 9"));
        QVERIFY(!residue("SER 9")->HasSelected());
    }

    void whatIsHiddenStaysHiddenInEveryModel() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        Compound* const leu = residue("LEU 1");
        for (Compound* atom : atomsOf(leu))
            if (atom->GetName() == "CD1" || atom->GetName() == "CA")
                atom->SetVisible(false);
        const QStringList before = shown(leu);
        add(leu);
        for (int i = 0; i != 7; ++i) {
            QCOMPARE(shown(leu), before);
            leu->NextModel();
        }
        leu->SetVisible(true);
        QVERIFY(shown(leu).contains("CD1"));
    }

    void theStepsGoThroughTheModelsAndBack() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        Compound* const leu = residue("LEU 1");
        const QStringList names = shown(leu);
        add(leu);
        for (const unsigned int expected : {2U, 3U, 4U, 5U, 6U, 1U, 2U}) {
            leu->NextModel();
            QCOMPARE(TAVIK::GetActiveModel(leu), expected);
            QCOMPARE(shown(leu), names);
        }
        leu->PrevModel();
        leu->PrevModel();
        QCOMPARE(TAVIK::GetActiveModel(leu), 6U);
        leu->FirstModel();
        QCOMPARE(TAVIK::GetActiveModel(leu), 1U);
    }

    void addedTwiceTheyAreThereOnce() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        Compound* const leu = residue("LEU 1");
        add(leu);
        const QStringList before = described(leu);
        leu->NextModel();
        QCOMPARE(add(leu), "No rotamers of LEU 1: they are among its models already.");
        QCOMPARE(described(leu), before);
    }

    // One of them was destroyed, and comes back under a number of its own.
    void whatIsMissingIsAddedAgain() {
        addEntry("1abc", {{"LEU 1", leucine()}});
        Compound* const leu = residue("LEU 1");
        add(leu);
        for (Compound* atom : atomsOf(leu))
            if (modelOf(atom) == 3)
                TAVIK::DataMaker::Destroy(atom);
        QVERIFY(add(leu).startsWith("A rotamer of LEU 1 is its model 7;"));
        QCOMPARE(modelsOf(leu), (std::set<unsigned int>{1, 2, 4, 5, 6, 7}));
    }

    void residuesWithModelsKeepThem() {
        memory_host::openFile(structure("1ejg.pdb").toStdString());
        int withModels = 0;
        int withShared = 0;
        for (Compound* item : residuesOf(TAVIK::Space::instance())) {
            const std::set<unsigned int> models = modelsOf(item);
            if (models.empty())
                continue;
            std::map<unsigned int, std::map<std::string, Point>> places;
            std::map<unsigned int, QStringList> bonds;
            std::map<unsigned int, QStringList> names;
            for (const unsigned int model : models) {
                item->FirstModel();
                while (TAVIK::GetActiveModel(item) != model)
                    item->NextModel();
                names[model] = shown(item);
                places[model] = placesOf(atomsOfModel(item, model));
                bonds[model] = bondsOf(item, model);
            }
            const rotamer::Conformation conformation = rotamer::readConformation(item);
            const QString line = add(item);
            if (line.startsWith("No "))
                continue;
            ++withModels;
            const unsigned int last = *models.rbegin();
            QVERIFY(line.contains(QString("models %1 to ").arg(last + 1)));
            for (const unsigned int model : models) {
                QVERIFY(placesOf(atomsOfModel(item, model)) == places[model]);
                QCOMPARE(bondsOf(item, model), bonds[model]);
                item->FirstModel();
                while (TAVIK::GetActiveModel(item) != model)
                    item->NextModel();
                QCOMPARE(shown(item), names[model]);
            }
            for (const rotamer::ConformationAtom& atom : conformation.atoms)
                if (atom.model == 0 && modelOf(atom.item) != 0) {
                    ++withShared;
                    break;
                }
            checkRotamers(item, last + 1);
        }
        QVERIFY(withModels >= 8);
        QVERIFY(withShared >= 1);
    }

    // Two conformers from CG on, which share CB.
    void laterModelsThatSharedAMovedAtomGetACopyOfIt() {
        std::vector<AtomSpec> atoms = leucine();
        for (std::size_t i = 0, count = atoms.size(); i != count; ++i) {
            if (atoms[i].name != "CD1" && atoms[i].name != "CD2")
                continue;
            atoms[i].model = 1;
            AtomSpec second = atoms[i];
            second.model = 2;
            second.place[0] += 0.2;
            atoms.push_back(second);
        }
        addEntry("1abc", {{"LEU 1", atoms}});
        Compound* const leu = residue("LEU 1");
        const QStringList bonds = bondsOf(leu, 2);
        const auto places = placesOf(atomsOfModel(leu, 2));
        QVERIFY(add(leu).startsWith("5 rotamers of LEU 1 are its models 3 to 7"));
        QVERIFY(placesOf(atomsOfModel(leu, 2)) == places);
        QCOMPARE(bondsOf(leu, 2), bonds);
        leu->NextModel();
        QCOMPARE(shown(leu), namesOf(atomsOfModel(leu, 2)));
        QCOMPARE(add(leu), "No rotamers of LEU 1: they are among its models already.");
    }

    void selenomethionineHasTheRotamersOfMethionine() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        Items methionines = residuesOf(TAVIK::Space::instance());
        std::erase_if(methionines, [](const Compound* item) { return typeOf(item) != "MET"; });
        std::vector<AtomSpec> atoms;
        for (const Compound* atom : atomsOf(methionines.at(0)))
            atoms.push_back({atom->GetName() == "SD" ? "SE" : atom->GetName(),
                             atom->GetName() == "SD" ? "Se" : atom->GetType(), placeOf(atom)});
        addEntry("1abc", {{"MSE 999", atoms}});
        QVERIFY(add(residue("MSE 999")).startsWith("13 rotamers of MSE 999 are"));
        checkRotamers(residue("MSE 999"), 2);
    }

    void theMessageNamesRotamerShareAndWorstClash() {
        // A wall beside LEU's side chain where the most frequent rotamer is.
        std::vector<AtomSpec> atoms = leucine();
        std::vector<AtomSpec> wall = {{"C1", "C", atoms[5].place}};
        for (std::size_t i = 0; i != 3; ++i)
            wall[0].place[i] += 1.5 * (atoms[5].place[i] - atoms[4].place[i]);
        addEntry("1abc", {{"LEU 1", atoms}, {"UNL 2", wall}});
        QVERIFY(atoms[5].name == "CG");
        const QString line = add(residue("LEU 1"));
        const QRegularExpression best(
            R"(Best: model \d, [pmt]{2} \(\d+ %\), with (no clash|.*/UNL 2/C1)\.)");
        QVERIFY2(best.match(line).hasMatch(), qPrintable(line));
        const QStringList details =
            m_log.filter("Rotamers of /1abc/A/Groups/LEU 1: model 2, pp (1");
        QCOMPARE(details.size(), 1);
        QCOMPARE(details[0].count(QRegularExpression(R"(model \d, [pmt]{2} \(\d+ %\), with )")), 5);
        QVERIFY2(details[0].contains(" Å with /1abc/A/Groups/UNL 2/C1"), qPrintable(details[0]));
    }

    // The message is the log's, told again by hand: fewest clashes, then the least deep one.
    void theBestIsTheOneWithTheFewestClashes() {
        memory_host::openFile(structure("1tii.pdb").toStdString());
        int compared = 0;
        for (Compound* item : residuesOf(TAVIK::Space::instance())) {
            if (typeOf(item) != "LEU" && typeOf(item) != "PHE" && typeOf(item) != "ILE")
                continue;
            m_log.clear();
            const QString line = add(item);
            const QStringList details = m_log.filter("Rotamers of ");
            if (details.size() != 1)
                continue;
            const QString best = line.section("Best: ", 1).chopped(1);
            const auto clashesIn = [](const QString& text) {
                if (text.endsWith("no clash"))
                    return 0;
                return text.contains("with a clash")
                           ? 1
                           : text.section("with ", 1, 1).section(' ', 0, 0).toInt();
            };
            QVERIFY(details[0].contains(best));
            for (const QString& each : details[0].section(": ", 1).split("; "))
                QVERIFY2(clashesIn(each) >= clashesIn(best), qPrintable(each));
            ++compared;
        }
        QVERIFY(compared > 40);
    }

    // A neighbour is in the way with the model that it shows.
    void neighboursCountAsTheyAreShown() {
        std::vector<AtomSpec> atoms = leucine();
        const std::vector<AtomSpec> other = {{"C1", "C", {40, 0, 0}, 1},
                                             {"C1", "C", {-6, 0, 0}, 2}};
        addEntry("1abc", {{"LEU 1", atoms}, {"UNL 2", other}});
        const auto neighbours = [&] {
            const std::array<Point, 1> ca = {atoms[1].place};
            return rotamer::NearAtoms(ca, 13).neighbours(ca[0], residue("LEU 1")).size();
        };
        QCOMPARE(neighbours(), 0U);
        residue("UNL 2")->NextModel();
        QCOMPARE(neighbours(), 1U);
    }

    void atomsOfOtherEntriesAndWatersGiveWay() {
        Point at = leucine()[5].place;
        at[2] += 2.1;
        addEntry("1abc", {{"HOH 7", {{"O", "O", at}}}, {"LEU 1", leucine()}});
        addEntry("2abc", {{"UNL 2", {{"C1", "C", at}}}});
        add(residue("LEU 1"));
        QCOMPARE(m_log.filter("Rotamers of ").size(), 1);
        QVERIFY(!m_log.filter("Rotamers of ")[0].contains("clash "));
        QCOMPARE(m_log.filter("Rotamers of ")[0].count("no clash"), 5);
    }
};

REGISTER_TEST(RotamerModelsTest)
#include "RotamerModelsTest.moc"
