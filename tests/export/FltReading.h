#pragma once

#include <cstdint>
#include <cstring>
#include <string>

// Reads the big-endian fields of an OpenFlight database held in memory.
namespace fltread {

inline uint64_t bigEndian(const std::string& bytes, std::size_t at, std::size_t width) {
    uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value = (value << 8) | static_cast<unsigned char>(bytes.at(at + i));
    }
    return value;
}

inline int16_t be16(const std::string& bytes, std::size_t at) {
    return static_cast<int16_t>(bigEndian(bytes, at, 2));
}

inline int32_t be32(const std::string& bytes, std::size_t at) {
    return static_cast<int32_t>(bigEndian(bytes, at, 4));
}

inline float beSingle(const std::string& bytes, std::size_t at) {
    const auto bits = static_cast<uint32_t>(bigEndian(bytes, at, 4));
    float value;
    std::memcpy(&value, &bits, 4);
    return value;
}

inline double beDouble(const std::string& bytes, std::size_t at) {
    const uint64_t bits = bigEndian(bytes, at, 8);
    double value;
    std::memcpy(&value, &bits, 8);
    return value;
}

// The text of a fixed field, up to its first NUL.
inline std::string fieldText(const std::string& bytes, std::size_t at, std::size_t width) {
    const std::string field = bytes.substr(at, width);
    return field.substr(0, field.find('\0'));
}

inline bool allZero(const std::string& bytes, std::size_t at, std::size_t width) {
    for (std::size_t i = at; i < at + width; ++i) {
        if (bytes.at(i) != '\0') return false;
    }
    return true;
}

}  // namespace fltread
