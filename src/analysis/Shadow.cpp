#include <velmora/MDLObject.h>
#include <velmora/StreamAnalysis.h>

#include "analysis/KillShadow.h"
#include "foundation/ByteWriter.h"
#include "model/SectionIndex.h"

namespace velmora {

namespace analysis {

const std::string& killShadowBytes() {
    static const std::string bytes = [] {
        ByteWriter out(12);
        out.bytes("BGL ");
        out.int32(0);
        out.int16(static_cast<int16_t>(BGL_END));
        out.int16(static_cast<int16_t>(BGL_RETURN));
        return out.take();
    }();
    return bytes;
}

}  // namespace analysis

ShadowKind shadowKindOf(const MDLObject& model) {
    const RIFFSection& shadow = model.section(sections::SHAD);
    if (shadow.size <= 0) return ShadowKind::None;
    return shadow.data == analysis::killShadowBytes() ? ShadowKind::KillShadow : ShadowKind::Own;
}

}  // namespace velmora
