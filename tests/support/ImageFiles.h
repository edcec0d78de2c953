#pragma once

// Image files for tests, written and read without the library: BMP written here byte by byte,
// PNG through stb_image_write, and any image read back through stb_image. The stb functions are
// static to each test file, so they never meet the library's own.
#define STB_IMAGE_STATIC
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image.h>
#include <stb_image_write.h>

#include "support/TempDir.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace imagefiles {

using Rgb = std::array<uint8_t, 3>;

inline void put16(std::string& out, uint32_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>((value >> 8) & 0xFF);
}
inline void put32(std::string& out, uint32_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

// A bottom-up BMP of `pixels` (rows from the top): 24 bits, or 8 bits of `indices` into
// `palette` when a palette is given.
inline std::string bmpBytes(int width, int height, const std::vector<Rgb>& pixels,
                            const std::vector<uint8_t>& indices = {},
                            const std::vector<Rgb>& palette = {}) {
    const int bits = palette.empty() ? 24 : 8;
    const uint32_t row = (static_cast<uint32_t>(width) * bits / 8 + 3) / 4 * 4;
    const uint32_t paletteBytes = static_cast<uint32_t>(palette.size()) * 4;
    const uint32_t offset = 14 + 40 + paletteBytes;
    std::string out = "BM";
    put32(out, offset + row * static_cast<uint32_t>(height));
    put32(out, 0);
    put32(out, offset);
    put32(out, 40);
    put32(out, static_cast<uint32_t>(width));
    put32(out, static_cast<uint32_t>(height));
    put16(out, 1);
    put16(out, static_cast<uint32_t>(bits));
    for (int i = 0; i < 6; ++i)
        put32(out, i == 4 ? static_cast<uint32_t>(palette.size()) : 0);
    for (const Rgb& c : palette)
        out += {static_cast<char>(c[2]), static_cast<char>(c[1]), static_cast<char>(c[0]), 0};
    for (int y = height - 1; y >= 0; --y) {
        std::string line;
        for (int x = 0; x < width; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * width + x;
            if (bits == 8) {
                line += static_cast<char>(indices[at]);
            } else {
                const Rgb& c = pixels[at];
                line += {static_cast<char>(c[2]), static_cast<char>(c[1]), static_cast<char>(c[0])};
            }
        }
        line.resize(row, '\0');
        out += line;
    }
    return out;
}

inline bool writePng(const std::string& path, int width, int height,
                     const std::vector<Rgb>& pixels) {
    return stbi_write_png(path.c_str(), width, height, 3, pixels.data(), width * 3) != 0;
}

// An image file's pixels as RGB from the top row, with its width and height; empty when it
// can't be read.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Rgb> pixels;
    const Rgb& at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
};

inline Picture readPicture(const std::string& bytes) {
    Picture picture;
    int channels = 0;
    stbi_uc* data = stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(bytes.data()),
                                          static_cast<int>(bytes.size()), &picture.width,
                                          &picture.height, &channels, 3);
    if (data == nullptr) return {};
    for (int i = 0; i < picture.width * picture.height; ++i)
        picture.pixels.push_back({data[3 * i], data[3 * i + 1], data[3 * i + 2]});
    stbi_image_free(data);
    return picture;
}

}  // namespace imagefiles
