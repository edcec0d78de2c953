#include "Rendering.h"

#include <cctype>
#include <iostream>

namespace tool {

namespace {

struct GltfOptions {
    std::string model;
    std::string output;
    RenderOptions scenario;
};

bool givesScenario(const RenderOptions& o) {
    return o.day != 0 || !o.season.empty() || o.night || !o.set.empty();
}

void exportGltf(const GltfOptions& o) {
    const RenderSettings settings = checkRenderSettings(o.scenario);
    std::string lower = o.output;
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const bool binary = lower.size() > 4 && lower.compare(lower.size() - 4, 4, ".glb") == 0;
    const bool text = lower.size() > 5 && lower.compare(lower.size() - 5, 5, ".gltf") == 0;
    // A .gltf comes with its .bin and images: more than one file, so no standard output.
    const Output out(o.output, text ? Output::Stream::Refused : Output::Stream::Binary,
                     "out.glb");
    if (!binary && !text && !out.toStandardOutput()) {
        throw UsageError(
            "give -o a name ending in .glb (one file) or .gltf (with .bin and images "
            "beside it), or - for a .glb on standard output");
    }
    const auto loaded = loadModel(o.model);
    const std::optional<velmora::Scenario> scenario =
        givesScenario(o.scenario) ? std::optional(settings.scenario) : std::nullopt;
    velmora::GLTFExport summary;
    const auto write = [&](const std::string& path) {
        summary = loaded->exportGLTF(path, o.scenario.textures, scenario);
    };
    try {
        if (out.toStandardOutput()) {
            out.write(write);
        } else {
            // The library writes each file beside its target and moves it into place whole.
            write(o.output);
        }
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, o.output);
    }
    for (const std::string& warning : summary.warnings)
        std::cerr << "velmora export-gltf: warning: " << warning << "\n";
    (out.toStandardOutput() ? std::cerr : std::cout)
        << "wrote glTF " << (out.toStandardOutput() ? "to standard output" : o.output) << ": "
        << summary.triangles << " triangles in " << summary.nodes << " node(s), " << summary.images
        << " image(s), " << summary.lights << " light(s)\n";
}

}  // namespace

void addExportCommands(CLI::App& app) {
    {
        auto* command = addCommand(
            app, "export-gltf", "Write a model as glTF 2.0 (.glb, or .gltf with files beside it)",
            "velmora export-gltf MODEL.mdl -o OUT.glb [--textures DIR] [--day N] [--set "
            "VAR=VALUE]");
        auto o = std::make_shared<GltfOptions>();
        command->add_option("MODEL", o->model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", o->output, "glTF file to write (.glb or .gltf)")
            ->required();
        command->add_option("--textures", o->scenario.textures,
                            "Folder of the texture images, matched by name without regard to "
                            "case");
        command->add_option("--day", o->scenario.day,
                            "Export what shows on this day of the year (variable 906)");
        command->add_option("--season", o->scenario.season,
                            "Export what shows in the middle of a season");
        command->add_flag("--night", o->scenario.night, "Export what shows at night");
        command->add_option("--set", o->scenario.set,
                            "Set a scenery variable: VAR=VALUE (repeatable); with any of these "
                            "the scenario walk decides what is written");
        command->callback([o] { exportGltf(*o); });
    }
    {
        auto* command = addCommand(app, "export-asm", "Write a model as a BGLC-style listing",
                                   "velmora export-asm MODEL.mdl -o OUT.asm");
        auto model = std::make_shared<std::string>();
        auto output = std::make_shared<std::string>();
        command->add_option("MODEL", *model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", *output, "Listing to write (.asm, - for stdout)")
            ->required();
        command->callback([model, output] {
            const Output out(*output, Output::Stream::Text);
            const auto loaded = loadModel(*model);
            out.write([&](const std::string& path) { loaded->exportASM(path); });
            if (!out.toStandardOutput()) std::cout << "wrote listing " << *output << "\n";
        });
    }
    {
        auto* command =
            addCommand(app, "export-flt", "Write a model as an OpenFlight database (16.0)",
                       "velmora export-flt MODEL.mdl -o OUT.flt [--tex-format EXT] [--no-attr]");
        auto model = std::make_shared<std::string>();
        auto output = std::make_shared<std::string>();
        auto texFormat = std::make_shared<std::string>("bmp");
        auto noAttr = std::make_shared<bool>(false);
        command->add_option("MODEL", *model, "Model file (.mdl)")->required();
        command->add_option("-o,--output", *output, "Database to write (.flt)")->required();
        command
            ->add_option("--tex-format", *texFormat,
                         "Extension that replaces .bmp in the texture names")
            ->capture_default_str();
        command->add_flag("--no-attr", *noAttr, "Write no texture attribute files");
        command->callback([model, output, texFormat, noAttr] {
            // The attribute files go beside the database: more than one file, no stdout.
            const Output out(*output, Output::Stream::Refused);
            const auto loaded = loadModel(*model);
            out.write(
                [&](const std::string& path) { loaded->exportFLT(path, *texFormat, !*noAttr); });
            std::cout << "wrote OpenFlight database " << *output;
            if (!*noAttr && loaded->TextureList()->Count() > 0) {
                std::cout << " and " << loaded->TextureList()->Count()
                          << " texture attribute file(s) beside it";
            }
            std::cout << "\n";
        });
    }
}

}  // namespace tool
