#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

// Command lists and models for the editing tests.
namespace edittest {

using namespace velmora;
using bgltest::command;

inline std::shared_ptr<BGLCommandList> listOf(
    std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto list = std::make_shared<BGLCommandList>();
    for (const auto& c : commands)
        list->Add(c);
    return list;
}

inline const BGLCommandDictEntry& rowOf(const BGLCommand& c) {
    static const BGLCommandDictEntry none;
    const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(c.opcode());
    return row ? *row : none;
}

// "IFIN1>4 BGL_CALL_32>5 BGL_END": names and the destination of each jump parameter; with
// `full`, every parameter text and the parent too.
inline std::string shape(const BGLCommandList& list, bool full = false) {
    std::string out;
    for (const auto& c : list) {
        const BGLCommandDictEntry& row = rowOf(*c);
        out += (out.empty() ? "" : " ") + row.name;
        for (int i = 0; i < row.numParam; ++i) {
            const auto slot = static_cast<int16_t>(i);
            if (full) out += "|" + c->param(slot);
            if (row.isJump[static_cast<std::size_t>(i)])
                out += ">" + std::to_string(c->jumpDest(slot));
        }
        if (full) out += "^" + std::to_string(c->parent());
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

// A model of a header and a box and the given sections; its lists are filled by the tests.
inline std::shared_ptr<MDLObject> modelWith(const BGLCommandList& commands,
                                            const std::string& moreSections = "") {
    using namespace testbytes;
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(riff(section("MDLH", std::string(36, '\1')) +
                             section("BBOX", std::string(24, '\0')) + moreSections));
    for (const auto& c : commands)
        model->BGLCommandList()->Add(c);
    return model;
}

// For each command of a stream without lists: the 1-based index of the command on whose first
// byte its jump offset lands (Count + 1 for the end), -1 for none, 0 for a command without jump.
inline std::vector<int> jumpTargetsInBytes(const std::string& stream) {
    const auto word = [&](std::size_t at) {
        return static_cast<uint16_t>(static_cast<uint8_t>(stream[at]) |
                                     static_cast<uint8_t>(stream[at + 1]) << 8);
    };
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at + 2 <= stream.size();
         at += BGLOpcodeDictionary::row(word(at))->length)
        starts.push_back(at);
    starts.push_back(stream.size());
    std::vector<int> targets;
    for (std::size_t k = 0; k + 1 < starts.size(); ++k) {
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(word(starts[k]));
        if (row->numParam == 0 || !row->isJump[0]) {
            targets.push_back(0);
            continue;
        }
        const int64_t offset =
            row->paramType[0] == pLong
                ? static_cast<int32_t>(word(starts[k] + 2) | word(starts[k] + 4) << 16)
                : static_cast<int16_t>(word(starts[k] + 2));
        const auto found =
            std::find(starts.begin(), starts.end(), starts[k] + static_cast<std::size_t>(offset));
        targets.push_back(found == starts.end() ? -1
                                                : static_cast<int>(found - starts.begin()) + 1);
    }
    return targets;
}

// For the comparisons of the one-pass edits with their single steps.
inline std::shared_ptr<BGLCommandList> deepCopy(const BGLCommandList& list) {
    auto copy = std::make_shared<BGLCommandList>();
    for (const auto& c : list)
        copy->Add(std::make_shared<BGLCommand>(*c));
    return copy;
}

template <class Edit>
int errorOf(Edit&& edit) {
    try {
        edit();
    } catch (const Error& e) {
        return e.number();
    }
    return 0;
}

}  // namespace edittest
