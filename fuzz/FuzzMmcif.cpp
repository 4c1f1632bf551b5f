// The reader of mmCIF files.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.cif");
    fuzzing::openInput(file, fuzzing::textOf(data, size));
    return 0;
}
