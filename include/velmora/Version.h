#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// The library's own version, as "Major.Minor.Revision".
int32_t versionMajor();
int32_t versionMinor();
int32_t versionRevision();
std::string versionString();

}  // namespace velmora
