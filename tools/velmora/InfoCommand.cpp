#include "Batch.h"
#include "ModelReport.h"

#include <sstream>

namespace tool {

namespace {

struct InfoOptions {
    BatchOptions batch;
    bool json = false;
};

FileResult infoOf(const BatchInput& input, bool asJson) {
    FileResult result;
    const auto model = loadModel(input.path);
    const json report = modelReport(input.path, *model);
    if (asJson) {
        result.records = {report};
    } else {
        std::ostringstream text;
        printReport(report, text);
        result.text = text.str();
    }
    result.models = 1;
    result.bytes = model->getRIFFSectionSize(0) + 8;
    return result;
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    auto* command = addCommand(app, "info", "Show a model's tables, guard, seasons and lights",
                               "velmora info MODEL.mdl... [--json] [--jobs N]");
    auto o = std::make_shared<InfoOptions>();
    command->add_option("MODEL", o->batch.inputs, "Model files (.mdl) or folders of them")
        ->required();
    command->add_flag("--json", o->json,
                      "Print a JSON line a model file for scripts (see docs/json.md)");
    addBatchOptions(*command, o->batch);
    command->callback([o] {
        runFiles("info", o->batch, o->json, {".mdl"},
                 [o](const BatchInput& input) { return infoOf(input, o->json); });
    });
}

}  // namespace tool
