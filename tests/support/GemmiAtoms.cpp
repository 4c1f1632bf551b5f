// A second opinion on real files: gemmi's own readers.
#include "FileTesting.h"
#include "GemmiReading.h"

#include "files/Bonds.h"

#include <gemmi/neighbor.hpp>

#include <algorithm>
#include <fstream>
#include <map>

namespace file_testing {

namespace {

using gemmi_reading::readStructure;

std::string textOf(const gemmi::Chain& chain, const gemmi::Residue& residue,
                   const gemmi::Atom& atom) {
    return AtomText{chain.name.empty() ? "_" : chain.name,
                    residue.seqid.str(),
                    atom.name,
                    atom.element.name(),
                    static_cast<float>(atom.pos.x),
                    static_cast<float>(atom.pos.y),
                    static_cast<float>(atom.pos.z),
                    atom.b_iso}
        .text();
}

std::string textOf(const gemmi::CRA& found) {
    return textOf(*found.chain, *found.residue, *found.atom);
}

bool areTogether(const gemmi::Atom& a, const gemmi::Atom& b) {
    return a.altloc == b.altloc || a.altloc == '\0' || b.altloc == '\0';
}

std::vector<gemmi::CRA> atomsAt(gemmi::Model& model, const gemmi::AtomAddress& address) {
    std::vector<gemmi::CRA> found;
    for (gemmi::Chain& chain : model.chains)
        for (gemmi::Residue& residue : chain.residues)
            for (gemmi::Atom& atom : residue.atoms)
                if (chain.name == address.chain_name && residue.matches(address.res_id) &&
                    atom.name == address.atom_name &&
                    (address.altloc == '\0' || address.altloc == atom.altloc))
                    found.push_back({&chain, &residue, &atom});
    return found;
}

void addPairs(const std::vector<gemmi::CRA>& first, const std::vector<gemmi::CRA>& second,
              std::set<BondText>& pairs) {
    for (const gemmi::CRA& a : first)
        for (const gemmi::CRA& b : second)
            if (areTogether(*a.atom, *b.atom) && a.atom->pos.dist(b.atom->pos) <= 6.0) // NOLINT: Å
                pairs.insert(std::minmax({textOf(a), textOf(b)}));
}

// gemmi leaves CONECT records alone.
void addConnected(const std::string& path, gemmi::Model& model, std::set<BondText>& pairs) {
    std::map<std::string, std::vector<gemmi::CRA>> bySerial;
    for (gemmi::Chain& chain : model.chains)
        for (gemmi::Residue& residue : chain.residues)
            for (gemmi::Atom& atom : residue.atoms)
                bySerial[std::to_string(atom.serial)].push_back({&chain, &residue, &atom});
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("CONECT"))
            continue;
        std::vector<std::string> serials;
        for (std::size_t at = 6; at < 31 && at < line.size(); at += 5)
            serials.push_back(gemmi::trim_str(line.substr(at, 5)));
        for (std::size_t i = 1; i < serials.size(); ++i)
            if (bySerial[serials[0]].size() == 1 && bySerial[serials[i]].size() == 1)
                addPairs(bySerial[serials[0]], bySerial[serials[i]], pairs);
    }
}

double squaredDistance(const gemmi::Atom& a, const gemmi::Atom& b) {
    const auto part = [](double x, double y) {
        const double step =
            static_cast<double>(static_cast<float>(x)) - static_cast<double>(static_cast<float>(y));
        return step * step;
    };
    return part(a.pos.x, b.pos.x) + part(a.pos.y, b.pos.y) + part(a.pos.z, b.pos.z);
}

bool isAnyOf(const gemmi::Atom& atom, std::initializer_list<gemmi::El> elements) {
    return std::find(elements.begin(), elements.end(), atom.element.elem) != elements.end();
}

} // namespace

