#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>

#include "analysis/ConditionReading.h"

namespace velmora {

std::shared_ptr<ConditionList> BGLCommandList::getConditions(int32_t position) const {
    // Only -1 asks for the conditions of the whole model; any other value gives an empty list.
    if (position != -1) return std::make_shared<ConditionList>();
    return analysis::readConditions(*this);
}

}  // namespace velmora
