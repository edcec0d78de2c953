#include <velmora/SceneryVariables.h>

#include "foundation/Errors.h"

#include <algorithm>

namespace velmora {

const std::array<Season, 5>& seasons() {
    static const std::array<Season, 5> all{{{heavywinter, "heavywinter", 1, 35},
                                            {spring, "spring", 60, 105},
                                            {summer, "summer", 152, 196},
                                            {autumn, "fall", 244, 288},
                                            {winter, "winter", 335, 15}}};
    return all;
}

const Season& seasonOf(textureVariant variant) {
    const auto& all = seasons();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [variant](const Season& s) { return s.variant == variant; });
    if (found == all.end()) raisePlatformError(kSubscriptOutOfRange);
    return *found;
}

std::optional<textureVariant> seasonNamed(std::string_view name) {
    if (name == "autumn") return autumn;
    for (const Season& season : seasons()) {
        if (season.name == name) return season.variant;
    }
    return std::nullopt;
}

}  // namespace velmora
