#include "export/OpenFlightNames.h"

#include "foundation/NumberText.h"

namespace velmora::flt {

namespace {
constexpr std::size_t kIdCharacters = 7;
}

int16_t paddedLength(const std::string& text) {
    const auto length = static_cast<int64_t>(text.size());
    const int64_t padded = length % 4 == 0 ? length + 1 : length + 1 + (4 - length % 4);
    return numbers::narrow16(padded);
}

std::string shortID(const std::string& name) {
    return name.size() > kIdCharacters ? name.substr(0, kIdCharacters) : name;
}

bool needsLongID(const std::string& name) {
    return name.size() > kIdCharacters;
}

std::string textureFileName(const std::string& bitmap, const std::string& texFormat) {
    std::string lowered = bitmap;
    for (char& c : lowered) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    const std::string extension = "." + texFormat;
    std::string name;
    name.reserve(lowered.size() + extension.size());
    std::size_t from = 0;
    for (std::size_t at = lowered.find(".bmp"); at != std::string::npos;
         at = lowered.find(".bmp", from)) {
        name.append(lowered, from, at - from);
        name += extension;
        from = at + 4;
    }
    name.append(lowered, from, std::string::npos);
    return name;
}

}  // namespace velmora::flt
