#include "MadeBonds.h"

#include "BondAtoms.h"
#include "ListedBonds.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace memory_host {

namespace {

// The alternative location, of which residues have each their own models; 0 for none. Those of
// models that were made have no letter yet.
std::uint16_t alternativeOf(const SavedAtom& atom) {
    constexpr std::uint16_t letters = 256;
    const auto letter = static_cast<unsigned char>(atom.details.alternative);
    return letter != 0 || atom.model == 0 ? letter
                                          : static_cast<std::uint16_t>(letters + atom.model);
}

// Whether a bond is taken over from a file that lists it.
bool isInReach(const SavedAtom& a, const SavedAtom& b) {
    double squared = 0.0;
    for (std::size_t axis = 0; axis != a.position.size(); ++axis) {
        const double step =
            static_cast<double>(a.position[axis]) - static_cast<double>(b.position[axis]);
        squared += step * step;
    }
    return a.hasPosition && b.hasPosition && squared <= longestListedBond * longestListedBond;
}

// Why reading does not take over a bond that a file lists.
enum class Unread : std::uint8_t { TooLong, Apart, TooMany };
constexpr std::array<const char*, 3> unreadTexts = {
    "the atoms are more than 6 Angstrom apart", "the atoms are in different alternative locations",
    "one of the atoms has more than 64 bonds"};
static_assert(longestListedBond == 6.0 && mostListedBonds == 64);

// What becomes of the bonds of one model.
struct Settled {
    std::size_t comingBack = 0;
    std::size_t appearing = 0; ///< that were never there
    std::array<std::size_t, unreadTexts.size()> unread{};
};

// Takes out the bonds that reading would not take over, in order; counts them.
class UnreadBonds {
public:
    UnreadBonds(SavedModel& model, Settled& settled)
        : m_model(model), m_settled(settled), m_bonds(model.atoms.size()) {}

    void takeOut() {
        std::erase_if(m_model.bonds, [this](const SavedBond& bond) {
            const std::optional<Unread> reason = bond.isFoundAgain ? std::nullopt : reasonOf(bond);
            if (reason)
                ++m_settled.unread[static_cast<std::size_t>(*reason)];
            return reason && !bond.isListed;
        });
    }

private:
    std::optional<Unread> reasonOf(const SavedBond& bond) {
        const SavedAtom& a = m_model.atoms[bond.first];
        const SavedAtom& b = m_model.atoms[bond.second];
        if (!isInReach(a, b))
            return Unread::TooLong;
        const std::uint16_t one = alternativeOf(a);
        const std::uint16_t other = alternativeOf(b);
        if (one != other && one != 0 && other != 0)
            return Unread::Apart;
        if (std::max(++m_bonds[bond.first], ++m_bonds[bond.second]) > mostListedBonds)
            return Unread::TooMany;
        return std::nullopt;
    }

