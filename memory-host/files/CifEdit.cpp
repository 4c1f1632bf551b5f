#include "CifEdit.h"

#include "MmcifAtoms.h"

#include <algorithm>

namespace memory_host::cif {

namespace {

bool isLineEnd(std::string_view text, std::size_t at) {
    return at == text.size() || text[at] == '\n' || text[at] == '\r';
}

bool isSpace(char c) {
    return c == ' ' || c == '\t';
}

std::size_t skipSpaces(std::string_view text, std::size_t at) {
    while (at < text.size() && isSpace(text[at]))
        ++at;
    return at;
}

std::size_t backOverSpaces(std::string_view text, std::size_t at) {
    while (at > 0 && isSpace(text[at - 1]))
        --at;
    return at;
}

// The line end at a place; empty at the end of the text.
std::string_view lineEndAt(std::string_view text, std::size_t at) {
    return text.substr(at, text.substr(at).starts_with("\r\n") ? 2 : 1);
}

// The line ends of a text, by the first one.
std::string_view lineEndOf(std::string_view text) {
    const std::size_t first = text.find_first_of("\r\n");
    return first == std::string_view::npos ? std::string_view("\n") : lineEndAt(text, first);
}

// From the first to the last value of a row, wherever its columns stand.
Place placeOf(std::span<const Place> row) {
    Place place = row.front();
    for (const Place& value : row) {
        place.begin = std::min(place.begin, value.begin);
        place.end = std::max(place.end, value.end);
    }
    return place;
}

// Which lines a part of the text has to itself.
struct Lines {
    Lines(std::string_view text, const Place& part)
        : place{backOverSpaces(text, part.begin), skipSpaces(text, part.end)},
          beginsLine(place.begin == 0 || isLineEnd(text, place.begin - 1)),
          endsLine(isLineEnd(text, place.end)) {}

