#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace velmora {

// Where a ByteWriter hands on its bytes when it doesn't keep them: a file, say.
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void write(std::string_view bytes) = 0;
};

// Typed writes: how every byte string, model file, listing and database of the library is
// built. Numbers are little-endian unless the method says big-endian (the OpenFlight format).
// A writer either builds a byte string in memory (take() gives it) or hands its bytes to a sink
// in large chunks (flush() hands on what is left).
class ByteWriter {
  public:
    // A writer that builds a byte string; `expectedBytes` is room taken at once (a hint).
    explicit ByteWriter(std::size_t expectedBytes = 0);
    // A writer that passes its bytes to `sink`, which must outlive it.
    explicit ByteWriter(ByteSink& sink);
    ByteWriter(const ByteWriter&) = delete;
    ByteWriter& operator=(const ByteWriter&) = delete;

    void int16(int16_t value) { put(value); }
    // -32,768 to 65,535, the values from 32,768 up written as their 16-bit pattern; anything
    // else is error 6.
    void uint16(int32_t value);
    void int32(int32_t value) { put(value); }
    void single(float value) { put(value); }
    void real(double value) { put(value); }
    void byte(uint8_t value) { put(value); }

    void int16BigEndian(int16_t value) { put(reversed(value)); }
    void int32BigEndian(int32_t value) { put(reversed(value)); }
    void singleBigEndian(float value) { put(reversed(value)); }
    void realBigEndian(double value) { put(reversed(value)); }

    // Bytes as they are.
    void bytes(std::string_view value);
    // A fixed field of `width` bytes: the value, then NUL bytes. A longer value is error 100 and
    // nothing is written.
    void field(std::string_view value, int64_t width);
    void zeros(std::size_t count);

    // Bytes written so far.
    int64_t size() const { return handedOn_ + static_cast<int64_t>(used_); }
    // The byte string built (memory writers); the writer is empty afterwards.
    std::string take();
    // Hands what is buffered to the sink (sink writers).
    void flush();

    template <class T>
    static T reversed(T value) {
        unsigned char raw[sizeof(T)];
        std::memcpy(raw, &value, sizeof(T));
        for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
            const unsigned char kept = raw[i];
            raw[i] = raw[sizeof(T) - 1 - i];
            raw[sizeof(T) - 1 - i] = kept;
        }
        std::memcpy(&value, raw, sizeof(T));
        return value;
    }

  private:
    template <class T>
    void put(const T& value) {
        if (used_ + sizeof(T) > buffer_.size()) makeRoom(sizeof(T));
        std::memcpy(buffer_.data() + used_, &value, sizeof(T));
        used_ += sizeof(T);
    }

    // Room for `count` more bytes: a memory writer grows, a sink writer hands on its buffer.
    void makeRoom(std::size_t count);

    std::string buffer_;  // longer than its content; the first used_ bytes count
    std::size_t used_ = 0;
    int64_t handedOn_ = 0;
    ByteSink* sink_ = nullptr;
};

}  // namespace velmora
