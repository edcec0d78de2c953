#pragma once

#include "foundation/HexFunctions.h"

#include <cstdint>
#include <string_view>

namespace velmora::flt {

// Appends the fields of one OpenFlight record to an open file: every number big-endian,
// every text in a fixed field padded with NUL bytes.
class BigEndianRecord {
  public:
    explicit BigEndianRecord(int16_t file) : file_(file) {}

    // The 4-byte head of every record: opcode, then the length of the whole record.
    void head(int16_t opcode, int16_t length) {
        int16(opcode);
        int16(length);
    }
    void int16(int16_t value) { hex::writeInteger(file_, value, true); }
    void int32(int32_t value) { hex::writeLong(file_, value, true); }
    void single(float value) { hex::writeSingle(file_, value, true); }
    void real(double value) { hex::writeDouble(file_, value, true); }
    void byte(uint8_t value) { hex::writeByte(file_, value); }
    // A field of `width` bytes: the text, then NUL bytes; a longer text is error 100.
    void text(std::string_view value, int16_t width) { hex::writeString(file_, value, width); }
    void zeros(int16_t count) { hex::writeString(file_, {}, count); }
    // Bytes as they are, with no field around them.
    void raw(std::string_view bytes) { hex::writeString(file_, bytes, 0); }

  private:
    int16_t file_;
};

}  // namespace velmora::flt
