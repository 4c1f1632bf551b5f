#include "Inspection.h"

#include "ActiveModel.h"
#include "AtomDetails.h"
#include "Geometry.h"
#include "Kinds.h"
#include "Measure.h"
#include "PartialCharge.h"
#include "Space.h"
#include "SurfaceArea.h"
#include "Traversal.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <unordered_set>

namespace workbench {

namespace {

using TAVIK::Atom;
using TAVIK::Compound;

QString say(const char* text) {
    return QCoreApplication::translate("Inspector", text);
}

QString latin1(const std::string& text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

/// The same on every machine, with commas in large counts.
const QLocale& plain() {
    static const QLocale locale(QLocale::English, QLocale::UnitedStates);
    return locale;
}
QString count(std::size_t number) {
    return plain().toString(static_cast<qulonglong>(number));
}
const QString angstrom = QStringLiteral("Å");
const QString squareAngstrom = QStringLiteral("Å²");
const QString degree = QStringLiteral("°");

QString number(double value, int decimals, const QString& unit = {}) {
    if (std::isnan(value))
        return say("undefined");
    const bool isApart = !unit.isEmpty() && unit != degree;
    return QString::number(value, 'f', decimals) + (isApart ? u' ' + unit : unit);
}
/// Of unknown size: map values may be tiny.
QString general(double value) {
    return std::isnan(value) ? say("undefined") : QString::number(value, 'g', 5);
}
QString triple(const Place& place, int decimals) {
    return QStringLiteral("%1, %2, %3")
        .arg(number(place[0], decimals), number(place[1], decimals), number(place[2], decimals));
}

/// What a walk over atoms gathers.
struct Gathered {
    std::size_t atoms = 0;
    Statistics temperature;
    Statistics occupancy;
    std::array<Statistics, 3> position;
    Statistics partial;
    double formal = 0.0;

    void add(Compound* item) {
        const auto* const atom = static_cast<const Atom*>(item);
        ++atoms;
        temperature.add(static_cast<double>(atom->GetTemperature()));
        const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
        occupancy.add(static_cast<double>(details.occupancy));
        formal += details.formalCharge;
        if (const TAVIK::PartialCharge charge = TAVIK::GetPartialCharge(atom); charge.isKnown)
            partial.add(static_cast<double>(charge.charge));
        if (const TAVIK::Vertex at = atom->GetPosition(); at.isValid())
            for (std::size_t axis = 0; axis != 3; ++axis)
                position[axis].add(static_cast<double>(at[axis]));
    }

    void show(Inspection& out) const {
        if (atoms == 0)
            return;
        out.add(say("Temperature factor"),
                say("mean %1, %2 to %3")
                    .arg(number(temperature.mean(), 2), number(temperature.least(), 2),
                         number(temperature.greatest(), 2, squareAngstrom)));
        out.add(say("Occupancy"), say("mean %1").arg(number(occupancy.mean(), 2)));
        out.add(say("Charge"), charge());
        if (position[0].count() == 0)
            return;
        out.add(say("Centre"),
                triple({position[0].mean(), position[1].mean(), position[2].mean()}, 3) + u' ' +
                    angstrom);
        const auto extent = [this](std::size_t axis) {
            return number(position[axis].greatest() - position[axis].least(), 1);
        };
        out.add(say("Extent"),
                QStringLiteral("%1 × %2 × %3 Å").arg(extent(0), extent(1), extent(2)));
    }
    QString charge() const {
        QString text =
            say("formal %1").arg(formal > 0 ? u'+' + number(formal, 0) : number(formal, 0));
        if (partial.count() > 0)
            text += say("; partial charges %1 e in all")
                        .arg(number(partial.mean() * static_cast<double>(partial.count()), 3));
        return text;
    }
};

Place placeOf(const Compound* atom) {
    const TAVIK::Vertex at = atom->GetPosition();
    return {static_cast<double>(at[0]), static_cast<double>(at[1]), static_cast<double>(at[2])};
}

bool haveAllPlaces(const std::vector<Compound*>& atoms) {
    return std::all_of(atoms.begin(), atoms.end(),
                       [](const Compound* atom) { return atom->GetPosition().isValid(); });
}

void measure(Inspection& out, const std::vector<Compound*>& atoms) {
    if (atoms.size() < 2 || atoms.size() > 4)
        return;
    std::size_t place = 0; // in the order in which they are measured
    for (const Compound* atom : atoms) {
        ++place;
        out.add(say("Atom %1").arg(place), latin1(atom->GetFQName()), place);
    }
    const QString none = say("undefined: an atom has no position");
    const bool known = haveAllPlaces(atoms);
    std::vector<Place> at;
    for (const Compound* atom : atoms)
        at.push_back(placeOf(atom));
    if (at.size() == 2)
        out.add(say("Distance"), known ? number(distanceBetween(at[0], at[1]), 3, angstrom) : none);
    else if (at.size() == 3)
        out.add(say("Angle"), known ? number(angleAt(at[0], at[1], at[2]), 2, degree) : none);
    else
        out.add(say("Torsion"),
                known ? number(torsionAbout(at[0], at[1], at[2], at[3]), 2, degree) : none);
}

void inspectAtom(Inspection& out, const Atom* atom) {
    const TAVIK::AtomDetails details = TAVIK::GetAtomDetails(atom);
    out.add(say("Element"), latin1(atom->GetType()));
    out.add(say("Position"), atom->GetPosition().isValid()
                                 ? triple(placeOf(atom), 3) + u' ' + angstrom
                                 : say("none"));
    out.add(say("Occupancy"), number(static_cast<double>(details.occupancy), 2));
    out.add(say("Temperature factor"),
            number(static_cast<double>(atom->GetTemperature()), 2, squareAngstrom));
    const std::string model = atom->GetModelNumber();
    QString alternative = say("none");
    if (details.alternative != '\0')
        alternative =
            say("%1 (model %2)").arg(QString(QLatin1Char(details.alternative)), latin1(model));
    else if (model != "0")
        alternative = say("model %1").arg(latin1(model));
    out.add(say("Alternative"), alternative);
    const int formal = details.formalCharge;
    QString charge = formal > 0 ? u'+' + QString::number(formal) : QString::number(formal);
    if (const TAVIK::PartialCharge partial = TAVIK::GetPartialCharge(atom); partial.isKnown)
        charge += say("; partial %1 e, radius %2 Å")
                      .arg(number(static_cast<double>(partial.charge), 4),
                           number(static_cast<double>(partial.radius), 3));
    out.add(say("Charge"), charge);
    if (details.serial != TAVIK::AtomDetails::noSerial)
        out.add(say("Serial"), QString::number(details.serial));
    out.add(say("Record"), details.isHetero ? QStringLiteral("HETATM") : QStringLiteral("ATOM"));
}

void inspectBond(Inspection& out, Compound* bond) {
    const std::vector<Compound*> atoms(bond->PartBegin(), bond->PartEnd());
    QStringList names;
    for (const Compound* atom : atoms)
        names << latin1(atom->GetFQName());
    out.add(say("Atoms"), names.join(QStringLiteral(" – ")));
    if (atoms.size() == 2 && haveAllPlaces(atoms))
        out.add(say("Length"),
                number(distanceBetween(placeOf(atoms[0]), placeOf(atoms[1])), 3, angstrom));
}

void inspectGrid(Inspection& out, const TAVIK::Grid* grid) {
    out.add(say("Points"), QStringLiteral("%1 × %2 × %3")
                               .arg(grid->m_points[0])
                               .arg(grid->m_points[1])
                               .arg(grid->m_points[2]));
    out.add(say("Shown"), QStringLiteral("%1–%2, %3–%4, %5–%6")
                              .arg(grid->m_lower[0])
                              .arg(grid->m_upper[0] - 1)
                              .arg(grid->m_lower[1])
                              .arg(grid->m_upper[1] - 1)
                              .arg(grid->m_lower[2])
                              .arg(grid->m_upper[2] - 1));
    const TAVIK::GridValues* const values = TAVIK::GetGridValues(grid);
    if (!values)
        return;
    const Place zero{};
    Place lengths{};
    for (std::size_t axis = 0; axis != 3; ++axis)
        lengths[axis] = distanceBetween(values->steps[axis], zero);
    out.add(say("Step"), triple(lengths, 4) + u' ' + angstrom);
    Place edges{};
    for (std::size_t axis = 0; axis != 3; ++axis)
        edges[axis] = lengths[axis] * values->points[axis];
    const auto between = [&](std::size_t a, std::size_t b) {
        return angleAt(values->steps[a], zero, values->steps[b]);
    };
    // As cells are given: alpha is the angle between b and c.
    out.add(say("Size"),
            say("%1 Å; %2°")
                .arg(triple(edges, 2), triple({between(1, 2), between(0, 2), between(0, 1)}, 2)));
    out.add(say("Origin"), triple(values->origin, 3) + u' ' + angstrom);
    Statistics statistics;
    for (const float value : values->values)
        statistics.add(static_cast<double>(value));
    out.add(say("Minimum"), general(statistics.least()));
    out.add(say("Maximum"), general(statistics.greatest()));
    out.add(say("Mean"), general(statistics.mean()));
    out.add(say("Deviation"), general(statistics.deviation()));
}

// Of a residue with alternative models, which of them is shown.
void inspectModels(Inspection& out, Compound* residue) {
    const unsigned int active = TAVIK::GetActiveModel(residue);
    if (active == 0)
        return;
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(residue, atoms, true);
    std::set<std::string> models;
    for (Compound* const item : atoms)
        if (const auto* const atom = dynamic_cast<const Atom*>(item))
            models.insert(atom->GetModelNumber());
    models.erase("0");
    out.add(say("Models"), say("%1; number %2 is shown").arg(count(models.size())).arg(active));
}

void inspectMesh(Inspection& out, const TAVIK::SurfaceMesh& mesh, bool showsColors) {
    out.add(say("Vertices"), count(mesh.vertices.size()));
    out.add(say("Triangles"), count(mesh.triangles.size()));
    out.add(say("Area"), plain().toString(areaOf(mesh), 'f', 1) + u' ' + squareAngstrom);
    if (mesh.values.empty())
        return;
    Statistics statistics;
    for (const float value : mesh.values)
        statistics.add(static_cast<double>(value));
    if (mesh.scale)
        out.add(say("Values"), QString::fromStdString(mesh.scale->title));
    out.add(say("Minimum"), general(statistics.least()));
    out.add(say("Maximum"), general(statistics.greatest()));
    out.add(say("Mean"), general(statistics.mean()));
    if (const std::size_t without = mesh.values.size() - statistics.count(); without > 0)
        out.add(say("Without value"), say("%1 of the vertices").arg(count(without)));
    if (mesh.scale && showsColors)
        out.add(say("Colours"), say("from %1 to %2")
                                    .arg(general(static_cast<double>(mesh.scale->lower)),
                                         general(static_cast<double>(mesh.scale->upper))));
}

QString kindOf(const Compound* item) {
    if (dynamic_cast<const Atom*>(item))
        return say("Atom");
    return latin1(item->GetType());
}

} // namespace

QString Inspection::text() const {
    QString lines = title + u'\n';
    for (const Row& row : rows)
        lines += row.label + u'\t' + row.value + u'\n';
    return title.isEmpty() ? QString() : lines;
}

QString Inspection::value(const QString& label) const {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return row.label == label; });
    return found == rows.end() ? QString() : found->value;
}

