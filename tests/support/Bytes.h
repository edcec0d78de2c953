#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

// Small byte builders, so a test reads as what its bytes mean.
namespace testbytes {

inline std::string le16(int32_t value) {
    const auto v = static_cast<uint16_t>(value);
    return std::string{static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)};
}

inline std::string le32(int64_t value) {
    const auto v = static_cast<uint32_t>(value);
    std::string out(4, '\0');
    for (int i = 0; i < 4; ++i)
        out[static_cast<std::size_t>(i)] = static_cast<char>((v >> (8 * i)) & 0xFF);
    return out;
}

inline std::string f32(float value) {
    std::string out(4, '\0');
    std::memcpy(out.data(), &value, 4);
    return out;
}

inline std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (int v : values)
        out.push_back(static_cast<char>(v));
    return out;
}

// A RIFF section: tag, 32-bit size, payload.
inline std::string section(const std::string& tag, const std::string& payload) {
    return tag + le32(static_cast<int64_t>(payload.size())) + payload;
}

// A whole model file: "RIFF", size, "MDL9", then the sections as given.
inline std::string riff(const std::string& sections, const std::string& form = "MDL9") {
    return "RIFF" + le32(static_cast<int64_t>(4 + sections.size())) + form + sections;
}

// Hex dump "B8 00 02 00" for readable failure messages.
inline std::string hex(const std::string& data) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : data) {
        if (!out.empty()) out.push_back(' ');
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

}  // namespace testbytes
