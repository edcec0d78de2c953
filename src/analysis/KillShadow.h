#pragma once

#include <string>

namespace velmora::analysis {

// The "SHAD" section that draws nothing: an inner "BGL " section whose length field is 0,
// followed by BGL_END and BGL_RETURN (42 47 4C 20 00 00 00 00 BD 00 22 00).
const std::string& killShadowBytes();

}  // namespace velmora::analysis
