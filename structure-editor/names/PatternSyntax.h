// Reads a name pattern in QRegExp's dialect into a tree. It knows which texts QRegExp takes for
// well-formed, and what every part of them means on Latin-1 names; nothing is matched here.
#pragma once

#include <QString>

#include <bitset>
#include <vector>

namespace name_pattern {

/// The Latin-1 characters that one place of a name may have.
using CharSet = std::bitset<256>;

enum class NodeKind {
    Nothing,      ///< matches the empty text
    Character,    ///< matches one character; `first` is the index of its set
    Assertion,    ///< matches the empty text where a Condition holds; `first` is the Condition
    Sequence,     ///< two operands, one behind the other
    Choice,       ///< one of two operands
    Repetition,   ///< one operand, `first` to `last` times; `last` is `unlimited` for no upper end
    LookAhead,    ///< one operand, which is tested but not taken; `first` is 1 for "must not match"
    BackReference ///< the text of an earlier group; QRegExp alone can answer it
};

enum class Condition { AtStart, AtEnd, WordBoundary, NoWordBoundary };

constexpr int unlimited = -1;

struct Node {
    NodeKind kind;
    int first = 0;
    int last = 0;
};

/// A pattern as a tree in postfix order: the operands of a node stand before it, so that every walk
/// over the tree is a loop with a stack of results, however deep the pattern is nested.
struct Syntax {
    /// False when QRegExp calls the pattern invalid; the rest is incomplete then.
    bool wellFormed = false;
    bool hasLookAheads = false;
    bool hasBackReferences = false;
    std::vector<Node> nodes;
    /// The distinct sets that Character nodes name.
    std::vector<CharSet> sets;
    /// Deepest nesting of brackets.
    int depth = 0;
    /// Number of capturing groups, or the highest that a back-reference names, which QRegExp keeps
    /// room for, too.
    int captures = 0;
    /// Number of Character nodes that QRegExp keeps as a class, not as a character.
    int classes = 0;
};

Syntax parse(const QString& pattern);

/// The characters that `\b` takes for parts of words, and that `\w` matches.
const CharSet& wordCharacters();

} // namespace name_pattern
