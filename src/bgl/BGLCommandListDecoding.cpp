#include <velmora/BGLCommandList.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/ByteReader.h"
#include "foundation/Errors.h"
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
    const double items = numbers::roundHalfEven(static_cast<double>(indexCount) / shape.divisor);
    if (items > 32767) {
        raisePlatformError(kOverflow, "the list claims " + numbers::formatGrouped(indexCount) +
                                          " indices, more than 32,767 items");
    }
    return static_cast<int16_t>(items);
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

// The number of commands a decode of `data` makes, up to the first command it refuses. Walks
// the stream the way the decoder does, without building anything.
std::size_t countCommands(std::string_view data) {
    const int64_t size = static_cast<int64_t>(data.size());
    ByteReader in(data);
    std::size_t total = 0;
    int64_t consumed = 0;
    while (consumed < size) {
        const int16_t opcode = in.int16();
        if (isListHeader(opcode)) {
            const ListShape shape = listShape(opcode);
            in.skip(4);
            const double count =
                numbers::roundHalfEven(static_cast<double>(in.uint16()) / shape.divisor);
            if (count > 32767) break;
            const auto items = static_cast<int64_t>(count);
            total += static_cast<std::size_t>(1 + items);
            consumed += 8 + items * shape.itemBytes;
            in.skip(items * shape.itemBytes);
            continue;
        }
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(opcode);
        if (row == nullptr || row->length <= 0) break;
        total += 1;
        consumed += row->length;
        in.skip(detail::parameterBytes(*row));
    }
    return total;
}

void readParameters(ByteReader& in, const BGLCommandDictEntry& row, BGLCommand& command) {
    for (int i = 0; i < row.numParam; ++i) {
        const auto slot = static_cast<std::size_t>(i);
        switch (row.paramType[slot]) {
            case pByte:
                CommandSlots::setInteger(command, i, in.byte());
                break;
            case pInteger:
                CommandSlots::setInteger(command, i, in.int16());
                break;
            case pLong:
                CommandSlots::setInteger(command, i, in.int32());
                break;
            case pSingle:
                CommandSlots::setSingle(command, i, in.single());
                break;
            case pString:
                CommandSlots::setText(command, i, in.text(row.strLength[slot]));
                break;
            case pUInteger:
                CommandSlots::setInteger(command, i, in.uint16());
                break;
        }
    }
}

std::string opcodeWord(int16_t opcode) {
    static const char* digits = "0123456789ABCDEF";
    const auto word = static_cast<uint16_t>(opcode);
    std::string text = "0x";
    for (int shift = 12; shift >= 0; shift -= 4)
        text.push_back(digits[(word >> shift) & 15]);
    return text;
}

}  // namespace

void BGLCommandList::readList(const std::string& data) {
    const int64_t size = static_cast<int64_t>(data.size());
    const std::size_t expected = countCommands(data);
    CommandBlocks blocks(expected);
    items_.reserve(items_.elements().size() + expected);
    ByteReader in(data);
    int64_t consumed = 0;
    int64_t commandOffset = 0;  // where the command being decoded starts, for errors
    try {
        while (consumed < size) {
            yieldToHost();
            commandOffset = in.offset();
            const int16_t opcode = in.int16();
            if (isListHeader(opcode)) {
                const ListShape shape = listShape(opcode);
                auto header = blocks.next();
                header->opcode(static_cast<BGLOpcode>(opcode));
                // Both list shapes hold their words unsigned, whatever their row says.
                for (int i = 0; i < 3; ++i)
                    CommandSlots::setInteger(*header, i, in.uint16());
                int32_t indexCount = 0;
                CommandSlots::integer(*header, 2, indexCount);
                const int16_t count = itemCount(indexCount, shape);
                consumed += 8;
                items_.append(std::move(header));
                const int itemWords = shape.divisor;
                for (int16_t item = 0; item < count; ++item) {
                    yieldToHost();
                    commandOffset = in.offset();
                    auto command = blocks.next();
                    command->opcode(shape.itemOpcode);
                    for (int i = 0; i < itemWords; ++i)
                        CommandSlots::setInteger(*command, i, in.uint16());
                    consumed += shape.itemBytes;
                    items_.append(std::move(command));
                }
                continue;
            }
            const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(opcode);
            if (row == nullptr) {
                raisePlatformError(kSubscriptOutOfRange,
                                   "the opcode word " + opcodeWord(opcode) +
                                       " lies outside the opcode table (0 to 260)");
            }
            if (row->length <= 0) {
                Error error(100, "Velmora.BGLCommandList",
                            "Unrecognised BGL Opcode: " + numbers::formatInteger(opcode));
                error.setDetail("opcode " + numbers::formatInteger(opcode) + " (" +
                                opcodeWord(opcode) + ") has no entry in the opcode table");
                throw error;
            }
            auto command = blocks.next();
            command->opcode(static_cast<BGLOpcode>(opcode));
            readParameters(in, *row, *command);
            // A stream word 256 or 257 reads its opcode word too, while the count follows the
            // row's length, which has none.
            consumed += row->length;
            items_.append(std::move(command));
        }
    } catch (Error& error) {
        error.setCommand(Count() + 1).setOffset(commandOffset);
        throw;
    }
    processJumpDest();
}

}  // namespace velmora
