// The reader of mmCIF files.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.cif");
    file.write(fuzzing::textOf(data, size));
    fuzzing::openAndDestroy(file);
    return 0;
}
