#include "Mapping.h"

#include "Ancestry.h"
#include "AtomCharges.h"
#include "ChangeData.h"
#include "ColorScale.h"
#include "DataPoint.h"
#include "DestroyObserver.h"
#include "Messages.h"
#include "Progress.h"
#include "SelectedOrShown.h"
#include "SharedWork.h"
#include "potential/Coulomb.h"
#include "potential/Trilinear.h"
#include "potential/ValueRange.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

namespace electrostatics {

namespace {

using TAVIK::Grid;
using TAVIK::Surface;
using TAVIK::SurfaceMesh;

QString tr(const char* text) {
    return QCoreApplication::translate("Electrostatics", text);
}
QString latin1(const std::string& text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}
QLocale grouped() {
    QLocale locale = QLocale::c();
    locale.setNumberOptions(QLocale::DefaultNumberOptions);
    return locale;
}
QString count(std::size_t number) {
    return grouped().toString(static_cast<qulonglong>(number));
}
// Of charges of residues, which add up to a whole number, and of atoms, which may not.
QString charge(double total) {
    const double whole = std::round(total) + 0.0; // not -0
    return std::abs(total - whole) < 5e-3 ? grouped().toString(whole, 'f', 0)
                                          : grouped().toString(total, 'f', 2);
}
QString number(double value) {
    return QString::number(value, 'g', 3);
}

/// Whether a surface is still there.
class Watched final : public TAVIK::DestroyObserver {
public:
    explicit Watched(Surface* surface) : m_surface(surface) {}
    Surface* get() const { return m_surface; }

private:
    void aboutToDestroy(TAVIK::Compound* item) override {
        for (const TAVIK::Compound* at = m_surface; at; at = TAVIK::GetParent(at))
            if (at == item)
                m_surface = nullptr;
    }
    Surface* m_surface;
};

/// What is mapped, and what there is to say of it.
struct Source {
    std::function<void(std::span<const Point>, std::span<float>)> values;
    QString what;  ///< as "Values of pot"
    QString title; ///< the same with its unit, which comes early as a key may cut it
    QString unit;  ///< as " kT/e"; empty where it is unknown
    QString how;   ///< behind all else; may be empty
};

std::optional<Source> gridSource() {
    const Grid* const grid =
        selectedOrShown<Grid>([](const Grid& one) { return TAVIK::GetGridValues(&one); });
    if (!grid)
        return std::nullopt;
    // The values stay while the space is locked.
    const TAVIK::GridValues& values = *TAVIK::GetGridValues(grid);
    Source source;
    source.values = [of = Trilinear({values.points, values.origin, values.steps, values.values})](
                        std::span<const Point> points, std::span<float> to) {
        std::ranges::transform(points, to.begin(),
                               [&of](const Point& point) { return of.at(point); });
    };
    source.title = source.what = tr("Values of %1").arg(latin1(grid->GetName()));
    return source;
}

Source coulombSource(const SurfaceMesh& mesh) {
    AtomCharges charges = readCharges(mesh);
    if (charges.charges.empty())
        throw std::runtime_error("no map is selected or shown, and no atom with a charge");
    Source source;
    const QString atoms = charges.entry.empty() ? tr("the shown atoms") : latin1(charges.entry);
    source.what = tr("Coulomb potential of %1").arg(atoms);
    source.title = tr("Coulomb potential (kT/e) of %1").arg(atoms);
    source.unit = QStringLiteral(" kT/e");
    const std::size_t assigned = charges.charges.size() - charges.fromFile;
    source.how = tr("%1 charges, %2 e in all: %3 of the file, %4 of residues at pH 7; "
                    "dielectric 4 r/Å")
                     .arg(count(charges.charges.size()), charge(charges.total),
                          count(charges.fromFile), count(assigned));
    source.values = [tree = ChargeTree(std::move(charges.charges))](std::span<const Point> points,
                                                                    std::span<float> to) {
        tree.at(points, to);
    };
    return source;
}

/// Values and colours for the mesh, and what is said of them.
struct Mapped {
    SurfaceMesh mesh;
    ValueSummary summary;
};

void setValues(SurfaceMesh& mesh, const Source& source, ProgressReporter& progress,
               const std::stop_token& stop) {
    constexpr std::size_t atOnce = 4096;
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    const std::size_t all = mesh.vertices.size();
    std::vector<float> values(all);
    std::atomic<std::size_t> done{0};
    const QString stage = tr("values at the vertices");
    onAllThreads(stop)((all + atOnce - 1) / atOnce, [&](std::size_t piece) {
        const std::size_t first = piece * atOnce;
        const std::size_t size = std::min(atOnce, all - first);
        const auto to = std::span(values).subspan(first, size);
        source.values(std::span(mesh.vertices).subspan(first, size), to);
        std::ranges::replace_if(
            to, [](float value) { return std::isinf(value); }, none);
        progress.report(stage, static_cast<double>(done += size) / static_cast<double>(all));
    });
    mesh.values = std::move(values);
}

void compute(Mapped& mapped, const Source& source, TAVIK::ValueScale scale,
             ProgressReporter& progress, const std::stop_token& stop) {
    SurfaceMesh& mesh = mapped.mesh;
    setValues(mesh, source, progress, stop);
    mapped.summary = summaryOf(mesh.values);
    if (mapped.summary.count == 0)
        throw std::runtime_error("the surface lies outside of the map, or where it has no values");
    scale.lower = -mapped.summary.range;
    scale.upper = mapped.summary.range;
    mesh.colors = colorsOf(mesh.values, scale);
    mesh.scale = std::move(scale);
}

QString reportOf(const Mapped& mapped, const QString& pair, const Source& source) {
    const ValueSummary& summary = mapped.summary;
    QString text = tr("%1: %2 to %3%4, mean %5; red %6, white 0, blue %7")
                       .arg(pair, number(double(summary.least)), number(double(summary.greatest)),
                            source.unit, number(summary.mean), number(-double(summary.range)),
                            number(double(summary.range)));
    if (const std::size_t all = mapped.mesh.values.size(); summary.count != all)
        text += tr("; %1 of %2 vertices have no value and are grey")
                    .arg(count(all - summary.count), count(all));
    return source.how.isEmpty() ? text : text + QStringLiteral("; ") + source.how;
}

bool isSameShape(const SurfaceMesh* now, const SurfaceMesh& then) {
    return now && now->vertices == then.vertices && now->triangles == then.triangles;
}

// Returns what is said of a change that was made, and sets `isMade`; else what went wrong.
QString tryToMap(bool& isMade) {
    Watched surface(selectedOrShown<Surface>([](const Surface& one) {
        const SurfaceMesh* const mesh = TAVIK::GetSurfaceMesh(&one);
        return mesh && !mesh->vertices.empty();
    }));
    if (!surface.get())
        return tr("no surface with vertices is selected or shown");
    Mapped mapped{*TAVIK::GetSurfaceMesh(surface.get()), {}};
    std::optional<Source> source = gridSource();
    if (!source)
        source = coulombSource(mapped.mesh);
    std::optional<TAVIK::ValueScale> scale = readScale();
    if (!scale)
        return tr("the colour map RedWhiteBlue.cm cannot be read");
    const QString name = latin1(surface.get()->GetName());
    const QString pair = tr("%1 on %2").arg(source->what, name);
    scale->title = tr("%1 on %2").arg(source->title, name).toStdString();
    bool hasBegun = false;
    const auto work = [&](ProgressReporter& progress, const std::stop_token& stop) {
        hasBegun = true;
        compute(mapped, *source, *scale, progress, stop);
    };
    if (!Progress::Run(pair, work))
        return hasBegun ? tr("cancelled") : tr("another work is in progress");
    if (!surface.get() || !isSameShape(TAVIK::GetSurfaceMesh(surface.get()), mapped.mesh))
        return tr("the surface has changed meanwhile");
    QString said = tr("another change of the data is under way");
    const QString report = reportOf(mapped, pair, *source);
    changeData(
        DataPoint<Surface>(nullptr, surface.get(), ("Map " + pair).toLatin1().toStdString()),
        [&](DataPointBase&) {
            if (!TAVIK::SetSurfaceMesh(surface.get(), std::move(mapped.mesh)))
                throw std::runtime_error("the host refuses it");
            surface.get()->RestoreColor(); // Its own colour would hide those of the mesh.
            isMade = true;
            said = report;
        },
        Refusal::Silent);
    return said;
}

} // namespace

void mapOntoSurface() {
    QString said;
    bool isMade = false;
    try {
        said = tryToMap(isMade);
    } catch (const std::bad_alloc&) {
        said = tr("there is not enough memory");
    } catch (const std::exception& error) {
        said = QString::fromUtf8(error.what());
    }
    Messages::Show(isMade ? said : tr("Nothing is mapped: %1").arg(said));
}

} // namespace electrostatics
