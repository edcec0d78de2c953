#pragma once

#include <cstdint>

// The benchmark executable replaces the global operator new and delete (AllocationCounter.cpp)
// and counts the bytes that the heap hands out through them: what is held now and the most
// held at once since the last reset.
namespace velmora::bench {

int64_t heldBytes();
int64_t peakHeldBytes();
// Starts a new peak from what is held now.
void resetPeak();

}  // namespace velmora::bench
