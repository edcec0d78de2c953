#include "bgl/CommandStream.h"

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora::detail {

const BGLCommandDictEntry& rowOfOpcode(int32_t opcode) {
    const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(numbers::narrow16(opcode));
    if (row == nullptr) raisePlatformError(kSubscriptOutOfRange);
    return *row;
}

int32_t parameterBytes(const BGLCommandDictEntry& row) {
    int32_t bytes = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(row.numParam); ++i) {
        switch (row.paramType[i]) {
            case pByte:
                bytes += 1;
                break;
            case pInteger:
            case pUInteger:
                bytes += 2;
                break;
            case pLong:
            case pSingle:
                bytes += 4;
                break;
            case pString:
                bytes += row.strLength[i];
                break;
        }
    }
    return bytes;
}

int32_t parameterAsInt32(const BGLCommand& command, int index) {
    int32_t value = 0;
    if (CommandSlots::integer(command, index, value)) return value;
    return numbers::toInt32(CommandSlots::number(command, index));
}

int16_t parameterAsInt16(const BGLCommand& command, int index) {
    int32_t value = 0;
    if (CommandSlots::integer(command, index, value)) return numbers::narrow16(value);
    return numbers::toInt16(CommandSlots::number(command, index));
}

std::vector<int64_t> commandEnds(const KeyedCollection<BGLCommand>& commands) {
    const auto& elements = commands.elements();
    std::vector<int64_t> ends(elements.size() + 1);
    int64_t position = 0;
    for (std::size_t k = 0; k < elements.size(); ++k) {
        position += rowOfOpcode(elements[k]->opcode()).length;
        ends[k + 1] = position;
    }
    return ends;
}

}  // namespace velmora::detail
