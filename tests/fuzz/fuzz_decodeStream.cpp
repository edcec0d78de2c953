#include "fuzz/Harnesses.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzzing::decodeStream(data, size);
    return 0;
}
