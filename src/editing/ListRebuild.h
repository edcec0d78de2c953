#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/KeyedCollection.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace velmora::editing {

// A batch of removals and insertions on a command list, named by the positions the commands
// have before the batch. Applied in one pass, it gives exactly the list and the jump
// destinations that the single steps give, taken from the front of the list to its back:
//
// - a removed command goes, and the destinations are repaired as updateJumpDest(its index + 1,
//   True) does, so a jump to it leads to the command that takes its place;
// - a block of new commands is inserted in front of the command at `before`, each insertion
//   followed by updateJumpDest(its index + 1), so a jump to that place leads to the block's
//   first command and jumps further on move behind the block.
struct ListEdit {
    enum Removal : uint8_t {
        Keep,
        Removed,
        // Removed, but its repair of the destinations was never made (the step failed there).
        RemovedUnrepaired,
    };

    struct Block {
        int32_t before = 0;  // 1-based position of the command it goes in front of
        // New commands; their jump destinations count from the block's first command (0).
        std::vector<std::shared_ptr<BGLCommand>> commands;
    };

    std::vector<uint8_t> removal;  // one per command, 0-based; empty when nothing is removed
    std::vector<Block> blocks;     // ascending `before`

    bool empty() const;
};

void applyListEdit(KeyedCollection<BGLCommand>& commands, const ListEdit& edit);

}  // namespace velmora::editing
