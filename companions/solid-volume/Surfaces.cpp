#include "Surfaces.h"

#include "DensitySurfaces.h"
#include "NewSurfaces.h"
#include "ShownAtoms.h"
#include "SurfaceArea.h"
#include "mesh/BallSurfaces.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace solid {

namespace {

constexpr double probe = 1.4; // Å, of water
// Å: finer for a ligand, whose area is to be right, too; coarser for many atoms.
double stepFor(std::size_t atoms) {
    constexpr std::size_t few = 200;
    constexpr std::size_t many = 50'000;
    return atoms <= few ? 0.2 : atoms <= many ? 0.5 : 1.0;
}

struct KindOfSurface {
    const char* name;  ///< of the item, before that of the entry
    const char* title; ///< for messages
};
// In the order of SurfaceKind.
constexpr std::array<KindOfSurface, 5> kinds = {{
    {"Connolly", "Solvent-excluded surface"},
    {"VanderWaals", "Van der Waals surface"},
    {"SolventAccessible", "Solvent-accessible surface"},
    {"Gaussian", "Gaussian surface"},
    {"ElectronDensity", "Electron-density surface"},
}};

Mesh meshOf(const EntryAtoms& atoms, SurfaceKind kind, const ForEach& forEach) {
    const double step = stepFor(atoms.balls.size());
    switch (kind) {
    case SurfaceKind::Excluded:
        return excludedSurface(atoms.balls, probe, step, forEach);
    case SurfaceKind::VanDerWaals:
        return unionSurface(atoms.balls, 0, step, forEach);
    case SurfaceKind::Accessible:
        return unionSurface(atoms.balls, probe, step, forEach);
    case SurfaceKind::Gaussian:
        return gaussianSurface(atoms, step, forEach);
    case SurfaceKind::ElectronDensity:
        return electronDensitySurface(atoms, step, forEach);
    }
    return {};
}

QString reportOf(const EntryAtoms& atoms, SurfaceKind kind, double area) {
    const std::size_t count = atoms.balls.size();
    QString report =
        (count == 1 ? tr("%1 of %2: %3 around %4 atom") : tr("%1 of %2: %3 around %4 atoms"))
            .arg(tr(kinds[static_cast<std::size_t>(kind)].title), QString::fromLatin1(atoms.name),
                 areaInWords(area), countInWords(count));
    if (kind == SurfaceKind::ElectronDensity)
        report += tr(", at %1 e/Å³").arg(molecularDensity);
    return report;
}

NewSurface surfaceOf(const EntryAtoms& atoms, SurfaceKind kind, const ForEach& forEach) {
    Mesh mesh = meshOf(atoms, kind, forEach);
    NewSurface result;
    if (mesh.triangles.empty()) {
        result.report = tr("the atoms of %1 have none").arg(QString::fromLatin1(atoms.name));
        return result;
    }
    result.name = std::string(kinds[static_cast<std::size_t>(kind)].name) + ' ' + atoms.name;
    result.mesh.colors.reserve(mesh.nearest.size());
    result.mesh.atoms.reserve(mesh.nearest.size());
    for (const std::uint32_t ball : mesh.nearest) {
        result.mesh.colors.push_back(atoms.colors[ball]);
        result.mesh.atoms.push_back(atoms.atoms[ball]);
    }
    result.mesh.vertices = std::move(mesh.vertices);
    result.mesh.normals = std::move(mesh.normals);
    result.mesh.triangles = std::move(mesh.triangles);
    // Of densities there is only the mesh.
    if (kind != SurfaceKind::Gaussian && kind != SurfaceKind::ElectronDensity)
        result.mesh.area = mesh.area;
    result.report = reportOf(atoms, kind, areaOf(result.mesh));
    return result;
}

std::vector<NewSurface> surfacesOf(const std::vector<EntryAtoms>& entries, SurfaceKind kind,
                                   ProgressReporter& progress, const ForEach& forEach) {
    std::size_t total = 0;
    for (const EntryAtoms& entry : entries)
        total += entry.balls.size();
    std::vector<NewSurface> all;
    std::size_t done = 0;
    for (const EntryAtoms& entry : entries) {
        // How far the first one is, nobody knows.
        progress.report(QString::fromLatin1(entry.name),
                        done == 0 ? -1 : static_cast<double>(done) / static_cast<double>(total));
        all.push_back(surfaceOf(entry, kind, forEach));
        done += entry.balls.size();
    }
    // What has no surface is said beside what has; alone, it is why nothing is made.
    const bool isMade =
        std::ranges::any_of(all, [](const NewSurface& one) { return !one.mesh.triangles.empty(); });
    if (!isMade)
        throw std::runtime_error(all.front().report.toStdString());
    for (NewSurface& one : all)
        if (one.mesh.triangles.empty())
            one.report = tr("No surface: %1").arg(one.report);
    return all;
}

} // namespace

void addAtomSurfaces(SurfaceKind kind) {
    const QString title = tr(kinds[static_cast<std::size_t>(kind)].title);
    makeOrSay(title, [&title, kind] {
        const std::vector<EntryAtoms> entries = readShownAtoms();
        if (entries.empty())
            return tr("no atom is shown, or only waters, which count where they are selected");
        return addSurfaces(title, [&](ProgressReporter& progress, const ForEach& forEach) {
            return surfacesOf(entries, kind, progress, forEach);
        });
    });
}

} // namespace solid
