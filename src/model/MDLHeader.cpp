#include <velmora/MDLHeader.h>

#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"

namespace velmora {

namespace {

std::size_t paramSlot(int16_t index) {
    if (index < 0 || index > 8) raisePlatformError(kSubscriptOutOfRange);
    return static_cast<std::size_t>(index);
}

}  // namespace

int32_t MDLHeader::param(int16_t Index) const {
    return params_[paramSlot(Index)];
}

void MDLHeader::param(int16_t Index, int32_t value) {
    params_[paramSlot(Index)] = value;
}

void MDLHeader::readList(const std::string& data) {
    hex::MemoryReader reader(data);
    for (auto& value : params_)
        value = hex::readLong(reader.file());
}

std::string MDLHeader::asString() const {
    hex::MemoryWriter writer;
    for (const auto value : params_)
        hex::writeLong(writer.file(), value);
    return writer.take();
}

}  // namespace velmora
