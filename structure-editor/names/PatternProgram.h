// A pattern as a list of instructions (an NFA) linked by index. Repetitions are unrolled, so that a
// set of instruction indices is the whole state of a match.
#pragma once

#include "PatternSyntax.h"

#include <cstdint>
#include <vector>

namespace name_pattern {

struct Instruction {
    enum Kind : std::uint8_t {
        Pass,   ///< go on with `next`
        Split,  ///< go on with both `next` and `other`
        Take,   ///< take a character of the set `other`, then go on with `next`
        Assert, ///< go on with `next` where the Condition `other` holds
        Accept
    };
    Kind kind;
    std::int32_t next = -1;
    std::int32_t other = -1;
};

struct Program {
    std::vector<Instruction> code; ///< without reachable Pass instructions
    std::int32_t start = 0;
};

/// Translates a well-formed pattern without look-aheads and back-references. The caller has checked
/// that its cost is within bounds.
Program translate(const Syntax& syntax);

} // namespace name_pattern
