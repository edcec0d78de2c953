#pragma once

#include <velmora/KeyedCollection.h>
#include <velmora/Vertex.h>

#include <string>

namespace velmora {

// The vertex pool of a model: reads and writes the "VERT" section (up to 65,535 vertices).
class VertexList : public KeyedList<Vertex> {
  public:
    void fillCollection(const std::string& data);
    // Error 6 for more than 65,535 vertices.
    std::string asString() const;
};

}  // namespace velmora
