#include <velmora/Version.h>

#include "BuildVersion.h"

namespace velmora {

int32_t versionMajor() {
    return VELMORA_VERSION_MAJOR;
}
int32_t versionMinor() {
    return VELMORA_VERSION_MINOR;
}
int32_t versionRevision() {
    return VELMORA_VERSION_REVISION;
}
std::string versionString() {
    return VELMORA_VERSION_STRING;
}

}  // namespace velmora
