#pragma once

#include <velmora/StreamAnalysis.h>

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The seasons as glTF material variants (KHR_materials_variants): one variant a season, in the
// order spring, summer, fall, winter, heavywinter, each showing a seasonal run's texture of the
// season's middle day.
namespace velmora::gltf {

inline constexpr std::size_t kSeasonCount = 5;

// A glTF material for each season, in the variants' order.
using SeasonMaterials = std::array<int32_t, kSeasonCount>;

// The variants' names, in their order.
std::vector<std::string> seasonNames();
// The day each season is shown at, its middle day, in the variants' order.
const std::array<int32_t, kSeasonCount>& seasonDays();
// The day a primitive's own material shows: the day a walk takes when no scenario sets one.
int32_t defaultDay();

// The variant of `run` shown on `day`: the first whose days hold it, else the run's default;
// nullptr when neither.
const SeasonalVariant* variantOn(const SeasonalRun& run, int32_t day);

// A primitive's variant mappings: each material of `materials` with the seasons that show it,
// in the order of their first season.
std::vector<std::pair<int32_t, std::vector<int32_t>>> mappingsOf(const SeasonMaterials& materials);

// What a primitive's extras say of the run that sets its surface: each variant's SET_MATERIAL,
// the test and days that select it, its texture and the seasons that show it.
nlohmann::json runExtras(const SeasonalRun& run);

}  // namespace velmora::gltf
