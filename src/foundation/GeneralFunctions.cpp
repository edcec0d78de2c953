#include "foundation/GeneralFunctions.h"

namespace velmora {

std::string folderOfPath(const std::string& path) {
    const auto cut = path.find_last_of("/\\");
    if (cut == std::string::npos) return path;
    return path.substr(0, cut);
}

std::string asciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

}  // namespace velmora
