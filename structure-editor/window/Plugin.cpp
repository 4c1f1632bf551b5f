// The plug-in's entry points: what the library shares, and nothing else.
#include "GUIPlugin.h"

#include "Vuxo.h"

GUI_PLUGIN(Vuxo)
