#pragma once

#include <velmora/BGLCommand.h>

#include "support/Bytes.h"

#include <cstdint>
#include <string>
#include <vector>

// Builds BGL streams for tests. A jump field names the command it leads to (by index, `size()`
// for the end of the stream) plus a byte delta into it, so that offsets are worked out here,
// independently of the library. Every field also keeps the text the decoder must give for it.
namespace bgltest {

struct Field {
    enum Kind { Word, Long, Single, Tag } kind = Word;
    int64_t value = 0;
    std::string text;  // singles and tags: the decoded text; others follow `value`
    int target = -1;   // command index a jump leads to; -1 for a plain value
    int delta = 0;     // bytes into the target
};

inline const auto w = [](int64_t v) { return Field{Field::Word, v, {}, -1, 0}; };
inline const auto l = [](int64_t v) { return Field{Field::Long, v, {}, -1, 0}; };
inline const auto f = [](const char* text) { return Field{Field::Single, 0, text, -1, 0}; };
inline const auto jw = [](int target) { return Field{Field::Word, 0, {}, target, 0}; };
inline const auto jl = [](int target) { return Field{Field::Long, 0, {}, target, 0}; };

struct Op {
    int opcode = 0;
    std::vector<Field> fields;
    int size() const {
        int bytes = opcode == 256 || opcode == 257 ? 0 : 2;  // list items have no opcode word
        for (const Field& field : fields)
            bytes += field.kind == Field::Word ? 2 : field.kind == Field::Tag ? 16 : 4;
        return bytes;
    }
};

class StreamAssembler {
  public:
    void add(int opcode, std::vector<Field> fields = {}) {
        ops.push_back({opcode, std::move(fields)});
    }
    int size() const { return static_cast<int>(ops.size()); }

    // Byte position of each command, and of the end of the stream behind them.
    std::vector<int64_t> starts() const {
        std::vector<int64_t> out(ops.size() + 1, 0);
        for (std::size_t i = 0; i < ops.size(); ++i)
            out[i + 1] = out[i] + ops[i].size();
        return out;
    }

    // Inserts a command in front of `index`; jumps to `index` and behind follow their command.
    void insert(int index, Op op) {
        for (Op& existing : ops)
            for (Field& field : existing.fields)
                if (field.target >= index) ++field.target;
        ops.insert(ops.begin() + index, std::move(op));
    }

    // Removes a command; jumps to it lead to the command in front, later targets move down.
    void erase(int index) {
        ops.erase(ops.begin() + index);
        for (Op& existing : ops)
            for (Field& field : existing.fields)
                if (field.target >= index) --field.target;
    }

    // The value of field `p` of command `i` as stored: a jump holds its byte offset.
    int64_t valueOf(int i, std::size_t p) const {
        const Field& field = ops[static_cast<std::size_t>(i)].fields[p];
        if (field.target < 0) return field.value;
        const std::vector<int64_t> at = starts();
        return at[static_cast<std::size_t>(field.target)] + field.delta -
               at[static_cast<std::size_t>(i)];
    }

    std::string text(int i, std::size_t p) const {
        const Field& field = ops[static_cast<std::size_t>(i)].fields[p];
        return field.text.empty() ? std::to_string(valueOf(i, p)) : field.text;
    }

    std::string bytes() const {
        std::string out;
        for (int i = 0; i < size(); ++i) {
            const Op& op = ops[static_cast<std::size_t>(i)];
            if (op.opcode != 256 && op.opcode != 257) out += testbytes::le16(op.opcode);
            for (std::size_t p = 0; p < op.fields.size(); ++p) {
                const Field& field = op.fields[p];
                const int64_t value = valueOf(i, p);
                if (field.kind == Field::Word) out += testbytes::le16(static_cast<int32_t>(value));
                if (field.kind == Field::Long) out += testbytes::le32(value);
                if (field.kind == Field::Single) out += testbytes::f32(std::stof(field.text));
                if (field.kind == Field::Tag) out += field.text;
            }
        }
        return out;
    }

