#include "ModelReport.h"

#include <iostream>

namespace tool {

void addInfoCommand(CLI::App& app) {
    auto* command = addCommand(app, "info", "Show a model's tables, guard, seasons and lights",
                               "velmora info MODEL.mdl [--json]");
    auto path = std::make_shared<std::string>();
    auto asJson = std::make_shared<bool>(false);
    command->add_option("MODEL", *path, "Model file (.mdl)")->required();
    command->add_flag("--json", *asJson, "Print JSON for scripts (see docs/json.md)");
    command->callback([path, asJson] {
        const auto model = loadModel(*path);
        const json report = modelReport(*path, *model);
        if (*asJson) {
            std::cout << report.dump(2) << "\n";
        } else {
            printReport(report);
        }
    });
}

}  // namespace tool
