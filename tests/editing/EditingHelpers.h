#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "support/Bytes.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

// Command lists and models for the editing tests, and a reading of saved streams that works
// out jump targets from the bytes alone.
namespace edittest {

using namespace velmora;

// A command with its parameters as texts and, when `jump` isn't 0, jumpDest(0).
inline std::shared_ptr<BGLCommand> cmd(BGLOpcode opcode, std::vector<std::string> params = {},
                                       int32_t jump = 0) {
    auto made = std::make_shared<BGLCommand>();
    made->opcode(opcode);
    for (std::size_t i = 0; i < params.size(); ++i)
        made->param(static_cast<int16_t>(i), params[i]);
    if (jump != 0) made->jumpDest(0, jump);
    return made;
}

inline std::shared_ptr<BGLCommandList> listOf(
    std::initializer_list<std::shared_ptr<BGLCommand>> c) {
    auto list = std::make_shared<BGLCommandList>();
    for (const auto& command : c)
        list->Add(command);
    return list;
}

inline const BGLCommandDictEntry& rowOf(const BGLCommand& c) {
    static const BGLCommandDictEntry none;
    const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(c.opcode());
    return row ? *row : none;
}

// "IFIN1>4 BGL_CALL_32>5 BGL_END": names, and the destination of each jump parameter.
inline std::string shape(const BGLCommandList& list) {
    std::string out;
    for (const auto& c : list) {
        const BGLCommandDictEntry& row = rowOf(*c);
        out +=
            (out.empty() ? "" : " ") + (row.name.empty() ? std::to_string(c->opcode()) : row.name);
        for (int i = 0; i < row.numParam; ++i) {
            if (row.isJump[static_cast<std::size_t>(i)])
                out += ">" + std::to_string(c->jumpDest(static_cast<int16_t>(i)));
        }
    }
    return out;
}

// Everything of every command: opcode, all parameter texts of its row, its jumps and parent.
inline std::string fullShape(const BGLCommandList& list) {
    std::string out;
    for (const auto& c : list) {
        const BGLCommandDictEntry& row = rowOf(*c);
        out += std::to_string(c->opcode()) + "(";
        for (int i = 0; i < row.numParam; ++i) {
            out += c->param(static_cast<int16_t>(i));
            if (row.isJump[static_cast<std::size_t>(i)])
                out += ">" + std::to_string(c->jumpDest(static_cast<int16_t>(i)));
            out += ",";
        }
        out += ")^" + std::to_string(c->parent()) + "\n";
    }
    return out;
}

// The parameter texts of command `position`, "a|b|c".
inline std::string paramsOf(const BGLCommandList& list, int32_t position) {
    const auto c = list.Item(position);
    std::string out;
    for (int i = 0; i < rowOf(*c).numParam; ++i)
        out += (i ? "|" : "") + c->param(static_cast<int16_t>(i));
    return out;
}

// A model with a header and a bounding box; its lists are empty and filled by the tests.
inline std::string bareModel(const std::string& moreSections = "") {
    using namespace testbytes;
    std::string header;
    for (int i = 1; i <= 9; ++i)
        header += le32(i);
    std::string box;
    for (int i = 0; i < 6; ++i)
        box += f32(static_cast<float>(i));
    return riff(section("MDLH", header) + section("BBOX", box) + moreSections);
}

// The payload of the first section with this tag in a saved model file, walking into "EXTE".
inline std::string sectionPayload(const std::string& file, const std::string& tag) {
    std::size_t at = 12;
    while (at + 8 <= file.size()) {
        const std::string found = file.substr(at, 4);
        uint32_t size = 0;
        for (int b = 3; b >= 0; --b)
            size =
                size << 8 | static_cast<unsigned char>(file[at + 4 + static_cast<std::size_t>(b)]);
        if (found == tag) return file.substr(at + 8, size);
        at += 8 + (found == "EXTE" ? 0 : size);
    }
    return {};
}

// For each command of a stream without list constructs: the 1-based index of the command on
// whose first byte its jump offset lands (Count + 1 for the end of the stream), -1 when it
// lands on no first byte, 0 for a command without a jump. Only jumps at parameter 0.
inline std::vector<int> jumpTargetsInBytes(const std::string& stream) {
    auto word = [&](std::size_t at) {
        return static_cast<int16_t>(static_cast<unsigned char>(stream[at]) |
                                    static_cast<unsigned char>(stream[at + 1]) << 8);
    };
    std::vector<std::size_t> starts;
    std::vector<int64_t> offsets;
    std::size_t at = 0;
    while (at + 2 <= stream.size()) {
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(static_cast<uint16_t>(word(at)));
        if (row == nullptr || row->length == 0) return {};
        int64_t offset = INT64_MIN;
        if (row->numParam > 0 && row->isJump[0]) {
            offset = row->paramType[0] == pLong
                         ? static_cast<int32_t>(
                               static_cast<uint16_t>(word(at + 2)) |
                               static_cast<uint32_t>(static_cast<uint16_t>(word(at + 4))) << 16)
                         : word(at + 2);
        }
        starts.push_back(at);
        offsets.push_back(offset);
        at += static_cast<std::size_t>(row->length);
    }
    starts.push_back(at);
    std::vector<int> targets;
    for (std::size_t k = 0; k < offsets.size(); ++k) {
        if (offsets[k] == INT64_MIN) {
            targets.push_back(0);
            continue;
        }
        int found = -1;
        for (std::size_t j = 0; j < starts.size(); ++j) {
            if (static_cast<int64_t>(starts[j]) == static_cast<int64_t>(starts[k]) + offsets[k])
                found = static_cast<int>(j + 1);
        }
        targets.push_back(found);
    }
    return targets;
}

// The jumpDest(0) of every command, 0 for those without a jump: what jumpTargetsInBytes should
// find in the saved stream.
inline std::vector<int> jumpTargetsInList(const BGLCommandList& list) {
    std::vector<int> targets;
    for (const auto& c : list) {
        const BGLCommandDictEntry& row = rowOf(*c);
        targets.push_back(row.numParam > 0 && row.isJump[0] ? c->jumpDest(0) : 0);
    }
    return targets;
}

}  // namespace edittest

