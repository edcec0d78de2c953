#include <velmora/BGLObject.h>

namespace velmora {

std::string guidText(const std::string& bytes) {
    if (bytes.size() != 16 || bytes == std::string(16, '\0')) return "";
    static const char* digits = "0123456789ABCDEF";
    static const int order[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string out = "{";
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        const auto byte = static_cast<unsigned char>(bytes[static_cast<std::size_t>(order[i])]);
        out.push_back(digits[byte >> 4]);
        out.push_back(digits[byte & 15]);
    }
    return out + "}";
}

}  // namespace velmora
