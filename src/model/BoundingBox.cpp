#include <velmora/BoundingBox.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"

namespace velmora {

void BoundingBox::readList(const std::string& data) {
    ByteReader in(data);
    // Both minima first, then the maxima: not in x, y, z pairs.
    xmin_ = in.single();
    ymin_ = in.single();
    zmin_ = in.single();
    xmax_ = in.single();
    ymax_ = in.single();
    zmax_ = in.single();
}

std::string BoundingBox::asString() const {
    ByteWriter out(24);
    for (const float value : {xmin_, ymin_, zmin_, xmax_, ymax_, zmax_})
        out.single(value);
    return out.take();
}

}  // namespace velmora
