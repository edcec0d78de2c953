#pragma once

#include <velmora/color.h>

#include <cstdint>
#include <memory>
#include <string>

namespace velmora {

// The class of a texture as the model stores it.
enum textureType : int32_t {
    TEXTURE_AIRCRAFT = 1,
    TEXTURE_MAP = 2,
    TEXTURE_WATER = 3,
    TEXTURE_SKY = 4,
    TEXTURE_GROUND = 5,
    TEXTURE_BUILDING = 6,
    TEXTURE_EFFECT = 7,
    TEXTURE_DAMAGE = 8,
    TEXTURE_NIGHTMAP = 128,
    TEXTURE2_NIGHT = 256,
    TEXTURE2_REFLECT = 512,
    TEXTURE2_LIGHTMAP = 768,
    TEXTURE2_LIGHTMAP_A = 1024,
    TEXTURE2_DETAIL = 1280,
    TEXTURE2_SHADER = 3840,
};

// The season a texture entry is for.
enum textureVariant : int32_t { summer = 0, autumn = 1, winter = 2, heavywinter = 3, spring = 4 };

// One entry of the texture table. Only textureType, color, size and bitmap are stored in the
// model file; the rest is set by the host and the preview.
class texture {
  public:
    texture();

    velmora::textureType textureType() const { return textureType_; }
    void textureType(velmora::textureType value) { textureType_ = value; }
    std::shared_ptr<velmora::color> color() const { return color_; }
    void color(std::shared_ptr<velmora::color> value) { color_ = std::move(value); }
    const std::string& bitmap() const { return bitmap_; }
    // Stores the name with every NUL byte removed.
    void bitmap(const std::string& value);
    const std::string& file() const { return file_; }
    void file(const std::string& value) { file_ = value; }
    float size() const { return size_; }
    void size(float value) { size_ = value; }
    velmora::textureVariant textureVariant() const { return textureVariant_; }
    void textureVariant(velmora::textureVariant value) { textureVariant_ = value; }
    int16_t parent() const { return parent_; }
    void parent(int16_t value) { parent_ = value; }
    int32_t glPointer() const { return glPointer_; }
    void glPointer(int32_t value) { glPointer_ = value; }

    // The name of textureType, or "" for a value without a name.
    std::string getTypeString() const;
    // The value of a type name, compared exactly, or 0.
    int32_t getTypeVal(const std::string& s) const;

  private:
    velmora::textureType textureType_ = static_cast<velmora::textureType>(0);
    std::shared_ptr<velmora::color> color_;
    float size_ = 0;
    std::string bitmap_;
    int32_t glPointer_ = 0;
    velmora::textureVariant textureVariant_ = summer;
    int16_t parent_ = 0;
    std::string file_;
};

}  // namespace velmora
