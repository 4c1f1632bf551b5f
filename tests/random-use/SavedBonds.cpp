#include "SavedBonds.h"

#include "Ancestry.h"
#include "AtomBonds.h"
#include "AtomDetails.h"
#include "Kinds.h"
#include "Traversal.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <utility>

namespace random_use {

using TAVIK::Compound;

namespace {

// As precisely as PDB files have it.
std::string endOf(const TAVIK::Atom& atom) {
    const TAVIK::Vertex at = atom.GetPosition();
    QString text = QString::fromStdString(atom.GetName());
    for (const int axis : {0, 1, 2})
        text += QString::asprintf(" %.3f", std::round(double(at[axis]) * 1000) / 1000 + 0.0);
    return text.toStdString();
}

// Bonds that stand in another entry than their atoms are saved with none.
bool isIn(const Compound* entry, const TAVIK::Bond* bond) {
    const Compound* item = bond;
    while (item && item != entry)
        item = TAVIK::GetParent(item);
    return item;
}

// Those within an entry, each as the ends that it has there.
std::vector<std::string> bondsOf(const std::vector<Compound*>& entries) {
    std::vector<std::string> all;
    for (Compound* entry : entries) {
        std::vector<Compound*> atoms;
        TAVIK::GetAtoms(entry, atoms, true);
        std::unordered_map<const TAVIK::Bond*, std::string> first;
        std::vector<TAVIK::Bond*> bonds;
        for (const Compound* item : atoms) {
            const auto* const atom = dynamic_cast<const TAVIK::Atom*>(item);
            bonds.clear();
            TAVIK::GetBonds(atom, bonds);
            const std::string end = endOf(*atom);
            for (const TAVIK::Bond* bond : bonds)
                if (const auto [other, isFirst] = first.try_emplace(bond, end);
                    !isFirst && isIn(entry, bond))
                    all.push_back(std::min(other->second, end) + " - " +
                                  std::max(other->second, end));
        }
    }
    // Of several bonds between two atoms, a file keeps one.
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

// Whether some atoms of one name in a residue have letters, and others have none: what a file lists
// of those without is about all of them.
bool mixesLetters(Compound* entry) {
    std::vector<Compound*> atoms;
    TAVIK::GetAtoms(entry, atoms, true);
    std::map<std::pair<const Compound*, std::string>, bool> areLettered;
    return std::any_of(atoms.begin(), atoms.end(), [&](const Compound* item) {
        const auto* const atom = dynamic_cast<const TAVIK::Atom*>(item);
        const bool isLettered = TAVIK::GetAtomDetails(atom).alternative != '\0';
        const std::pair key(TAVIK::GetParent(atom), atom->GetName());
        const auto [known, isFirst] = areLettered.try_emplace(key, isLettered);
        return !isFirst && known->second != isLettered;
    });
}

} // namespace

void SavedBonds::saved(const std::string& file, const std::vector<Compound*>& entries,
                       const std::vector<std::string>& lines) {
    const auto isAboutBonds = [](const std::string& line) {
        return line.find("bond") != std::string::npos;
    };
    if (std::any_of(lines.begin(), lines.end(), isAboutBonds) ||
        std::any_of(entries.begin(), entries.end(), mixesLetters))
        forget(file);
    else
        m_files[file] = bondsOf(entries);
}

QStringList SavedBonds::differenceFrom(const std::string& file,
                                       const std::vector<Compound*>& opened) const {
    const auto saved = m_files.find(file);
    if (saved == m_files.end())
        return {};
    const std::vector<std::string> read = bondsOf(opened);
    QStringList all;
    const auto tell = [&all](const std::vector<std::string>& from,
                             const std::vector<std::string>& other, const char* what) {
        std::vector<std::string> only;
        std::set_difference(from.begin(), from.end(), other.begin(), other.end(),
                            std::back_inserter(only));
        if (!only.empty())
            all << QStringLiteral("%1 bonds are %2, as %3")
                       .arg(only.size())
                       .arg(QLatin1String(what), QString::fromStdString(only.front()));
    };
    tell(saved->second, read, "not read again");
    tell(read, saved->second, "read that were not saved");
    return all;
}

} // namespace random_use
