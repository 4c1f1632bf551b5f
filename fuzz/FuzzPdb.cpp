// The reader of PDB files.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.pdb");
    file.write(fuzzing::textOf(data, size));
    fuzzing::openAndDestroy(file);
    return 0;
}
