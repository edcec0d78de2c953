#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmora {

using detail::CommandSlots;

// Triangle and line headers are tracked apart: a line header between a triangle header and its
// items leaves them with the triangle header.
void BGLCommandList::processParent() {
    int32_t n = 0;
    int32_t triangleHeader = 0;
    int32_t lineHeader = 0;
    for (const auto& element : items_.elements()) {
        ++n;
        switch (element->opcode()) {
            case DRAW_TRI_LIST_BEGIN:
                triangleHeader = n;
                break;
            case DRAW_LINE_LIST_BEGIN:
                lineHeader = n;
                break;
            case DRAW_TRI_LIST_ITEM:
                element->parent(triangleHeader);
                break;
            case DRAW_LINE_LIST_ITEM:
                element->parent(lineHeader);
                break;
            default:
                break;
        }
    }
}

namespace {

void storeTextureNumber(BGLCommand& command, double value) {
    if (value == std::floor(value) && std::fabs(value) <= 2147483647.0) {
        CommandSlots::setInteger(command, 1, static_cast<int32_t>(value));
    } else {
        CommandSlots::setText(command, 1, numbers::formatSingle(static_cast<float>(value)));
    }
}

// Lowers the jumps after a run of removals in one pass. Removing command i and then lowering
// every jumpDest of i and above, one removal after another, lowers a jumpDest d by the number
// of removed commands whose original position is d or below.
void lowerJumpsPastRemovals(KeyedCollection<BGLCommand>& commands,
                            const std::vector<int32_t>& removedPositions) {
    if (removedPositions.empty()) return;
    for (const auto& element : commands.elements()) {
        BGLCommand& command = *element;
        const BGLCommandDictEntry& row = detail::rowOfOpcode(command.opcode());
        for (int i = 0; i < row.numParam; ++i) {
            if (!row.isJump[static_cast<std::size_t>(i)]) continue;
            const int32_t target = CommandSlots::jump(command, i);
            const auto below =
                std::upper_bound(removedPositions.begin(), removedPositions.end(), target) -
                removedPositions.begin();
            if (below > 0) CommandSlots::setJump(command, i, target - static_cast<int32_t>(below));
        }
    }
}

}  // namespace

void BGLCommandList::updateMaterial(int16_t position, bool Remove) {
    int32_t count = Count();
    const int16_t last = numbers::narrow16(count);
    // Original positions of the removed commands, in rising order; their jump repair is done
    // once at the end, also when an error stops the walk.
    std::vector<int32_t> removedPositions;
    try {
        for (int32_t i = 1; i <= last && i <= count; ++i) {
            BGLCommand& command = *items_.at0(static_cast<std::size_t>(i - 1));
            if (command.opcode() != SET_MATERIAL) continue;
            const double texture = CommandSlots::number(command, 1);
            if (texture >= position) {
                storeTextureNumber(command, Remove ? texture - 1 : texture + 1);
            } else if (Remove && texture == position - 1) {
                removedPositions.push_back(i + static_cast<int32_t>(removedPositions.size()));
                items_.eraseAt(static_cast<std::size_t>(i - 1));
                --count;
                // The walk goes on with i + 1: the command that moved into place i is passed over.
            }
        }
    } catch (...) {
        lowerJumpsPastRemovals(items_, removedPositions);
        throw;
    }
    lowerJumpsPastRemovals(items_, removedPositions);
}

}  // namespace velmora
