#pragma once

#include <velmora/SceneryVariables.h>
#include <velmora/StreamAnalysis.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// The year as a seasonal run shows it: which texture each day of the year draws.
namespace velmora::editing {

inline constexpr int kDaysInYear = 366;

// Day 1 to 366: the 0-based texture shown; -1 where the run shows none.
using DayMap = std::array<int32_t, kDaysInYear + 1>;

// Days running from `first` to `last`, over the new year when `last` is below `first`.
struct DaySpan {
    int32_t first = 1;
    int32_t last = kDaysInYear;
    bool holds(int32_t day) const {
        return first <= last ? day >= first && day <= last : day >= first || day <= last;
    }
    int32_t length() const {
        return first <= last ? last - first + 1 : kDaysInYear - first + 1 + last;
    }
};

// A stretch of days showing one texture.
struct DaySegment {
    DaySpan days;
    int32_t texture = -1;
};

DayMap everyDay(int32_t texture);
// What a run shows on each day, as the walk takes it: the first variant whose test holds (a
// test whose first day is above its last never does), else the run's default.
DayMap daysOf(const SeasonalRun& run);
void paint(DayMap& map, const DaySpan& days, int32_t texture);
// The stretches of one texture, in the order of the year; one that runs over the new year
// comes last.
std::vector<DaySegment> segmentsOf(const DayMap& map);
// The season of each stretch: the texture drawn today's are summer; the others take the season
// whose middle day they show (winter 15, spring 105, fall 288, heavywinter 35, in that order, a
// season to one stretch), and a stretch that shows none the season its first day lies in.
std::vector<textureVariant> seasonsOf(const std::vector<DaySegment>& segments, int32_t anchor);
std::string daysText(const DaySpan& days);

}  // namespace velmora::editing
