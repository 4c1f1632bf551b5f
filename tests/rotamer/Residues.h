// What the tests of rotamers share: residues of files and of their own in the data space, and
// geometry written down apart from that of the plug-in.
#pragma once

#include "AtomDetails.h"
#include "DataMaker.h"
#include "Kinds.h"
#include "Space.h"
#include "Traversal.h"
#include "sidechain/SideChain.h"

#include <QString>
#include <QStringList>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace rotamer_testing {

using TAVIK::Compound;
using Items = std::vector<Compound*>;

/// All residues below an item.
Items residuesOf(Compound* root);
/// The first residue below the space with that name, as "LEU 45"; null where there is none.
Compound* residue(const std::string& name);
/// "LEU" of "LEU 45".
std::string typeOf(const Compound* residue);

Items atomsOf(Compound* item);
/// The atoms of a residue that belong to model `model` or to all.
Items atomsOfModel(Compound* residue, unsigned int model);
unsigned int modelOf(const Compound* atom);
/// The numbers of the models of a residue, without 0.
std::set<unsigned int> modelsOf(Compound* residue);
/// Names, places and models of all atoms of the residue, a line each, sorted.
QStringList described(Compound* residue);
/// The bonds of each atom of that model, as "CA-CB", sorted; to other residues with their names.
QStringList bondsOf(Compound* residue, unsigned int model);

rotamer::Point placeOf(const Compound* atom);
double distance(const rotamer::Point& a, const rotamer::Point& b);
/// Degrees.
double bondAngle(const rotamer::Point& a, const rotamer::Point& b, const rotamer::Point& c);
double torsion(const rotamer::Point& a, const rotamer::Point& b, const rotamer::Point& c,
               const rotamer::Point& d);
/// The difference of two angles in degrees, from 0 to 180.
double turnBetween(double a, double b);

/// The names of the atoms that a chi angle of a residue is measured by, as IUPAC defines it; in
/// order from chi 1 on.
std::vector<std::array<std::string, 4>> chiAtoms(const std::string& type);
/// The chi angles of the atoms; NaN where one is missing.
std::vector<double> chisOf(const std::string& type,
                           const std::map<std::string, rotamer::Point>& places);
std::map<std::string, rotamer::Point> placesOf(const Items& atoms);

/// Adds a chain "A" of residues with the given atoms to a new entry of the name `name`, and bonds
/// between atoms nearer than 1.95 Å, or 1.3 Å with a hydrogen.
struct AtomSpec {
    std::string name;
    std::string element;
    rotamer::Point place{};
    unsigned int model = 0;
};
Compound* addEntry(const std::string& name,
                   const std::map<std::string, std::vector<AtomSpec>>& residues);
/// Asks for rotamers of one residue, and returns the line on it; and where wanted, the one with all
/// of its new models.
QString addRotamers(Compound* residue, QString* details = nullptr);

/// Residues with CA at (x, 0, 0) in ideal geometry: a serine with HG and without other hydrogens,
/// and a leucine with chi angles of -65 and 175 degrees.
std::vector<AtomSpec> serine(double x = 0);
std::vector<AtomSpec> leucine(double x = 0);

} // namespace rotamer_testing
