#pragma once

#include <string>

namespace velmora {

// The part of `path` before its last separator ("/" or "\"). A path without a separator is
// given back unchanged; an empty path stays empty.
std::string folderOfPath(const std::string& path);

// `text` with the ASCII letters A to Z made small; other bytes stay as they are.
std::string asciiLower(std::string text);

}  // namespace velmora
