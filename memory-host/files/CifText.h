// A CIF as text: its tokens, and where its categories and their rows stand. No values are kept, so
// that a category of a million rows takes no memory.
#pragma once

#include "HostExport.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace memory_host::cif {

/// A part of a text, in bytes from its beginning.
struct Place {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t size() const { return end - begin; }
    std::string_view in(std::string_view text) const { return text.substr(begin, size()); }
};

enum class TokenKind : std::uint8_t { Block, Frame, FrameEnd, Loop, LoopEnd, Tag, Value, End };

struct Token {
    TokenKind kind;
    Place place;
};

/// Takes the tokens of a text, one after the other. The text is a valid CIF; of any other text the
/// tokens are some parts.
class Tokens {
public:
    explicit Tokens(std::string_view text, std::size_t from = 0) : m_text(text), m_at(from) {}
    Token next();

private:
    void skipBlanks();
    bool isAtLineBegin() const;
    std::size_t endOfQuoted() const;
    std::size_t endOfField() const;

    std::string_view m_text;
    std::size_t m_at;
};

/// A category of a data block: a loop, or the pairs of tag and value of its only row.
struct HOST_EXPORT Category {
    struct Pair {
        Place tag;
        Place value;
    };

    std::size_t block = 0;                 ///< of the contents' blocks
    std::string name;                      ///< in lower case: "_struct_conn"
    std::vector<std::string_view> columns; ///< as "id"; empty: a tag of another category
    std::vector<Pair> pairs;               ///< by column; empty for a loop
    Place place; ///< from "loop_", or the first tag, to the end of the last value
    Place rows;  ///< of a loop: from its first value to the end of the last one
    std::size_t rowCount = 1;

    bool isLoop() const { return pairs.empty(); }
    /// The index of a column, whatever its case; that of none is columns.size().
    std::size_t column(std::string_view column) const;
};

/// What a text holds, in its order. The columns' names are parts of the text.
struct Contents {
    std::vector<Category> categories; ///< but for those in save frames, which hold definitions
    std::vector<std::size_t> blocks;  ///< where the data blocks begin
};
HOST_EXPORT Contents contentsOf(std::string_view text);

/// The rows of a category, one after the other.
class HOST_EXPORT Rows {
public:
    Rows(std::string_view text, const Category& category);
    /// Goes to the next row, at first to the first one; false behind the last.
    bool next();
    /// The values of the row, by column.
    const std::vector<Place>& places() const { return m_places; }
    std::string_view operator[](std::size_t column) const { return m_places[column].in(m_text); }

private:
    std::string_view m_text;
    Tokens m_tokens;
    std::size_t m_left;
    const Category& m_category;
    std::vector<Place> m_places;
};

} // namespace memory_host::cif
