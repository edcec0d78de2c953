#include "bgl/SeasonalBlockSearch.h"

#include <velmora/BGLCommandList.h>
#include <velmora/SceneryVariables.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora::detail {

bool isDayTest(const BGLCommand& command) {
    return command.opcode() == IFIN1 &&
           CommandSlots::equalsInteger(command, 1, variables::kDayOfYear);
}

bool belongsToSeasonalBlock(const BGLCommand& command) {
    const BGLOpcode opcode = command.opcode();
    return opcode == SET_MATERIAL || opcode == BGL_JUMP_32 || isDayTest(command);
}

int16_t findSeasonalBlock(const KeyedCollection<BGLCommand>& commands, int16_t texture,
                          bool backwards, int32_t startAt) {
    // Positions here are 16-bit, so a longer list doesn't fit.
    const int16_t count = numbers::narrow16(commands.Count());
    int16_t result = -1;
    for (int32_t i = startAt; i <= count; ++i) {
        const BGLCommand& command = *commands.Item(i);
        if (command.opcode() == SET_MATERIAL && CommandSlots::equalsInteger(command, 1, texture)) {
            result = static_cast<int16_t>(i);
            break;
        }
    }
    if (result == -1) return result;
    const int16_t step = backwards ? -1 : 1;
    while (belongsToSeasonalBlock(*commands.Item(result + step))) {
        result = static_cast<int16_t>(result + step);
    }
    return result;
}

}  // namespace velmora::detail

namespace velmora {

int16_t BGLCommandList::findSeasonalBlock(int16_t texture, bool backwards, int32_t startAt) const {
    return detail::findSeasonalBlock(items_, texture, backwards, startAt);
}

}  // namespace velmora
