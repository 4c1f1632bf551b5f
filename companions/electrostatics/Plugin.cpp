// The plug-in's entry points, the only symbols that the library exports.
#include "CommandPlugin.h"

#include "Mapping.h"

namespace {

void mapGrid(const void*, PluginResult*) {
    electrostatics::mapOntoSurface();
}

} // namespace

COMMAND_PLUGIN({"MapGrid2Surf", &mapGrid})
