#include "Batch.h"
#include "ModelReport.h"

#include <iostream>
#include <sstream>

namespace tool {

namespace {

struct InfoOptions {
    BatchOptions batch;
    bool json = false;
};

void info(const InfoOptions& o) {
    if (!isBatch(o.batch.inputs)) {
        const std::string& path = o.batch.inputs.front();
        const auto model = loadModel(path);
        const json report = modelReport(path, *model);
        if (o.json) {
            std::cout << report.dump(2) << "\n";
        } else {
            printReport(report, std::cout);
        }
        return;
    }
    const std::vector<BatchInput> inputs = gatherInputs(o.batch, {".mdl"});
    const int status = runBatch("info", inputs, o.batch, o.json, [&](const BatchInput& input) {
        FileResult result;
        const auto model = loadModel(input.path);
        const json report = modelReport(input.path, *model);
        result.models = 1;
        result.bytes = model->getRIFFSectionSize(0) + 8;
        if (o.json) {
            result.lines.push_back(report.dump());
        } else {
            std::ostringstream text;
            printReport(report, text);
            result.lines.push_back(text.str());
        }
        return result;
    });
    if (status != 0) throw ExitStatus{status};
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    auto* command = addCommand(app, "info", "Show a model's tables, guard, seasons and lights",
                               "velmora info MODEL.mdl... [--json] [--jobs N]");
    auto o = std::make_shared<InfoOptions>();
    command->add_option("MODEL", o->batch.inputs, "Model files (.mdl) or folders of them")
        ->required();
    command->add_flag("--json", o->json,
                      "Print JSON for scripts; JSON Lines for several files (see docs/json.md)");
    addBatchOptions(*command, o->batch);
    command->callback([o] { info(*o); });
}

}  // namespace tool
