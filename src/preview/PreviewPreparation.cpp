#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>

#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "preview/OpenGLDrawListSink.h"

namespace velmora {

void MDLObject::glLoadTextureList(const std::shared_ptr<OpenGLPreviewObject>& oglPObj) {
    if (!textureList_) raisePlatformError(kObjectNotSet);
    for (const auto& entry : textureList_->elements()) {
        yieldToHost();
        if (entry->file().empty()) {
            entry->glPointer(0);
            continue;
        }
        if (!oglPObj) raisePlatformError(kObjectNotSet);
        // No cache: two entries with the same file get two texture names.
        entry->glPointer(oglPObj->loadTexture(entry->file()));
    }
}

void MDLObject::glGenerateDrawList() {
    OpenGLDrawListSink sink;
    glGenerateDrawList(sink);
}

void MDLObject::glPreparepreview(const std::shared_ptr<OpenGLPreviewObject>& oglPreview) {
    loadingStatus_ = generatingDrawList;
    yieldToHost();
    glLoadTextureList(oglPreview);
    yieldToHost();
    glGenerateDrawList();
    loaded_ = true;
}

}  // namespace velmora
