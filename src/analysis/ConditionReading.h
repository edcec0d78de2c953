#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>

#include <memory>

namespace velmora::analysis {

// The conditions the condition editor reads in front of the guarded call: the IFIN1 and IFMSK
// tests and a turning SPRITE_VICALL, with the stretch they stand in and how they combine, read
// off the jumps just in front of the call. A list without a guarded call runs off its end
// (error 9); a parameter that is no 16-bit number is error 13 or 6.
std::shared_ptr<ConditionList> readConditions(const BGLCommandList& list);

}  // namespace velmora::analysis