    Place place; ///< with the blanks around
    bool beginsLine;
    bool endsLine;
};

// What goes with a part of the text that is removed. What follows in the line stays behind a blank,
// as it might mean something else at the beginning of a line.
Place removedWith(std::string_view text, const Place& part) {
    const Lines lines(text, part);
    Place place = lines.place;
    if (lines.beginsLine && lines.endsLine)
        place.end += lineEndAt(text, place.end).size();
    else if (!lines.endsLine && place.end != part.end)
        --place.end;
    return place;
}

// The end of the empty comment that stands in the line from `begin` on; `begin` if there is none.
std::size_t endOfSeparator(std::string_view text, std::size_t begin) {
    if (begin == text.size() || text[begin] != '#')
        return begin;
    const std::size_t end = skipSpaces(text, begin + 1);
    return isLineEnd(text, end) ? end + lineEndAt(text, end).size() : begin;
}

bool isBehindSeparator(std::string_view text, std::size_t begin) {
    const std::size_t comment = text.substr(0, begin).rfind('#');
    return comment != std::string_view::npos && (comment == 0 || isLineEnd(text, comment - 1)) &&
           endOfSeparator(text, comment) == begin;
}

bool canBeQuoted(std::string_view value, char quote) {
    for (std::size_t at = value.find(quote); at < value.size(); at = value.find(quote, at + 1))
        if (at + 1 == value.size() || isSpace(value[at + 1]) || value[at + 1] == '#')
            return false;
    return true;
}

bool isPlain(std::string_view value) {
    constexpr std::string_view special = "_#$'\";[]?.";
    constexpr std::string_view keywords[] = {"data_", "loop_", "save_", "stop_", "global_"};
    const bool isNumber = value.front() == '.' && value.size() > 1;
    return (isNumber || special.find(value.front()) == std::string_view::npos) &&
           std::ranges::all_of(
               value, [](char c) { return c > ' ' && c <= '~' && c != '\'' && c != '"'; }) &&
           std::ranges::none_of(keywords,
                                [value](std::string_view word) { return startsWith(value, word); });
}

} // namespace

std::string written(std::string_view value) {
    if (value.empty())
        return "?";
    if (isPlain(value))
        return std::string(value);
    const bool isLine = value.find_first_of("\r\n") == std::string_view::npos;
    for (const char quote : {'\'', '"'})
        if (isLine && value.find(quote) == std::string_view::npos)
            return quote + std::string(value) + quote;
    for (const char quote : {'\'', '"'})
        if (isLine && canBeQuoted(value, quote))
            return quote + std::string(value) + quote;
    return "\n;" + std::string(value) + "\n;";
}

void Edit::replace(const Place& place, std::string_view by) {
    const std::size_t begin = std::max(place.begin, m_copied);
    m_new += m_text.substr(m_copied, begin - m_copied);
    m_new += by;
    m_copied = std::max(place.end, begin);
}

void Edit::setValue(const Place& place, std::string_view value) {
    const std::size_t spaces = skipSpaces(m_text, place.end) - place.end;
    const bool isAlone = spaces == 0 || value.find('\n') != std::string_view::npos ||
                         place.in(m_text).find('\n') != std::string_view::npos;
    Place replaced = place;
    if (!isAlone && value.size() > place.size())
        replaced.end += std::min(value.size() - place.size(), spaces - 1);
    replace(replaced, value);
    if (!isAlone && value.size() < place.size())
        m_new.append(place.size() - value.size(), ' ');
}

void Edit::setValues(std::span<const Place> row, std::span<const Change> changes) {
    std::vector<const Change*> inOrder;
    inOrder.reserve(changes.size());
    for (const Change& change : changes)
        inOrder.push_back(&change);
    std::ranges::sort(inOrder, {},
                      [row](const Change* change) { return row[change->column].begin; });
    for (const Change* change : inOrder)
        setValue(row[change->column], change->value);
}

void Edit::dropRow(std::span<const Place> row) {
    replace(removedWith(m_text, placeOf(row)), {});
}

void Edit::dropLoop(const Category& loop) {
    replace(removedWith(m_text, loop.place), {});
}

void Edit::dropPair(const Category::Pair& pair) {
    replace(removedWith(m_text, {pair.tag.begin, pair.value.end}), {});
}

void Edit::dropSeparator(const Category& category) {
    if (isBehindSeparator(m_text, Lines(m_text, category.place).place.begin))
        replace({m_copied, endOfSeparator(m_text, m_copied)}, {});
}

// A row in one line, with a blank between its values.
std::string Edit::joined(std::span<const Place> row, std::span<const Change> changes) const {
    std::vector<std::string> values;
    values.reserve(row.size());
    for (const Place& place : row) {
        const std::string_view value = place.in(m_text);
        const bool isLine = value.find_first_of("\r\n") == std::string_view::npos;
        values.push_back(isLine ? std::string(value) : written(mmcif::contentOf(value)));
    }
    for (const Change& change : changes)
        values[change.column] = change.value;
    std::string line;
    for (const std::string& value : values)
        line.append(line.empty() ? "" : " ").append(value);
    return line;
}

// The columns stay in line where the row has a line to itself.
std::string Edit::copyOf(std::span<const Place> row, std::span<const Change> changes) const {
    const Lines lines(m_text, placeOf(row));
    const std::string_view line = lines.place.in(m_text);
    if (!lines.beginsLine || !lines.endsLine || line.find_first_of("\r\n") != line.npos)
        return joined(row, changes);
    std::vector<Place> moved(row.begin(), row.end());
    for (Place& place : moved)
        place = {place.begin - lines.place.begin, place.end - lines.place.begin};
    Edit copy(line);
    copy.setValues(moved, changes);
    return copy.take();
}

void Edit::addRow(std::span<const Place> behind, std::span<const Place> pattern,
                  std::span<const Change> changes) {
    const Lines lines(m_text, placeOf(behind));
    const std::string row = copyOf(pattern, changes);
    const std::string_view lineEnd =
        lines.endsLine ? lineEndAt(m_text, lines.place.end) : std::string_view();
    const bool beginsNext = !lineEnd.empty();
    const std::size_t at = beginsNext ? lines.place.end + lineEnd.size() : placeOf(behind).end;
    const std::string ending(beginsNext ? lineEnd : lineEndOf(m_text));
    if (beginsNext)
        replace({at, at}, row + ending);
    else
        replace({at, at}, lines.endsLine ? ending + row : ending + row + ending);
}

void Edit::makeLoop(const Category& category, std::span<const std::vector<Change>> rows) {
    const std::string ending(lineEndOf(m_text));
    std::vector<Place> pattern;
    const Place first{category.pairs.front().tag.begin, category.pairs.front().value.end};
    std::string loop = (Lines(m_text, first).beginsLine ? "loop_" : ending + "loop_") + ending;
    for (const Category::Pair& pair : category.pairs) {
        loop.append(pair.tag.in(m_text)).append(ending);
        pattern.push_back(pair.value);
    }
    for (const std::vector<Change>& changes : rows)
        loop += joined(pattern, changes) + ending;
    replace(removedWith(m_text, first), loop);
}

std::string Edit::take() {
    replace({m_text.size(), m_text.size()}, {});
    return std::move(m_new);
}

} // namespace memory_host::cif
