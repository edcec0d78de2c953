#pragma once

#include <array>
#include <cstdint>

namespace velmora {

// The seasons of one texture group, each array indexed by textureVariant
// (summer 0, autumn 1, winter 2, heavywinter 3, spring 4).
struct seasonalTextures {
    std::array<int16_t, 5> Material{};  // 0-based TextureList entry shown in that season
    std::array<int16_t, 5> dayStart{};
    std::array<int16_t, 5> dayEnd{};
    std::array<bool, 5> active{};
};

}  // namespace velmora
