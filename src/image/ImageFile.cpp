#include "image/ImageFile.h"

#include "foundation/Errors.h"

#include <FreeImage.h>

#include <cstdio>
#include <memory>

namespace velmora::image {

namespace {

struct BitmapDeleter {
    void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

struct MemoryDeleter {
    void operator()(FIMEMORY* memory) const { FreeImage_CloseMemory(memory); }
};
using Memory = std::unique_ptr<FIMEMORY, MemoryDeleter>;

// FreeImage's shared library starts itself; the call only makes sure on builds that don't.
void ensureFreeImage() {
    static const bool started = [] {
        FreeImage_Initialise(FALSE);
        return true;
    }();
    (void)started;
}

std::optional<std::string> readBytes(const std::string& path) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                         &std::fclose);
    if (!file) return std::nullopt;
    std::string bytes;
    char chunk[1 << 16];
    std::size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0)
        bytes.append(chunk, got);
    if (std::ferror(file.get())) return std::nullopt;
    return bytes;
}

// The bitmap of an image file as FreeImage loads it; nothing when it can't be read.
Bitmap loadBitmap(const std::string& path) {
    ensureFreeImage();
    std::optional<std::string> bytes = readBytes(path);
    if (!bytes || bytes->empty()) return nullptr;
    Memory memory(FreeImage_OpenMemory(reinterpret_cast<BYTE*>(bytes->data()),
                                       static_cast<DWORD>(bytes->size())));
    if (!memory) return nullptr;
    const FREE_IMAGE_FORMAT format = FreeImage_GetFileTypeFromMemory(memory.get(), 0);
    if (format == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(format)) return nullptr;
    Bitmap loaded(FreeImage_LoadFromMemory(format, memory.get(), 0));
    if (!loaded || !FreeImage_HasPixels(loaded.get())) return nullptr;
    return loaded;
}

std::string pngBytes(FIBITMAP& bitmap) {
    Memory memory(FreeImage_OpenMemory());
    if (!memory || !FreeImage_SaveToMemory(FIF_PNG, &bitmap, memory.get(), PNG_DEFAULT)) {
        raisePlatformError(kPathFileAccessError, "the picture couldn't be encoded as PNG");
    }
    BYTE* data = nullptr;
    DWORD size = 0;
    FreeImage_AcquireMemory(memory.get(), &data, &size);
    return std::string(reinterpret_cast<const char*>(data), size);
}

}  // namespace

std::size_t paddedRowBytes(int32_t width) {
    return (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
}

std::optional<TextureImage> readTextureImage(const std::string& path) {
    const Bitmap loaded = loadBitmap(path);
    if (!loaded) return std::nullopt;
    // Palette images resolve to true colour here; alpha, if any, is dropped.
    Bitmap rgb(FreeImage_ConvertTo24Bits(loaded.get()));
    if (!rgb) return std::nullopt;

    TextureImage image;
    image.width = static_cast<int32_t>(FreeImage_GetWidth(rgb.get()));
    image.height = static_cast<int32_t>(FreeImage_GetHeight(rgb.get()));
    if (image.width <= 0 || image.height <= 0) return std::nullopt;
    // Sized from the padded row, so rows whose length isn't a multiple of 4 bytes fit whole.
    const std::size_t rowBytes = paddedRowBytes(image.width);
    image.bgrRows.assign(rowBytes * static_cast<std::size_t>(image.height), 0);
    for (int32_t y = 0; y < image.height; ++y) {
        // FreeImage keeps its scan lines bottom-up, as the texture wants them.
        const BYTE* from = FreeImage_GetScanLine(rgb.get(), y);
        uint8_t* to = image.bgrRows.data() + rowBytes * static_cast<std::size_t>(y);
        for (int32_t x = 0; x < image.width; ++x) {
            to[3 * x + 0] = from[3 * x + FI_RGBA_BLUE];
            to[3 * x + 1] = from[3 * x + FI_RGBA_GREEN];
            to[3 * x + 2] = from[3 * x + FI_RGBA_RED];
        }
    }
    return image;
}

std::optional<RgbaImage> readRgbaImage(const std::string& path) {
    const Bitmap loaded = loadBitmap(path);
    if (!loaded) return std::nullopt;
    Bitmap rgba(FreeImage_ConvertTo32Bits(loaded.get()));
    if (!rgba) return std::nullopt;
    RgbaImage image;
    image.width = static_cast<int32_t>(FreeImage_GetWidth(rgba.get()));
    image.height = static_cast<int32_t>(FreeImage_GetHeight(rgba.get()));
    if (image.width <= 0 || image.height <= 0) return std::nullopt;
    image.rgbaRows.resize(static_cast<std::size_t>(image.width) * image.height * 4);
    uint8_t* to = image.rgbaRows.data();
    for (int32_t y = 0; y < image.height; ++y) {
        const BYTE* from = FreeImage_GetScanLine(rgba.get(), y);
        for (int32_t x = 0; x < image.width; ++x, to += 4) {
            to[0] = from[4 * x + FI_RGBA_RED];
            to[1] = from[4 * x + FI_RGBA_GREEN];
            to[2] = from[4 * x + FI_RGBA_BLUE];
            to[3] = from[4 * x + FI_RGBA_ALPHA];
            image.translucent = image.translucent || to[3] != 255;
        }
    }
    return image;
}

std::string encodePNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height) {
    ensureFreeImage();
    Bitmap bitmap(FreeImage_Allocate(width, height, 24));
    if (!bitmap) raisePlatformError(kOverflow);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* from = rgb.data() + rowBytes * static_cast<std::size_t>(y);
        BYTE* to = FreeImage_GetScanLine(bitmap.get(), height - 1 - y);
        for (int32_t x = 0; x < width; ++x) {
            to[3 * x + FI_RGBA_RED] = from[3 * x + 0];
            to[3 * x + FI_RGBA_GREEN] = from[3 * x + 1];
            to[3 * x + FI_RGBA_BLUE] = from[3 * x + 2];
        }
    }
    return pngBytes(*bitmap);
}

std::string encodePNG(const RgbaImage& image) {
    ensureFreeImage();
    const int bits = image.translucent ? 32 : 24;
    Bitmap bitmap(FreeImage_Allocate(image.width, image.height, bits));
    if (!bitmap) raisePlatformError(kOverflow);
    const int step = bits / 8;
    for (int32_t y = 0; y < image.height; ++y) {
        const uint8_t* from = image.rgbaRows.data() + static_cast<std::size_t>(y) * image.width * 4;
        BYTE* to = FreeImage_GetScanLine(bitmap.get(), y);
        for (int32_t x = 0; x < image.width; ++x) {
            to[step * x + FI_RGBA_RED] = from[4 * x + 0];
            to[step * x + FI_RGBA_GREEN] = from[4 * x + 1];
            to[step * x + FI_RGBA_BLUE] = from[4 * x + 2];
            if (step == 4) to[step * x + FI_RGBA_ALPHA] = from[4 * x + 3];
        }
    }
    return pngBytes(*bitmap);
}

}  // namespace velmora::image
