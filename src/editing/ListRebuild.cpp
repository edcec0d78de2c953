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

uint8_t removalAt(const ListEdit& edit, int64_t position) {
    const auto at = static_cast<std::size_t>(position - 1);
    return at < edit.removal.size() ? edit.removal[at] : uint8_t{ListEdit::Keep};
}

// Where each destination 0 to Count + 1 ends up. A removal pulls everything behind it one down;
// a block pushes everything behind its place up by its size.
class Destinations {
  public:
    Destinations(const ListEdit& edit, int64_t count)
        : count_(count), moved_(static_cast<std::size_t>(count + 2)) {
        std::vector<int64_t> placeAfterRemovals(edit.blocks.size());
        std::size_t block = 0;
        for (int64_t v = 0; v <= count + 1; ++v) {
            const int64_t afterRemovals = v - removed_;
            moved_[static_cast<std::size_t>(v)] = afterRemovals;
            while (block < edit.blocks.size() && edit.blocks[block].before == v)
                placeAfterRemovals[block++] = afterRemovals;
            if (v >= 1 && v <= count && removalAt(edit, v) == ListEdit::Removed) ++removed_;
        }
        block = 0;
        int64_t inserted = 0;
        for (int64_t v = 0; v <= count + 1; ++v) {
            int64_t& target = moved_[static_cast<std::size_t>(v)];
            while (block < edit.blocks.size() && placeAfterRemovals[block] < target)
                inserted += static_cast<int64_t>(edit.blocks[block++].commands.size());
            target += inserted;
        }
        for (const auto& b : edit.blocks)
            inserted_ += static_cast<int64_t>(b.commands.size());
    }

    int32_t after(int64_t destination) const {
        if (destination <= 0) return static_cast<int32_t>(destination);
        if (destination > count_ + 1) return numbers::narrow32(destination - removed_ + inserted_);
        return numbers::narrow32(moved_[static_cast<std::size_t>(destination)]);
    }
    int64_t commandsAfter() const { return count_ - removed_ + inserted_; }

  private:
    int64_t count_;
    std::vector<int64_t> moved_;
    int64_t removed_ = 0;
    int64_t inserted_ = 0;
};

// The list in its new order, with its keys, and every destination moved.
class Rebuilt {
  public:
    explicit Rebuilt(std::size_t commands) {
        commands_.reserve(commands);
        keys_.reserve(commands);
    }

    // A block's destinations count from its first command.
    void addBlock(const ListEdit::Block& block) {
        const auto first = static_cast<int32_t>(commands_.size() + 1);
        for (const auto& command : block.commands) {
            forEachJump(*command, [&](int i, int32_t local) {
                CommandSlots::setJump(*command, i, numbers::narrow32(int64_t{first} + local));
            });
            commands_.push_back(command);
            keys_.emplace_back();
        }
    }

    void addKept(const std::shared_ptr<BGLCommand>& command, std::string key,
                 const Destinations& destinations) {
        forEachJump(*command, [&](int i, int32_t destination) {
            CommandSlots::setJump(*command, i, destinations.after(destination));
        });
        commands_.push_back(command);
        keys_.push_back(std::move(key));
    }

    void moveInto(KeyedCollection<BGLCommand>& list) {
        list.assign(std::move(commands_), std::move(keys_));
    }

  private:
    std::vector<std::shared_ptr<BGLCommand>> commands_;
    std::vector<std::string> keys_;
};

}  // namespace

void applyListEdit(KeyedCollection<BGLCommand>& commands, const ListEdit& edit) {
    if (edit.empty()) return;
    const auto& elements = commands.elements();
    const auto count = static_cast<int64_t>(elements.size());
    // Unlike the single steps (which fail at their first repair), a bad opcode fails before any
    // change.
    for (const auto& element : elements)
        detail::rowOfOpcode(element->opcode());

    const Destinations destinations(edit, count);
    Rebuilt rebuilt(static_cast<std::size_t>(destinations.commandsAfter()));
    std::size_t nextBlock = 0;
    for (int64_t position = 1; position <= count; ++position) {
        while (nextBlock < edit.blocks.size() && edit.blocks[nextBlock].before == position)
            rebuilt.addBlock(edit.blocks[nextBlock++]);
        if (removalAt(edit, position) != ListEdit::Keep) continue;
        const auto at = static_cast<std::size_t>(position - 1);
        rebuilt.addKept(elements[at], commands.keyAt0(at), destinations);
    }
    while (nextBlock < edit.blocks.size())
        rebuilt.addBlock(edit.blocks[nextBlock++]);
    rebuilt.moveInto(commands);
}

}  // namespace velmora::editing
