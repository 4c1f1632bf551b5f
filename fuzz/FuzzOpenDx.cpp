// The reader of OpenDX grids.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.dx");
    fuzzing::openInput(file, fuzzing::textOf(data, size));
    return 0;
}