Inspection inspectItem(Compound* item) {
    Inspection out;
    if (!item)
        return out;
    out.title = latin1(item->GetFQName());
    out.add(say("Name"), latin1(item->GetName()));
    out.add(say("Kind"), kindOf(item));
    if (const auto* const atom = dynamic_cast<const Atom*>(item)) {
        inspectAtom(out, atom);
    } else if (dynamic_cast<TAVIK::Bond*>(item)) {
        inspectBond(out, item);
    } else if (const auto* const grid = dynamic_cast<const TAVIK::Grid*>(item)) {
        inspectGrid(out, grid);
    } else if (const auto* const surface = dynamic_cast<const TAVIK::Surface*>(item)) {
        if (const TAVIK::SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(surface))
            inspectMesh(out, *mesh, TAVIK::HasDefaultColor(surface));
    } else {
        Gathered gathered;
        std::vector<Compound*> items;
        TAVIK::GetResidues(item, items, true);
        if (!items.empty() && items.front() != item)
            out.add(say("Residues"), count(items.size()));
        items.clear();
        if (dynamic_cast<TAVIK::Composite*>(item))
            TAVIK::GetAtoms(item, items, true);
        else
            for (Compound** part = item->PartBegin(); part != item->PartEnd(); ++part)
                TAVIK::GetAtoms(*part, items, true);
        for (Compound* const each : items)
            gathered.add(each);
        out.add(say("Atoms"), count(gathered.atoms));
        inspectModels(out, item);
        gathered.show(out);
    }
    return out;
}

Inspection inspectSelection(const std::vector<Compound*>& measured) {
    Inspection out;
    TAVIK::Space* const space = TAVIK::Space::instance();
    std::vector<Compound*> items;
    TAVIK::GetAtoms(space, items, false);
    if (items.empty())
        return out;
    if (items.size() == 1)
        return inspectItem(items.front());
    out.title = say("%1 atoms selected").arg(count(items.size()));
    measure(out, measured);
    Gathered gathered;
    for (Compound* const atom : items)
        gathered.add(atom);
    items.clear();
    TAVIK::GetResidues(space, items, true);
    const auto whole = static_cast<std::size_t>(std::count_if(
        items.begin(), items.end(), [](const Compound* residue) { return residue->IsSelected(); }));
    const auto isAny = [](const Compound* residue) { return residue->HasSelected(); };
    const auto any = static_cast<std::size_t>(std::count_if(items.begin(), items.end(), isAny));
    out.add(say("Atoms"), count(gathered.atoms));
    out.add(say("Residues"), say("%1, of which %2 wholly").arg(count(any), count(whole)));
    if (any == 1)
        inspectModels(out, *std::find_if(items.begin(), items.end(), isAny));
    gathered.show(out);
    return out;
}

} // namespace workbench
