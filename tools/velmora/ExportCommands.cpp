#include "Batch.h"
#include "Rendering.h"

#include <cctype>
#include <iostream>

namespace tool {

namespace {

// An export of models: one file to -o, or many into the folder -o names, each under its path
// from the folder it was found in with `extension` in place of ".mdl".
struct ExportRun {
    std::string command;
    std::string extension;
    BatchOptions batch;
    std::string output;
    bool json = false;
    // Writes one model to `target`, checked already; gives what was written, for people.
    std::function<std::string(velmora::MDLObject&, const Output& target)> write;
    Output::Stream stream = Output::Stream::Text;
    std::string streamName = "out";
};

void run(const ExportRun& e) {
    if (!isBatch(e.batch.inputs)) {
        const Output out(e.output, e.stream, e.streamName);
        const auto model = loadModel(e.batch.inputs.front());
        const std::string said = e.write(*model, out);
        (out.toStandardOutput() ? std::cerr : std::cout) << said << "\n";
        return;
    }
    if (e.output == "-") throw UsageError("several models can't go to standard output");
    prepareOutputFolder(e.output);
    const std::vector<BatchInput> inputs = gatherInputs(e.batch, {".mdl"});
    const int status = runBatch(e.command, inputs, e.batch, e.json, [&](const BatchInput& input) {
        FileResult result;
        const Output out(outputFor(e.output, input, e.extension), Output::Stream::Refused);
        const auto model = loadModel(input.path);
        const std::string said = e.write(*model, out);
        result.models = 1;
        result.bytes = model->getRIFFSectionSize(0) + 8;
        result.lines.push_back(
            e.json ? json{{"file", input.path}, {"output", out.target()}, {"done", said}}.dump()
                   : said);
        return result;
    });
    if (status != 0) throw ExitStatus{status};
}

void addInputs(CLI::App& command, ExportRun& e, const char* what) {
    command.add_option("MODEL", e.batch.inputs, "Model files (.mdl) or folders of them")
        ->required();
    command.add_option("-o,--output", e.output, what)->required();
    command.add_flag("--json", e.json, "With several models: a JSON line a model");
    addBatchOptions(command, e.batch);
}

bool givesScenario(const RenderOptions& o) {
    return o.day != 0 || !o.season.empty() || o.night || !o.set.empty();
}

}  // namespace

void addExportCommands(CLI::App& app) {
    {
        auto* command = addCommand(app, "export-asm", "Write a model as a BGLC-style listing",
                                   "velmora export-asm MODEL.mdl... -o OUT.asm|DIR");
        auto e = std::make_shared<ExportRun>();
        e->command = "export-asm";
        e->extension = ".asm";
        addInputs(*command, *e, "Listing to write (.asm, - for stdout), or a folder for several");
        e->write = [](velmora::MDLObject& model, const Output& out) {
            out.write([&](const std::string& path) { model.exportASM(path); });
            return "wrote listing " + out.target();
        };
        command->callback([e] { run(*e); });
    }
    {
        auto* command = addCommand(
            app, "export-flt", "Write a model as an OpenFlight database (16.0)",
            "velmora export-flt MODEL.mdl... -o OUT.flt|DIR [--tex-format EXT] [--no-attr]");
        auto e = std::make_shared<ExportRun>();
        auto texFormat = std::make_shared<std::string>("bmp");
        auto noAttr = std::make_shared<bool>(false);
        e->command = "export-flt";
        e->extension = ".flt";
        // The attribute files go beside the database: more than one file, no stdout.
        e->stream = Output::Stream::Refused;
        addInputs(*command, *e, "Database to write (.flt), or a folder for several");
        command
            ->add_option("--tex-format", *texFormat,
                         "Extension that replaces .bmp in the texture names")
            ->capture_default_str();
        command->add_flag("--no-attr", *noAttr, "Write no texture attribute files");
        e->write = [texFormat, noAttr](velmora::MDLObject& model, const Output& out) {
            out.write(
                [&](const std::string& path) { model.exportFLT(path, *texFormat, !*noAttr); });
            std::string said = "wrote OpenFlight database " + out.target();
            if (!*noAttr && model.TextureList()->Count() > 0) {
                said += " and " + std::to_string(model.TextureList()->Count()) +
                        " texture attribute file(s) beside it";
            }
            return said;
        };
        command->callback([e] { run(*e); });
    }
    {
        auto* command = addCommand(
            app, "export-gltf", "Write a model as glTF 2.0 (.glb, or .gltf with files beside it)",
            "velmora export-gltf MODEL.mdl... -o OUT.glb|DIR [--textures DIR] "
            "[--day N] [--set VAR=VALUE]");
        auto e = std::make_shared<ExportRun>();
        auto scenario = std::make_shared<RenderOptions>();
        e->command = "export-gltf";
        e->extension = ".glb";
        e->stream = Output::Stream::Binary;
        e->streamName = "out.glb";
        addInputs(*command, *e, "glTF file to write (.glb or .gltf), or a folder for several");
        command->add_option("--textures", scenario->textures,
                            "Folder of the texture images, matched by name without regard to "
                            "case");
        command->add_option("--day", scenario->day,
                            "Export what shows on this day of the year (variable 906)");
        command->add_option("--season", scenario->season,
                            "Export what shows in the middle of a season");
        command->add_flag("--night", scenario->night, "Export what shows at night");
        command->add_option("--set", scenario->set,
                            "Set a scenery variable: VAR=VALUE (repeatable); with any of these "
                            "the scenario walk decides what is written");
        e->write = [scenario](velmora::MDLObject& model, const Output& out) {
            const RenderSettings settings = checkRenderSettings(*scenario);
            const std::string lower = lowercase(out.target());
            if (!out.toStandardOutput() && !lower.ends_with(".glb") && !lower.ends_with(".gltf")) {
                throw UsageError(
                    "give -o a name ending in .glb (one file) or .gltf (with .bin and images "
                    "beside it), or - for a .glb on standard output");
            }
            const std::optional<velmora::Scenario> walked =
                givesScenario(*scenario) ? std::optional(settings.scenario) : std::nullopt;
            velmora::GLTFExport summary;
            const auto write = [&](const std::string& path) {
                summary = model.exportGLTF(path, scenario->textures, walked);
            };
            try {
                if (out.toStandardOutput()) {
                    out.write(write);
                } else {
                    // The library writes each file beside its target and moves it in whole.
                    write(out.target());
                }
            } catch (const velmora::Error& error) {
                throw fromLibrary(error, out.target());
            }
            for (const std::string& warning : summary.warnings)
                std::cerr << "velmora export-gltf: warning: " << warning << "\n";
            return "wrote glTF " + (out.toStandardOutput() ? "to standard output" : out.target()) +
                   ": " + std::to_string(summary.triangles) + " triangles in " +
                   std::to_string(summary.nodes) + " node(s), " + std::to_string(summary.images) +
                   " image(s), " + std::to_string(summary.lights) + " light(s)";
        };
        command->callback([e] { run(*e); });
    }
}

}  // namespace tool
