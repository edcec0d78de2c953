#include <velmora/ModelList.h>

#include "foundation/Errors.h"

namespace velmora {

std::shared_ptr<MDLObject> ModelList::Add(std::shared_ptr<MDLObject> sMDLObject,
                                          const std::string& sKey) {
    if (!sMDLObject) raisePlatformError(kObjectNotSet);
    return KeyedList::Add(std::move(sMDLObject), sKey);
}

}  // namespace velmora
