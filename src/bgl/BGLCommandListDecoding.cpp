#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace {

using detail::CommandSlots;

// The shape of the two list constructs: a header of three words, then items without an
// opcode word.
struct ListShape {
    BGLOpcode itemOpcode;
    int divisor;    // vertex indices per item
    int itemBytes;  // bytes per item record
};

bool isListHeader(int32_t opcode) {
    return opcode == DRAW_TRI_LIST_BEGIN || opcode == DRAW_LINE_LIST_BEGIN;
}

ListShape listShape(int32_t headerOpcode) {
    if (headerOpcode == DRAW_TRI_LIST_BEGIN) return {DRAW_TRI_LIST_ITEM, 3, 6};
    return {DRAW_LINE_LIST_ITEM, 2, 4};
}

// Items behind a list header: the third header word over the indices per item, halves to even.
int16_t itemCount(int32_t indexCount, const ListShape& shape) {
    return numbers::toInt16(static_cast<double>(indexCount) / shape.divisor);
}

// Hands out decoded commands from large blocks, so that a decode costs a few allocations
// rather than one per command. Each command shares the ownership of its block.
class CommandBlocks {
  public:
    explicit CommandBlocks(std::size_t expected) : capacity_(expected) {
        if (capacity_ > 0) block_ = std::shared_ptr<BGLCommand[]>(new BGLCommand[capacity_]);
    }

    std::shared_ptr<BGLCommand> next() {
        if (used_ == capacity_) {
            capacity_ = std::max<std::size_t>(64, capacity_ / 2);
            block_ = std::shared_ptr<BGLCommand[]>(new BGLCommand[capacity_]);
            used_ = 0;
        }
        return std::shared_ptr<BGLCommand>(block_, &block_[used_++]);
    }

  private:
    std::shared_ptr<BGLCommand[]> block_;
    std::size_t capacity_ = 0;
    std::size_t used_ = 0;
};

void skipBytes(int16_t file, int64_t count) {
    hex::seekFile(file, static_cast<int32_t>(hex::filePosition(file) + count));
}

// The number of commands a decode of `data` makes, up to the first command it refuses. Walks
// the stream the way the decoder does, without building anything.
std::size_t countCommands(std::string_view data) {
    const int64_t size = static_cast<int64_t>(data.size());
    hex::MemoryReader reader(data);
    const int16_t file = reader.file();
    std::size_t total = 0;
    int64_t consumed = 0;
    while (consumed < size) {
        const int16_t opcode = hex::readInteger(file);
        if (isListHeader(opcode)) {
            const ListShape shape = listShape(opcode);
            skipBytes(file, 4);
            const double count = numbers::roundHalfEven(
                static_cast<double>(hex::readUInteger(file)) / shape.divisor);
            if (count > 32767) break;
            const auto items = static_cast<int64_t>(count);
            total += static_cast<std::size_t>(1 + items);
            consumed += 8 + items * shape.itemBytes;
            skipBytes(file, items * shape.itemBytes);
            continue;
        }
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(opcode);
        if (row == nullptr || row->length <= 0) break;
        total += 1;
        consumed += row->length;
        skipBytes(file, detail::parameterBytes(*row));
    }
    return total;
}

void readParameters(int16_t file, const BGLCommandDictEntry& row, BGLCommand& command) {
    for (int i = 0; i < row.numParam; ++i) {
        const auto slot = static_cast<std::size_t>(i);
        switch (row.paramType[slot]) {
            case pByte:
                CommandSlots::setInteger(command, i, hex::readByte(file));
                break;
            case pInteger:
                CommandSlots::setInteger(command, i, hex::readInteger(file));
                break;
            case pLong:
                CommandSlots::setInteger(command, i, hex::readLong(file));
                break;
            case pSingle:
                CommandSlots::setSingle(command, i, hex::readSingle(file));
                break;
            case pString:
                CommandSlots::setText(command, i, hex::readString(file, row.strLength[slot]));
                break;
            case pUInteger:
                CommandSlots::setInteger(command, i, hex::readUInteger(file));
                break;
        }
    }
}

}  // namespace

void BGLCommandList::readList(const std::string& data) {
    {
        const int64_t size = static_cast<int64_t>(data.size());
        const std::size_t expected = countCommands(data);
        CommandBlocks blocks(expected);
        commands_.reserve(commands_.elements().size() + expected);
        hex::MemoryReader reader(data);
        const int16_t file = reader.file();
        int64_t consumed = 0;
        while (consumed < size) {
            yieldToHost();
            const int16_t opcode = hex::readInteger(file);
            if (isListHeader(opcode)) {
                const ListShape shape = listShape(opcode);
                auto header = blocks.next();
                header->opcode(static_cast<BGLOpcode>(opcode));
                // Both list shapes hold their words unsigned, whatever their row says.
                for (int i = 0; i < 3; ++i) {
                    CommandSlots::setInteger(*header, i, hex::readUInteger(file));
                }
                int32_t indexCount = 0;
                CommandSlots::integer(*header, 2, indexCount);
                const int16_t count = itemCount(indexCount, shape);
                consumed += 8;
                commands_.append(std::move(header));
                const int itemWords = shape.divisor;
                for (int16_t item = 0; item < count; ++item) {
                    yieldToHost();
                    auto command = blocks.next();
                    command->opcode(shape.itemOpcode);
                    for (int i = 0; i < itemWords; ++i) {
                        CommandSlots::setInteger(*command, i, hex::readUInteger(file));
                    }
                    consumed += shape.itemBytes;
                    commands_.append(std::move(command));
                }
                continue;
            }
            const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(opcode);
            if (row == nullptr) raisePlatformError(kSubscriptOutOfRange);
            if (row->length <= 0) {
                raiseLibraryError("Velmora.BGLCommandList",
                                  "Unrecognised BGL Opcode: " + numbers::formatInteger(opcode));
            }
            auto command = blocks.next();
            command->opcode(static_cast<BGLOpcode>(opcode));
            readParameters(file, *row, *command);
            // A stream word 256 or 257 reads its opcode word too, while the count follows the
            // row's length, which has none.
            consumed += row->length;
            commands_.append(std::move(command));
        }
    }
    processJumpDest();
}

}  // namespace velmora
