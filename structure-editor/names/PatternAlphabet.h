// Equivalence classes of characters: those that a pattern treats alike share a column.
#pragma once

#include "PatternSyntax.h"

#include <array>
#include <cstdint>
#include <vector>

namespace name_pattern {

class Alphabet {
public:
    explicit Alphabet(const Syntax& syntax);

    /// Number of columns, including the one for the end of the name.
    int columns() const { return m_columns; }
    /// The last column stands for the end of the name.
    int endColumn() const { return m_columns - 1; }
    /// The column of each character.
    const std::array<std::uint8_t, 256>& columnOf() const { return m_columnOf; }
    /// Whether the characters of the column are in a set of the Syntax. The end is in none.
    bool isIn(int column, int set) const { return column < endColumn() && m_sets[set][column]; }
    /// Whether the characters of the column are word characters; always false for a pattern without
    /// word boundaries.
    bool isWord(int column) const { return column < endColumn() && m_words[column]; }

private:
    int m_columns = 0;
    std::array<std::uint8_t, 256> m_columnOf{};
    std::vector<CharSet> m_sets; ///< by column
    CharSet m_words;
};

} // namespace name_pattern
