#pragma once

#include <velmora/KeyedCollection.h>
#include <velmora/MDLObject.h>

#include <memory>
#include <string>

namespace velmora {

// The models found in a compiled scenery file.
class ModelList : public KeyedList<MDLObject> {
  public:
    // The model is required: the list never makes an empty model of its own (error 91).
    std::shared_ptr<MDLObject> Add(std::shared_ptr<MDLObject> sMDLObject,
                                   const std::string& sKey = "");
};

}  // namespace velmora
