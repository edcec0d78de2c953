#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

using detail::CommandSlots;

void writeParameter(ByteWriter& out, const BGLCommandDictEntry& row, const BGLCommand& command,
                    int index) {
    const auto slot = static_cast<std::size_t>(index);
    switch (row.paramType[slot]) {
        case pByte:
            out.byte(numbers::toByte(CommandSlots::number(command, index)));
            break;
        case pInteger:
            out.int16(detail::parameterAsInt16(command, index));
            break;
        case pLong:
            out.int32(detail::parameterAsInt32(command, index));
            break;
        case pSingle:
            out.single(numbers::toSingle(CommandSlots::number(command, index)));
            break;
        case pString:
            out.field(command.param(static_cast<int16_t>(index)), row.strLength[slot]);
            break;
        case pUInteger:
            out.uint16(detail::parameterAsInt32(command, index));
            break;
    }
}

void writeCommand(ByteWriter& out, const BGLCommand& command) {
    const int32_t opcode = command.opcode();
    const BGLCommandDictEntry& row = detail::rowOfOpcode(opcode);
    if (opcode == DRAW_TRI_LIST_ITEM || opcode == DRAW_LINE_LIST_ITEM) {
        // Items are bare records behind their header, written as signed words.
        for (int i = 0; i < row.numParam; ++i)
            out.int16(detail::parameterAsInt16(command, i));
        return;
    }
    out.int16(static_cast<int16_t>(opcode));
    for (int i = 0; i < row.numParam; ++i)
        writeParameter(out, row, command, i);
}

}  // namespace

std::string BGLCommandList::asString() {
    updateJumpSize();
    // Every opcode has passed the jump pass, so the rows give the size of the stream.
    std::size_t streamBytes = 0;
    for (const auto& element : items_.elements())
        streamBytes += static_cast<std::size_t>(detail::rowOfOpcode(element->opcode()).length);
    ByteWriter out(streamBytes);
    int32_t position = 0;
    try {
        for (const auto& element : items_.elements()) {
            ++position;
            writeCommand(out, *element);
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }
    return out.take();
}

}  // namespace velmora
