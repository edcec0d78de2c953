#pragma once

#include <velmora/IndexKey.h>
#include <velmora/KeyedCollection.h>
#include <velmora/texture.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The textures of a model: reads and writes the "TEXT" section.
class TextureList {
  public:
    using const_iterator = KeyedCollection<texture>::const_iterator;

    ~TextureList();

    std::shared_ptr<texture> Add(std::shared_ptr<texture> sTexture = nullptr,
                                 const std::string& sKey = "", IndexKey bfrIndexKey = "");
    std::shared_ptr<texture> Item(IndexKey vntIndexKey) const;
    int32_t Count() const;
    void Remove(IndexKey vntIndexKey);
    const_iterator begin() const;
    const_iterator end() const;

    void fillCollection(const std::string& data);
    std::string asString() const;
    // 1-based position of the first entry of group `parent` for `season`, or 0.
    int16_t findTextureIndex(int16_t parent, int16_t season) const;

    const KeyedCollection<texture>& elements() const { return items_; }

  private:
    KeyedCollection<texture> items_;
};

}  // namespace velmora
