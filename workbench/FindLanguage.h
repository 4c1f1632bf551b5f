// The language of the find box: from what a user types to an expression. Knows no items, and no
// widgets; data/help/find.md is its description for users.
#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

/// Residue numbers from `first` to `last`. An insertion code is asked for only where one is given,
/// and then of a single number.
struct NumberRange {
    std::int64_t first = 0;
    std::int64_t last = 0;
    char insertion = ' ';
};

/// A condition on atoms that needs no other one. Names are Latin-1.
struct FindTerm {
    enum class Kind {
        Place, ///< chains, residues and atoms that are listed; what is not listed does not matter
        Word,  ///< one name: of residues or, if there are none, of a chain; or a residue number
        Pair,  ///< a chain or residue by its name, and a residue number
        Path,  ///< a qualified name
        Alternate, ///< alternative location
        Element,   ///< element
        Protein,
        Nucleic,
        Water,
        Ion,
        Ligand,
        Selected,
        Hidden,
        All
    };
    Kind kind = Kind::All;
    std::vector<std::string> chains;
    std::vector<std::string> residues; ///< names
    std::vector<NumberRange> numbers;
    std::vector<std::string> atoms;
    std::string text; ///< of Word, Pair, Path, Alternate and Element
};

/// A step of an expression, which works on a stack of answers: a term puts one on it, the others
/// replace those on top.
struct FindStep {
    enum class Kind { Term, Not, And, Or, Within };
    Kind kind = Kind::Term;
    FindTerm term;
    double radius = 0.0; ///< Å
};

struct FindExpression {
    std::vector<FindStep> steps; ///< empty when nothing is asked for
    QString problem;             ///< what is wrong, in one sentence; empty when nothing is
    bool ofAtoms = false;        ///< single atoms are asked for, by name or alternative location

    bool isEmpty() const { return steps.empty(); }
    bool isGood() const { return problem.isEmpty(); }
    /// Whether a term of that kind is in it.
    bool has(FindTerm::Kind kind) const;
    bool has(FindStep::Kind kind) const;
};

inline constexpr int longestFindText = 1000;       ///< characters
inline constexpr double largestFindRadius = 100.0; ///< Å

/// Reads an expression. Takes time and memory in proportion to the text, which is refused beyond
/// `longestFindText`, and never throws but for want of memory.
FindExpression readFindText(const QString& text);

} // namespace workbench
