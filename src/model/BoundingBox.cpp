#include <velmora/BoundingBox.h>

#include "foundation/HexFunctions.h"

namespace velmora {

void BoundingBox::readList(const std::string& data) {
    hex::MemoryReader reader(data);
    const int16_t file = reader.file();
    // Both minima first, then the maxima: not in x, y, z pairs.
    xmin_ = hex::readSingle(file);
    ymin_ = hex::readSingle(file);
    zmin_ = hex::readSingle(file);
    xmax_ = hex::readSingle(file);
    ymax_ = hex::readSingle(file);
    zmax_ = hex::readSingle(file);
}

std::string BoundingBox::asString() const {
    hex::MemoryWriter writer;
    const int16_t file = writer.file();
    for (const float value : {xmin_, ymin_, zmin_, xmax_, ymax_, zmax_}) {
        hex::writeSingle(file, value);
    }
    return writer.take();
}

}  // namespace velmora