namespace edittest {

// A copy of a list whose commands are copies too.
inline std::shared_ptr<BGLCommandList> deepCopy(const BGLCommandList& list) {
    auto copy = std::make_shared<BGLCommandList>();
    for (const auto& c : list)
        copy->Add(std::make_shared<BGLCommand>(*c));
    return copy;
}

// Runs an edit and gives the number of the error it raised, 0 for none.
template <class Edit>
int errorOf(Edit&& edit) {
    try {
        edit();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

// A small deterministic generator, so that failing cases can be replayed.
class Dice {
  public:
    explicit Dice(uint32_t seed) : state_(seed * 2654435761u + 1) {}
    int below(int n) {
        state_ = state_ * 1664525u + 1013904223u;
        return static_cast<int>((state_ >> 8) % static_cast<uint32_t>(n));
    }

  private:
    uint32_t state_;
};

// Points every jump of the list somewhere between 0 and Count + 1 (several slots of
// BGL_ANIMATE too), so that repairs of jumps into, onto and behind edited places are all seen.
inline void scatterJumps(BGLCommandList& list, Dice& dice) {
    for (const auto& c : list) {
        const BGLCommandDictEntry& row = rowOf(*c);
        for (int i = 0; i < row.numParam; ++i) {
            if (row.isJump[static_cast<std::size_t>(i)])
                c->jumpDest(static_cast<int16_t>(i), dice.below(list.Count() + 2));
        }
    }
}

// A model without sections of its own but with lists, filled by the tests.
inline std::shared_ptr<MDLObject> modelWith(const BGLCommandList& commands,
                                            const std::string& moreSections = "") {
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(bareModel(moreSections));
    for (const auto& c : commands)
        model->BGLCommandList()->Add(c);
    return model;
}

}  // namespace edittest
