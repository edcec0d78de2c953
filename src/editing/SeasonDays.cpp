#include "editing/SeasonDays.h"

namespace velmora::editing {

DayMap everyDay(int32_t texture) {
    DayMap map;
    map.fill(texture);
    map[0] = -1;
    return map;
}

DayMap daysOf(const SeasonalRun& run) {
    DayMap map = everyDay(-1);
    for (int32_t day = 1; day <= kDaysInYear; ++day) {
        for (const SeasonalVariant& variant : run.variants) {
            if (variant.isDefault() || (variant.firstDay <= variant.lastDay &&
                                        day >= variant.firstDay && day <= variant.lastDay)) {
                map[static_cast<std::size_t>(day)] = variant.texture;
                break;
            }
        }
    }
    return map;
}

void paint(DayMap& map, const DaySpan& days, int32_t texture) {
    for (int32_t day = 1; day <= kDaysInYear; ++day) {
        if (days.holds(day)) map[static_cast<std::size_t>(day)] = texture;
    }
}

std::vector<DaySegment> segmentsOf(const DayMap& map) {
    std::vector<DaySegment> segments;
    for (int32_t day = 1; day <= kDaysInYear; ++day) {
        const int32_t texture = map[static_cast<std::size_t>(day)];
        if (!segments.empty() && segments.back().texture == texture) {
            segments.back().days.last = day;
        } else {
            segments.push_back({{day, day}, texture});
        }
    }
    // The stretch at the end of the year goes on into the one at its start.
    if (segments.size() > 1 && segments.front().texture == segments.back().texture) {
        segments.back().days.last = segments.front().days.last;
        segments.erase(segments.begin());
    }
    return segments;
}

std::vector<textureVariant> seasonsOf(const std::vector<DaySegment>& segments, int32_t anchor) {
    std::vector<textureVariant> out(segments.size(), summer);
    std::vector<bool> placed(segments.size(), false);
    for (std::size_t i = 0; i < segments.size(); ++i)
        placed[i] = segments[i].texture == anchor;
    for (const textureVariant season : {winter, spring, autumn, heavywinter}) {
        for (std::size_t i = 0; i < segments.size(); ++i) {
            if (placed[i] || !segments[i].days.holds(seasonOf(season).middleDay)) continue;
            out[i] = season;
            placed[i] = true;
        }
    }
    // A winter that ends at the new year leaves the stretch after it to heavywinter.
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (out[i] != winter || !segments[i].days.holds(seasonOf(heavywinter).middleDay)) continue;
        for (std::size_t j = 0; j < segments.size(); ++j) {
            if (placed[j] || segments[j].days.last != kDaysInYear) continue;
            out[i] = heavywinter;
            out[j] = winter;
            placed[j] = true;
        }
    }
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if (placed[i]) continue;
        const int32_t day = segments[i].days.first;
        out[i] = day >= seasonOf(winter).firstDay || day < seasonOf(spring).firstDay ? winter
                 : day >= seasonOf(autumn).firstDay                                  ? autumn
                 : day >= seasonOf(summer).firstDay                                  ? summer
                                                                                     : spring;
    }
    return out;
}

std::string daysText(const DaySpan& days) {
    if (days.length() >= kDaysInYear) return "every day";
    return "days " + std::to_string(days.first) + "-" + std::to_string(days.last);
}

}  // namespace velmora::editing
