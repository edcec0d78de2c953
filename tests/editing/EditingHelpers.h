#pragma once

#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <initializer_list>
#include <memory>
#include <string>

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

// "IFIN1>4 BGL_CALL_32>5 BGL_END": names and the destination of each jump parameter; with
// `full`, every parameter text and the parent too.
inline std::string shape(const BGLCommandList& list, bool full = false) {
    std::string out;
    for (const auto& c : list) {
        const BGLCommandDictEntry row = BGLOpcodeDictionary::row(c->opcode())
                                            ? *BGLOpcodeDictionary::row(c->opcode())
                                            : BGLCommandDictEntry{};
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
    for (int i = 0; i < BGLOpcodeDictionary::row(c->opcode())->numParam; ++i)
        out += (i ? "|" : "") + c->param(static_cast<int16_t>(i));
    return out;
}

// A model of a header and a box and the given sections, holding copies of the commands.
inline std::shared_ptr<MDLObject> modelWith(const BGLCommandList& commands,
                                            const std::string& moreSections = "") {
    using namespace testbytes;
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(riff(section("MDLH", std::string(36, '\1')) +
                             section("BBOX", std::string(24, '\0')) + moreSections));
    for (const auto& c : commands)
        model->BGLCommandList()->Add(std::make_shared<BGLCommand>(*c));
    return model;
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
