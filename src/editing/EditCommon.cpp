#include <velmora/TextureList.h>
#include <velmora/Windows1252.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"

namespace velmora::editing {

std::string textureName(const MDLObject& model, int32_t texture) {
    if (texture < 0 || texture >= model.TextureList()->Count()) {
        return texture < 0 ? "no texture" : "texture " + std::to_string(texture);
    }
    return utf8FromWindows1252(model.TextureList()->Item(texture + 1)->bitmap());
}

void raiseReadBack(const std::string& detail) {
    throw Error(100, kEditSource, "The model written does not read back as edited")
        .setDetail(detail);
}

}  // namespace velmora::editing
