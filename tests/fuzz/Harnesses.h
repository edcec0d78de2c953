#pragma once

#include <cstddef>
#include <cstdint>

// The bodies of the fuzzers, shared by the libFuzzer programs and by the regression test that
// replays every input that once failed. Each takes any bytes and must end in a loaded model or a
// velmora::Error, never in a crash, a hang or an allocation out of proportion to its input.
namespace fuzzing {

void loadModel(const uint8_t* data, std::size_t size);
void decodeStream(const uint8_t* data, std::size_t size);
void editChain(const uint8_t* data, std::size_t size);
void scanCompiledScenery(const uint8_t* data, std::size_t size);

}  // namespace fuzzing
