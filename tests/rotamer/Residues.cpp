#include "Residues.h"

#include "AtomBonds.h"
#include "DataAdder.h"
#include "Rotamers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace rotamer_testing {

using rotamer::Point;

namespace {

constexpr double degree = std::numbers::pi / 180;

Point minus(const Point& a, const Point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Point& a, const Point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Point unit(const Point& a) {
    const double length = std::sqrt(dot(a, a));
    return {a[0] / length, a[1] / length, a[2] / length};
}
Point cross(const Point& a, const Point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Where an atom is at `length` from c, at `angle` to b, and at `turn` about b-c from a.
Point placed(const Point& a, const Point& b, const Point& c, double length, double angle,
             double turn) {
    const Point along = unit(minus(c, b));
    const Point up = unit(cross(minus(b, a), along));
    const Point side = cross(up, along);
    Point result = c;
    for (std::size_t i = 0; i != 3; ++i)
        result[i] += length * (-std::cos(angle * degree) * along[i] +
                               std::sin(angle * degree) * (std::cos(turn * degree) * side[i] +
                                                           std::sin(turn * degree) * up[i]));
    return result;
}

std::vector<AtomSpec> backbone() {
    const Point n{1.458, 0, 0};
    const Point ca{0, 0, 0};
    const Point c = placed({2, 1, 0}, n, ca, 1.525, 111, -50);
    return {{"N", "N", n},
            {"CA", "C", ca},
            {"C", "C", c},
            {"O", "O", placed(n, ca, c, 1.23, 120, 140)},
            {"CB", "C", placed(c, n, ca, 1.53, 110, -122)}};
}

std::vector<AtomSpec> moved(std::vector<AtomSpec> atoms, double x) {
    for (AtomSpec& atom : atoms)
        atom.place[0] += x;
    return atoms;
}

} // namespace

Items residuesOf(Compound* root) {
    Items residues;
    TAVIK::GetResidues(root, residues, true);
    return residues;
}

Compound* residue(const std::string& name) {
    for (Compound* item : residuesOf(TAVIK::Space::instance()))
        if (item->GetName() == name)
            return item;
    return nullptr;
}

std::string typeOf(const Compound* residue) {
    const std::string name = residue->GetName();
    return name.substr(0, name.find(' '));
}

Items atomsOf(Compound* item) {
    Items atoms;
    TAVIK::GetAtoms(item, atoms, true);
    return atoms;
}

unsigned int modelOf(const Compound* atom) {
    return static_cast<unsigned int>(
        std::stoul(dynamic_cast<const TAVIK::Atom&>(*atom).GetModelNumber()));
}

Items atomsOfModel(Compound* residue, unsigned int model) {
    Items atoms = atomsOf(residue);
    std::erase_if(atoms, [model](const Compound* atom) {
        return modelOf(atom) != 0 && modelOf(atom) != model;
    });
    return atoms;
}

std::set<unsigned int> modelsOf(Compound* residue) {
    std::set<unsigned int> models;
    for (const Compound* atom : atomsOf(residue))
        models.insert(modelOf(atom));
    models.erase(0);
    return models;
}

QStringList described(Compound* residue) {
    QStringList lines;
    for (const Compound* atom : atomsOf(residue)) {
        const Point at = placeOf(atom);
        lines << QStringLiteral("%1 %2 %3 %4 %5")
                     .arg(QString::fromLatin1(atom->GetName()))
                     .arg(modelOf(atom))
                     .arg(at[0])
                     .arg(at[1])
                     .arg(at[2]);
    }
    lines.sort();
    return lines;
}

QStringList bondsOf(Compound* residue, unsigned int model) {
    QStringList lines;
    const Items own = atomsOfModel(residue, model);
    for (Compound* atom : own) {
        std::vector<TAVIK::Bond*> bonds;
        TAVIK::GetBonds(dynamic_cast<TAVIK::Atom*>(atom), bonds);
        for (TAVIK::Bond* bond : bonds) {
            Compound* const other =
                *bond->PartBegin() == atom ? bond->PartBegin()[1] : bond->PartBegin()[0];
            const bool isInner = std::ranges::find(own, other) != own.end();
            const bool isOfOtherModel =
                !isInner && other->GetFQName().starts_with(residue->GetFQName() + "/");
            if (!isOfOtherModel)
                lines << QString::fromStdString(atom->GetName() + "-" +
                                                (isInner ? other->GetName() : other->GetFQName()));
        }
    }
    lines.sort();
    return lines;
}

Point placeOf(const Compound* atom) {
    const TAVIK::Vertex at = atom->GetPosition();
    return {at[0], at[1], at[2]};
}

double distance(const Point& a, const Point& b) {
    return std::sqrt(dot(minus(a, b), minus(a, b)));
}

double bondAngle(const Point& a, const Point& b, const Point& c) {
    const Point first = unit(minus(a, b));
    const Point second = unit(minus(c, b));
    // Of two unit vectors: precise for all angles.
    return 2 * std::atan2(distance(first, second), distance(first, minus({0, 0, 0}, second))) /
           degree;
}

// By the angle between the normals of the two planes; its sign from which side d is on.
double torsion(const Point& a, const Point& b, const Point& c, const Point& d) {
    const Point first = unit(cross(minus(b, a), minus(c, b)));
    const Point second = unit(cross(minus(c, b), minus(d, c)));
    const double size = bondAngle(first, {0, 0, 0}, second);
    return dot(first, minus(d, c)) < 0 ? -size : size;
}

double turnBetween(double a, double b) {
    double apart = std::fmod(std::abs(a - b), 360.0);
    return apart > 180 ? 360 - apart : apart;
}

std::vector<std::array<std::string, 4>> chiAtoms(const std::string& type) {
    static const std::map<std::string, std::vector<std::string>> ends = {
        {"ARG", {"CG", "CD", "NE", "CZ"}},
        {"ASN", {"CG", "OD1"}},
        {"ASP", {"CG", "OD1"}},
        {"CYS", {"SG"}},
        {"GLN", {"CG", "CD", "OE1"}},
        {"GLU", {"CG", "CD", "OE1"}},
        {"HIS", {"CG", "ND1"}},
        {"ILE", {"CG1", "CD1"}},
        {"LEU", {"CG", "CD1"}},
        {"LYS", {"CG", "CD", "CE", "NZ"}},
        {"MET", {"CG", "SD", "CE"}},
        {"MSE", {"CG", "SE", "CE"}},
        {"PHE", {"CG", "CD1"}},
        {"SER", {"OG"}},
        {"THR", {"OG1"}},
        {"TRP", {"CG", "CD1"}},
        {"TYR", {"CG", "CD1"}},
        {"VAL", {"CG1"}}};
    std::vector<std::array<std::string, 4>> all;
    std::vector<std::string> path = {"N", "CA", "CB"};
    if (const auto found = ends.find(type); found != ends.end())
        for (const std::string& end : found->second) {
            path.push_back(end);
            const std::size_t last = path.size() - 1;
            all.push_back({path[last - 3], path[last - 2], path[last - 1], path[last]});
        }
    return all;
}

std::map<std::string, Point> placesOf(const Items& atoms) {
    std::map<std::string, Point> places;
    for (const Compound* atom : atoms)
        places[atom->GetName()] = placeOf(atom);
    return places;
}

std::vector<double> chisOf(const std::string& type, const std::map<std::string, Point>& places) {
    std::vector<double> chis;
    for (const auto& names : chiAtoms(type)) {
        const bool isThere = std::ranges::all_of(
            names, [&](const std::string& name) { return places.contains(name); });
        chis.push_back(isThere ? torsion(places.at(names[0]), places.at(names[1]),
                                         places.at(names[2]), places.at(names[3]))
                               : std::numeric_limits<double>::quiet_NaN());
    }
    return chis;
}

Compound* addEntry(const std::string& name,
                   const std::map<std::string, std::vector<AtomSpec>>& residues) {
    using TAVIK::DataMaker;
    const DataAdder<Compound> guard(nullptr, TAVIK::Space::instance());
    Compound* const entry = DataMaker::makeCore(TAVIK::Space::instance(), name, "Composite");
    Compound* const chain = DataMaker::makeCore(entry, "A", "Molecule");
    Compound* const groups = DataMaker::makeCore(chain, "Groups", "Composite");
    Compound* const bonds = DataMaker::makeCore(chain, "Bonds", "Composite");
    Items all;
    for (const auto& [residueName, atoms] : residues) {
        Compound* const item = DataMaker::makeCore(groups, residueName, "Residue");
        for (const AtomSpec& atom : atoms)
            all.push_back(DataMaker::makeAtom(
                item,
                {.name = atom.name,
                 .type = atom.element,
                 .position = {static_cast<float>(atom.place[0]), static_cast<float>(atom.place[1]),
                              static_cast<float>(atom.place[2]), true},
                 .temperature = 12.5F,
                 .model = atom.model,
                 .details = {.occupancy = 0.75F, .serial = 17}}));
    }
    for (std::size_t i = 0; i != all.size(); ++i)
        for (std::size_t j = i + 1; j != all.size(); ++j) {
            const bool isHydrogen = all[i]->GetType() == "H" || all[j]->GetType() == "H";
            const unsigned int a = modelOf(all[i]);
            const unsigned int b = modelOf(all[j]);
            if (distance(placeOf(all[i]), placeOf(all[j])) < (isHydrogen ? 1.3 : 1.95) &&
                (a == b || a == 0 || b == 0))
                DataMaker::makeBond(bonds, all[i], all[j]);
        }
    return entry;
}

QString addRotamers(Compound* residue, QString* details) {
    auto* const one = dynamic_cast<TAVIK::Residue*>(residue);
    const rotamer::Report report = rotamer::addRotamers({&one, 1});
    if (details)
        *details = report.details.value(0);
    return report.lines.value(0);
}

std::vector<AtomSpec> serine(double x) {
    std::vector<AtomSpec> atoms = backbone();
    atoms.push_back(
        {"OG", "O", placed(atoms[0].place, atoms[1].place, atoms[4].place, 1.42, 111, 170)});
    atoms.push_back(
        {"HG", "H", placed(atoms[1].place, atoms[4].place, atoms[5].place, 0.96, 108, 60)});
    return moved(atoms, x);
}

std::vector<AtomSpec> leucine(double x) {
    std::vector<AtomSpec> atoms = backbone();
    const Point cg = placed(atoms[0].place, atoms[1].place, atoms[4].place, 1.53, 116, -65);
    atoms.push_back({"CG", "C", cg});
    atoms.push_back({"CD1", "C", placed(atoms[1].place, atoms[4].place, cg, 1.52, 110, 175)});
    atoms.push_back({"CD2", "C", placed(atoms[1].place, atoms[4].place, cg, 1.52, 110, -63)});
    return moved(atoms, x);
}

} // namespace rotamer_testing
