#pragma once

#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/material.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The materials of a model: reads and writes the "MATE" section.
class MaterialList {
  public:
    using const_iterator = KeyedCollection<material>::const_iterator;

    ~MaterialList();

    std::shared_ptr<material> Add(std::shared_ptr<material> sMaterial = nullptr,
                                  const std::string& sKey = "");
    std::shared_ptr<material> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

    void readList(const std::string& data);
    std::string asString() const;

    const KeyedCollection<material>& elements() const { return items_; }

  private:
    KeyedCollection<material> items_;
};

}  // namespace velmora
