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

    // Sets the `file` of every texture whose image lies in `folder`, found by
    // the texture's name without regard to case, as it is or with the extension .bmp, .dds,
    // .tga, .png, .jpg or .jpeg. Gives how many were found; a folder that can't be read is
    // error 76 naming it.
    int32_t findFiles(const std::string& folder);
};

}  // namespace velmora
