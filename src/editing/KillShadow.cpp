#include <velmora/MDLObject.h>

#include "analysis/KillShadow.h"
#include "foundation/NumberText.h"
#include "model/SectionIndex.h"

namespace velmora {

namespace {

// The section sizes can only be worked out for a model that has been loaded; on any other the
// shadow operations only set "SHAD" and the next save works the sizes out.
bool holdsDecodedModel(const MDLObject& model) {
    return model.MDLHeader() && model.BoundingBox() && model.MaterialList() &&
           model.TextureList() && model.VertexList() && model.BGLCommandList();
}

}  // namespace

void MDLObject::removeKillShadow() {
    RIFFSection& shadow = sectionTable_[sections::SHAD];
    shadow.data.clear();
    shadow.size = 0;
    if (holdsDecodedModel(*this)) updateSectionSize();
}

void MDLObject::addKillShadow() {
    std::string bytes = analysis::killShadowBytes();
    RIFFSection& shadow = sectionTable_[sections::SHAD];
    shadow.size = numbers::narrow32(static_cast<int64_t>(bytes.size()));
    shadow.data = std::move(bytes);
    if (holdsDecodedModel(*this)) updateSectionSize();
}

}  // namespace velmora
