// BMP files with a Windows or an OS/2 header: 1, 4 and 8 bits a pixel through a palette, plain or
// run-length coded (RLE8, RLE4), 16 bits (5-5-5, or 5-6-5 given as bit fields), 24 and 32 bits,
// rows bottom-up or top-down. Pixel bytes missing at the end of the file read as zeros.
#include "image/portable/PortableImage.h"

#include "foundation/ByteReader.h"

#include <algorithm>
#include <array>

namespace velmora::image::portable {

namespace {

enum Compression : uint32_t { kPlain = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3 };

using Color = std::array<uint8_t, 4>;

struct BmpLayout {
    int64_t width = 0;
    int64_t height = 0;
    bool topDown = false;
    int32_t bitCount = 0;
    uint32_t compression = kPlain;
    bool is565 = false;
    std::array<Color, 256> palette{};
};

bool validCoding(const BmpLayout& bmp) {
    switch (bmp.compression) {
        case kPlain:
            return bmp.bitCount == 1 || bmp.bitCount == 4 || bmp.bitCount == 8 ||
                   bmp.bitCount == 16 || bmp.bitCount == 24 || bmp.bitCount == 32;
        case kRle8:
            return bmp.bitCount == 8;
        case kRle4:
            return bmp.bitCount == 4;
        case kBitFields:
            return bmp.bitCount == 16 || bmp.bitCount == 32;
        default:
            return false;
    }
}

// Entries the file leaves out stay black, except in 8-bit images, whose palette starts as a grey
// ramp (as FreeImage allocates it).
void readPalette(ByteReader& in, int64_t headerSize, int64_t count, int64_t entryBytes,
                 BmpLayout& bmp) {
    for (int32_t i = 0; i < 256; ++i) {
        const auto grey = static_cast<uint8_t>(bmp.bitCount == 8 ? i : 0);
        bmp.palette[static_cast<std::size_t>(i)] = {grey, grey, grey, 255};
    }
    in.seek(14 + headerSize);
    for (int64_t i = 0; i < count && in.remaining() >= entryBytes; ++i) {
        const uint8_t blue = in.byte(), green = in.byte(), red = in.byte();
        in.skip(entryBytes - 3);
        bmp.palette[static_cast<std::size_t>(i)] = {red, green, blue, 255};
    }
}

std::optional<BmpLayout> readLayout(ByteReader& in) {
    BmpLayout bmp;
    in.seek(14);
    const int64_t headerSize = static_cast<uint32_t>(in.int32());
    int64_t paletteCount = 0;
    int64_t entryBytes = 4;
    if (headerSize == 12) {  // OS/2: 16-bit sizes, 3-byte palette entries, always a full palette
        bmp.width = in.uint16();
        bmp.height = in.uint16();
        in.skip(2);
        bmp.bitCount = in.uint16();
        entryBytes = 3;
        if (bmp.bitCount <= 8) paletteCount = int64_t{1} << bmp.bitCount;
    } else if (headerSize >= 40) {
        bmp.width = in.int32();
        bmp.height = in.int32();
        in.skip(2);
        bmp.bitCount = in.uint16();
        bmp.compression = static_cast<uint32_t>(in.int32());
        in.skip(12);
        const int64_t colorsUsed = static_cast<uint32_t>(in.int32());
        if (bmp.bitCount <= 8) {
            paletteCount = int64_t{1} << bmp.bitCount;
            if (colorsUsed > 0 && colorsUsed < paletteCount) paletteCount = colorsUsed;
        }
        // Bit fields follow a 40-byte header and sit at the same place inside longer ones.
        in.seek(54);
        const uint32_t red = static_cast<uint32_t>(in.int32());
        const uint32_t green = static_cast<uint32_t>(in.int32());
        const uint32_t blue = static_cast<uint32_t>(in.int32());
        // Any other 16-bit masks are read as 5-5-5, and 32-bit pixels as blue, green, red,
        // alpha whatever their masks say: FreeImage reads them so.
        bmp.is565 =
            bmp.compression == kBitFields && red == 0xF800 && green == 0x07E0 && blue == 0x001F;
    } else {
        return std::nullopt;
    }
    bmp.topDown = bmp.height < 0;
    bmp.height = bmp.topDown ? -bmp.height : bmp.height;
    if (!validCoding(bmp)) return std::nullopt;
    readPalette(in, headerSize, paletteCount, entryBytes, bmp);
    return bmp;
}

// RLE8: runs and literal spans stop at the row's end. A literal span longer than the rest of its
// row reads only the bytes that fit, then its pad byte, and moves on by its whole length: the bytes
// after it are misread, as FreeImage decodes them.
std::vector<uint8_t> decodeRle8(ByteReader& in, int64_t width, int64_t height) {
    std::vector<uint8_t> indices(static_cast<std::size_t>(width * height), 0);
    int64_t x = 0, y = 0;
    while (y < height && in.remaining() >= 2) {
        const int64_t count = in.byte();
        const uint8_t second = in.byte();
        const int64_t fits = std::clamp<int64_t>(width - x, 0, count > 0 ? count : second);
        uint8_t* to = indices.data() + y * width + std::min(x, width);
        if (count > 0) {
            std::fill_n(to, fits, second);
            x += fits;
        } else if (second == 0) {  // end of row
            x = 0;
            ++y;
        } else if (second == 1) {  // end of image
            break;
        } else if (second == 2) {  // move right and up
            x += in.byte();
            y += in.byte();
        } else {
            for (int64_t i = 0; i < fits; ++i)
                to[i] = in.byte();
            if (second % 2 == 1) in.skip(1);
            x += second;
        }
    }
    return indices;
}

// RLE4: runs and literal spans run on into the following rows, while ends of row and moves count
// rows from where the last of them left off, not from where a span ran on to: FreeImage decodes
// them so.
std::vector<uint8_t> decodeRle4(ByteReader& in, int64_t width, int64_t height) {
    const int64_t total = width * height;
    std::vector<uint8_t> indices(static_cast<std::size_t>(total), 0);
    int64_t row = 0, x = 0;
    for (int64_t at = 0; at < total && in.remaining() >= 2; at = row * width + x) {
        const int64_t count = in.byte();
        const uint8_t second = in.byte();
        const int64_t fits = std::min(total - at, count > 0 ? count : int64_t{second});
        if (count > 0) {
            for (int64_t i = 0; i < fits; ++i)
                indices[static_cast<std::size_t>(at + i)] = i % 2 ? second & 15 : second >> 4;
            x += fits;
        } else if (second == 0) {
            x = 0;
            ++row;
        } else if (second == 1) {
            break;
        } else if (second == 2) {
            x += in.byte();
            row += in.byte();
        } else {
            uint8_t pair = 0;
            for (int64_t i = 0; i < fits; ++i) {
                if (i % 2 == 0) pair = in.byte();
                indices[static_cast<std::size_t>(at + i)] = i % 2 ? pair & 15 : pair >> 4;
            }
            x += fits;
            if (fits % 4 == 1 || fits % 4 == 2) in.skip(1);  // spans end on a 2-byte boundary
        }
    }
    return indices;
}

// Palette indices of plain rows, one byte per pixel.
std::vector<uint8_t> readIndexRows(ByteReader& in, int64_t start, const BmpLayout& bmp) {
    std::vector<uint8_t> indices(static_cast<std::size_t>(bmp.width * bmp.height), 0);
    const int64_t rowBytes = (bmp.width * bmp.bitCount + 31) / 32 * 4;
    const int perByte = 8 / bmp.bitCount;
    const int mask = (1 << bmp.bitCount) - 1;
    for (int64_t y = 0; y < bmp.height; ++y) {
        in.seek(start + y * rowBytes);
        uint8_t* to = indices.data() + y * bmp.width;
        uint8_t packed = 0;
        for (int64_t x = 0; x < bmp.width; ++x) {
            if (x % perByte == 0) packed = in.byte();
            const int slot = static_cast<int>(x % perByte) + 1;
            to[x] = static_cast<uint8_t>(packed >> (8 - slot * bmp.bitCount) & mask);
        }
    }
    return indices;
}

// Five or six bits to eight the way FreeImage widens them: rounded down, not bit-replicated.
uint8_t widen(uint32_t value, uint32_t maximum) {
    return static_cast<uint8_t>(value * 255 / maximum);
}

// Pixels of 16, 24 or 32 bits into `to`, in the file's row order.
void readColorRows(ByteReader& in, int64_t start, const BmpLayout& bmp, uint8_t* to) {
    const int64_t rowBytes = (bmp.width * bmp.bitCount + 31) / 32 * 4;
    for (int64_t y = 0; y < bmp.height; ++y) {
        in.seek(start + y * rowBytes);
        for (int64_t x = 0; x < bmp.width; ++x, to += 4) {
            if (bmp.bitCount == 16) {
                const auto v = static_cast<uint32_t>(in.uint16());
                if (bmp.is565) {
                    to[0] = widen(v >> 11, 31);
                    to[1] = widen(v >> 5 & 63, 63);
                } else {
                    to[0] = widen(v >> 10 & 31, 31);
                    to[1] = widen(v >> 5 & 31, 31);
                }
                to[2] = widen(v & 31, 31);
                continue;
            }
            to[2] = in.byte();
            to[1] = in.byte();
            to[0] = in.byte();
            // A 32-bit pixel keeps its fourth byte as alpha, even when all of them are zero.
            if (bmp.bitCount == 32) to[3] = in.byte();
        }
    }
}

}  // namespace

std::optional<RgbaImage> decodeBmp(std::string_view bytes) {
    ByteReader in(bytes);
    in.seek(10);
    const int64_t start = static_cast<uint32_t>(in.int32());
    const std::optional<BmpLayout> bmp = readLayout(in);
    if (!bmp) return std::nullopt;
    std::optional<RgbaImage> image = blankImage(bmp->width, bmp->height);
    if (!image) return std::nullopt;

    uint8_t* pixels = image->rgbaRows.data();
    if (bmp->bitCount > 8) {
        readColorRows(in, start, *bmp, pixels);
    } else {
        in.seek(start);
        const std::vector<uint8_t> indices =
            bmp->compression == kRle8   ? decodeRle8(in, bmp->width, bmp->height)
            : bmp->compression == kRle4 ? decodeRle4(in, bmp->width, bmp->height)
                                        : readIndexRows(in, start, *bmp);
        for (const uint8_t index : indices) {
            std::copy_n(bmp->palette[index].begin(), 4, pixels);
            pixels += 4;
        }
    }
    if (bmp->topDown) {
        const auto rowBytes = static_cast<std::ptrdiff_t>(bmp->width * 4);
        for (int64_t low = 0, high = bmp->height - 1; low < high; ++low, --high)
            std::swap_ranges(image->rgbaRows.begin() + low * rowBytes,
                             image->rgbaRows.begin() + (low + 1) * rowBytes,
                             image->rgbaRows.begin() + high * rowBytes);
    }
    setTranslucency(*image);
    return image;
}

}  // namespace velmora::image::portable
