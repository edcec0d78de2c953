#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

using detail::CommandSlots;

void writeParameter(int16_t file, const BGLCommandDictEntry& row, const BGLCommand& command,
                    int index) {
    const auto slot = static_cast<std::size_t>(index);
    switch (row.paramType[slot]) {
        case pByte:
            hex::writeByte(file, numbers::toByte(CommandSlots::number(command, index)));
            break;
        case pInteger:
            hex::writeInteger(file, detail::parameterAsInt16(command, index));
            break;
        case pLong:
            hex::writeLong(file, detail::parameterAsInt32(command, index));
            break;
        case pSingle:
            hex::writeSingle(file, numbers::toSingle(CommandSlots::number(command, index)));
            break;
        case pString:
            hex::writeString(file, command.param(static_cast<int16_t>(index)), row.strLength[slot]);
            break;
        case pUInteger:
            hex::writeUInteger(file, detail::parameterAsInt32(command, index));
            break;
    }
}

}  // namespace

std::string BGLCommandList::asString() {
    updateJumpSize();
    // Every opcode has passed the jump pass, so the rows give the size of the stream.
    std::size_t streamBytes = 0;
    for (const auto& element : commands_.elements()) {
        streamBytes += static_cast<std::size_t>(detail::rowOfOpcode(element->opcode()).length);
    }
    hex::MemoryWriter writer(streamBytes);
    const int16_t file = writer.file();
    for (const auto& element : commands_.elements()) {
        const BGLCommand& command = *element;
        const int32_t opcode = command.opcode();
        const BGLCommandDictEntry& row = detail::rowOfOpcode(opcode);
        if (opcode == DRAW_TRI_LIST_ITEM || opcode == DRAW_LINE_LIST_ITEM) {
            // Items are bare records behind their header, written as signed words.
            for (int i = 0; i < row.numParam; ++i) {
                hex::writeInteger(file, detail::parameterAsInt16(command, i));
            }
            continue;
        }
        hex::writeInteger(file, static_cast<int16_t>(opcode));
        for (int i = 0; i < row.numParam; ++i)
            writeParameter(file, row, command, i);
    }
    return writer.take();
}

}  // namespace velmora
