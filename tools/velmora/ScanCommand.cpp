#include "Batch.h"
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

// "{7C8A1E2B-...}" from the 16 bytes of a model table, as a GUID is written: the first three
// fields little-endian.
std::string guidText(const std::string& bytes) {
    if (bytes.size() != 16 || bytes == std::string(16, '\0')) return "";
    static const char* digits = "0123456789ABCDEF";
    const int order[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string out = "{";
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        const auto byte = static_cast<unsigned char>(bytes[static_cast<std::size_t>(order[i])]);
        out.push_back(digits[byte >> 4]);
        out.push_back(digits[byte & 15]);
    }
    return out + "}";
}

std::string numbered(int index, const char* extension) {
    char name[32];
    std::snprintf(name, sizeof name, "model_%03d%s", index, extension);
    return name;
}

// Scans one compiled file into `entries`; `into` names where extracts and pictures go ("" for
// the options' folders themselves, and the progress of its models shown).
void scanFile(const std::string& file, const ScanOptions& o, const RenderSettings& settings,
              const std::string& into, std::vector<json>& entries) {
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
        json entry{{"file", file},
                   {"index", index},
                   {"size", model->getRIFFSectionSize(0) + 8},
                   {"vertices", model->VertexList()->Count()},
                   {"materials", model->MaterialList()->Count()},
                   {"textures", model->TextureList()->Count()},
                   {"commands", model->BGLCommandList()->Count()}};
        const std::string guid = guidText(model->sceneryGuid());
        entry["guid"] = guid.empty() ? json(nullptr) : json(guid);
        putModelText(entry, "isft", model->getISFT());
        const velmora::GuardAnalysis guard(*model->BGLCommandList());
        entry["guard"] = guard.guardedCall() == 0 ? json(nullptr) : json(guard.formula());
        if (!o.extract.empty()) {
            const std::string folder =
                into.empty() ? o.extract : (stdfs::path(o.extract) / into).string();
            prepareOutputFolder(folder);
            const std::string path = (stdfs::path(folder) / numbered(index, ".mdl")).string();
            Output(path, Output::Stream::Refused).write([&](const std::string& temporary) {
                model->saveMDL(temporary);
            });
            entry["extracted"] = path;
        }
        if (!o.thumbnails.empty()) {
            const std::string folder =
                into.empty() ? o.thumbnails : (stdfs::path(o.thumbnails) / into).string();
            prepareOutputFolder(folder);
            const std::string path = (stdfs::path(folder) / numbered(index, ".png")).string();
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
        }
        entries.push_back(entry);
        if (into.empty()) showProgress("models", index, models->Count());
    }
}

void printEntries(std::ostream& out, const std::string& file, const std::vector<json>& entries) {
    out << file << ": " << entries.size() << " model(s)\n";
    for (const auto& entry : entries) {
        out << "  " << entry["index"] << "  " << entry["size"] << " bytes, " << entry["vertices"]
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

void scan(const ScanOptions& o) {
    RenderSettings settings;
    if (!o.thumbnails.empty()) settings = checkRenderSettings(o.render);
    if (!o.extract.empty()) prepareOutputFolder(o.extract);
    if (!o.thumbnails.empty()) prepareOutputFolder(o.thumbnails);
    if (!isBatch(o.batch.inputs)) {
        const std::string& file = o.batch.inputs.front();
        std::vector<json> entries;
        scanFile(file, o, settings, "", entries);
        if (o.json) {
            std::cout << json{{"format", kJsonFormat}, {"file", file}, {"models", entries}}.dump(2)
                      << "\n";
        } else {
            printEntries(std::cout, file, entries);
        }
        return;
    }
    const std::vector<BatchInput> inputs = gatherInputs(o.batch, {".bgl"});
    const int status = runBatch("scan", inputs, o.batch, o.json, [&](const BatchInput& input) {
        FileResult result;
        result.bytes = static_cast<int64_t>(stdfs::file_size(input.path));
        // Each compiled file's models go to a folder of their own, named after the file.
        std::vector<json> entries;
        scanFile(input.path, o, settings,
                 stdfs::path(input.relative).replace_extension("").string(), entries);
        result.models = static_cast<int64_t>(entries.size());
        if (o.json) {
            for (json& entry : entries) {
                entry["model"] = entry["index"];
                entry.erase("index");
                result.lines.push_back(entry.dump());
            }
        } else {
            std::ostringstream text;
            printEntries(text, input.path, entries);
            std::string lines = text.str();
            lines.pop_back();
            result.lines.push_back(lines);
        }
        return result;
    });
    if (status != 0) throw ExitStatus{status};
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
                      "Print JSON for scripts; JSON Lines for several files (see docs/json.md)");
    addBatchOptions(*command, o->batch);
    o->render.size = "320x240";
    addRenderOptions(*command, o->render, false);
    command->callback([o] { scan(*o); });
}

}  // namespace tool
