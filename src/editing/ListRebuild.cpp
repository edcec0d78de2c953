#include "editing/ListRebuild.h"

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/NumberText.h"

#include <string>

namespace velmora::editing {

using detail::CommandSlots;

bool ListEdit::empty() const {
    if (!blocks.empty()) return false;
    for (const uint8_t r : removal) {
        if (r != Keep) return false;
    }
    return true;
}

namespace {

// Calls `visit(index, destination)` for each jump parameter of a command.
template <class Visit>
void forEachJump(BGLCommand& command, Visit&& visit) {
    const BGLCommandDictEntry& row = detail::rowOfOpcode(command.opcode());
    for (int i = 0; i < row.numParam; ++i) {
        if (row.isJump[static_cast<std::size_t>(i)]) visit(i, CommandSlots::jump(command, i));
    }
}

}  // namespace

void applyListEdit(KeyedCollection<BGLCommand>& commands, const ListEdit& edit) {
    if (edit.empty()) return;
    const auto& elements = commands.elements();
    const int64_t count = static_cast<int64_t>(elements.size());
    const auto removalOf = [&edit](int64_t position) -> uint8_t {
        const auto at = static_cast<std::size_t>(position - 1);
        return at < edit.removal.size() ? edit.removal[at] : uint8_t{ListEdit::Keep};
    };

    // Unlike the single steps (which fail at their first repair), a bad opcode fails before any
    // change.
    for (const auto& element : elements)
        detail::rowOfOpcode(element->opcode());

    // Where each destination 0 to Count + 1 ends up. A removal pulls everything behind it one
    // down; a block pushes everything behind its place up by its size.
    std::vector<int64_t> moved(static_cast<std::size_t>(count + 2));
    int64_t removedInFront = 0;
    std::vector<int64_t> placeAfterRemovals(edit.blocks.size());
    {
        std::size_t block = 0;
        for (int64_t v = 0; v <= count + 1; ++v) {
            const int64_t afterRemovals = v - removedInFront;
            moved[static_cast<std::size_t>(v)] = afterRemovals;
            while (block < edit.blocks.size() && edit.blocks[block].before == v) {
                placeAfterRemovals[block++] = afterRemovals;
            }
            if (v >= 1 && v <= count && removalOf(v) == ListEdit::Removed) ++removedInFront;
        }
    }
    int64_t insertedTotal = 0;
    {
        std::size_t block = 0;
        int64_t inserted = 0;
        for (int64_t v = 0; v <= count + 1; ++v) {
            int64_t& target = moved[static_cast<std::size_t>(v)];
            while (block < edit.blocks.size() && placeAfterRemovals[block] < target) {
                inserted += static_cast<int64_t>(edit.blocks[block++].commands.size());
            }
            target += inserted;
        }
        for (const auto& b : edit.blocks)
            insertedTotal += static_cast<int64_t>(b.commands.size());
    }
    const auto destinationAfterEdit = [&](int64_t destination) -> int32_t {
        if (destination <= 0) return static_cast<int32_t>(destination);
        if (destination > count + 1) {
            return numbers::narrow32(destination - removedInFront + insertedTotal);
        }
        return numbers::narrow32(moved[static_cast<std::size_t>(destination)]);
    };

    std::vector<std::shared_ptr<BGLCommand>> rebuilt;
    std::vector<std::string> keys;
    rebuilt.reserve(static_cast<std::size_t>(count - removedInFront + insertedTotal));
    const auto emitBlock = [&](const ListEdit::Block& block) {
        const auto first = static_cast<int32_t>(rebuilt.size() + 1);
        for (const auto& command : block.commands) {
            forEachJump(*command, [&](int i, int32_t local) {
                CommandSlots::setJump(*command, i, numbers::narrow32(int64_t{first} + local));
            });
            rebuilt.push_back(command);
            keys.emplace_back();
        }
    };
    std::size_t nextBlock = 0;
    for (int64_t position = 1; position <= count; ++position) {
        while (nextBlock < edit.blocks.size() && edit.blocks[nextBlock].before == position) {
            emitBlock(edit.blocks[nextBlock++]);
        }
        if (removalOf(position) != ListEdit::Keep) continue;
        const auto& command = elements[static_cast<std::size_t>(position - 1)];
        forEachJump(*command, [&](int i, int32_t destination) {
            CommandSlots::setJump(*command, i, destinationAfterEdit(destination));
        });
        rebuilt.push_back(command);
        keys.push_back(commands.keyAt0(static_cast<std::size_t>(position - 1)));
    }
    while (nextBlock < edit.blocks.size())
        emitBlock(edit.blocks[nextBlock++]);
    commands.assign(std::move(rebuilt), std::move(keys));
}

}  // namespace velmora::editing
