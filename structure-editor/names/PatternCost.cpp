#include "PatternCost.h"

#include <algorithm>

namespace name_pattern {

namespace {

// Limits for QRegExp on one pattern: about 0.2 s and 50 MB, and a tenth of the usual stack.
constexpr double mostWork = 2e8;
constexpr double mostTransitions = 5e5;
constexpr double mostCaptureCells = 2e6;
constexpr int mostDepth = 500;
/// QRegExp cannot distinguish more classes.
constexpr int mostClasses = 65535;
/// With more look-aheads at the top level, or directly inside one look-ahead, QRegExp calls a
/// pattern invalid. It parses, and counts, each copy of a repeated look-ahead.
constexpr double mostLookAheads = 13;

/// A part of a pattern, as QRegExp builds it: a state for each character, and a transition for each
/// pair of characters that can follow one another. "First" and "last" states are those where the
/// part can begin and end.
struct Part {
    double instructions = 0;
    double shortest = 0; ///< length of the shortest text that it matches
    double states = 0;
    double transitions = 0;
    double first = 0;
    double last = 0;
    double lastOut = 0; ///< most transitions that leave a last state
    double work = 0;    ///< steps to build the part
    bool skippable = false;
    // Numbers of combinations of assertions, of those in a part that is skipped and of those at its
    // edges: they multiply when parts are joined.
    bool freelySkippable = false; ///< without an assertion
    double skipConditions = 1;
    double edgeConditions = 1;
    // Likewise the cost of testing look-aheads, and that cost over all transitions.
    double skipTests = 0;
    double edgeTests = 0;
    double tests = 0;
    int power = 0;          ///< nesting depth of look-aheads
    double lookAheads = 0;  ///< number of look-aheads that are not inside others
    bool isInvalid = false; ///< too many look-aheads directly inside one
};

// In steps: copying an entry of a list, parsing a character or the like, and creating the engine
// that QRegExp needs for each look-ahead that it parses.
constexpr double copying = 0.1;
constexpr double reading = 100;
constexpr double makingEngine = 1e4;

Part leaf() {
    Part part;
    part.instructions = 1;
    part.work = reading;
    return part;
}

Part character() {
    Part part = leaf();
    part.shortest = 1;
    part.states = part.first = part.last = 1;
    return part;
}

Part nothing() {
    Part part = leaf();
    part.skippable = part.freelySkippable = true;
    return part;
}

Part assertion() {
    Part part = leaf();
    part.skippable = true;
    return part;
}

void joinLookAheads(Part& part, const Part& left, const Part& right) {
    part.power = std::max(left.power, right.power);
    part.lookAheads = left.lookAheads + right.lookAheads;
    part.isInvalid = left.isInvalid || right.isInvalid;
}

Part sequence(const Part& left, const Part& right) {
    Part part;
    part.instructions = left.instructions + right.instructions;
    part.shortest = left.shortest + right.shortest;
    part.states = left.states + right.states;
    const double joints = left.last * right.first;
    const double conditions = left.edgeConditions * right.edgeConditions;
    part.transitions = left.transitions + right.transitions + joints;
    part.first = left.first + (left.skippable ? right.first : 0);
    part.last = right.last + (right.skippable ? left.last : 0);
    part.lastOut =
        right.skippable ? std::max(left.lastOut + right.first, right.lastOut) : right.lastOut;
    part.work = left.work + right.work + left.last * (left.lastOut + right.first) +
                joints * conditions + copying * (left.states + part.first + part.last) + 10;
    part.skippable = left.skippable && right.skippable;
    part.freelySkippable = left.freelySkippable && right.freelySkippable;
    if (part.skippable) {
        part.skipConditions = left.skipConditions * right.skipConditions;
        part.skipTests = left.skipTests + right.skipTests;
    }
    part.edgeConditions = std::max(left.edgeConditions * right.skipConditions,
                                   left.skipConditions * right.edgeConditions);
    part.edgeTests = std::max(left.edgeTests + right.skipTests, left.skipTests + right.edgeTests);
    part.work += part.skipConditions + part.edgeConditions;
    part.tests = left.tests + right.tests + joints * (left.edgeTests + right.edgeTests);
    joinLookAheads(part, left, right);
    return part;
}

Part choice(const Part& left, const Part& right) {
    Part part;
    part.instructions = left.instructions + right.instructions + 2;
    part.shortest = std::min(left.shortest, right.shortest);
    part.states = left.states + right.states;
    part.transitions = left.transitions + right.transitions;
    part.first = left.first + right.first;
    part.last = left.last + right.last;
    part.lastOut = std::max(left.lastOut, right.lastOut);
    part.skippable = left.skippable || right.skippable;
    part.freelySkippable = left.freelySkippable || right.freelySkippable;
    if (!part.freelySkippable && left.skippable && right.skippable)
        part.skipConditions = left.skipConditions + right.skipConditions;
    else if (!part.freelySkippable)
        part.skipConditions = std::max(left.skipConditions, right.skipConditions);
    part.edgeConditions = std::max(left.edgeConditions, right.edgeConditions);
    part.work =
        left.work + right.work + copying * (part.first + part.last) + part.skipConditions + 10;
    part.skipTests = left.skipTests + right.skipTests;
    part.edgeTests = std::max(left.edgeTests, right.edgeTests);
    part.tests = left.tests + right.tests;
    joinLookAheads(part, left, right);
    return part;
}

Part loop(Part part) {
    const double joints = part.last * part.first;
    part.instructions += 1;
    part.transitions += joints;
    part.work += part.last * (part.lastOut + part.first) +
                 joints * part.edgeConditions * part.edgeConditions;
    part.lastOut += part.first;
    part.tests += joints * 2 * part.edgeTests;
    return part;
}

Part optional(Part part) {
    part.shortest = 0;
    part.skippable = part.freelySkippable = true;
    part.skipConditions = 1;
    part.skipTests = 0;
    return part;
}

/// `count` copies in a row, of which those after the first `least` are optional. QRegExp parses the
/// operand again for each copy.
Part copies(const Part& operand, double count, double least) {
    Part part = operand;
    part.instructions *= count;
    part.shortest *= least;
    part.states *= count;
    part.work *= count;
    part.tests *= count;
    part.lookAheads *= count;
    part.transitions *= count;
    if (count == 1)
        return part;
    const bool anySkippable = operand.skippable;
    const double reach = anySkippable ? count : 1; // how many copies can directly follow one copy
    const double joints = count * reach * operand.last * operand.first;
    part.transitions += joints;
    part.tests += joints * 2 * (operand.edgeTests + count * operand.skipTests);
    if (anySkippable)
        part.first *= count;
    if (anySkippable || least < count)
        part.last *= count;
    part.lastOut += reach * operand.first;
    double conditions = 1;
    for (int i = 0; i < count && operand.skipConditions > 1 && conditions < mostWork; ++i)
        conditions *= operand.skipConditions;
    part.skipConditions = conditions;
    part.edgeConditions *= conditions;
    part.skipTests *= count;
    part.edgeTests += count * operand.skipTests;
    part.work += joints * (part.lastOut + part.edgeConditions * part.edgeConditions) +
                 copying * count * (part.last + part.first + part.states);
    return part;
}

Part repetition(const Part& operand, int least, int most) {
    if (most == 0) {
        Part part = nothing();
        part.work = operand.work;
        part.lookAheads = operand.lookAheads;
        part.isInvalid = operand.isInvalid;
        return part;
    }
    if (most == unlimited) {
        Part part = copies(loop(operand), std::max(least, 1), std::max(least, 1));
        return least == 0 ? optional(part) : part;
    }
    Part part = copies(operand, most, least);
    if (most > least)
        part.instructions += most - least + 1;
    return least == 0 ? optional(part) : part;
}

/// The cost of a match at each position in the name.
double matchAtOnePlace(const Part& part, int captures) {
    const double steps = (part.transitions + part.first) * (1 + captures / 16.0);
    return steps + part.tests + part.edgeTests + part.skipTests + 1;
}

Part lookAhead(const Part& operand, int captures) {
    Part part = assertion();
    part.instructions = operand.instructions + 2;
    // Its engine takes memory, which is counted as work: as the same fraction of the limit.
    part.work += operand.work + makingEngine + mostWork / mostTransitions * operand.transitions +
                 mostWork / mostCaptureCells * (operand.states + 2) * (captures + 1);
    part.skipTests = matchAtOnePlace(operand, captures);
    part.power = operand.power + 1;
    part.lookAheads = 1;
    part.isInvalid = operand.isInvalid || operand.lookAheads > mostLookAheads;
    return part;
}

} // namespace

// A match visits positions after its start, and each nested look-ahead positions after its own
// start: the number of ways to choose `power` positions in ascending order.
double Cost::matchSteps(std::size_t length) const {
    double steps = match;
    for (int i = 1; i <= power; ++i)
        steps *= (static_cast<double>(length) + i) / i;
    return steps;
}

Cost estimate(const Syntax& syntax) {
    std::vector<Part> parts;
    const auto take = [&] {
        const Part part = parts.back();
        parts.pop_back();
        return part;
    };
    for (const Node& node : syntax.nodes) {
        switch (node.kind) {
        case NodeKind::Nothing:
            parts.push_back(nothing());
            break;
        case NodeKind::Assertion:
            parts.push_back(assertion());
            break;
        case NodeKind::Character:
            parts.push_back(character());
            break;
        case NodeKind::BackReference: {
            Part part = character();
            part.shortest = 0;
            part.skippable = part.freelySkippable = true; // the group may have matched nothing
            parts.push_back(part);
            break;
        }
        case NodeKind::Sequence: {
            const Part right = take();
            parts.back() = sequence(parts.back(), right);
            break;
        }
        case NodeKind::Choice: {
            const Part right = take();
            parts.back() = choice(parts.back(), right);
            break;
        }
        case NodeKind::Repetition:
            parts.back() = repetition(parts.back(), node.first, node.last);
            break;
        case NodeKind::LookAhead:
            parts.back() = lookAhead(parts.back(), syntax.captures);
            break;
        }
    }
    const Part& whole = parts.back();
    Cost cost;
    cost.instructions = whole.instructions + 1;
    cost.shortest = whole.shortest;
    cost.compilable = whole.work <= mostWork && whole.transitions <= mostTransitions &&
                      (whole.states + 2) * (syntax.captures + 1.0) <= mostCaptureCells &&
                      syntax.depth <= mostDepth && syntax.classes <= mostClasses;
    cost.tooManyLookAheads = whole.isInvalid || whole.lookAheads > mostLookAheads;
    cost.match = matchAtOnePlace(whole, syntax.captures);
    cost.power = 2 + whole.power;
    return cost;
}

} // namespace name_pattern
