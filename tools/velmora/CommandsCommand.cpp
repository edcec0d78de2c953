#include "Batch.h"
#include "ModelReport.h"

#include <sstream>

namespace tool {

namespace {

// A parameter as a number where its text is one, with the text beside it where JSON writes the
// number otherwise ("1E+10"); a text that is no number as it is.
json parameterJson(const std::string& text) {
    const json number = jsonNumber(text);
    if (number.is_null()) {
        json param;
        putModelText(param, "text", text);
        return param.size() == 1 ? param["text"] : param;
    }
    if (number.dump() == text) return number;
    return {{"value", number}, {"text", text}};
}

}  // namespace

json commandsReport(const std::string& path, const velmora::BGLCommandList& list) {
    json commands = json::array();
    int32_t position = 0;
    for (const auto& command : list) {
        ++position;
        const velmora::BGLCommandDictEntry* row =
            velmora::BGLOpcodeDictionary::row(command->opcode());
        json entry{{"position", position},
                   {"opcode", command->opcode()},
                   {"name", velmora::BGLOpcodeDictionary::nameOf(command->opcode())}};
        json params = json::array();
        json jumps = json::array();
        for (int16_t i = 0; row != nullptr && i < row->numParam; ++i)
            params.push_back(parameterJson(command->param(i)));
        for (int16_t i = 0; row != nullptr && i < row->numParam; ++i) {
            if (row->isJump[static_cast<std::size_t>(i)]) {
                jumps.push_back({{"param", i}, {"target", command->jumpDest(i)}});
            }
        }
        entry["params"] = params;
        entry["jumps"] = jumps;
        if (command->parent() != 0) entry["list"] = command->parent();
        commands.push_back(entry);
    }
    return {{"format", kJsonFormat}, {"file", path}, {"commands", commands}};
}

std::string commandsListing(const velmora::BGLCommandList& list) {
    std::ostringstream out;
    int32_t position = 0;
    for (const auto& command : list) {
        ++position;
        const velmora::BGLCommandDictEntry* row =
            velmora::BGLOpcodeDictionary::row(command->opcode());
        out << position << "  " << velmora::BGLOpcodeDictionary::nameOf(command->opcode());
        const int16_t count = row != nullptr ? row->numParam : 0;
        for (int16_t i = 0; i < count; ++i) {
            out << (i == 0 ? " " : ", ") << modelText(command->param(i));
            if (row->isJump[static_cast<std::size_t>(i)]) out << " -> " << command->jumpDest(i);
        }
        if (command->parent() != 0) out << "  (list " << command->parent() << ")";
        out << "\n";
    }
    return out.str();
}

namespace {

FileResult commandsOf(const BatchInput& input, bool asJson) {
    FileResult result;
    const auto model = loadModel(input.path);
    model->BGLCommandList()->processParent();
    if (asJson) {
        result.records = {commandsReport(input.path, *model->BGLCommandList())};
    } else {
        result.text = commandsListing(*model->BGLCommandList());
    }
    result.models = 1;
    return result;
}

}  // namespace

void addCommandsCommand(CLI::App& app) {
    auto* command = addCommand(app, "commands", "List a model's decoded command stream",
                               "velmora commands MODEL.mdl [--json]");
    auto options = std::make_shared<BatchOptions>();
    auto asJson = std::make_shared<bool>(false);
    options->inputs.resize(1);
    command->add_option("MODEL", options->inputs[0], "Model file (.mdl)")->required();
    command->add_flag("--json", *asJson, "Print a JSON line for scripts (see docs/json.md)");
    command->callback([options, asJson] {
        // One model, never a folder of them.
        checkInputFile(options->inputs[0]);
        runFiles("commands", *options, *asJson, {".mdl"},
                 [asJson](const BatchInput& input) { return commandsOf(input, *asJson); });
    });
}

}  // namespace tool
