#include <velmora/MDLObject.h>

#include "foundation/ByteWriter.h"
#include "foundation/NumberText.h"
#include "model/SectionIndex.h"

namespace velmora {

namespace {

// A "SHAD" section that draws nothing: an inner "BGL " section whose length field is 0,
// followed by BGL_END and BGL_RETURN.
std::string killShadowBytes() {
    ByteWriter out(12);
    out.bytes("BGL ");
    out.int32(0);
    out.int16(static_cast<int16_t>(BGL_END));
    out.int16(static_cast<int16_t>(BGL_RETURN));
    return out.take();
}

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
    std::string bytes = killShadowBytes();
    RIFFSection& shadow = sectionTable_[sections::SHAD];
    shadow.size = numbers::narrow32(static_cast<int64_t>(bytes.size()));
    shadow.data = std::move(bytes);
    if (holdsDecodedModel(*this)) updateSectionSize();
}

}  // namespace velmora
