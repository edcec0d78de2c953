#include <velmora/Windows1252.h>

#include <array>
#include <cstdint>

namespace velmora {

namespace {

// The code points of the bytes 0x80 to 0x9F; the bytes from 0xA0 up are the same code points.
constexpr std::array<char32_t, 32> kHigh{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

// True when the bytes are well-formed UTF-8 (no overlong forms, no surrogates).
bool isUtf8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();) {
        const auto lead = static_cast<uint8_t>(bytes[i]);
        const std::size_t length = lead < 0x80         ? 1
                                   : (lead >> 5) == 6  ? 2
                                   : (lead >> 4) == 14 ? 3
                                   : (lead >> 3) == 30 ? 4
                                                       : 0;
        if (length == 0 || i + length > bytes.size()) return false;
        char32_t code = length == 1 ? lead : lead & (0x7F >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<uint8_t>(bytes[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            code = (code << 6) | (next & 0x3F);
        }
        const char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < least[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return false;
        i += length;
    }
    return true;
}

}  // namespace

std::string fileNameFromModelText(std::string_view bytes) {
    return isUtf8(bytes) ? std::string(bytes) : utf8FromWindows1252(bytes);
}

std::string utf8FromWindows1252(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<uint8_t>(c);
        appendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : char32_t{byte});
    }
    return out;
}

bool isPlainAscii(std::string_view bytes) {
    for (const char c : bytes) {
        if (static_cast<uint8_t>(c) >= 0x80) return false;
    }
    return true;
}

}  // namespace velmora
