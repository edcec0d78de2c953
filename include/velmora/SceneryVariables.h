#pragma once

#include <velmora/texture.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace velmora {

// The scenery variables whose meaning the library knows: what its tests, walks and edits read.
namespace variables {
// The day of the year, 1 to 366: the variable that seasonal runs test.
inline constexpr int32_t kDayOfYear = 906;
// Scenery complexity, 0 (sparse) to 5 (extremely dense).
inline constexpr int32_t kComplexity = 798;
// The time of day, a mask: 1 day, 2 dusk or dawn, 4 night.
inline constexpr int32_t kTimeOfDay = 652;
inline constexpr int32_t kDay = 1;
inline constexpr int32_t kDusk = 2;
inline constexpr int32_t kNight = 4;
// The wind's heading: a SPRITE_VICALL whose parameter 9 names it turns its part with the wind.
inline constexpr int32_t kWindHeading = 3188;
// Freeing lights drops the mask tests on variables up to this one and keeps those above it.
inline constexpr int32_t kHighestFreedLightVariable = 200;
}  // namespace variables

// A season as people name it, with the days it covers when nothing else is said.
struct Season {
    textureVariant variant;
    std::string_view name;  // "spring", "summer", "fall", "winter", "heavywinter"
    int16_t firstDay;       // where it starts: 60, 152, 244, 335, 1
    int16_t middleDay;      // a day well inside it: 105, 196, 288, 15, 35
};

// The five seasons in the order in which they start in the year: heavywinter, spring, summer,
// fall, winter.
const std::array<Season, 5>& seasons();
const Season& seasonOf(textureVariant variant);
// The season of a name ("autumn" is fall too); nothing for another word.
std::optional<textureVariant> seasonNamed(std::string_view name);

}  // namespace velmora
