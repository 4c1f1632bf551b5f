// The plug-in's entry points, the only symbols that the library exports.
#include "CommandPlugin.h"

#include "AtomColors.h"
#include "Contours.h"
#include "SubSurface.h"
#include "Surfaces.h"

namespace {

using solid::SurfaceKind;

template <SurfaceKind kind> void addSurface(void*, PluginResult*) {
    solid::addAtomSurfaces(kind);
}

void colorByAtoms(void*, PluginResult*) {
    solid::colorSurfacesByAtoms();
}

// Commands with a number: the data are where it stands.
template <class Command> void withNumber(const void* data, PluginResult* result, Command command) {
    if (data) {
        command(*static_cast<const double*>(data));
        return;
    }
    result->SetResultCode(PluginResult::Failure);
    result->SetResultText("the command needs a number");
}

template <bool isHigh> void addContour(void* level, PluginResult* result) {
    withNumber(level, result, [](double value) { solid::addContour(value, isHigh); });
}

void addSubSurface(void* limit, PluginResult* result) {
    withNumber(limit, result, solid::addSubSurface);
}

} // namespace

COMMAND_PLUGIN({"Connolly", &addSurface<SurfaceKind::Excluded>},
               {"AddSurfaceVdW", &addSurface<SurfaceKind::VanDerWaals>},
               {"AddSurfaceSolv", &addSurface<SurfaceKind::Accessible>},
               {"AddSurfaceG", &addSurface<SurfaceKind::Gaussian>},
               {"AddSurfaceED", &addSurface<SurfaceKind::ElectronDensity>},
               {"ColorByAtoms", &colorByAtoms}, {"SubSurface", &addSubSurface},
               {"AddContourHi", &addContour<true>}, {"AddContourLo", &addContour<false>})
