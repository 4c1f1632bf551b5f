#include "PatternAlphabet.h"

#include <algorithm>

namespace name_pattern {

namespace {

bool asksForWords(const Syntax& syntax) {
    return std::any_of(syntax.nodes.begin(), syntax.nodes.end(), [](const Node& node) {
        return node.kind == NodeKind::Assertion &&
               (node.first == static_cast<int>(Condition::WordBoundary) ||
                node.first == static_cast<int>(Condition::NoWordBoundary));
    });
}

} // namespace

Alphabet::Alphabet(const Syntax& syntax) {
    const CharSet words = asksForWords(syntax) ? wordCharacters() : CharSet();
    std::array<int, 256> part{};
    int parts = 1;
    const auto divide = [&](const CharSet& set) {
        std::array<int, 512> renamed;
        renamed.fill(-1);
        parts = 0;
        for (std::size_t c = 0; c < part.size(); ++c) {
            int& name = renamed[static_cast<std::size_t>(part[c]) * 2 + set[c]];
            if (name < 0)
                name = parts++;
            part[c] = name;
        }
    };
    divide(words);
    for (std::size_t i = 0; i < syntax.sets.size() && parts < 256; ++i)
        divide(syntax.sets[i]);

    m_columns = parts + 1;
    std::array<std::size_t, 256> example{};
    for (std::size_t c = 0; c < part.size(); ++c) {
        m_columnOf[c] = static_cast<std::uint8_t>(part[c]);
        example[static_cast<std::size_t>(part[c])] = c;
    }
    const auto byColumn = [&](const CharSet& set) {
        CharSet columns;
        for (std::size_t i = 0; i < static_cast<std::size_t>(parts); ++i)
            columns[i] = set[example[i]];
        return columns;
    };
    m_words = byColumn(words);
    m_sets.reserve(syntax.sets.size());
    for (const CharSet& set : syntax.sets)
        m_sets.push_back(byColumn(set));
}

} // namespace name_pattern
