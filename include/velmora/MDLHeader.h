#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velmora {

// The nine 32-bit values of the "MDLH" section, carried without a meaning.
class MDLHeader {
  public:
    // Index 0 to 8; anything else is error 9.
    int32_t param(int16_t Index) const;
    void param(int16_t Index, int32_t value);

    void readList(const std::string& data);
    std::string asString() const;

  private:
    std::array<int32_t, 9> params_{};
};

}  // namespace velmora
