#include "ResidueNames.h"

#include <algorithm>

namespace memory_host {

namespace {

bool hasSeveral(std::string_view name) {
    return name.find(',') != std::string_view::npos;
}

// Those parts of a name that are among the names of atoms.
std::string partsLeft(std::string_view name, const std::vector<std::string_view>& left) {
    std::string text;
    for (bool isLast = false; !isLast;) {
        const std::size_t end = name.find(',');
        isLast = end == std::string_view::npos;
        const std::string_view part = name.substr(0, end);
        // Of more names than are shown there is no telling.
        if (std::ranges::find(left, part) != left.end() || part == "...")
            text.append(text.empty() ? "" : ",").append(part);
        if (!isLast)
            name.remove_prefix(end + 1);
    }
    return text;
}

} // namespace

bool haveSeveralNames(const SavedStructure& structure, const std::vector<std::string>& names) {
    return std::ranges::any_of(structure.models, [&names](const SavedModel& model) {
        return std::ranges::any_of(model.residues, [&names](const SavedResidue& residue) {
            return hasSeveral(names[residue.name]);
        });
    });
}

void remarkOnLostNames(const SavedStructure& structure, const std::vector<std::string>& names,
                       const std::function<std::string_view(std::uint32_t row)>& nameInRow,
                       SaveReport& report) {
    std::size_t count = 0;
    std::string first;
    for (const SavedModel& model : structure.models) {
        for (std::size_t i = 0; i != model.residues.size(); ++i) {
            const SavedResidue& residue = model.residues[i];
            const std::string& name = names[residue.name];
            if (!hasSeveral(name))
                continue;
            std::vector<std::string_view> left;
            for (std::uint32_t k = residue.firstAtom; k != model.atomEnd(i); ++k)
                if (const std::uint32_t row = model.atoms[k].row; row != SavedAtom::newRow)
                    left.push_back(nameInRow(row));
            const std::string now = partsLeft(name, left);
            if (now.empty() || now == name || count++ != 0)
                continue;
            const std::string place = ' ' + names[residue.number] + names[residue.insertion];
            first = name + place + " as " + now + place;
        }
    }
    if (count != 0)
        report.remark(
            std::to_string(count) +
            (count == 1 ? " residue of several names is" : " residues of several names are") +
            " read again without those of which no atom is left: " + first +
            (count == 1 ? "" : " and others"));
}

} // namespace memory_host
