#include "Tool.h"

#include <iostream>
#include <optional>

namespace tool {

namespace {

// The edit command's options as given; turned into the library's request once parsed.
struct EditOptions : EditTexts {
    std::string model;
    std::string output;
};

velmora::EditResult apply(velmora::MDLObject& model, const velmora::EditRequest& request,
                          const std::string& path) {
    try {
        return velmora::editModel(model, request);
    } catch (const velmora::EditRefused& refused) {
        throw editRefusal(refused, path);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, path);
    }
}

void edit(const EditOptions& o) {
    const velmora::EditRequest request = editRequestOf(o);
    // The target is checked before any work, so a bad one costs nothing.
    std::optional<Output> output;
    if (!o.output.empty()) output.emplace(o.output, Output::Stream::Binary);

    const auto model = loadModel(o.model);
    const velmora::EditResult result = apply(*model, request, o.model);
    // What is said is read back from the file written, where one is.
    std::vector<std::string> said = result.said();
    if (output) {
        output->write([&](const std::string& path) { model->saveMDL(path); },
                      [&](const std::string& path) { said = result.checkWritten(path); });
    }
    // Messages go to standard error when the model itself goes to standard output.
    std::ostream& say = output && output->toStandardOutput() ? std::cerr : std::cout;
    for (const auto& line : said)
        say << line << "\n";
    say << (output ? "saved " + output->said()
                   : std::string("nothing written: give -o OUT.mdl to save the edited model"))
        << "\n";
}

void addEditOptions(CLI::App& command, EditOptions& o) {
    velmora::EditRequest& r = o.request;
    command.add_flag("--force", r.force,
                     "Change the conditions even where commands are lost or tests unreachable");
    command.add_flag("--add-kill-shadow", r.addKillShadow, "Give the model a kill shadow");
    command.add_flag("--remove-kill-shadow", r.removeKillShadow,
                     "Remove the model's shadow section");
    command.add_flag("--fix-lights", r.fixLights,
                     "Free lights of the tests and overrides in front of them");
    command.add_flag("--fix-winding", r.fixWinding,
                     "Turn round the triangles whose front faces against their normals");
    command.add_flag("--clean-dict", r.cleanDict, "Empty the DICT section");
    command.add_option("--set-isft", r.isft, "Set the ISFT text");
    addRepeatable(command, "--condition", o.conditions,
                  "Add a condition: \"between VAR MIN MAX\" or \"mask VAR VALUE\"");
    command.add_option("--rotate", o.rotate, "Turn the model: user or wind")
        ->check(CLI::IsMember({"user", "wind"}));
    command.add_option("--combine", o.combine, "How the tests combine: and, or, not, nor")
        ->check(CLI::IsMember({"and", "or", "not", "nor"}));
    command.add_flag("--clear-conditions", r.clearConditions,
                     "Remove the model's conditions first");
    addRepeatable(command, "--seasons", o.seasons,
                  "Seasonal textures: TEXTURE:SEASON=NAME[@FIRST-LAST],... with seasons spring, "
                  "summer, fall, winter, heavywinter, added to those the texture has");
    command.add_flag("--recalc-texture-sizes", r.measureAllTextureSizes,
                     "Measure every texture's size from the geometry");
    addRepeatable(command, "--recalc-texture-size", r.measureTextureSizes,
                  "Measure one texture's size from the geometry");
    addRepeatable(command, "--texture-size", o.textureSizes, "Set a texture's size: TEXTURE=SIZE");
}

}  // namespace

void addEditCommand(CLI::App& app) {
    auto* command = addCommand(app, "edit", "Change a model and save it",
                               "velmora edit MODEL.mdl [-o OUT.mdl] [edits]");
    auto o = std::make_shared<EditOptions>();
    command->add_option("MODEL", o->model, "Model file (.mdl)")->required();
    command->add_option("-o,--output", o->output, "Where to save the edited model (- for stdout)");
    addEditOptions(*command, *o);
    command->callback([o] { edit(*o); });
}

}  // namespace tool
