// The reader of CCP4/MRC maps.
#include "Opening.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzzing::InputFile file("input.ccp4");
    fuzzing::openInput(file, fuzzing::textOf(data, size));
    return 0;
}
