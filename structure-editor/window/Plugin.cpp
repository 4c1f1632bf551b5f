// The plug-in's entry points, the only symbols that the library exports.
#include "GUIPlugin.h"

#include "Vuxo.h"

GUI_PLUGIN(Vuxo)
