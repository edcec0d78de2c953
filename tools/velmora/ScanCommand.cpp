#include "Batch.h"
#include "ModelReport.h"
#include "Rendering.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace tool {

namespace {

namespace stdfs = std::filesystem;

struct ScanOptions {
    BatchOptions batch;
    std::string extract;
    std::string thumbnails;
    bool json = false;
    RenderOptions render;
};

std::string numbered(int index, const char* extension) {
    char name[32];
    std::snprintf(name, sizeof name, "model_%03d%s", index, extension);
    return name;
}

// Scans one compiled file into `entries`; `into` names where extracts and pictures go ("" for
// the options' folders themselves, and the progress of its models shown).
void scanFile(const std::string& file, const ScanOptions& o, const RenderSettings& settings,
              const std::string& into, std::vector<json>& entries,
              std::vector<std::string>& notes) {
    checkInputFile(file);
    velmora::BGLObject bgl;
    if (!bgl.isXMLBGL(file)) {
        throw ToolError(file,
                        "is not an XML-style compiled scenery file (it doesn't start with "
                        "the bytes 01 02)");
    }
    try {
        bgl.readXMLBGL(file);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, file, "the file is damaged");
    }
    const auto models = bgl.ModelList();
    int index = 0;
    for (const auto& model : *models) {
        ++index;
        json entry = compiledModelReport(file, index, *model);
        if (!o.extract.empty()) {
            const std::string folder =
                into.empty() ? o.extract : textOf(pathOf(o.extract) / pathOf(into));
            prepareOutputFolder(folder);
            const std::string path = textOf(pathOf(folder) / numbered(index, ".mdl"));
            Output(path, Output::Stream::Refused).write([&](const std::string& temporary) {
                model->saveMDL(temporary);
            });
            entry["extracted"] = path;
        }
        if (!o.thumbnails.empty()) {
            const std::string folder =
                into.empty() ? o.thumbnails : textOf(pathOf(o.thumbnails) / pathOf(into));
            prepareOutputFolder(folder);
            const std::string path = textOf(pathOf(folder) / numbered(index, ".png"));
            Picture picture;
            try {
                picture = renderModel(*model, settings);
            } catch (const velmora::Error& e) {
                throw fromLibrary(e, file);
            }
            Output(path, Output::Stream::Refused).write([&](const std::string& temporary) {
                velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, temporary);
            });
            entry["thumbnail"] = path;
            entry["thumbnailPixels"] = picture.pixelsDrawn;
            if (!picture.drawnWith.empty()) entry["thumbnailDrawnWith"] = picture.drawnWith;
            const std::vector<std::string> said =
                pictureNotes(picture, file + " model " + std::to_string(index));
            notes.insert(notes.end(), said.begin(), said.end());
        }
        entries.push_back(entry);
        if (into.empty()) showProgress("models", index, models->Count());
    }
}

void printEntries(std::ostream& out, const std::string& file, const std::vector<json>& entries) {
    out << file << ": " << entries.size() << " model(s)\n";
    for (const auto& entry : entries) {
        out << "  " << entry["model"] << "  " << entry["size"] << " bytes, " << entry["vertices"]
            << " vertices, " << entry["materials"] << " materials, " << entry["textures"]
            << " textures, " << entry["commands"] << " commands";
        if (!entry["guid"].is_null()) out << ", " << entry["guid"].get<std::string>();
        if (entry.contains("extracted")) out << " -> " << entry["extracted"].get<std::string>();
        if (entry.contains("thumbnail")) {
            out << ", picture " << entry["thumbnail"].get<std::string>();
            if (entry["thumbnailPixels"] == 0) out << " (nothing drawn)";
        }
        out << "\n";
    }
}

FileResult scanOf(const BatchInput& input, const ScanOptions& o, const RenderSettings& settings,
                  bool alone) {
    FileResult result;
    result.bytes = static_cast<int64_t>(stdfs::file_size(pathOf(input.path)));
    // In a batch each compiled file's models go to a folder of their own, named after the file.
    std::vector<json> entries;
    scanFile(input.path, o, settings,
             alone ? "" : textOf(pathOf(input.relative).replace_extension("")), entries,
             result.notes);
    result.models = static_cast<int64_t>(entries.size());
    result.records = entries;
    std::ostringstream text;
    printEntries(text, input.path, entries);
    result.text = text.str();
    if (!alone) result.text.pop_back();
    return result;
}

void scan(const ScanOptions& o) {
    RenderSettings settings;
    if (!o.thumbnails.empty()) settings = checkRenderSettings(o.render);
    if (!o.extract.empty()) prepareOutputFolder(o.extract);
    if (!o.thumbnails.empty()) prepareOutputFolder(o.thumbnails);
    const bool alone = !isBatch(o.batch.inputs);
    runFiles("scan", o.batch, o.json, {".bgl"},
             [&](const BatchInput& input) { return scanOf(input, o, settings, alone); });
}

}  // namespace

void addScanCommand(CLI::App& app) {
    auto* command = addCommand(
        app, "scan", "List the models of compiled XML-style BGL files",
        "velmora scan FILE.bgl... [--extract DIR] [--thumbnails DIR] [--json] [--jobs N]");
    auto o = std::make_shared<ScanOptions>();
    command->add_option("FILE", o->batch.inputs, "Compiled scenery files (.bgl) or folders of them")
        ->required();
    command->add_option("--extract", o->extract,
                        "Save each model as its own MDL file in this folder (made when missing)");
    command->add_option("--thumbnails", o->thumbnails,
                        "Save a picture of each model in this folder (made when missing)");
    command->add_flag("--json", o->json,
                      "Print a JSON line a model for scripts (see docs/json.md)");
    addBatchOptions(*command, o->batch);
    o->render.size = "320x240";
    addRenderOptions(*command, o->render, false);
    command->callback([o] { scan(*o); });
}

}  // namespace tool
