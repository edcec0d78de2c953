#pragma once

#include <string>

namespace velmora {

// The part of `path` before its last separator ("/" or "\"). A path without a separator is
// given back unchanged; an empty path stays empty.
std::string folderOfPath(const std::string& path);

}  // namespace velmora
