#pragma once

#include <velmora/BGLOpcodeDictionary.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

namespace detail {
struct CommandSlots;
}

// One decoded command: its opcode, its parameters as text (slots 0 to 32), the list position
// of its list header (`parent`) and the list positions its jump parameters lead to.
//
// Parameters are held compactly: a text that is the canonical decimal of a number is kept as
// that number, any other text verbatim. What reading a parameter gives is always the text that
// was stored.
class BGLCommand {
  public:
    BGLCommand() = default;
    BGLCommand(const BGLCommand& other);
    BGLCommand& operator=(const BGLCommand& other);
    BGLCommand(BGLCommand&&) noexcept = default;
    BGLCommand& operator=(BGLCommand&&) noexcept = default;
    ~BGLCommand();

    BGLOpcode opcode() const { return static_cast<BGLOpcode>(opcode_); }
    void opcode(BGLOpcode value) { opcode_ = value; }

    // Index 0 to 32; anything else is error 9.
    std::string param(int16_t Index) const;
    void param(int16_t Index, const std::string& value);

    int32_t parent() const { return parent_; }
    void parent(int32_t value) { parent_ = value; }

    // Index 0 to 32; anything else is error 9.
    int32_t jumpDest(int16_t Index) const;
    void jumpDest(int16_t Index, int32_t value);

  private:
    friend struct detail::CommandSlots;

    enum class SlotKind : uint8_t { Empty, Integer, Single, Text };
    struct Slot {
        SlotKind kind = SlotKind::Empty;
        int32_t bits = 0;  // Integer: the value; Single: the float's bits; Text: index in texts
    };
    struct Extra {
        std::vector<Slot> slots;          // slots 4 to 32
        std::vector<std::string> texts;   // verbatim texts
        std::array<int32_t, 32> jumps{};  // jumpDest 1 to 32
    };
    static constexpr int kInlineSlots = 4;

    int32_t opcode_ = 0;
    int32_t parent_ = 0;
    int32_t firstJump_ = 0;
    std::array<Slot, kInlineSlots> inline_{};
    std::unique_ptr<Extra> extra_;
};

}  // namespace velmora
