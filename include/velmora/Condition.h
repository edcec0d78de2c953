#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// The kind of a condition in front of a model's call.
enum CondType : int32_t { Between = 0, mask = 1, RotUser = 2, RotWind = 3 };

// One condition: a range or mask test on a scenery variable, or a rotation.
class Condition {
  public:
    // "Between", "Mask", "Rotate to user" or "Rotate with wind"; error 9 for another cType.
    std::string getTypeString() const;
    CondType cType() const { return cType_; }
    void cType(CondType value) { cType_ = value; }
    const std::string& var() const { return var_; }
    void var(const std::string& value) { var_ = value; }
    int16_t min() const { return min_; }
    void min(int16_t value) { min_ = value; }
    int16_t max() const { return max_; }
    void max(int16_t value) { max_ = value; }

  private:
    CondType cType_ = Between;
    std::string var_;
    int16_t min_ = 0;
    int16_t max_ = 0;
};

}  // namespace velmora
