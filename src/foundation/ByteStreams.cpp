#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"

#include <algorithm>

namespace velmora {

namespace {
constexpr std::size_t kSinkChunk = 1 << 16;
}

std::string ByteReader::text(int64_t length) {
    if (length < 0) raisePlatformError(kInvalidProcedureCall);
    std::string value(static_cast<std::size_t>(length), '\0');
    if (length > 0) copyPadded(value.data(), value.size());
    offset_ += length;
    return value;
}

void ByteReader::copyPadded(void* target, std::size_t count) const {
    auto* out = static_cast<char*>(target);
    std::size_t available = 0;
    if (offset_ >= 0 && offset_ < size_) {
        available = std::min(count, static_cast<std::size_t>(size_ - offset_));
        std::memcpy(out, data_ + offset_, available);
    }
    if (available < count) std::memset(out + available, 0, count - available);
}

ByteWriter::ByteWriter(std::size_t expectedBytes) {
    if (expectedBytes > 0) buffer_.resize(expectedBytes);
}

ByteWriter::ByteWriter(ByteSink& sink) : buffer_(kSinkChunk, '\0'), sink_(&sink) {}

void ByteWriter::uint16(int32_t value) {
    if (value >= 32768 && value <= 65535) value -= 65536;
    if (value < -32768 || value > 32767) raisePlatformError(kOverflow);
    int16(static_cast<int16_t>(value));
}

void ByteWriter::bytes(std::string_view value) {
    if (value.empty()) return;
    if (sink_ != nullptr && value.size() >= buffer_.size()) {
        flush();
        sink_->write(value);
        handedOn_ += static_cast<int64_t>(value.size());
        return;
    }
    if (used_ + value.size() > buffer_.size()) makeRoom(value.size());
    std::memcpy(buffer_.data() + used_, value.data(), value.size());
    used_ += value.size();
}

void ByteWriter::field(std::string_view value, int64_t width) {
    if (static_cast<int64_t>(value.size()) > width) {
        raiseLibraryError("Velmora.HexFunctions",
                          "The string trying to be written is bigger than the specified length");
    }
    bytes(value);
    zeros(static_cast<std::size_t>(width) - value.size());
}

void ByteWriter::zeros(std::size_t count) {
    while (count > 0) {
        if (used_ == buffer_.size()) makeRoom(1);
        const std::size_t chunk = std::min(count, buffer_.size() - used_);
        std::memset(buffer_.data() + used_, 0, chunk);
        used_ += chunk;
        count -= chunk;
    }
}

std::string ByteWriter::take() {
    buffer_.resize(used_);
    std::string bytes = std::move(buffer_);
    buffer_.clear();
    used_ = 0;
    handedOn_ = 0;
    return bytes;
}

void ByteWriter::flush() {
    if (sink_ == nullptr || used_ == 0) return;
    const std::size_t count = used_;
    used_ = 0;
    sink_->write(std::string_view(buffer_.data(), count));
    handedOn_ += static_cast<int64_t>(count);
}

void ByteWriter::makeRoom(std::size_t count) {
    if (sink_ != nullptr) {
        flush();
        if (count <= buffer_.size()) return;
    }
    // Doubling keeps a long run of small writes linear.
    buffer_.resize(std::max({used_ + count, buffer_.size() * 2, std::size_t{256}}));
}

}  // namespace velmora
