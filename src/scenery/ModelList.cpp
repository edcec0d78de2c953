#include <velmora/ModelList.h>

#include "foundation/Errors.h"

namespace velmora {

std::shared_ptr<MDLObject> ModelList::Add(std::shared_ptr<MDLObject> sMDLObject,
                                          const std::string& sKey) {
    // The model is required here: the list never makes an empty model of its own.
    if (!sMDLObject) raisePlatformError(kObjectNotSet);
    return items_.Add(std::move(sMDLObject), sKey, IndexKey());
}

std::shared_ptr<MDLObject> ModelList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t ModelList::Count() const {
    return items_.Count();
}

void ModelList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

ModelList::const_iterator ModelList::begin() const {
    return items_.begin();
}

ModelList::const_iterator ModelList::end() const {
    return items_.end();
}

}  // namespace velmora
