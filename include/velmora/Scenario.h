#pragma once

#include <velmora/SceneryVariables.h>
#include <velmora/texture.h>

#include <cstdint>
#include <map>
#include <optional>

namespace velmora {

class GuardAnalysis;

// The values of the scenery variables under which a model's command stream is followed as the
// simulator would follow it (MDLObject::walk and glGenerateDrawList with a scenario,
// MDLObject::glDrawView). A test on a range holds when the variable lies in it, a mask test when
// the variable has a bit of the mask set.
//
// Variables that have a name here, and their values when a scenario doesn't set them:
//   906  day of the year, 1 to 366 (the variable the seasonal runs test): 172, 21 June
//   798  scenery complexity, 0 (sparse) to 5 (extremely dense): 5, so every part is drawn
//   652  time of day, a mask: 1 day, 2 dusk or dawn, 4 night: 1, day
// Every other variable is 0 until it is set.
//
// Size tests (IFSIZEV, IFSIZEH) hold, taking the most detailed branch, unless a viewing distance
// is given; then a size of s at a distance of d covers s * 665 / d pixels (a view 768 pixels
// high with a vertical field of 60 degrees), and the test holds when that reaches its pixels.
// Tests of where the viewer stands (IFINBOXP, IFIN_BOX_PLANE, IFIN_INSTANCED_BOX_PLANE,
// SEPARATION_PLANE) and tests of no known meaning hold.
class Scenario {
  public:
    Scenario& set(int32_t variable, int32_t value);
    int32_t value(int32_t variable) const;
    // The variables set, with their values.
    const std::map<int32_t, int32_t>& values() const { return values_; }

    Scenario& day(int32_t dayOfYear) { return set(variables::kDayOfYear, dayOfYear); }
    // The middle of a season: spring 105, summer 196, autumn 288, winter 15, heavywinter 35.
    Scenario& season(textureVariant season);
    Scenario& complexity(int32_t level) { return set(variables::kComplexity, level); }
    Scenario& night(bool atNight = true) {
        return set(variables::kTimeOfDay, atNight ? variables::kNight : variables::kDay);
    }

    Scenario& viewingDistance(double metres);
    std::optional<double> viewingDistance() const { return viewingDistance_; }

    // The compass heading, in degrees, that the viewer looks along, for the parts a SPRITE_VICALL
    // turns to face the user; unset, they stay as the model has them.
    Scenario& viewerHeading(float degrees);
    std::optional<float> viewerHeading() const { return viewerHeading_; }
    // The heading the wind blows towards, for the parts turned with the wind; 0 when unset.
    Scenario& windHeading(float degrees);
    float windHeading() const { return windHeading_; }

  private:
    std::map<int32_t, int32_t> values_;
    std::optional<double> viewingDistance_;
    std::optional<float> viewerHeading_;
    float windHeading_ = 0;
};

// A scenario under which a model's guarded call is reached, and the variables it changed.
struct ScenarioToShow {
    Scenario scenario;
    std::map<int32_t, int32_t> changed;  // empty when the scenario given reaches the call
};

// `scenario` with values that make `guard` hold where it doesn't, changing as few variables as
// possible and none that `scenario` sets itself (GuardAnalysis::valuesToHold); nothing when no
// such values are found.
std::optional<ScenarioToShow> scenarioToShow(const GuardAnalysis& guard, const Scenario& scenario);

}  // namespace velmora
