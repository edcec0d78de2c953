#include "foundation/GeneralFunctions.h"

namespace velmora {

std::string folderOfPath(const std::string& path) {
    const auto cut = path.find_last_of("/\\");
    if (cut == std::string::npos) return path;
    return path.substr(0, cut);
}

}  // namespace velmora
