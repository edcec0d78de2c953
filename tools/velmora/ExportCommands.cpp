#include "Batch.h"
#include "Rendering.h"

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
    Output::Stream stream = Output::Stream::Text;
    std::string streamName = "out";
    // Writes one model to `target`, checked already; gives what was written, for people.
    std::function<std::string(velmora::MDLObject&, const Output&, FileResult&)> write;
};

void run(const ExportRun& e) {
    refuseJsonBesideOutput(e.json, e.output);
    const bool batch = isBatch(e.batch.inputs);
    if (batch) {
        if (e.output == "-") throw UsageError("several models can't go to standard output");
        prepareOutputFolder(e.output);
    }
    runFiles(e.command, e.batch, e.json, {".mdl"}, [&](const BatchInput& input) {
        const Output out =
            batch ? Output(outputFor(e.output, input, e.extension), Output::Stream::Refused)
                  : Output(e.output, e.stream, e.streamName);
        FileResult result;
        const auto model = loadModel(input.path);
        result.text = e.write(*model, out, result);
        result.textToStandardError = out.toStandardOutput();
        result.models = 1;
        result.bytes = model->getRIFFSectionSize(0) + 8;
        result.records = {{{"file", input.path}, {"output", out.target()}, {"done", result.text}}};
        return result;
    });
}

std::shared_ptr<ExportRun> addExport(CLI::App& app, const std::string& name,
                                     const std::string& description, const std::string& synopsis,
                                     const char* outputHelp, const std::string& extension) {
    auto e = std::make_shared<ExportRun>();
    e->command = name;
    e->extension = extension;
    CLI::App* command = addCommand(app, name, description, synopsis);
    command->add_option("MODEL", e->batch.inputs, "Model files (.mdl) or folders of them")
        ->required();
    command->add_option("-o,--output", e->output, outputHelp)->required();
    command->add_flag("--json", e->json, "Print a JSON line a model (see docs/json.md)");
    addBatchOptions(*command, e->batch);
    command->callback([e] { run(*e); });
    return e;
}

void addListingExport(CLI::App& app) {
    auto e = addExport(app, "export-asm", "Write a model as a BGLC-style listing",
                       "velmora export-asm MODEL.mdl... -o OUT.asm|DIR",
                       "Listing to write (.asm, - for stdout), or a folder for several", ".asm");
    e->write = [](velmora::MDLObject& model, const Output& out, FileResult&) {
        out.write([&](const std::string& path) { model.exportASM(path); });
        return "wrote listing " + out.target();
    };
}

void addOpenFlightExport(CLI::App& app) {
    auto e =
        addExport(app, "export-flt", "Write a model as an OpenFlight database (16.0)",
                  "velmora export-flt MODEL.mdl... -o OUT.flt|DIR [--tex-format EXT] [--no-attr]",
                  "Database to write (.flt), or a folder for several", ".flt");
    // The attribute files go beside the database: more than one file, no stdout.
    e->stream = Output::Stream::Refused;
    auto texFormat = std::make_shared<std::string>("bmp");
    auto noAttr = std::make_shared<bool>(false);
    CLI::App* command = app.get_subcommand("export-flt");
    command
        ->add_option("--tex-format", *texFormat,
                     "Extension that replaces .bmp in the texture names")
        ->capture_default_str();
    command->add_flag("--no-attr", *noAttr, "Write no texture attribute files");
    e->write = [texFormat, noAttr](velmora::MDLObject& model, const Output& out, FileResult&) {
        out.write([&](const std::string& path) { model.exportFLT(path, *texFormat, !*noAttr); });
        std::string said = "wrote OpenFlight database " + out.target();
        if (!*noAttr && model.TextureList()->Count() > 0) {
            said += " and " + std::to_string(model.TextureList()->Count()) +
                    " texture attribute file(s) beside it";
        }
        return said;
    };
}

std::string writeGLTF(velmora::MDLObject& model, const Output& out, const RenderOptions& options,
                      bool doubleSided, FileResult& result) {
    const std::string lower = lowercase(out.target());
    if (!out.toStandardOutput() && !lower.ends_with(".glb") && !lower.ends_with(".gltf")) {
        throw UsageError(
            "give -o a name ending in .glb (one file) or .gltf (with .bin and images beside it), "
            "or - for a .glb on standard output");
    }
    const velmora::GLTFOptions gltf{options.textures, scenarioOf(options), doubleSided};
    velmora::GLTFExport summary;
    const auto write = [&](const std::string& path) { summary = model.exportGLTF(path, gltf); };
    try {
        // The library writes each file beside its target and moves it in whole.
        out.toStandardOutput() ? out.write(write) : write(out.target());
    } catch (const velmora::Error& error) {
        throw fromLibrary(error, out.target());
    }
    result.warnings = summary.warnings;
    return "wrote glTF " + out.said() + ": " + std::to_string(summary.triangles) +
           " triangles in " + std::to_string(summary.nodes) + " node(s), " +
           std::to_string(summary.images) + " image(s), " + std::to_string(summary.lights) +
           " light(s)";
}

void addGLTFExport(CLI::App& app) {
    auto e = addExport(app, "export-gltf",
                       "Write a model as glTF 2.0 (.glb, or .gltf with files beside it)",
                       "velmora export-gltf MODEL.mdl... -o OUT.glb|DIR [--textures DIR] "
                       "[--day N] [--set VAR=VALUE] [--double-sided]",
                       "glTF file to write (.glb or .gltf), or a folder for several", ".glb");
    e->stream = Output::Stream::Binary;
    e->streamName = "out.glb";
    auto options = std::make_shared<RenderOptions>();
    auto doubleSided = std::make_shared<bool>(false);
    CLI::App* command = app.get_subcommand("export-gltf");
    addScenarioOptions(*command, *options);
    command->add_flag("--double-sided", *doubleSided,
                      "Write every material double-sided, for models whose faces point both ways");
    e->write = [options, doubleSided](velmora::MDLObject& model, const Output& out,
                                      FileResult& result) {
        return writeGLTF(model, out, *options, *doubleSided, result);
    };
}

}  // namespace

void addExportCommands(CLI::App& app) {
    addListingExport(app);
    addOpenFlightExport(app);
    addGLTFExport(app);
}

}  // namespace tool
