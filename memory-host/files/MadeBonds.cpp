#include "MadeBonds.h"

#include "AlternativeLetters.h"
#include "BondAtoms.h"
#include "ListedBonds.h"
#include "Relettering.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace memory_host {

namespace {

using Letters = std::vector<char>; // of alternative locations, by atom; see alternativeLetters()

BondPair endsOf(const SavedBond& bond) {
    return {bond.first, bond.second};
}

// Why reading does not take over a bond that a file lists.
enum class Unread : std::uint8_t { TooLong, Apart, TooMany, Ambiguous, Held };
constexpr std::array<const char*, 5> unreadTexts = {
    "the atoms are more than 6 Angstrom apart", "the atoms are in different alternative locations",
    "one of the atoms has more than 64 bonds",
    "the number or the names of one of the atoms are those of another, too",
    "a bond that was made in another model holds the metal"};
static_assert(longestListedBond == 6.0 && mostListedBonds == 64);

// What becomes of the bonds of one model.
struct Settled {
    std::size_t comingBack = 0;
    std::size_t appearing = 0; ///< that were never there
    std::size_t shared = 0;    ///< likewise, in further models than the one that has them
    std::array<std::size_t, unreadTexts.size()> unread{};
};

// Takes out the bonds that reading would not take over, in order; counts them.
class UnreadBonds {
public:
    UnreadBonds(SavedModel& model, const Letters& letters, Settled& settled)
        : m_model(model), m_letters(letters), m_settled(settled), m_bonds(model.atoms.size()) {}

    void takeOut() {
        std::erase_if(m_model.bonds, [this](SavedBond& bond) {
            const std::optional<Unread> reason = bond.isFoundAgain ? std::nullopt : reasonOf(bond);
            bond.isUnread = reason.has_value();
            if (reason)
                ++m_settled.unread[static_cast<std::size_t>(*reason)];
            return reason && !bond.isListed;
        });
    }

private:
    std::optional<Unread> reasonOf(const SavedBond& bond) {
        if (!isInReach(m_model.atoms[bond.first], m_model.atoms[bond.second]))
            return Unread::TooLong;
        if (areApart(m_letters[bond.first], m_letters[bond.second]))
            return Unread::Apart;
        if (std::max(++m_bonds[bond.first], ++m_bonds[bond.second]) > mostListedBonds)
            return Unread::TooMany;
        return std::nullopt;
    }

    SavedModel& m_model;
    const Letters& m_letters;
    Settled& m_settled;
    std::vector<std::uint32_t> m_bonds; ///< by atom: how many the file lists
};

// The search for bonds by distance when a model is read again.
class SearchAgain {
public:
    SearchAgain(const SavedModel& model, const std::vector<std::string>& names,
                const Letters& letters)
        : m_atoms(model.atoms.size()) {
        const BondAtoms make;
        for (std::size_t i = 0; i != model.residues.size(); ++i) {
            const bool canBond = names[model.residues[i].name] != membraneMarker;
            for (std::uint32_t k = model.residues[i].firstAtom; k != model.atomEnd(i); ++k) {
                const SavedAtom& atom = model.atoms[k];
                m_atoms[k] =
                    make.of(elementOf(names[atom.element]), atom.position,
                            canBond && atom.hasPosition, static_cast<unsigned char>(letters[k]));
                m_alternatives = std::max(m_alternatives, atom.model);
            }
        }
        for (const SavedBond& bond : model.bonds)
            if (bond.isListed)
                BondAtoms::join(m_atoms[bond.first], m_atoms[bond.second]);
    }

