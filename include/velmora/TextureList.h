#pragma once

#include <velmora/KeyedCollection.h>
#include <velmora/texture.h>

#include <cstdint>
#include <string>

namespace velmora {

// The textures of a model: reads and writes the "TEXT" section.
class TextureList : public KeyedList<texture, true> {
  public:
    void fillCollection(const std::string& data);
    std::string asString() const;
    // 1-based position of the first entry of group `parent` for `season`, or 0.
    int16_t findTextureIndex(int16_t parent, int16_t season) const;
};

}  // namespace velmora
