#include "FindMatch.h"

#include "NearSearch.h"

#include <algorithm>
#include <cassert>
#include <cctype>

namespace workbench {

namespace {

using Residue = FindIndex::Residue;
using Kind = FindTerm::Kind;

bool isSameIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

bool isIn(const Residue& residue, const NumberRange& range) {
    return residue.hasNumber && residue.number >= range.first && residue.number <= range.last &&
           (range.first != range.last || residue.insertion == range.insertion);
}

bool isInAny(const Residue& residue, const std::vector<NumberRange>& ranges) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [&](const NumberRange& range) { return isIn(residue, range); });
}

class Matcher {
public:
    Matcher(const FindIndex& index, const FindValues& values) : m_index(index), m_values(values) {}

    Bits match(const FindTerm& term) const {
        switch (term.kind) {
        case Kind::Place:
            return matchPlace(term);
        case Kind::Word:
            return matchWord(term);
        case Kind::Pair:
            return matchPair(term);
        case Kind::Path:
            return matchPath(term.text);
        case Kind::Alternate:
            return matchAtoms(*m_values.alternates, [&term](char letter) {
                return letter == term.text.front() ||
                       (letter != ' ' &&
                        std::toupper(static_cast<unsigned char>(letter)) ==
                            std::toupper(static_cast<unsigned char>(term.text.front())));
            });
        case Kind::Element:
            return matchAtoms(*m_values.elements, [key = m_index.names.find(term.text)](
                                                      NameKeys::Key name) { return name == key; });
        case Kind::Protein:
            return matchKind(FindIndex::Kind::Protein);
        case Kind::Nucleic:
            return matchKind(FindIndex::Kind::Nucleic);
        case Kind::Water:
            return matchKind(FindIndex::Kind::Water);
        case Kind::Ion:
            return matchKind(FindIndex::Kind::Ion);
        case Kind::Ligand:
            return matchKind(FindIndex::Kind::Ligand);
        case Kind::Selected:
            return *m_values.selected;
        case Kind::Hidden:
            return *m_values.hidden;
        case Kind::All:
            return Bits(m_index.atoms.size(), true);
        }
        return Bits(m_index.atoms.size());
    }

private:
    template <class Holds> Bits matchResidues(const Holds& holds) const {
        Bits atoms(m_index.atoms.size());
        for (const Residue& residue : m_index.residues)
            if (holds(residue))
                atoms.add(residue.begin, residue.end);
        return atoms;
    }
    template <class Values, class Holds>
    Bits matchAtoms(const Values& values, const Holds& holds) const {
        Bits atoms(m_index.atoms.size());
        for (std::size_t i = 0; i != values.size(); ++i)
            if (holds(values[i]))
                atoms.add(i);
        return atoms;
    }
    Bits matchKind(FindIndex::Kind kind) const {
        return matchResidues(
            [kind](const Residue& residue) { return residue.item && residue.kind == kind; });
    }
    /// Chains of these names, by chain. Case matters where a chain of exactly that name is there.
    std::vector<bool> chainsOf(const std::vector<std::string>& names) const {
        std::vector<bool> wanted(m_index.chains.size());
        for (const std::string& name : names) {
            const bool isThere = std::find(m_index.chains.begin(), m_index.chains.end(), name) !=
                                 m_index.chains.end();
            for (std::size_t i = 0; i != wanted.size(); ++i)
                if (isThere ? m_index.chains[i] == name
                            : isSameIgnoringCase(m_index.chains[i], name))
                    wanted[i] = true;
        }
        return wanted;
    }
    static bool isIn(const std::vector<bool>& chains, const Residue& residue) {
        return residue.chain < chains.size() && chains[residue.chain];
    }
    std::vector<NameKeys::Key> keysOf(const std::vector<std::string>& names) const {
        std::vector<NameKeys::Key> keys;
        for (const std::string& name : names)
            keys.push_back(m_index.names.find(name));
        std::erase(keys, NameKeys::none);
        return keys;
    }
    static bool isAmong(NameKeys::Key name, const std::vector<NameKeys::Key>& keys) {
        return std::find(keys.begin(), keys.end(), name) != keys.end();
    }

