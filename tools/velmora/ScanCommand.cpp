#include "Rendering.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace tool {

namespace {

struct ScanOptions {
    std::string file;
    std::string extract;
    std::string thumbnails;
    bool json = false;
    RenderOptions render;
};

void scan(const ScanOptions& o) {
    checkInputFile(o.file);
    RenderSettings settings;
    if (!o.thumbnails.empty()) settings = checkRenderSettings(o.render);
    if (!o.extract.empty()) prepareOutputFolder(o.extract);
    if (!o.thumbnails.empty()) prepareOutputFolder(o.thumbnails);
    velmora::BGLObject bgl;
    if (!bgl.isXMLBGL(o.file)) {
        throw ToolError(o.file,
                        "is not an XML-style compiled scenery file (it doesn't start with "
                        "the bytes 01 02)");
    }
    try {
        bgl.readXMLBGL(o.file);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, o.file, "the file is damaged");
    }
    const auto models = bgl.ModelList();

    json out{{"format", kJsonFormat}, {"file", o.file}, {"models", json::array()}};
    int index = 0;
    for (const auto& model : *models) {
        ++index;
        json entry{{"index", index},
                   {"size", model->getRIFFSectionSize(0) + 8},
                   {"vertices", model->VertexList()->Count()},
                   {"materials", model->MaterialList()->Count()},
                   {"textures", model->TextureList()->Count()},
                   {"commands", model->BGLCommandList()->Count()}};
        putModelText(entry, "isft", model->getISFT());
        if (!o.extract.empty()) {
            char name[32];
            std::snprintf(name, sizeof name, "model_%03d.mdl", index);
            const std::string path = (std::filesystem::path(o.extract) / name).string();
            Output(path, Output::Stream::Refused).write([&](const std::string& temporary) {
                model->saveMDL(temporary);
            });
            entry["extracted"] = path;
        }
        if (!o.thumbnails.empty()) {
            char name[32];
            std::snprintf(name, sizeof name, "model_%03d.png", index);
            const std::string path = (std::filesystem::path(o.thumbnails) / name).string();
            Picture picture;
            try {
                picture = renderModel(*model, settings);
            } catch (const velmora::Error& e) {
                throw fromLibrary(e, o.file);
            }
            Output(path, Output::Stream::Refused).write([&](const std::string& temporary) {
                velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, temporary);
            });
            entry["thumbnail"] = path;
            entry["thumbnailPixels"] = picture.pixelsDrawn;
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
        if (entry.contains("thumbnail")) {
            std::cout << ", picture " << entry["thumbnail"].get<std::string>();
            if (entry["thumbnailPixels"] == 0) std::cout << " (nothing drawn)";
        }
        std::cout << "\n";
    }
}

}  // namespace

void addScanCommand(CLI::App& app) {
    auto* command = addCommand(app, "scan", "List the models of a compiled XML-style BGL file",
                               "velmora scan FILE.bgl [--extract DIR] [--thumbnails DIR] [--json]");
    auto o = std::make_shared<ScanOptions>();
    command->add_option("FILE", o->file, "Compiled scenery file (.bgl)")->required();
    command->add_option("--extract", o->extract,
                        "Save each model as its own MDL file in this folder (made when missing)");
    command->add_option("--thumbnails", o->thumbnails,
                        "Save a picture of each model in this folder (made when missing)");
    command->add_flag("--json", o->json, "Print JSON for scripts (see docs/json.md)");
    o->render.size = "320x240";
    addRenderOptions(*command, o->render, false);
    command->callback([o] { scan(*o); });
}

}  // namespace tool
