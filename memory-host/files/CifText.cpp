#include "CifText.h"

#include "Fields.h"

#include <algorithm>
#include <map>
#include <optional>

namespace memory_host::cif {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The kind of a word without quotes.
TokenKind kindOf(std::string_view word) {
    if (word.front() == '_')
        return TokenKind::Tag;
    if (word.size() < 5)
        return TokenKind::Value;
    if (startsWith(word, "data_") || startsWith(word, "global_"))
        return TokenKind::Block;
    if (startsWith(word, "loop_"))
        return TokenKind::Loop;
    if (startsWith(word, "stop_"))
        return TokenKind::LoopEnd;
    if (startsWith(word, "save_"))
        return word.size() == 5 ? TokenKind::FrameEnd : TokenKind::Frame;
    return TokenKind::Value;
}

// Tag, as far as the point, in lower case: the category's name.
std::string categoryName(std::string_view tag) {
    std::string name(tag.substr(0, tag.find('.')));
    std::ranges::transform(name, name.begin(), lowerCase);
    return name;
}

// Some editors write a byte order mark.
std::size_t beginOf(std::string_view text) {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    return text.starts_with(mark) ? mark.size() : 0;
}

class Survey {
public:
    explicit Survey(std::string_view text) : m_text(text), m_tokens(text, beginOf(text)) {}

    Contents take() {
        for (Token token = m_tokens.next(); token.kind != TokenKind::End;)
            token = take(token);
        return std::move(m_contents);
    }

private:
    Token take(const Token& token) {
        switch (token.kind) {
        case TokenKind::Block:
            m_contents.blocks.push_back(token.place.begin);
            m_pairs.clear();
            m_isInFrame = false;
            break;
        case TokenKind::Frame:
        case TokenKind::FrameEnd:
            m_isInFrame = token.kind == TokenKind::Frame;
            break;
        case TokenKind::Loop:
            return takeLoop(token.place.begin);
        case TokenKind::Tag:
            takePair(token.place);
            break;
        default:
            break;
        }
        return m_tokens.next();
    }

    // Returns the token behind the loop.
    Token takeLoop(std::size_t begin) {
        Category loop;
        std::vector<std::string_view> tags;
        Token token = m_tokens.next();
        for (; token.kind == TokenKind::Tag; token = m_tokens.next())
            tags.push_back(token.place.in(m_text));
        loop.rows = {token.place.begin, token.place.begin};
        std::size_t values = 0;
        for (; token.kind == TokenKind::Value; token = m_tokens.next()) {
            loop.rows.end = token.place.end;
            ++values;
        }
        loop.place = {begin, loop.rows.end};
        if (token.kind == TokenKind::LoopEnd) {
            loop.place.end = token.place.end;
            token = m_tokens.next();
        }
        if (m_isInFrame || tags.empty() || m_contents.blocks.empty())
            return token;
        loop.block = m_contents.blocks.size() - 1;
        loop.rowCount = values / tags.size();
        setColumns(loop, tags);
        m_contents.categories.push_back(std::move(loop));
        return token;
    }

    // A loop is of the category of its first tag; one of atoms may begin with others.
    static void setColumns(Category& loop, const std::vector<std::string_view>& tags) {
        const auto atoms = std::ranges::find_if(
            tags, [](std::string_view tag) { return startsWith(tag, "_atom_site."); });
        loop.name = categoryName(atoms == tags.end() ? tags.front() : *atoms);
        for (const std::string_view tag : tags)
            loop.columns.push_back(columnOf(loop.name, tag));
    }

    static std::string_view columnOf(const std::string& category, std::string_view tag) {
        const bool isOfIt = tag.size() > category.size() && tag[category.size()] == '.' &&
                            startsWith(tag, category);
        return isOfIt ? tag.substr(category.size() + 1) : std::string_view();
    }

    void takePair(const Place& tag) {
        const Token value = m_tokens.next();
        if (m_isInFrame || value.kind != TokenKind::Value || m_contents.blocks.empty())
            return;
        const std::string name = categoryName(tag.in(m_text));
        const auto [known, isNew] = m_pairs.emplace(name, m_contents.categories.size());
        if (isNew) {
            Category& category = m_contents.categories.emplace_back();
            category.block = m_contents.blocks.size() - 1;
            category.name = name;
            category.place.begin = tag.begin;
        }
        Category& category = m_contents.categories[known->second];
        category.columns.push_back(columnOf(name, tag.in(m_text)));
        category.pairs.push_back({tag, value.place});
        category.place.end = value.place.end;
    }

    std::string_view m_text;
    Tokens m_tokens;
    Contents m_contents;
    std::map<std::string, std::size_t> m_pairs; ///< categories without a loop, of the block
    bool m_isInFrame = false;
};

} // namespace

bool Tokens::isAtLineBegin() const {
    return m_at == 0 || m_text[m_at - 1] == '\n' || m_text[m_at - 1] == '\r';
}

void Tokens::skipBlanks() {
    for (; m_at != m_text.size(); ++m_at) {
        if (m_text[m_at] == '#')
            m_at = std::min(m_text.find_first_of("\r\n", m_at), m_text.size() - 1);
        else if (!isBlank(m_text[m_at]))
            return;
    }
}

// A quote ends a value only where a blank or a comment follows.
std::size_t Tokens::endOfQuoted() const {
    for (std::size_t at = m_at + 1; at < m_text.size(); ++at)
        if (m_text[at] == m_text[m_at] &&
            (at + 1 == m_text.size() || isBlank(m_text[at + 1]) || m_text[at + 1] == '#'))
            return at + 1;
    return m_text.size();
}

// A text field ends with a semicolon at the beginning of a line.
std::size_t Tokens::endOfField() const {
    std::size_t at = m_at;
    do
        at = m_text.find(';', at + 1);
    while (at < m_text.size() && m_text[at - 1] != '\n' && m_text[at - 1] != '\r');
    return at < m_text.size() ? at + 1 : m_text.size();
}

Token Tokens::next() {
    skipBlanks();
    if (m_at == m_text.size())
        return {TokenKind::End, {m_at, m_at}};
    const std::size_t begin = m_at;
    const char first = m_text[begin];
    const bool isField = first == ';' && isAtLineBegin();
    if (isField || first == '\'' || first == '"') {
        m_at = isField ? endOfField() : endOfQuoted();
        return {TokenKind::Value, {begin, m_at}};
    }
    while (m_at != m_text.size() && !isBlank(m_text[m_at]))
        ++m_at;
    return {kindOf(m_text.substr(begin, m_at - begin)), {begin, m_at}};
}

std::size_t Category::column(std::string_view column) const {
    return static_cast<std::size_t>(std::ranges::find_if(columns,
                                                         [column](std::string_view known) {
                                                             return known.size() == column.size() &&
                                                                    startsWith(known, column);
                                                         }) -
                                    columns.begin());
}

Contents contentsOf(std::string_view text) {
    return Survey(text).take();
}

Rows::Rows(std::string_view text, const Category& category)
    : m_text(text), m_tokens(text, category.rows.begin), m_left(category.rowCount),
      m_category(category), m_places(category.columns.size()) {}

bool Rows::next() {
    if (m_left == 0)
        return false;
    --m_left;
    for (std::size_t i = 0; i != m_places.size(); ++i)
        m_places[i] = m_category.isLoop() ? m_tokens.next().place : m_category.pairs[i].value;
    return true;
}

} // namespace memory_host::cif
