// Parses a name pattern in QRegExp's dialect into a tree. It accepts the texts that QRegExp
// accepts, with the same meaning for Latin-1 names; nothing is matched here.
#pragma once

#include <QString>

#include <bitset>
#include <vector>

namespace name_pattern {

/// A set of Latin-1 characters.
using CharSet = std::bitset<256>;

enum class NodeKind {
    Nothing,      ///< matches the empty text
    Character,    ///< matches one character; `first` is the index of its set
    Assertion,    ///< matches the empty text where a Condition holds; `first` is the Condition
    Sequence,     ///< two operands, one after the other
    Choice,       ///< one of two operands
    Repetition,   ///< one operand, `first` to `last` times; `last` may be `unlimited`
    LookAhead,    ///< one operand, which is not consumed; `first` is 1 for a negative look-ahead
    BackReference ///< the text of an earlier group; QRegExp alone can answer it
};

enum class Condition { AtStart, AtEnd, WordBoundary, NoWordBoundary };

constexpr int unlimited = -1;

struct Node {
    NodeKind kind;
    int first = 0;
    int last = 0;
};

/// A pattern as a tree in postfix order: operands precede their node, so that every walk over the
/// tree is a loop with a stack of results, however deep the pattern is nested.
struct Syntax {
    /// False when QRegExp calls the pattern invalid; the rest is incomplete then.
    bool wellFormed = false;
    bool hasLookAheads = false;
    bool hasBackReferences = false;
    std::vector<Node> nodes;
    /// The distinct sets that Character nodes name.
    std::vector<CharSet> sets;
    /// Deepest nesting of groups.
    int depth = 0;
    /// Number of capturing groups, or the highest number that a back-reference names: QRegExp
    /// allocates room for those, too.
    int captures = 0;
    /// Number of Character nodes that QRegExp keeps as a class, not as a character.
    int classes = 0;
};

Syntax parse(const QString& pattern);

/// The word characters, which `\w` matches and `\b` looks at.
const CharSet& wordCharacters();

} // namespace name_pattern
