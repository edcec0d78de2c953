#include "export/GLTFSeasons.h"

#include <velmora/Scenario.h>
#include <velmora/SceneryVariables.h>

#include <algorithm>

namespace velmora::gltf {

namespace {

constexpr std::array<textureVariant, kSeasonCount> kSeasons{spring, summer, autumn, winter,
                                                            heavywinter};

}  // namespace

std::vector<std::string> seasonNames() {
    std::vector<std::string> names;
    for (const textureVariant season : kSeasons)
        names.emplace_back(seasonOf(season).name);
    return names;
}

const std::array<int32_t, kSeasonCount>& seasonDays() {
    static const std::array<int32_t, kSeasonCount> days = [] {
        std::array<int32_t, kSeasonCount> out{};
        for (std::size_t i = 0; i < kSeasonCount; ++i)
            out[i] = Scenario().season(kSeasons[i]).value(variables::kDayOfYear);
        return out;
    }();
    return days;
}

int32_t defaultDay() {
    static const int32_t day = Scenario().value(variables::kDayOfYear);
    return day;
}

const SeasonalVariant* variantOn(const SeasonalRun& run, int32_t day) {
    const SeasonalVariant* fallback = nullptr;
    for (const SeasonalVariant& variant : run.variants) {
        if (variant.isDefault()) {
            if (fallback == nullptr) fallback = &variant;
        } else if (variant.firstDay <= day && day <= variant.lastDay) {
            return &variant;
        }
    }
    return fallback;
}

std::vector<std::pair<int32_t, std::vector<int32_t>>> mappingsOf(const SeasonMaterials& materials) {
    std::vector<std::pair<int32_t, std::vector<int32_t>>> out;
    for (std::size_t i = 0; i < kSeasonCount; ++i) {
        const auto same = [&](const auto& mapping) { return mapping.first == materials[i]; };
        auto found = std::find_if(out.begin(), out.end(), same);
        if (found == out.end()) found = out.insert(out.end(), {materials[i], {}});
        found->second.push_back(static_cast<int32_t>(i));
    }
    return out;
}

nlohmann::json runExtras(const SeasonalRun& run) {
    const std::vector<std::string> names = seasonNames();
    nlohmann::json variants = nlohmann::json::array();
    for (const SeasonalVariant& variant : run.variants) {
        nlohmann::json seasons = nlohmann::json::array();
        for (std::size_t i = 0; i < kSeasonCount; ++i) {
            if (variantOn(run, seasonDays()[i]) == &variant) seasons.push_back(names[i]);
        }
        variants.push_back(
            {{"setMaterial", variant.position},
             {"selectedBy", variant.selectedBy},
             {"days", variant.isDefault()
                          ? nlohmann::json(nullptr)
                          : nlohmann::json::array({variant.firstDay, variant.lastDay})},
             {"texture", variant.texture},
             {"seasons", std::move(seasons)}});
    }
    return {{"commands", {run.first, run.last}}, {"variants", std::move(variants)}};
}

}  // namespace velmora::gltf
