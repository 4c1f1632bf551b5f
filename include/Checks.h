// Checks that warn and go on: an internal error is reported, and never ends the user's session.
// The text, the source's name and the line are arguments, because they are part of the message.
#pragma once

#include <QtGlobal>

/// Warns when `condition` is false.
inline void checkThat(bool condition, const char* text, const char* source, int line) {
    if (!condition)
        qWarning("ASSERT: \"%s\" in %s (%d)", text, source, line);
}

/// Warns when `pointer`, to an object or a function, is null.
template <class T> void checkPtr(T* pointer, const char* source, int line) {
    if (!pointer)
        qWarning("In file %s, line %d: Out of memory", source, line);
}
