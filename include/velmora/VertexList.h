#pragma once

#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/Vertex.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The vertex pool of a model: reads and writes the "VERT" section (up to 65,535 vertices).
class VertexList {
  public:
    using const_iterator = KeyedCollection<Vertex>::const_iterator;

    ~VertexList();

    std::shared_ptr<Vertex> Add(std::shared_ptr<Vertex> sVertex = nullptr,
                                const std::string& sKey = "");
    std::shared_ptr<Vertex> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

    void fillCollection(const std::string& data);
    // Error 6 for more than 65,535 vertices.
    std::string asString() const;

    const KeyedCollection<Vertex>& elements() const { return items_; }

  private:
    KeyedCollection<Vertex> items_;
};

}  // namespace velmora
