#include "Tool.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace tool {

namespace {

struct ScanOptions {
    std::string file;
    std::string extract;
    bool json = false;
};

void scan(const ScanOptions& o) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(o.file, code)) {
        throw ToolError("cannot open '" + o.file + "': no such file");
    }
    velmora::BGLObject bgl;
    if (!bgl.isXMLBGL(o.file)) throw ToolError("'" + o.file + "' is not an XML-style BGL file");
    bgl.readXMLBGL(o.file);
    const auto models = bgl.ModelList();
    if (!o.extract.empty() && !std::filesystem::is_directory(o.extract, code)) {
        throw ToolError("cannot extract to '" + o.extract + "': no such folder");
    }

    nlohmann::json out;
    out["file"] = o.file;
    out["models"] = nlohmann::json::array();
    int index = 0;
    for (const auto& model : *models) {
        ++index;
        nlohmann::json entry{{"index", index},
                             {"size", model->getRIFFSectionSize(0) + 8},
                             {"vertices", model->VertexList()->Count()},
                             {"materials", model->MaterialList()->Count()},
                             {"textures", model->TextureList()->Count()},
                             {"commands", model->BGLCommandList()->Count()}};
        if (!o.extract.empty()) {
            char name[32];
            std::snprintf(name, sizeof name, "model_%03d.mdl", index);
            const std::string path = (std::filesystem::path(o.extract) / name).string();
            model->saveMDL(path);
            entry["extracted"] = path;
        }
        out["models"].push_back(entry);
        showProgress("models", index, models->Count());
    }

    if (o.json) {
        std::cout << out.dump(2) << "\n";
        return;
    }
    std::cout << o.file << ": " << models->Count() << " model(s)\n";
    for (const auto& entry : out["models"]) {
        std::cout << "  " << entry["index"] << "  " << entry["size"] << " bytes, "
                  << entry["vertices"] << " vertices, " << entry["materials"] << " materials, "
                  << entry["textures"] << " textures, " << entry["commands"] << " commands";
        if (entry.contains("extracted")) {
            std::cout << " -> " << entry["extracted"].get<std::string>();
        }
        std::cout << "\n";
    }
}

}  // namespace

void addScanCommand(CLI::App& app) {
    auto* command = app.add_subcommand("scan", "List the models of a compiled XML-style BGL file");
    auto o = std::make_shared<ScanOptions>();
    command->add_option("FILE", o->file, "Compiled scenery file (.bgl)")->required();
    command->add_option("--extract", o->extract,
                        "Save each model as its own MDL file in this folder");
    command->add_flag("--json", o->json, "Print JSON for scripts");
    command->callback([o] { scan(*o); });
}

}  // namespace tool