    std::vector<BondPair> find() const { return findBonds(m_atoms, m_alternatives).pairs; }
    /// Takes into account a bond that the file is going to list. Returns whether that holds a metal
    /// which was not held before, so that other bonds of it may not be found.
    bool join(const SavedBond& bond) {
        BondAtom& first = m_atoms[bond.first];
        BondAtom& second = m_atoms[bond.second];
        const auto heldMetals = [&] {
            return static_cast<int>(first.kind == BondKind::Metal && first.isHeld) +
                   static_cast<int>(second.kind == BondKind::Metal && second.isHeld);
        };
        const int before = heldMetals();
        BondAtoms::join(first, second);
        return heldMetals() != before;
    }

private:
    std::vector<BondAtom> m_atoms;
    std::uint16_t m_alternatives = 0;
};

std::vector<BondPair> foundAgain(const SavedModel& model, const std::vector<std::string>& names,
                                 const Letters& letters) {
    return SearchAgain(model, names, letters).find();
}

// Marks the bonds that are found again. Those found when the file was read, but not any more, join
// them.
void markFoundAgain(SavedModel& model, const std::vector<BondPair>& again) {
    std::vector<BondPair> lost;
    std::ranges::set_difference(model.foundBonds, again, std::back_inserter(lost));
    for (const auto& [first, second] : lost)
        model.bonds.push_back({first, second});
    if (!lost.empty()) {
        std::vector<BondPair> found;
        std::ranges::set_intersection(model.foundBonds, again, std::back_inserter(found));
        model.foundBonds = std::move(found);
    }
    for (SavedBond& bond : model.bonds)
        bond.isFoundAgain = std::ranges::binary_search(again, endsOf(bond));
}

// The names of the atom of a model, in an alternative location.
std::string namesOf(const SavedModel& model, std::uint32_t index,
                    const std::vector<std::string>& names, char letter) {
    const SavedAtom& atom = model.atoms[index];
    const SavedResidue& residue =
        *std::prev(std::ranges::upper_bound(model.residues, index, {}, &SavedResidue::firstAtom));
    return namesOf(model, residue, names).append(names[atom.name]).append({'\n', letter});
}

// As the file has the location.
std::string namesOf(const SavedModel& model, std::uint32_t index,
                    const std::vector<std::string>& names) {
    return namesOf(model, index, names, model.atoms[index].details.alternative);
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

// The atoms of the lost bonds of a model; `none` is the second where one of them is gone.
constexpr std::uint32_t none = SavedAtom::newRow;
std::vector<BondPair> atomsOfLost(const SavedModel& model) {
    std::vector<BondPair> pairs;
    if (model.lostBonds.empty()) // mostly
        return pairs;
    std::unordered_map<std::uint32_t, std::uint32_t> atoms; // by row
    for (const LostBond& bond : model.lostBonds)
        for (const std::uint32_t row : {bond.first, bond.second})
            atoms.emplace(row, none);
    for (std::uint32_t i = 0; i != model.atoms.size(); ++i)
        if (const auto found = atoms.find(model.atoms[i].row); found != atoms.end())
            found->second = i;
    for (const LostBond& bond : model.lostBonds)
        pairs.push_back(std::minmax(atoms[bond.first], atoms[bond.second]));
    return pairs;
}

// Adds the bonds that come back because further models have them, too.
void addListedElsewhere(const SavedStructure& structure, bool isTextKept,
                        const std::vector<std::string>& names, const SaveReport& report,
                        Settled& settled) {
    const auto isWhole = [](const SavedModel& model) { return model.lostBonds.empty(); };
    if (std::ranges::all_of(structure.models, isWhole))
        return;
    const auto listed = listedNames(structure, isTextKept, names);
    for (const SavedModel& model : structure.models) {
        std::vector<BondPair> destroyed = atomsOfLost(model);
        std::erase_if(destroyed, [&](const BondPair& pair) {
            return pair.second == none || !listed.contains(namesOfBond(model, pair, names));
        });
        if (destroyed.empty()) // mostly, which spares the search
            continue;
        const std::vector<BondPair> again = bondsFoundAgain(model, names, report);
        for (const BondPair& pair : destroyed)
            settled.comingBack += !std::ranges::binary_search(again, pair);
    }
}

// All bonds of a model, ascending.
std::vector<BondPair> allBonds(const SavedModel& model) {
    std::vector<BondPair> all = model.foundBonds;
    for (const SavedBond& bond : model.bonds)
        all.push_back(endsOf(bond));
    std::ranges::sort(all);
    return all;
}

// The bonds that are found again, which model.bonds knows of afterwards.
std::vector<BondPair> findAgain(SavedModel& model, BondRecords records,
                                const std::vector<std::string>& names, const Letters& letters) {
    SearchAgain search(model, names, letters);
    std::vector<BondPair> again = search.find();
    markFoundAgain(model, again);
    bool isFurtherHeld = false;
    if (records != BondRecords::Kept)
        for (const SavedBond& bond : model.bonds)
            if ((records == BondRecords::Written || isToBeListed(bond)) && search.join(bond))
                isFurtherHeld = true;
    if (isFurtherHeld) { // The bonds that are lost by it hold no others: they are to no ligands.
        again = search.find();
        markFoundAgain(model, again);
    }
    return again;
}

Settled settle(SavedModel& model, BondRecords records, const std::vector<std::string>& names,
               const SaveReport& report) {
    const Letters letters = alternativeLetters(model, names, report);
    const std::vector<BondPair> there = allBonds(model);
    const std::vector<BondPair> again = findAgain(model, records, names, letters);
    const std::vector<BondPair> lost = atomsOfLost(model);
    markRelettered(model, names, letters, {there, again, lost});
    for (std::size_t i = 0; i != lost.size(); ++i)
        model.lostBonds[i].isFoundAgain = std::ranges::binary_search(again, lost[i]);
    Settled settled;
    std::vector<BondPair> pairs;
    std::ranges::set_difference(again, there, std::back_inserter(pairs));
    (model.lacksBonds ? settled.comingBack : settled.appearing) = pairs.size();
    std::ranges::sort(model.bonds, {}, endsOf);
    UnreadBonds(model, letters, settled).takeOut();
    return settled;
}

// The bonds that the file is going to list, and what their records say of other atoms: the records
// know an atom by its number, or by its names, which atoms of other models have, too.
class SharedBonds {
public:
    SharedBonds(SavedStructure& structure, BondRecords records,
                const std::vector<std::string>& names, const SaveReport& report)
        : m_structure(structure), m_records(records), m_names(names), m_report(report) {}

    void settle(Settled& settled) {
        if (m_records == BondRecords::Kept)
            return;
        const bool isWritten = m_records == BondRecords::Written;
        const std::size_t count = isWritten ? 1 : m_structure.models.size();
        for (std::size_t i = 0; i != count; ++i)
            for (const SavedBond& bond : m_structure.models[i].bonds)
                if (isToBeListed(bond) || (isWritten && bond.isListed))
                    add(m_structure.models[i], bond);
        if (m_bonds.empty() || (isWritten && m_structure.models.size() == 1))
            return;
        for (SavedModel& model : m_structure.models) {
            find(model);
            if (m_records == BondRecords::Added)
                takeOutAmbiguous(model, settled);
            const std::vector<BondPair> pairs = pairsIn(model);
            settled.shared += countShared(model, pairs);
            settled.unread[static_cast<std::size_t>(Unread::Held)] += countHeld(model, pairs);
        }
    }

private:
    static constexpr std::uint32_t ambiguous = SavedAtom::newRow;
    using Ends = std::pair<std::string, std::string>;

    // Empty for an atom that shares its key with none.
    std::string keyOf(const SavedModel& model, std::uint32_t index) const {
        if (m_records == BondRecords::Written)
            return namesOf(model, index, m_names);
        const SavedAtom& atom = model.atoms[index];
        const bool isNumbered =
            atom.row != SavedAtom::newRow && atom.details.serial != TAVIK::AtomDetails::noSerial;
        return isNumbered ? std::to_string(atom.details.serial) : std::string();
    }
    void add(const SavedModel& model, const SavedBond& bond) {
        Ends ends(keyOf(model, bond.first), keyOf(model, bond.second));
        for (const std::string& key : {ends.first, ends.second})
            if (!key.empty())
                m_atoms.emplace(key, std::nullopt);
        m_bonds.insert(std::move(ends));
    }
    // Which atoms of a model have the keys.
    void find(const SavedModel& model) {
        for (auto& [key, atom] : m_atoms)
            atom.reset();
        for (std::uint32_t i = 0; i != model.atoms.size(); ++i)
            if (const auto known = m_atoms.find(keyOf(model, i)); known != m_atoms.end())
                known->second = known->second ? ambiguous : i;
    }
    bool isAmbiguous(const SavedModel& model, std::uint32_t index) const {
        const auto known = m_atoms.find(keyOf(model, index));
        return known != m_atoms.end() && known->second == ambiguous;
    }
    void takeOutAmbiguous(SavedModel& model, Settled& settled) const {
        settled.unread[static_cast<std::size_t>(Unread::Ambiguous)] +=
            std::erase_if(model.bonds, [&](const SavedBond& bond) {
                return isToBeListed(bond) &&
                       (isAmbiguous(model, bond.first) || isAmbiguous(model, bond.second));
            });
    }
    // What the records list in a model, ascending.
    std::vector<BondPair> pairsIn(const SavedModel& model) const {
        std::vector<BondPair> pairs;
        for (const auto& [first, second] : m_bonds) {
            const auto one = m_atoms.find(first);
            const auto other = m_atoms.find(second);
            if (one == m_atoms.end() || other == m_atoms.end() ||
                one->second.value_or(ambiguous) == ambiguous ||
                other->second.value_or(ambiguous) == ambiguous)
                continue;
            const BondPair pair = std::minmax(*one->second, *other->second);
            if (isInReach(model.atoms[pair.first], model.atoms[pair.second]))
                pairs.push_back(pair);
        }
        std::ranges::sort(pairs);
        return pairs;
    }
    // The bonds that a model gets without having them.
    std::size_t countShared(const SavedModel& model, std::vector<BondPair> pairs) const {
        std::erase_if(pairs, [&model](const BondPair& pair) {
            return std::ranges::binary_search(model.bonds, pair, {}, endsOf);
        });
        if (pairs.empty())
            return 0;
        const Letters letters = alternativeLetters(model, m_names, m_report);
        const std::vector<BondPair> again = foundAgain(model, m_names, letters);
        return static_cast<std::size_t>(std::ranges::count_if(pairs, [&](const BondPair& pair) {
            return !areApart(letters[pair.first], letters[pair.second]) &&
                   !std::ranges::binary_search(again, pair);
        }));
    }
    // The bonds of metals that a model loses to bonds of other models, as these are not listed.
    std::size_t countHeld(const SavedModel& model, const std::vector<BondPair>& pairs) const {
        const auto isOfMetal = [&](const BondPair& pair) {
            return isMetal(elementOf(m_names[model.atoms[pair.first].element])) ||
                   isMetal(elementOf(m_names[model.atoms[pair.second].element]));
        };
        if (std::ranges::none_of(pairs, isOfMetal)) // mostly, which spares the search
            return 0;
        SearchAgain search(model, m_names, alternativeLetters(model, m_names, m_report));
        std::vector<BondPair> before = search.find();
        bool isFurtherHeld = false;
        for (const auto& [first, second] : pairs)
            if (search.join({first, second}))
                isFurtherHeld = true;
        if (!isFurtherHeld)
            return 0;
        if (model.isEdited) { // Else it has all that are found.
            std::vector<BondPair> there;
            std::ranges::set_intersection(before, allBonds(model), std::back_inserter(there));
            before = std::move(there);
        }
        std::vector<BondPair> lost;
        std::ranges::set_difference(before, search.find(), std::back_inserter(lost));
        return static_cast<std::size_t>(std::ranges::count_if(lost, [&pairs](const BondPair& pair) {
            return !std::ranges::binary_search(pairs, pair);
        }));
    }

    SavedStructure& m_structure;
    BondRecords m_records;
    const std::vector<std::string>& m_names;
    const SaveReport& m_report;
    std::set<Ends> m_bonds;                                                ///< each once
    std::unordered_map<std::string, std::optional<std::uint32_t>> m_atoms; ///< of one model
};

void remarkOnReturning(std::size_t count, const std::string& why, SaveReport& report) {
    if (count != 0)
        report.remark(
            std::to_string(count) +
            (count == 1 ? " bond that was deleted comes" : " bonds that were deleted come") +
            " back when the file is read, as " + why);
}

void remarkOnFurther(std::size_t count, const std::string& how, const std::string& why,
                     SaveReport& report) {
    if (count != 0)
        report.remark(std::to_string(count) +
                      (count == 1 ? " further bond is " : " further bonds are ") + how + ", as " +
                      why);
}

} // namespace

std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names) {
    return namesOf(model, atoms.first, names) + namesOf(model, atoms.second, names);
}

