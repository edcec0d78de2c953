#include "preview/WindowSurface.h"

#include <GL/gl.h>

#include <cstring>

namespace velmora::windowing {

void readFrame(std::vector<uint8_t>& store, int32_t storeWidth, int32_t storeHeight, int32_t width,
               int32_t height) {
    if (width <= 0 || height <= 0) return;
    std::vector<uint8_t> bottomUp(static_cast<std::size_t>(width) * height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, bottomUp.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);

    const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
    const std::size_t storeRow = static_cast<std::size_t>(storeWidth) * 3;
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* from = bottomUp.data() + static_cast<std::size_t>(y) * rowBytes;
        uint8_t* to = store.data() + static_cast<std::size_t>(storeHeight - 1 - y) * storeRow;
        std::memcpy(to, from, rowBytes);
    }
}

}  // namespace velmora::windowing
