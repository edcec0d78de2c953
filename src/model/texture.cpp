#include <velmora/texture.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace velmora {

namespace {

struct TypeName {
    velmora::textureType value;
    std::string_view name;
};

constexpr std::array<TypeName, 15> kTypeNames{{
    {TEXTURE_AIRCRAFT, "TEXTURE_AIRCRAFT"},
    {TEXTURE_MAP, "TEXTURE_MAP"},
    {TEXTURE_WATER, "TEXTURE_WATER"},
    {TEXTURE_SKY, "TEXTURE_SKY"},
    {TEXTURE_GROUND, "TEXTURE_GROUND"},
    {TEXTURE_BUILDING, "TEXTURE_BUILDING"},
    {TEXTURE_EFFECT, "TEXTURE_EFFECT"},
    {TEXTURE_DAMAGE, "TEXTURE_DAMAGE"},
    {TEXTURE_NIGHTMAP, "TEXTURE_NIGHTMAP"},
    {TEXTURE2_NIGHT, "TEXTURE2_NIGHT"},
    {TEXTURE2_REFLECT, "TEXTURE2_REFLECT"},
    {TEXTURE2_LIGHTMAP, "TEXTURE2_LIGHTMAP"},
    {TEXTURE2_LIGHTMAP_A, "TEXTURE2_LIGHTMAP_A"},
    {TEXTURE2_DETAIL, "TEXTURE2_DETAIL"},
    {TEXTURE2_SHADER, "TEXTURE2_SHADER"},
}};

}  // namespace

texture::texture() : color_(std::make_shared<velmora::color>()) {}

void texture::bitmap(const std::string& value) {
    bitmap_ = value;
    // The whole field counts: what follows a NUL is joined to the name, not cut off.
    bitmap_.erase(std::remove(bitmap_.begin(), bitmap_.end(), '\0'), bitmap_.end());
}

std::string texture::getTypeString() const {
    for (const auto& entry : kTypeNames) {
        if (entry.value == textureType_) return std::string(entry.name);
    }
    return "";
}

int32_t texture::getTypeVal(const std::string& s) const {
    for (const auto& entry : kTypeNames) {
        if (entry.name == s) return entry.value;
    }
    return 0;
}

}  // namespace velmora
