#pragma once

#include <velmora/TextureList.h>

#include <string>
#include <vector>

namespace velmora::detail {

// The image file of each texture in `folder`, found as TextureList::findFiles finds it; "" where
// none is there. A folder that can't be read is error 76 naming it.
std::vector<std::string> textureFiles(const TextureList& textures, const std::string& folder);

}  // namespace velmora::detail
