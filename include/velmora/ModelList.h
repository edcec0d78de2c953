#pragma once

#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/MDLObject.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The models found in a compiled scenery file.
class ModelList {
  public:
    using const_iterator = KeyedCollection<MDLObject>::const_iterator;

    std::shared_ptr<MDLObject> Add(std::shared_ptr<MDLObject> sMDLObject,
                                   const std::string& sKey = "");
    std::shared_ptr<MDLObject> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

  private:
    KeyedCollection<MDLObject> items_;
};

}  // namespace velmora
