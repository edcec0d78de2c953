#include "Batch.h"
#include "ModelReport.h"

#include <sstream>

namespace tool {

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
