// The reader of PDB files.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.pdb");
    fuzzing::openInput(file, fuzzing::textOf(data, size));
    return 0;
}