    Bits matchPlace(const FindTerm& term) const {
        const std::vector<bool> chains = chainsOf(term.chains);
        const std::vector<NameKeys::Key> residues = keysOf(term.residues);
        const std::vector<NameKeys::Key> names = keysOf(term.atoms);
        const bool anyResidue = term.residues.empty() && term.numbers.empty();
        Bits atoms(m_index.atoms.size());
        for (const Residue& residue : m_index.residues) {
            if ((!term.chains.empty() && !isIn(chains, residue)) ||
                (!anyResidue && !isAmong(residue.name, residues) &&
                 !isInAny(residue, term.numbers)))
                continue;
            if (term.atoms.empty()) {
                atoms.add(residue.begin, residue.end);
                continue;
            }
            for (std::uint32_t i = residue.begin; i != residue.end; ++i)
                if (isAmong(m_index.atomNames[i], names))
                    atoms.add(i);
        }
        return atoms;
    }
    Bits matchWord(const FindTerm& term) const {
        const NameKeys::Key name = m_index.names.find(term.text);
        const bool isResidue =
            name != NameKeys::none &&
            std::any_of(m_index.residues.begin(), m_index.residues.end(),
                        [name](const Residue& residue) { return residue.name == name; });
        if (isResidue || !term.numbers.empty())
            return matchResidues([&](const Residue& residue) {
                return (isResidue && residue.name == name) || isInAny(residue, term.numbers);
            });
        const std::vector<bool> chains = chainsOf({term.text});
        return matchResidues([&](const Residue& residue) { return isIn(chains, residue); });
    }
    Bits matchPair(const FindTerm& term) const {
        const NameKeys::Key name = m_index.names.find(term.text);
        const std::vector<bool> chains = chainsOf({term.text});
        return matchResidues([&](const Residue& residue) {
            return isInAny(residue, term.numbers) &&
                   (isIn(chains, residue) || (name != NameKeys::none && residue.name == name));
        });
    }
    Bits matchPath(std::string_view path) const {
        while (path.size() > 1 && path.ends_with('/'))
            path.remove_suffix(1);
        Bits atoms(m_index.atoms.size());
        std::string whole;
        for (const Residue& residue : m_index.residues) {
            whole = m_index.places[residue.place];
            if (residue.item)
                whole.append(1, '/').append(m_index.label(residue));
            const std::size_t both = std::min(path.size(), whole.size());
            if (path.substr(0, both) != std::string_view(whole).substr(0, both))
                continue;
            if (path.size() <= whole.size()) {
                if (path.size() == whole.size() || whole[path.size()] == '/')
                    atoms.add(residue.begin, residue.end);
            } else if (path[whole.size()] == '/') {
                const NameKeys::Key name = m_index.names.find(path.substr(whole.size() + 1));
                for (std::uint32_t i = residue.begin; i != residue.end; ++i)
                    if (m_index.atomNames[i] == name)
                        atoms.add(i);
            }
        }
        return atoms;
    }

    const FindIndex& m_index;
    const FindValues& m_values;
};

} // namespace

FindHits findHits(const FindIndex& index, const FindValues& values,
                  const FindExpression& expression, const std::stop_token& stop) {
    const Matcher matcher(index, values);
    std::vector<Bits> stack;
    const auto pop = [&stack] {
        Bits top = std::move(stack.back());
        stack.pop_back();
        return top;
    };
    for (const FindStep& step : expression.steps) {
        if (stop.stop_requested())
            return {};
        switch (step.kind) {
        case FindStep::Kind::Term:
            stack.push_back(matcher.match(step.term));
            break;
        case FindStep::Kind::Not:
            stack.back().invert();
            break;
        case FindStep::Kind::And: {
            const Bits right = pop();
            stack.back() &= right;
            break;
        }
        case FindStep::Kind::Or: {
            const Bits right = pop();
            stack.back() |= right;
            break;
        }
        case FindStep::Kind::Within:
            stack.back() = values.near.get()->near(stack.back(), step.radius, stop);
            break;
        }
    }
    FindHits found;
    found.ofAtoms = expression.ofAtoms;
    found.atoms = stack.empty() ? Bits(index.atoms.size()) : std::move(stack.back());
    found.atomCount = found.atoms.count();
    if (found.ofAtoms) {
        found.hits.reserve(found.atomCount);
        for (std::size_t i = found.atoms.next(0); i != found.atoms.size();
             i = found.atoms.next(i + 1))
            found.hits.push_back(static_cast<std::uint32_t>(i));
    } else if (found.atomCount > 0) {
        std::size_t atom = found.atoms.next(0);
        for (std::uint32_t i = 0; i != index.residues.size(); ++i) {
            const Residue& residue = index.residues[i];
            if (atom < residue.begin)
                atom = found.atoms.next(residue.begin);
            if (atom < residue.end)
                found.hits.push_back(i);
        }
    }
    return found;
}

std::string hitText(const FindIndex& index, const FindHits& hits, std::uint32_t hit) {
    const Residue& residue = index.residues[hits.ofAtoms ? index.residueOf(hit) : hit];
    std::string text = index.places[residue.place];
    // All residues of a chain stand in its "Groups", which says nothing.
    constexpr std::string_view groups = "/Groups";
    if (text.ends_with(groups))
        text.resize(text.size() - groups.size());
    if (text.starts_with('/'))
        text.erase(0, 1);
    if (residue.item)
        text.append(1, ' ').append(index.label(residue));
    if (hits.ofAtoms) {
        text.append(1, ' ').append(index.atoms[hit]->GetName());
        if (const char letter = alternateOf(index.atoms[hit]); letter != ' ')
            text.append(" (").append(1, letter).append(1, ')');
    }
    return text;
}

} // namespace workbench
