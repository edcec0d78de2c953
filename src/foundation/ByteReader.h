#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace velmora {

// Typed little-endian reads from bytes in memory: how every section, command stream and table
// of the library is decoded. A read past the end gives zeros (a text of the asked length padded
// with NUL bytes) and still moves the offset on, so a short input gives wrong values rather
// than a fault; code that must not read past the end compares offset() with size().
//
// The reader only views the bytes: they must outlive it.
class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) noexcept
        : data_(bytes.data()), size_(static_cast<int64_t>(bytes.size())) {}

    int16_t int16() { return value<int16_t>(); }
    // Two bytes read as 0 to 65535.
    int32_t uint16() { return value<uint16_t>(); }
    int32_t int32() { return value<int32_t>(); }
    float single() { return value<float>(); }
    uint8_t byte() { return value<uint8_t>(); }
    // `length` bytes; a negative length is error 5.
    std::string text(int64_t length);

    void skip(int64_t count) { offset_ += count; }
    void seek(int64_t offset) { offset_ = offset; }
    int64_t offset() const { return offset_; }
    int64_t size() const { return size_; }
    // Bytes from the offset to the end; 0 at or past the end.
    int64_t remaining() const { return offset_ < size_ ? size_ - offset_ : 0; }
    std::string_view bytes() const { return {data_, static_cast<std::size_t>(size_)}; }

  private:
    template <class T>
    T value() {
        T result;
        if (offset_ >= 0 && offset_ + static_cast<int64_t>(sizeof(T)) <= size_) {
            std::memcpy(&result, data_ + offset_, sizeof(T));
        } else {
            copyPadded(&result, sizeof(T));
        }
        offset_ += static_cast<int64_t>(sizeof(T));
        return result;
    }

    // Copies what lies at the offset and fills the rest with zeros; the offset doesn't move.
    void copyPadded(void* target, std::size_t count) const;

    const char* data_;
    int64_t size_;
    int64_t offset_ = 0;
};

}  // namespace velmora