GemmiBonds gemmiBonds(const std::string& path) {
    using gemmi::El;
    gemmi::Structure structure = readStructure(path);
    gemmi::Model& model = structure.first_model();
    GemmiBonds bonds;
    for (const gemmi::Connection& connection : structure.connections)
        if (connection.type != gemmi::Connection::Hydrog && connection.asu != gemmi::Asu::Different)
            addPairs(atomsAt(model, connection.partner1), atomsAt(model, connection.partner2),
                     bonds.listed);
    if (path.ends_with(".pdb"))
        addConnected(path, model, bonds.listed);

    // A line of an atom has its element in the fourth place.
    std::set<std::string> held;
    const auto elementOf = [](const std::string& text) { return gemmi::split_str(text, '|')[3]; };
    for (const auto& [a, b] : bonds.listed)
        for (const auto& [metal, ligand] : {std::pair(a, b), std::pair(b, a)})
            if (const std::string element = elementOf(ligand);
                element == "N" || element == "O" || element == "S")
                held.insert(metal);

    constexpr double farthest = 6.0;
    gemmi::NeighborSearch search(model, gemmi::UnitCell(), farthest);
    search.populate();
    for (gemmi::Chain& chain : model.chains) {
        for (gemmi::Residue& residue : chain.residues) {
            for (gemmi::Atom& atom : residue.atoms) {
                std::vector<gemmi::CRA> near;
                search.for_each(atom.pos, '\0', farthest,
                                [&](gemmi::NeighborSearch::Mark& mark, double) {
                                    const gemmi::CRA other = mark.to_cra(model);
                                    if (other.residue->name != "DUM")
                                        near.push_back(other);
                                });
                if (residue.name == "DUM")
                    continue;
                const bool isMetal = atom.element.is_metal();
                const bool isHeld = isMetal && held.contains(textOf(chain, residue, atom));
                for (const gemmi::CRA& other : near) {
                    const double squared = squaredDistance(atom, *other.atom);
                    const double longest = static_cast<double>(atom.element.covalent_r()) +
                                           static_cast<double>(other.atom->element.covalent_r()) +
                                           memory_host::bondTolerance;
                    const bool isBehind = isMetal && isAnyOf(*other.atom, {El::C, El::P});
                    // A pair of those is looked at from the metal.
                    if (other.atom->element.is_metal() && isAnyOf(atom, {El::C, El::P}))
                        continue;
                    if (squared < memory_host::shortestBond * memory_host::shortestBond ||
                        squared > longest * longest || !areTogether(atom, *other.atom) ||
                        (atom.is_hydrogen() && other.atom->is_hydrogen()))
                        continue;
                    if (isBehind && isHeld)
                        continue;
                    if (isBehind && std::ranges::any_of(near, [&](const gemmi::CRA& ligand) {
                            return isAnyOf(*ligand.atom, {El::N, El::O, El::S}) &&
                                   squaredDistance(atom, *ligand.atom) < squared &&
                                   areTogether(atom, *ligand.atom) &&
                                   areTogether(*other.atom, *ligand.atom);
                        }))
                        continue;
                    const BondText bond =
                        std::minmax({textOf(chain, residue, atom), textOf(other)});
                    if (!bonds.listed.contains(bond))
                        bonds.found.insert(bond);
                }
            }
        }
    }
    return bonds;
}

std::vector<std::string> gemmiDetails(const std::string& path) {
    const gemmi::Structure structure = readStructure(path);
    const bool hasLabels = structure.input_format == gemmi::CoorFormat::Mmcif;
    std::vector<std::string> lines;
    for (const gemmi::Chain& chain : structure.models.front().chains)
        for (const gemmi::Residue& residue : chain.residues)
            for (const gemmi::Atom& atom : residue.atoms) {
                DetailsText details{atom.serial, atom.name,   atom.occ,
                                    atom.charge, atom.altloc, residue.het_flag == 'H',
                                    {},          {}};
                if (hasLabels) {
                    details.labelChain = residue.subchain;
                    details.labelNumber = residue.label_seq ? residue.label_seq.str() : "";
                }
                lines.push_back(details.text());
            }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::vector<std::vector<std::string>> gemmiAtoms(const std::string& path) {
    const gemmi::Structure structure = readStructure(path);
    std::vector<std::vector<std::string>> models;
    for (const gemmi::Model& model : structure.models) {
        std::vector<std::string>& texts = models.emplace_back();
        for (const gemmi::Chain& chain : model.chains)
            for (const gemmi::Residue& residue : chain.residues)
                for (const gemmi::Atom& atom : residue.atoms)
                    texts.push_back(textOf(chain, residue, atom));
        std::sort(texts.begin(), texts.end());
    }
    return models;
}

std::string gemmiValue(const std::string& text, const std::string& tag) {
    const gemmi::cif::Document document = gemmi_reading::readDocument(text);
    const std::string* value = document.blocks.front().find_value(tag);
    return value ? gemmi::cif::as_string(*value) : std::string();
}

} // namespace file_testing
