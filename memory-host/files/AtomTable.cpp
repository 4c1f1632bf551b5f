#include "AtomTable.h"

namespace memory_host {

const std::string& shownName(std::uint32_t number, const FileNames& names) {
    static const std::string nameless("_");
    const std::string& text = names.text(number);
    return text.empty() ? nameless : text;
}

std::string residueLabel(const ResidueEntry& residue, const FileNames& names) {
    std::string label = shownName(residue.allNames, names);
    if (residue.number != 0)
        label += ' ' + names.text(residue.number);
    return label;
}

} // namespace memory_host
