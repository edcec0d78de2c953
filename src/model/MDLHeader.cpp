#include <velmora/MDLHeader.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"

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
    ByteReader in(data);
    for (auto& value : params_)
        value = in.int32();
}

std::string MDLHeader::asString() const {
    ByteWriter out(params_.size() * 4);
    for (const auto value : params_)
        out.int32(value);
    return out.take();
}

}  // namespace velmora
