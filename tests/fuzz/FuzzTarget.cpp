#include "fuzz/Harnesses.h"

// The libFuzzer entry of one harness, named by VELMORA_HARNESS when the program is built.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzzing::VELMORA_HARNESS(data, size);
    return 0;
}
