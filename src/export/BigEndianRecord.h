#pragma once

#include "foundation/ByteWriter.h"

#include <cstdint>
#include <string_view>

namespace velmora::flt {

// Appends the fields of one OpenFlight record to a database: every number big-endian, every
// text in a fixed field padded with NUL bytes.
class BigEndianRecord {
  public:
    explicit BigEndianRecord(ByteWriter& out) : out_(out) {}

    // The 4-byte head of every record: opcode, then the length of the whole record.
    void head(int16_t opcode, int16_t length) {
        int16(opcode);
        int16(length);
    }
    void int16(int16_t value) { out_.int16BigEndian(value); }
    void int32(int32_t value) { out_.int32BigEndian(value); }
    void single(float value) { out_.singleBigEndian(value); }
    void real(double value) { out_.realBigEndian(value); }
    void byte(uint8_t value) { out_.byte(value); }
    // A field of `width` bytes: the text, then NUL bytes; a longer text is error 100.
    void text(std::string_view value, int16_t width) { out_.field(value, width); }
    void zeros(int16_t count) { out_.zeros(static_cast<std::size_t>(count)); }
    // Bytes as they are, with no field around them.
    void raw(std::string_view bytes) { out_.bytes(bytes); }

  private:
    ByteWriter& out_;
};

}  // namespace velmora::flt
