// The gamma correction FreeImage has libpng make when it reads a PNG file, for a screen gamma of
// 2.2, so that the portable decoder can make the same.
#include "image/portable/PortableImage.h"

#include <algorithm>
#include <cmath>

namespace velmora::image::portable {

namespace {

uint32_t bigEndian32(std::string_view bytes, std::size_t at) {
    uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        value = value << 8 | (i < bytes.size() ? static_cast<uint8_t>(bytes[i]) : 0);
    return value;
}

// libpng's fixed-point numbers count in units of 1/100000.
double roundedFixed(double value) {
    return std::floor(value + 0.5);
}

}  // namespace

std::optional<PngGamma> pngGamma(std::string_view bytes) {
    if (!bytes.starts_with(std::string_view("\x89PNG\r\n\x1a\n", 8))) return std::nullopt;
    int bitDepth = 0, colorType = 0, significantBits = 0;
    double fileGamma = 0;
    bool srgb = false;
    for (std::size_t at = 8; at + 8 <= bytes.size();) {
        const uint32_t length = bigEndian32(bytes, at);
        const std::string_view type = bytes.substr(at + 4, 4);
        const std::string_view data = bytes.substr(at + 8, length);
        if (type == "IDAT") break;
        if (type == "IHDR" && data.size() >= 10) {
            bitDepth = static_cast<uint8_t>(data[8]);
            colorType = static_cast<uint8_t>(data[9]);
        } else if (type == "gAMA" && data.size() >= 4) {
            const uint32_t gamma = bigEndian32(data, 0);
            if (gamma >= 16 && gamma <= 625000000) fileGamma = gamma;  // libpng's valid range
        } else if (type == "sRGB") {
            srgb = true;
        } else if (type == "sBIT") {
            // A colour image's significant bits are those of its widest colour channel.
            for (std::size_t i = 0; i < data.size() && i < (colorType & 2 ? 3u : 1u); ++i)
                significantBits = std::max(significantBits, static_cast<int>(data[i]));
        }
        at += 12 + static_cast<std::size_t>(length);
    }
    // No correction for a palette, an sRGB file, or one whose gamma is within 5% of 1/2.2.
    constexpr double kScreenGamma = 220000;
    const double product = roundedFixed(fileGamma * 1e-5 * kScreenGamma);
    if (colorType == 3 || srgb || fileGamma == 0 || (product >= 95000 && product <= 105000))
        return std::nullopt;
    const double exponent = roundedFixed(1e15 / fileGamma / kScreenGamma) * 1e-5;

    PngGamma gamma;
    if (bitDepth == 16) {
        // Corrected on the significant bits, then cut to 8 as FreeImage converts 16-bit images.
        gamma.sixteenBits = true;
        gamma.shift = significantBits > 0 && significantBits < 16 ? 16 - significantBits : 0;
        gamma.shift = std::min(gamma.shift, 8);
        const int top = (1 << (16 - gamma.shift)) - 1;
        for (int level = 0; level <= top; ++level) {
            const double corrected =
                std::floor(65535 * std::pow(level / double(top), exponent) + 0.5);
            gamma.table.push_back(static_cast<uint8_t>(static_cast<int>(corrected) >> 8));
        }
        return gamma;
    }
    for (int level = 0; level < 256; ++level) {
        int corrected = level;
        if (level > 0 && level < 255)
            corrected = static_cast<int>(std::floor(255 * std::pow(level / 255.0, exponent) + 0.5));
        // FreeImage keeps 4-bit grey on 4 bits, so only the corrected level's top half counts.
        if (colorType == 0 && bitDepth == 4) corrected = (corrected >> 4) * 17;
        gamma.table.push_back(static_cast<uint8_t>(corrected));
    }
    return gamma;
}

}  // namespace velmora::image::portable
