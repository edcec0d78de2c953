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
        case kDayOfYear:
            return 172;
        case kComplexity:
            return 5;
        case kTimeOfDay:
            return kDay;
        default:
            return 0;
    }
}

Scenario& Scenario::season(textureVariant season) {
    switch (season) {
        case spring:
            return day(105);
        case autumn:
            return day(288);
        case winter:
            return day(15);
        case heavywinter:
            return day(35);
        default:
            return day(196);
    }
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
