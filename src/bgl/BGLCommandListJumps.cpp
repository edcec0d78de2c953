#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"

#include <algorithm>

namespace velmora {

using detail::CommandSlots;

// Offsets count from the jumping command's own first byte. The target is the first command at
// or after the jumping one whose end lies at least two bytes past the offset: the start of a
// command, or a point inside it with two bytes of it left. Offsets of -2 and below give the
// command in front. The whole list is measured once and indexed by byte position, so each jump
// is a lookup and a step or two: the pass stays linear in the list.
void BGLCommandList::processJumpDest() {
    const auto& elements = items_.elements();
    const std::vector<int64_t> ends = detail::commandEnds(items_);
    const auto count = static_cast<int64_t>(elements.size());
    // firstEndFrom[b]: the first k whose ends[k] reaches byte b * 16.
    constexpr int kBucketShift = 4;
    const int64_t total = ends.back();
    std::vector<int32_t> firstEndFrom(static_cast<std::size_t>((total >> kBucketShift) + 1));
    {
        int64_t k = 0;
        for (std::size_t b = 0; b < firstEndFrom.size(); ++b) {
            const int64_t bucketStart = static_cast<int64_t>(b) << kBucketShift;
            while (ends[static_cast<std::size_t>(k)] < bucketStart)
                ++k;
            firstEndFrom[b] = static_cast<int32_t>(k);
        }
    }
    for (int64_t n = 1; n <= count; ++n) {
        yieldToHost();
        BGLCommand& command = *elements[static_cast<std::size_t>(n - 1)];
        const BGLCommandDictEntry& row = detail::rowOfOpcode(command.opcode());
        for (int i = 0; i < row.numParam; ++i) {
            if (!row.isJump[static_cast<std::size_t>(i)]) continue;
            const int64_t offset = detail::parameterAsInt32(command, i);
            int64_t target = n - 1;
            if (offset > -2) {
                const int64_t reach = ends[static_cast<std::size_t>(n - 1)] + offset + 2;
                // Running off the list is the failed lookup of command Count + 1.
                if (reach > total) {
                    throw platformError(kSubscriptOutOfRange)
                        .setCommand(static_cast<int32_t>(n))
                        .setDetail("its jump of " + numbers::formatGrouped(offset) +
                                   " bytes leads past the end of the stream");
                }
                // The first k from n on whose end reaches `reach`.
                target = std::max<int64_t>(
                    n, firstEndFrom[static_cast<std::size_t>(reach >> kBucketShift)]);
                while (ends[static_cast<std::size_t>(target)] < reach)
                    ++target;
            }
            CommandSlots::setJump(command, i, static_cast<int32_t>(target));
        }
    }
}

// A target behind the jumping command gives the sizes of the commands from the jumping one up
// to the target; a target at or before it gives 0.
void BGLCommandList::updateJumpSize() {
    const auto& elements = items_.elements();
    const std::vector<int64_t> ends = detail::commandEnds(items_);
    const auto count = static_cast<int64_t>(elements.size());
    for (int64_t n = 1; n <= count; ++n) {
        BGLCommand& command = *elements[static_cast<std::size_t>(n - 1)];
        const BGLCommandDictEntry& row = detail::rowOfOpcode(command.opcode());
        for (int i = 0; i < row.numParam; ++i) {
            if (!row.isJump[static_cast<std::size_t>(i)]) continue;
            const int64_t target = CommandSlots::jump(command, i);
            int64_t offset = 0;
            if (target > n) {
                if (target > count + 1) raisePlatformError(kSubscriptOutOfRange);
                offset = ends[static_cast<std::size_t>(target - 1)] -
                         ends[static_cast<std::size_t>(n - 1)];
            }
            CommandSlots::setInteger(command, i, numbers::narrow32(offset));
        }
    }
}

void BGLCommandList::updateJumpDest(int16_t position, bool Remove) {
    const int32_t step = Remove ? -1 : 1;
    for (const auto& element : items_.elements()) {
        BGLCommand& command = *element;
        const BGLCommandDictEntry& row = detail::rowOfOpcode(command.opcode());
        for (int i = 0; i < row.numParam; ++i) {
            if (!row.isJump[static_cast<std::size_t>(i)]) continue;
            const int32_t target = CommandSlots::jump(command, i);
            if (target >= position) CommandSlots::setJump(command, i, target + step);
        }
    }
}

}  // namespace velmora