    std::vector<Op> ops;
};

// Every opcode with a row (33), both list shapes, and jumps of every kind: forward, to
// themselves, to the end of a list, into the middle of a command, to the last command.
inline StreamAssembler everyOpcode() {
    using namespace velmora;
    StreamAssembler a;
    a.add(BGL_TAG,
          {{Field::Tag, 0, std::string("TOWER\0x\0\0\0\0\0\0\0\0\0", 16)}, f("0.25")});  // 0
    a.add(VAR_BASE_32, {l(0x12345678)});                                                 // 1
    a.add(VAR_BASE_OVERRIDE, {l(-5)});                                                   // 2
    a.add(MATERIAL_LIST_BEGIN, {w(1), l(100)});                                          // 3
    a.add(TEXTURE_LIST_BEGIN, {w(2), l(-200)});                                          // 4
    a.add(SETWRD, {w(900), w(-7)});                                                      // 5
    a.add(BGL_ZBIAS, {w(3)});                                                            // 6
    a.add(BGL_SET_MATRIX_INDIRECT, {w(4)});                                              // 7
    a.add(IFIN1, {jw(10), w(906), w(1), w(2)});                                          // 8
    a.add(SET_MATERIAL, {w(0), w(-1)});                                                  // 9
    a.add(IFIN2, {jw(12), w(1), w(2), w(3), w(4), w(5), w(6)});                          // 10
    a.add(IFIN3, {jw(33), w(1), w(2), w(3), w(4), w(5), w(6), w(7), w(8), w(9)});        // 11
    a.add(IFIN_BOX_PLANE, {jw(13), w(-1), w(-2), w(-3), w(-4), w(-5), w(-6), w(-7), w(-8), w(-9)});
    a.add(IFIN_INSTANCED_BOX_PLANE,  // 13: a jump to itself
          {jw(13), w(1), w(1), w(1), w(1), w(1), w(1), w(1), w(1), w(1)});
    a.add(IFINBOXP, {jw(16), w(10), w(20), w(30), w(40), w(50), w(60)});  // 14
    a.add(IFMSK, {jw(16), w(7), w(0x40)});                                // 15
    a.add(IFSIZEV, {jw(17), w(3), w(4)});                                 // 16
    a.add(IFSIZEH, {jw(18), w(5), w(6)});                                 // 17
    a.add(SEPARATION_PLANE, {jw(19), w(1), w(2), w(3), l(-123456)});      // 18
    a.add(SPRITE_VICALL, {jw(34), w(0), w(0), w(0), w(0), w(0), w(1), w(0), w(0), w(3188)});
    a.add(BGL_ANIMATE, {l(1), jl(22), l(2), jl(25), f("1.5"), f("-0.125"), f("1E+10")});  // 20
    a.add(BGL_INTERPOLATE, {l(5), jw(21), l(6), jw(27), l(7), jw(31)});                   // 21
    a.add(DRAW_TRI_LIST_BEGIN, {w(10), w(3), w(6)});                                      // 22
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});                                        // 23
    a.add(DRAW_TRI_LIST_ITEM, {w(2), w(1), w(3)});                                        // 24
    a.add(BGL_LIGHT, {w(1), f("0.5"), f("-2"), f("3"), l(0xFF00FF), f("4"), f("5"), l(-1), f("6"),
                      f("7"), f("8")});               // 25
    a.add(DRAW_LINE_LIST_BEGIN, {w(5), w(2), w(4)});  // 26
    a.add(DRAW_LINE_LIST_ITEM, {w(0), w(1)});         // 27
    a.add(DRAW_LINE_LIST_ITEM, {w(1), w(2)});         // 28
    a.add(jump, {jw(32)});                            // 29
    a.add(BGL_JUMP_32, {jl(32)});                     // 30
    a.add(BGL_CALL_32, {jl(35)});                     // 31
    a.add(BGL_CALL, {jw(35)});                        // 32
    a.add(BGL_RETURN);                                // 33
    a.add(BGL_RETURN);                                // 34
    a.add(BGL_END);                                   // 35
    return a;
}

inline std::shared_ptr<velmora::BGLCommand> command(int opcode,
                                                    std::vector<std::string> params = {},
                                                    int32_t jumpDest = 0) {
    auto made = std::make_shared<velmora::BGLCommand>();
    made->opcode(static_cast<velmora::BGLOpcode>(opcode));
    for (std::size_t i = 0; i < params.size(); ++i)
        made->param(static_cast<int16_t>(i), params[i]);
    if (jumpDest != 0) made->jumpDest(0, jumpDest);
    return made;
}

}  // namespace bgltest
