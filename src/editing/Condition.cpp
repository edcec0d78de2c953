#include <velmora/Condition.h>

#include "foundation/Errors.h"

#include <array>

namespace velmora {

namespace {

const std::array<std::string, 4> kTypeNames{"Between", "Mask", "Rotate to user",
                                            "Rotate with wind"};

}  // namespace

std::string Condition::getTypeString() const {
    if (cType_ < Between || cType_ > RotWind) raisePlatformError(kSubscriptOutOfRange);
    return kTypeNames[static_cast<std::size_t>(cType_)];
}

}  // namespace velmora
