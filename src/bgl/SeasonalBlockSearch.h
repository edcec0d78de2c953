#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>

namespace velmora::detail {

// An IFIN1 on the day of the year (variable 906): the test of a seasonal run.
bool isDayTest(const BGLCommand& command);
// What a seasonal block is made of: day tests, SET_MATERIALs and BGL_JUMP_32s.
bool belongsToSeasonalBlock(const BGLCommand& command);

// The block of seasonal commands around the first SET_MATERIAL at or after `startAt` that
// selects texture number `texture`: from that match, the run of season tests (IFIN1 on
// variable 906), SET_MATERIALs and BGL_JUMP_32s is followed towards the start (`backwards`) or
// the end, and the outermost command of the run is the result. -1 when no command matches.
int16_t findSeasonalBlock(const KeyedCollection<BGLCommand>& commands, int16_t texture,
                          bool backwards, int32_t startAt);

}  // namespace velmora::detail
