// Estimates the cost of a pattern, for our automaton and for QRegExp, before either runs: QRegExp
// cannot be interrupted, and some patterns crash it.
#pragma once

#include "PatternSyntax.h"

#include <cstddef>

namespace name_pattern {

/// Upper estimates; infinity or NaN for a pattern beyond all bounds. A step of QRegExp is about a
/// nanosecond.
struct Cost {
    /// Number of instructions of the pattern's Program.
    double instructions = 0;
    /// Length of the shortest text that can match.
    double shortest = 0;
    /// Whether QRegExp can be asked about the pattern: time, memory and stack stay small.
    bool compilable = false;
    /// Whether QRegExp calls the pattern invalid for the number of its look-aheads.
    bool tooManyLookAheads = false;
    /// Steps of one QRegExp match on a name, for each choice of `power` positions in the name.
    double match = 0;
    int power = 2;

    /// Steps of one QRegExp match on a name of that length.
    double matchSteps(std::size_t length) const;
};

/// The cost of a well-formed pattern.
Cost estimate(const Syntax& syntax);

} // namespace name_pattern
