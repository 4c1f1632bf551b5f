// How the host library shares its symbols with plug-ins: every class and function that a plug-in
// may name has default visibility, so that calls, type tests and exceptions work across libraries.
#pragma once

#define HOST_EXPORT __attribute__((visibility("default")))
