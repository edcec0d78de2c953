#include <velmora/BGLCommand.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <bit>

namespace velmora {

BGLCommand::BGLCommand(const BGLCommand& other)
    : opcode_(other.opcode_),
      parent_(other.parent_),
      firstJump_(other.firstJump_),
      inline_(other.inline_),
      extra_(other.extra_ ? std::make_unique<Extra>(*other.extra_) : nullptr) {}

BGLCommand& BGLCommand::operator=(const BGLCommand& other) {
    if (this != &other) {
        opcode_ = other.opcode_;
        parent_ = other.parent_;
        firstJump_ = other.firstJump_;
        inline_ = other.inline_;
        extra_ = other.extra_ ? std::make_unique<Extra>(*other.extra_) : nullptr;
    }
    return *this;
}

BGLCommand::~BGLCommand() = default;

namespace {

void checkIndex(int16_t index) {
    if (index < 0 || index > 32) raisePlatformError(kSubscriptOutOfRange);
}

}  // namespace

std::string BGLCommand::param(int16_t Index) const {
    checkIndex(Index);
    const Slot* slot = nullptr;
    if (Index < kInlineSlots) {
        slot = &inline_[static_cast<std::size_t>(Index)];
    } else if (extra_ && static_cast<std::size_t>(Index - kInlineSlots) < extra_->slots.size()) {
        slot = &extra_->slots[static_cast<std::size_t>(Index - kInlineSlots)];
    }
    if (slot == nullptr) return {};
    switch (slot->kind) {
        case SlotKind::Empty:
            return {};
        case SlotKind::Integer:
            return numbers::formatInteger(slot->bits);
        case SlotKind::Single:
            return numbers::formatSingle(std::bit_cast<float>(slot->bits));
        case SlotKind::Text:
            return extra_->texts[static_cast<std::size_t>(slot->bits)];
    }
    return {};
}

void BGLCommand::param(int16_t Index, const std::string& value) {
    checkIndex(Index);
    detail::CommandSlots::setText(*this, Index, value);
}

int32_t BGLCommand::jumpDest(int16_t Index) const {
    checkIndex(Index);
    return detail::CommandSlots::jump(*this, Index);
}

void BGLCommand::jumpDest(int16_t Index, int32_t value) {
    checkIndex(Index);
    detail::CommandSlots::setJump(*this, Index, value);
}

namespace detail {

// Gives the slot for reading, or nullptr for one that was never set.
const BGLCommand::Slot* CommandSlots::findSlot(const BGLCommand& command, int index) {
    if (index < BGLCommand::kInlineSlots) return &command.inline_[static_cast<std::size_t>(index)];
    if (!command.extra_) return nullptr;
    const auto at = static_cast<std::size_t>(index - BGLCommand::kInlineSlots);
    return at < command.extra_->slots.size() ? &command.extra_->slots[at] : nullptr;
}

BGLCommand::Slot& CommandSlots::slotForWriting(BGLCommand& command, int index) {
    if (index < BGLCommand::kInlineSlots) return command.inline_[static_cast<std::size_t>(index)];
    if (!command.extra_) command.extra_ = std::make_unique<BGLCommand::Extra>();
    const auto at = static_cast<std::size_t>(index - BGLCommand::kInlineSlots);
    if (command.extra_->slots.size() <= at) command.extra_->slots.resize(at + 1);
    return command.extra_->slots[at];
}

bool CommandSlots::isEmpty(const BGLCommand& command, int index) {
    const BGLCommand::Slot* slot = findSlot(command, index);
    return slot == nullptr || slot->kind == BGLCommand::SlotKind::Empty;
}

double CommandSlots::number(const BGLCommand& command, int index) {
    const BGLCommand::Slot* slot = findSlot(command, index);
    if (slot == nullptr) raisePlatformError(kTypeMismatch);
    switch (slot->kind) {
        case BGLCommand::SlotKind::Integer:
            return slot->bits;
        case BGLCommand::SlotKind::Single:
            return std::bit_cast<float>(slot->bits);
        case BGLCommand::SlotKind::Text:
            return numbers::parseNumber(
                command.extra_->texts[static_cast<std::size_t>(slot->bits)]);
        case BGLCommand::SlotKind::Empty:
            break;
    }
    raisePlatformError(kTypeMismatch);
}

bool CommandSlots::integer(const BGLCommand& command, int index, int32_t& value) {
    const BGLCommand::Slot* slot = findSlot(command, index);
    if (slot == nullptr || slot->kind != BGLCommand::SlotKind::Integer) return false;
    value = slot->bits;
    return true;
}

bool CommandSlots::equalsInteger(const BGLCommand& command, int index, int32_t value) {
    const BGLCommand::Slot* slot = findSlot(command, index);
    // A canonical decimal text is always held as an Integer slot, so no other kind can match.
    return slot != nullptr && slot->kind == BGLCommand::SlotKind::Integer && slot->bits == value;
}

void CommandSlots::setInteger(BGLCommand& command, int index, int32_t value) {
    BGLCommand::Slot& slot = slotForWriting(command, index);
    slot.kind = BGLCommand::SlotKind::Integer;
    slot.bits = value;
}

void CommandSlots::setSingle(BGLCommand& command, int index, float value) {
    // The slot holds the single that its seven-digit text reads back as, where that text is
    // canonical; otherwise the text itself.
    const std::string text = numbers::formatSingle(value);
    float canonical = 0;
    if (numbers::parseCanonicalSingle(text, canonical)) {
        BGLCommand::Slot& slot = slotForWriting(command, index);
        slot.kind = BGLCommand::SlotKind::Single;
        slot.bits = std::bit_cast<int32_t>(canonical);
    } else {
        setText(command, index, text);
    }
}

void CommandSlots::setText(BGLCommand& command, int index, std::string_view text) {
    int32_t integerValue = 0;
    float singleValue = 0;
    if (text.empty()) {
        clear(command, index);
    } else if (numbers::parseCanonicalInteger(text, integerValue)) {
        setInteger(command, index, integerValue);
    } else if (numbers::parseCanonicalSingle(text, singleValue)) {
        BGLCommand::Slot& slot = slotForWriting(command, index);
        slot.kind = BGLCommand::SlotKind::Single;
        slot.bits = std::bit_cast<int32_t>(singleValue);
    } else {
        BGLCommand::Slot& slot = slotForWriting(command, index);
        if (!command.extra_) command.extra_ = std::make_unique<BGLCommand::Extra>();
        auto& texts = command.extra_->texts;
        if (slot.kind == BGLCommand::SlotKind::Text) {
            texts[static_cast<std::size_t>(slot.bits)].assign(text);
        } else {
            slot.kind = BGLCommand::SlotKind::Text;
            slot.bits = static_cast<int32_t>(texts.size());
            texts.emplace_back(text);
        }
    }
}

void CommandSlots::clear(BGLCommand& command, int index) {
    const BGLCommand::Slot* existing = findSlot(command, index);
    if (existing == nullptr) return;
    BGLCommand::Slot& slot = slotForWriting(command, index);
    if (slot.kind == BGLCommand::SlotKind::Text)
        command.extra_->texts[static_cast<std::size_t>(slot.bits)].clear();
    slot.kind = BGLCommand::SlotKind::Empty;
    slot.bits = 0;
}

int32_t CommandSlots::jump(const BGLCommand& command, int index) {
    if (index == 0) return command.firstJump_;
    return command.extra_ ? command.extra_->jumps[static_cast<std::size_t>(index - 1)] : 0;
}

void CommandSlots::setJump(BGLCommand& command, int index, int32_t value) {
    if (index == 0) {
        command.firstJump_ = value;
        return;
    }
    if (!command.extra_) {
        if (value == 0) return;
        command.extra_ = std::make_unique<BGLCommand::Extra>();
    }
    command.extra_->jumps[static_cast<std::size_t>(index - 1)] = value;
}

}  // namespace detail
}  // namespace velmora
