#pragma once

#include <velmora/KeyedCollection.h>
#include <velmora/material.h>

#include <string>

namespace velmora {

// The materials of a model: reads and writes the "MATE" section.
class MaterialList : public KeyedList<material> {
  public:
    void readList(const std::string& data);
    std::string asString() const;
};

}  // namespace velmora
