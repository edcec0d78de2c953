#include <velmora/Scenario.h>

namespace velmora {

Scenario& Scenario::set(int32_t variable, int32_t value) {
    values_[variable] = value;
    return *this;
}

int32_t Scenario::value(int32_t variable) const {
    const auto found = values_.find(variable);
    if (found != values_.end()) return found->second;
    switch (variable) {
        case variables::kDayOfYear:
            return 172;
        case variables::kComplexity:
            return 5;
        case variables::kTimeOfDay:
            return variables::kDay;
        default:
            return 0;
    }
}

Scenario& Scenario::season(textureVariant season) {
    return day(seasonOf(season).middleDay);
}

Scenario& Scenario::viewingDistance(double metres) {
    viewingDistance_ = metres;
    return *this;
}

Scenario& Scenario::viewerHeading(float degrees) {
    viewerHeading_ = degrees;
    return *this;
}

Scenario& Scenario::windHeading(float degrees) {
    windHeading_ = degrees;
    return *this;
}

}  // namespace velmora
