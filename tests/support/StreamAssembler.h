#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/BGLCommandList.h>

#include "support/Bytes.h"

#include <cstdint>
#include <string>
#include <vector>

// Builds BGL streams for tests: commands are lists of fields, and a jump field names the
// command it leads to (by index in the assembler, `size()` for the end of the stream) plus a
// byte delta into it, so offsets are worked out here independently of the library.
namespace bgltest {

struct Field {
    enum Kind { Word, Long, Single, Tag } kind = Word;
    int64_t value = 0;
    float single = 0;
    std::string text;
    int target = -1;  // command index a jump leads to; -1 for a plain value
    int delta = 0;    // bytes into the target
};

inline Field w(int64_t v) {
    return {Field::Word, v, 0, {}, -1, 0};
}
inline Field l(int64_t v) {
    return {Field::Long, v, 0, {}, -1, 0};
}
inline Field f(float v) {
    return {Field::Single, 0, v, {}, -1, 0};
}
inline Field tag(std::string text) {
    return {Field::Tag, 0, 0, std::move(text), -1, 0};
}
inline Field jw(int target, int delta = 0) {
    return {Field::Word, 0, 0, {}, target, delta};
}
inline Field jl(int target, int delta = 0) {
    return {Field::Long, 0, 0, {}, target, delta};
}

struct Op {
    int opcode = 0;
    std::vector<Field> fields;
    bool word = true;  // list items have no opcode word

    int size() const {
        int bytes = word ? 2 : 0;
        for (const Field& field : fields) {
            bytes += field.kind == Field::Word ? 2 : field.kind == Field::Tag ? 16 : 4;
        }
        return bytes;
    }
};

class StreamAssembler {
  public:
    int add(int opcode, std::vector<Field> fields = {}) {
        ops.push_back({opcode, std::move(fields), opcode != 256 && opcode != 257});
        return static_cast<int>(ops.size()) - 1;
    }

    // Byte position of each command, and of the end of the stream behind them.
    std::vector<int64_t> starts() const {
        std::vector<int64_t> out(ops.size() + 1, 0);
        for (std::size_t i = 0; i < ops.size(); ++i)
            out[i + 1] = out[i] + ops[i].size();
        return out;
    }

    int size() const { return static_cast<int>(ops.size()); }

    // Inserts a command in front of `index`; jumps to `index` and behind follow their command.
    void insert(int index, Op op) {
        for (Op& existing : ops) {
            for (Field& field : existing.fields) {
                if (field.target >= index) ++field.target;
            }
        }
        ops.insert(ops.begin() + index, std::move(op));
    }

    // Removes a command; jumps to it lead to the command in front, later targets move down.
    void erase(int index) {
        ops.erase(ops.begin() + index);
        for (Op& existing : ops) {
            for (Field& field : existing.fields) {
                if (field.target >= index) --field.target;
            }
        }
    }

    std::string bytes() const {
        const std::vector<int64_t> starts = this->starts();
        std::string out;
        for (std::size_t i = 0; i < ops.size(); ++i) {
            const Op& op = ops[i];
            if (op.word) out += testbytes::le16(op.opcode);
            for (const Field& field : op.fields) {
                int64_t value = field.value;
                if (field.target >= 0) {
                    value =
                        starts[static_cast<std::size_t>(field.target)] + field.delta - starts[i];
                }
                switch (field.kind) {
                    case Field::Word:
                        out += testbytes::le16(static_cast<int32_t>(value));
                        break;
                    case Field::Long:
                        out += testbytes::le32(value);
                        break;
                    case Field::Single:
                        out += testbytes::f32(field.single);
                        break;
                    case Field::Tag:
                        out += field.text + std::string(16 - field.text.size(), '\0');
                        break;
                }
            }
        }
        return out;
    }

    std::vector<Op> ops;
};

inline std::shared_ptr<velmora::BGLCommand> command(int opcode,
                                                    std::vector<std::string> params = {}) {
    auto made = std::make_shared<velmora::BGLCommand>();
    made->opcode(static_cast<velmora::BGLOpcode>(opcode));
    for (std::size_t i = 0; i < params.size(); ++i)
        made->param(static_cast<int16_t>(i), params[i]);
    return made;
}

// "184:2,-1" for a SET_MATERIAL with "2" and "-1": the opcode and the parameters of its row.
inline std::string describe(const velmora::BGLCommand& c) {
    const auto* row = velmora::BGLOpcodeDictionary::row(c.opcode());
    const int count = row ? row->numParam : 0;
    std::string out = std::to_string(static_cast<int>(c.opcode())) + ":";
    for (int i = 0; i < count; ++i) {
        if (i > 0) out += ",";
        out += c.param(static_cast<int16_t>(i));
    }
    return out;
}

inline std::string describe(const velmora::BGLCommandList& list) {
    std::string out;
    for (const auto& c : list) {
        if (!out.empty()) out += " ";
        out += describe(*c);
    }
    return out;
}

}  // namespace bgltest