std::string namesOfBond(const SavedModel& model, std::pair<std::uint32_t, std::uint32_t> atoms,
                        const std::vector<std::string>& names, const std::vector<char>& letters) {
    return namesOf(model, atoms.first, names, letters[atoms.first]) +
           namesOf(model, atoms.second, names, letters[atoms.second]);
}

std::vector<BondPair> bondsFoundAgain(const SavedModel& model,
                                      const std::vector<std::string>& names,
                                      const SaveReport& report) {
    return foundAgain(model, names, alternativeLetters(model, names, report));
}

void remarkOnUnkept(std::size_t count, const std::string& why, SaveReport& report) {
    if (count != 0)
        report.remark(std::to_string(count) + (count == 1 ? " bond is" : " bonds are") +
                      " not kept, as " + why);
}

void remarkOnAmbiguous(std::size_t count, SaveReport& report) {
    remarkOnUnkept(count, unreadTexts[static_cast<std::size_t>(Unread::Ambiguous)], report);
}

void remarkOnSharedRecords(const BondsOfSharedRecords& bonds, SaveReport& report) {
    remarkOnReturning(bonds.comingBack,
                      "the file lists them with those of other alternative locations", report);
    remarkOnFurther(bonds.joined, "read",
                    "the file lists the bonds of all alternative locations together", report);
}

void settleBonds(SavedContent& content, BondRecords records, SaveReport& report) {
    Settled all;
    for (SavedStructure& structure : content.structures) {
        addListedElsewhere(structure, records != BondRecords::Written, content.names, report, all);
        for (SavedModel& model : structure.models) {
            if (!model.isEdited)
                continue;
            const Settled settled = settle(model, records, content.names, report);
            all.comingBack += settled.comingBack;
            all.appearing += settled.appearing;
            std::ranges::transform(all.unread, settled.unread, all.unread.begin(), std::plus());
        }
        SharedBonds(structure, records, content.names, report).settle(all);
    }
    remarkOnReturning(all.comingBack, "the atoms are near each other, or bonded in other models",
                      report);
    remarkOnFurther(all.appearing, "found when the file is read", "the atoms are near each other",
                    report);
    remarkOnFurther(all.shared, "read", "a bond that was made in one model is one of all models",
                    report);
    for (std::size_t i = 0; i != unreadTexts.size(); ++i)
        remarkOnUnkept(all.unread[i], unreadTexts[i], report);
}

} // namespace memory_host
