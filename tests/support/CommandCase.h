// What the tests of the plug-in's commands share: small structures and maps, what the user is told,
// and what the commands have made.
#pragma once

#include "AtomDetails.h"
#include "DataMaker.h"
#include "Geometry.h"
#include "Messages.h"
#include "Space.h"
#include "Subscriber.h"
#include "TestSupport.h"
#include "services/Log.h"

#include <QStringList>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace command_case {

using TAVIK::Compound;
using TAVIK::Grid;
using TAVIK::Surface;
using TAVIK::SurfaceMesh;

inline TAVIK::Space* space() {
    return TAVIK::Space::instance();
}

struct AtomSpec {
    const char* name;
    const char* element;
    std::array<float, 3> position;
};

/// An entry with one chain of one residue, as "GLY 1", of these atoms.
Compound* addEntry(const std::string& name, const std::string& residue,
                   const std::vector<AtomSpec>& atoms);
/// Another residue in the first chain of an entry.
Compound* addResidue(Compound* entry, const std::string& residue,
                     const std::vector<AtomSpec>& atoms);
/// An entry of one copper atom, whose radius no hydrogens change.
Compound* addCopper(const std::string& name = "one", std::array<float, 3> at = {0, 0, 0});
constexpr double copperRadius = 1.40; // Å

/// A grid of steps of 1 Å from the origin, of `value(x, y, z)`.
Grid* addGrid(const std::string& name, std::array<int, 3> points,
              const std::function<float(int, int, int)>& value);
/// The distance from the middle of such a grid of 21 points along each axis, with its sign turned:
/// a high contour at -r is a ball of radius r.
Grid* addDistances(const std::string& name = "map");

/// All atoms below an item.
std::vector<Compound*> atomsIn(Compound* item);
/// The surfaces at the top level, in order.
std::vector<Surface*> surfaces();
QStringList namesOf(const std::vector<Surface*>& surfaces);
/// Of the flat triangles, Å².
double areaOf(const SurfaceMesh& mesh);
/// The first number in a message that stands before "Å²", without the commas of thousands.
std::optional<double> areaIn(const QString& message);

class CommandCase : public test_support::TestCase, MessageObserver, Subscriber {
    Q_OBJECT
public:
    void messageShown(const QString& text) override { m_said << text; }
    void commUpdate() override { ++m_updates; }
    void commAdd() override { ++m_additions; }
    void commDelete() override { ++m_deletions; }

protected:
    int m_updates = 0;
    int m_additions = 0;
    int m_deletions = 0;
    QStringList m_labels; ///< of the changes that the last command() made

    /// Runs a command; what the user was told.
    QStringList command(const std::function<void()>& run);
    /// That the command says this one line, and changes nothing.
    void refuses(const std::function<void()>& run, const QString& line);

protected slots:
    void init() override;

private:
    QStringList m_said;
};

} // namespace command_case
