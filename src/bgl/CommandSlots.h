#pragma once

#include <velmora/BGLCommand.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora::detail {

// Fast, unchecked access to a command's parameter slots for the library's own loops: numbers
// go in and out without a trip through their text. Slot indexes must lie in 0 to 32.
struct CommandSlots {
    static bool isEmpty(const BGLCommand& command, int index);
    // The slot as a number: error 13 for an empty slot or a text that is no number.
    static double number(const BGLCommand& command, int index);
    // True and the value when the slot holds a whole number of 32 bits as its canonical text.
    static bool integer(const BGLCommand& command, int index, int32_t& value);
    // The slot's text equals the decimal text of `value`.
    static bool equalsInteger(const BGLCommand& command, int index, int32_t value);

    static void setInteger(BGLCommand& command, int index, int32_t value);
    // Stores the seven-digit text of a single (as a decoded stream gives it).
    static void setSingle(BGLCommand& command, int index, float value);
    static void setText(BGLCommand& command, int index, std::string_view text);
    static void clear(BGLCommand& command, int index);

    static int32_t jump(const BGLCommand& command, int index);
    static void setJump(BGLCommand& command, int index, int32_t value);

  private:
    static const BGLCommand::Slot* findSlot(const BGLCommand& command, int index);
    static BGLCommand::Slot& slotForWriting(BGLCommand& command, int index);
};

}  // namespace velmora::detail
