// The table of rotamers against what its publication says of it: how many there are of each
// residue, which share of the side chains they cover, and names that tell the angles.
#include "sidechain/RotamerTable.h"
#include "TestSupport.h"

#include <cctype>
#include <cmath>
#include <map>
#include <set>

using rotamer::allRotamers;
using rotamer::Rotamer;

namespace {

struct Published {
    std::size_t rotamers;
    int angles;
    int share; ///< percent of the side chains that the rotamers cover: the sum of their shares
};

const std::map<std::string, Published> published = {
    {"ARG", {34, 4, 86}}, {"ASN", {7, 2, 94}},  {"ASP", {5, 2, 97}},  {"CYS", {3, 1, 99}},
    {"GLN", {9, 3, 89}},  {"GLU", {8, 3, 90}},  {"HIS", {8, 2, 94}},  {"ILE", {7, 2, 100}},
    {"LEU", {5, 2, 93}},  {"LYS", {27, 4, 80}}, {"MET", {13, 3, 87}}, {"PHE", {4, 2, 99}},
    {"PRO", {3, 1, 93}},  {"SER", {3, 1, 99}},  {"THR", {3, 1, 99}},  {"TRP", {7, 2, 96}},
    {"TYR", {4, 2, 99}},  {"VAL", {3, 1, 99}}};

} // namespace

class RotamerTableTest : public test_support::TestCase {
    Q_OBJECT
private slots:
    void thereAre153OfEighteenResidues() {
        QCOMPARE(allRotamers().size(), 153U);
        std::map<std::string, std::size_t> counts;
        for (const Rotamer& rotamer : allRotamers())
            ++counts[std::string(rotamer.residue)];
        QCOMPARE(counts.size(), published.size());
        for (const auto& [residue, values] : published) {
            QCOMPARE(counts[residue], values.rotamers);
            QCOMPARE(rotamer::rotamersOf(residue).size(), values.rotamers);
        }
    }

    void theSharesOfAResidueAddUpToWhatTheLibraryCovers() {
        for (const auto& [residue, values] : published) {
            int sum = 0;
            for (const Rotamer& rotamer : rotamer::rotamersOf(residue))
                sum += rotamer.percent;
            QCOMPARE(sum, values.share);
        }
    }

    void sharesAreThoseOfTheObservations() {
        for (const auto& [residue, values] : published) {
            double observations = 0;
            for (const Rotamer& rotamer : rotamer::rotamersOf(residue))
                observations += rotamer.observations;
            for (const Rotamer& rotamer : rotamer::rotamersOf(residue)) {
                // The whole, the side chains without a rotamer included, is known to a percent.
                const double share = rotamer.observations / observations * values.share;
                QVERIFY2(
                    std::abs(share - rotamer.percent) < 1.6,
                    qPrintable(QString::fromStdString(residue + " " + std::string(rotamer.name))));
            }
        }
    }

    void aResidueWithoutRotamersHasNone() {
        for (const char* name : {"ALA", "GLY", "HOH", "", "leu", "MSE", "AR", "ARGX", "ZZZ"})
            QVERIFY(rotamer::rotamersOf(name).empty());
    }

    void anglesAreAsManyAsTheResidueHasAndInRange() {
        for (const Rotamer& rotamer : allRotamers()) {
            QCOMPARE(rotamer.angles, published.at(std::string(rotamer.residue)).angles);
            for (std::size_t i = 0; i != rotamer.chi.size(); ++i) {
                QVERIFY(rotamer.chi[i] > -180 && rotamer.chi[i] <= 180);
                QVERIFY(int(i) < rotamer.angles || rotamer.chi[i] == 0);
            }
            QVERIFY(rotamer.observations > 0 && rotamer.percent >= 0 && rotamer.percent <= 100);
        }
    }

    void namesAreUniqueInAResidue() {
        std::set<std::pair<std::string_view, std::string_view>> names;
        for (const Rotamer& rotamer : allRotamers())
            QVERIFY(names.insert({rotamer.residue, rotamer.name}).second);
    }

    // p, t, m: about +60, 180, -60 degrees, wherever they stand; a number is that of the last
    // angle. PRO's endo and exo, and the names of CG of a ring, are others.
    void namesTellTheAngles() {
        for (const Rotamer& rotamer : allRotamers()) {
            if (rotamer.residue == "PRO")
                continue;
            const std::string name(rotamer.name);
            std::size_t at = 0;
            for (; at != name.size() && std::isalpha(static_cast<unsigned char>(name[at])); ++at) {
                const double middle = name[at] == 'p' ? 60 : name[at] == 'm' ? -60 : 180;
                QVERIFY2(std::abs(std::remainder(rotamer.chi[at] - middle, 360)) <= 45,
                         name.c_str());
            }
            if (at == name.size())
                QCOMPARE(int(at), rotamer.angles);
            else {
                QCOMPARE(int(at) + 1, rotamer.angles);
                const double named = std::stod(name.substr(at));
                QVERIFY2(std::abs(std::remainder(rotamer.chi[at] - named, 360)) <= 20,
                         name.c_str());
            }
        }
    }
};

REGISTER_TEST(RotamerTableTest)
#include "RotamerTableTest.moc"
