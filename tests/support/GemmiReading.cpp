#include "GemmiReading.h"

#include <gemmi/cif.hpp>
#include <gemmi/gz.hpp>
#include <gemmi/mmcif.hpp>
#include <gemmi/pdb.hpp>

namespace gemmi_reading {

gemmi::Structure readStructure(const std::string& path) {
    gemmi::MaybeGzipped file(path);
    return file.basepath().ends_with(".cif") ? gemmi::make_structure(gemmi::cif::read(file))
                                             : gemmi::read_pdb(file);
}

gemmi::cif::Document readDocument(const std::string& text) {
    return gemmi::cif::read_string(text);
}

} // namespace gemmi_reading