    SavedModel& m_model;
    Settled& m_settled;
    std::vector<std::uint32_t> m_bonds; ///< by atom: how many the file lists
};

// The names of the atom of a model.
std::string namesOf(const SavedModel& model, std::uint32_t index,
                    const std::vector<std::string>& names) {
    const SavedAtom& atom = model.atoms[index];
    const SavedResidue& residue =
        *std::prev(std::ranges::upper_bound(model.residues, index, {}, &SavedResidue::firstAtom));
    std::string text;
    for (const std::uint32_t part :
         {model.chains[residue.chain], residue.number, residue.insertion, residue.name, atom.name})
        text.append(names[part]) += '\n';
    return text += atom.details.alternative;
}

// The names of the bonds that a file goes on to list for all models.
std::unordered_set<std::string> listedNames(const SavedStructure& structure, bool isTextKept,
                                            const std::vector<std::string>& names) {
    std::unordered_set<std::string> all;
    for (const SavedModel& model : structure.models)
        if (isTextKept || &model == &structure.models.front())
            for (const SavedBond& bond : model.bonds)
                if (bond.isListed)
                    all.insert(namesOfBond(model, {bond.first, bond.second}, names));
    return all;
}

// Bonds of a model that were listed and destroyed, whose atoms are left.
std::vector<BondPair> destroyedBonds(const SavedModel& model) {
    std::unordered_map<std::uint32_t, std::uint32_t> atoms; // by row
    for (const auto& [first, second] : model.lostBonds)
        for (const std::uint32_t row : {first, second})
            atoms.emplace(row, SavedAtom::newRow);
    for (std::uint32_t i = 0; i != model.atoms.size(); ++i)
        if (const auto found = atoms.find(model.atoms[i].row); found != atoms.end())
            found->second = i;
    std::vector<BondPair> destroyed;
    for (const auto& [first, second] : model.lostBonds)
        if (const BondPair pair = std::minmax(atoms[first], atoms[second]);
            pair.second != SavedAtom::newRow)
            destroyed.push_back(pair);
    return destroyed;
}

// Adds the bonds that come back because further models have them, too.
void addListedElsewhere(const SavedStructure& structure, bool isTextKept,
                        const std::vector<std::string>& names, Settled& settled) {
    const auto isWhole = [](const SavedModel& model) { return model.lostBonds.empty(); };
    if (std::ranges::all_of(structure.models, isWhole))
        return;
    const auto listed = listedNames(structure, isTextKept, names);
    for (const SavedModel& model : structure.models) {
        std::vector<BondPair> destroyed = destroyedBonds(model);
        std::erase_if(destroyed, [&](const BondPair& pair) {
            return !listed.contains(namesOfBond(model, pair, names));
        });
        if (destroyed.empty()) // mostly, which spares the search
            continue;
        const std::vector<BondPair> again = bondsFoundAgain(model, names);
        for (const BondPair& pair : destroyed)
            settled.comingBack += !std::ranges::binary_search(again, pair);
    }
}

Settled settle(SavedModel& model, const std::vector<std::string>& names) {
    const std::vector<BondPair> again = bondsFoundAgain(model, names);
    std::vector<BondPair> there = model.foundBonds;
    for (SavedBond& bond : model.bonds) {
        there.emplace_back(bond.first, bond.second);
        bond.isFoundAgain = std::ranges::binary_search(again, there.back());
    }
    std::ranges::sort(there);
    Settled settled;
    std::vector<BondPair> pairs;
    std::ranges::set_difference(again, there, std::back_inserter(pairs));
    (model.lacksBonds ? settled.comingBack : settled.appearing) = pairs.size();
    pairs.clear();
    std::ranges::set_difference(model.foundBonds, again, std::back_inserter(pairs));
    for (const auto& [first, second] : pairs)
        model.bonds.push_back({first, second});
    std::ranges::sort(model.bonds, {},
                      [](const SavedBond& bond) { return std::pair(bond.first, bond.second); });
    UnreadBonds(model, settled).takeOut();
    return settled;
}

} // namespace

std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names) {
    return namesOf(model, atoms.first, names) + namesOf(model, atoms.second, names);
}

std::vector<BondPair> bondsFoundAgain(const SavedModel& model,
                                      const std::vector<std::string>& names) {
    std::vector<BondAtom> atoms(model.atoms.size());
    const BondAtoms make;
    std::uint16_t alternatives = 0;
    for (std::size_t i = 0; i != model.residues.size(); ++i) {
        const bool canBond = names[model.residues[i].name] != membraneMarker;
        for (std::uint32_t k = model.residues[i].firstAtom; k != model.atomEnd(i); ++k) {
            const SavedAtom& atom = model.atoms[k];
            atoms[k] = make.of(elementOf(names[atom.element]), atom.position,
                               canBond && atom.hasPosition, alternativeOf(atom));
            alternatives = std::max(alternatives, atom.model);
        }
    }
    for (const SavedBond& bond : model.bonds)
        if (bond.isListed)
            BondAtoms::join(atoms[bond.first], atoms[bond.second]);
    return findBonds(atoms, alternatives).pairs;
}

void settleBonds(SavedContent& content, bool isTextKept, SaveReport& report) {
    Settled all;
    for (SavedStructure& structure : content.structures) {
        addListedElsewhere(structure, isTextKept, content.names, all);
        for (SavedModel& model : structure.models) {
            if (!model.isEdited)
                continue;
            const Settled settled = settle(model, content.names);
            all.comingBack += settled.comingBack;
            all.appearing += settled.appearing;
            std::ranges::transform(all.unread, settled.unread, all.unread.begin(), std::plus());
        }
    }
    if (all.comingBack != 0)
        report.remark(std::to_string(all.comingBack) +
                      (all.comingBack == 1 ? " bond that was deleted comes"
                                           : " bonds that were deleted come") +
                      " back when the file is read, as the atoms are near each other, or bonded in "
                      "other models");
    if (all.appearing != 0)
        report.remark(std::to_string(all.appearing) +
                      (all.appearing == 1 ? " further bond is" : " further bonds are") +
                      " found when the file is read, as the atoms are near each other");
    for (std::size_t i = 0; i != unreadTexts.size(); ++i)
        if (const std::size_t count = all.unread[i]; count != 0)
            report.remark(std::to_string(count) + (count == 1 ? " bond is" : " bonds are") +
                          " not kept, as " + unreadTexts[i]);
}

} // namespace memory_host
