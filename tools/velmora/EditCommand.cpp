#include "Edit.h"

#include <iostream>

namespace tool {

namespace {

// The file written must read back as the edit meant it: the guard, and every seasonal run.
void checkWritten(const std::string& path, const velmora::GuardAnalysis& meant,
                  const EditIntent& intent, const std::string& target) {
    velmora::MDLObject written;
    written.readMDL(path);
    const velmora::GuardAnalysis guard(*written.BGLCommandList());
    const bool guardHolds =
        intent.conditions ? guard.means(*intent.conditions) : guard.meansTheSameAs(meant);
    if (!guardHolds) {
        throw ToolError(target, "the model written reads back with the guard \"" + guard.formula() +
                                    "\", not \"" + meant.formula() + "\"; nothing was written");
    }
    for (const EditIntent::Seasons& seasons : intent.seasons) {
        auto& textures = *written.TextureList();
        for (const auto& [position, variant] : seasons.variants) {
            textures.Item(position)->parent(seasons.group);
            textures.Item(position)->textureVariant(static_cast<velmora::textureVariant>(variant));
        }
        const velmora::seasonalTextures read = written.readSeasonalDates(seasons.group);
        const auto& record = seasons.record;
        int active = 0;
        for (bool a : record.active)
            active += a ? 1 : 0;
        bool same = true;
        for (std::size_t s = 0; s < 5; ++s) {
            // One season alone is written without a test and reads back as no season at all;
            // the season that runs over the new year reads back with the days the others leave.
            if (active == 1) {
                same = same && !read.active[s];
            } else {
                same = same && read.active[s] == record.active[s];
                if (record.active[s] && record.dayStart[s] <= record.dayEnd[s]) {
                    same = same && read.dayStart[s] == record.dayStart[s] &&
                           read.dayEnd[s] == record.dayEnd[s];
                }
            }
        }
        if (!same) {
            throw ToolError(target,
                            "the seasonal run written doesn't read back with the days "
                            "it was given; nothing was written");
        }
    }
}

void edit(const EditOptions& o) {
    if (o.addKillShadow && o.removeKillShadow) {
        throw UsageError("--add-kill-shadow and --remove-kill-shadow exclude each other");
    }
    for (const auto& text : o.conditions)
        parseCondition(text);
    for (const auto& request : o.seasons)
        checkSeasonsSpelling(request);
    // The target is checked before any work, so a bad one costs nothing.
    std::optional<Output> output;
    if (!o.output.empty()) output.emplace(o.output, Output::Stream::Binary);

    const auto model = loadModel(o.model);
    EditIntent intent;
    std::vector<std::string> done;
    const auto append = [&done](const std::vector<std::string>& lines) {
        done.insert(done.end(), lines.begin(), lines.end());
    };
    try {
        if (o.changesConditions()) append(editConditions(*model, o, intent));
        for (const auto& request : o.seasons)
            append(editSeasons(*model, request, intent));
        if (o.addKillShadow) {
            model->addKillShadow();
            done.push_back("kill shadow added");
        }
        if (o.removeKillShadow) {
            model->removeKillShadow();
            done.push_back("kill shadow removed");
        }
        if (o.fixLights) {
            const int32_t before = model->BGLCommandList()->Count();
            model->fixLights();
            done.push_back("lights freed of the tests in front of them (" +
                           std::to_string(before - model->BGLCommandList()->Count()) +
                           " commands removed)");
        }
        if (o.cleanDict) {
            model->cleanDICT();
            done.push_back("DICT emptied");
        }
        if (o.setIsft) {
            model->setISFT(o.isft);
            done.push_back("ISFT set");
        }
        append(editTextureSizes(*model, o));
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, o.model);
    }
    if (done.empty()) done.push_back("no edit asked for");

    // Messages go to standard error when the model itself goes to standard output.
    std::ostream& say = output && output->toStandardOutput() ? std::cerr : std::cout;
    if (!output) {
        for (const auto& line : done)
            say << line << "\n";
        say << "nothing written: give -o OUT.mdl to save the edited model\n";
        return;
    }
    const velmora::GuardAnalysis meant(*model->BGLCommandList());
    output->write([&](const std::string& path) { model->saveMDL(path); },
                  [&](const std::string& path) { checkWritten(path, meant, intent, o.output); });
    for (const auto& line : done)
        say << line << "\n";
    say << "saved " << (output->toStandardOutput() ? "to standard output" : o.output) << "\n";
}

}  // namespace

void addEditCommand(CLI::App& app) {
    auto* command = addCommand(app, "edit", "Change a model and save it",
                               "velmora edit MODEL.mdl [-o OUT.mdl] [edits]");
    auto o = std::make_shared<EditOptions>();
    command->add_option("MODEL", o->model, "Model file (.mdl)")->required();
    command->add_option("-o,--output", o->output, "Where to save the edited model (- for stdout)");
    command->add_flag("--force", o->force,
                      "Change the conditions even where commands are lost or tests unreachable");
    command->add_flag("--add-kill-shadow", o->addKillShadow, "Give the model a kill shadow");
    command->add_flag("--remove-kill-shadow", o->removeKillShadow,
                      "Remove the model's shadow section");
    command->add_flag("--fix-lights", o->fixLights,
                      "Free lights of the tests and overrides in front of them");
    command->add_flag("--clean-dict", o->cleanDict, "Empty the DICT section");
    command->add_option("--set-isft", o->isft, "Set the ISFT text")->each([o](const std::string&) {
        o->setIsft = true;
    });
    command->add_option(
        "--condition", o->conditions,
        "Add a condition: \"between VAR MIN MAX\" or \"mask VAR VALUE\" (repeatable)");
    command->add_option("--rotate", o->rotate, "Turn the model: user or wind")
        ->check(CLI::IsMember({"user", "wind"}));
    command->add_option("--combine", o->combine, "How the tests combine: and, or, not, nor")
        ->check(CLI::IsMember({"and", "or", "not", "nor"}));
    command->add_flag("--clear-conditions", o->clearConditions,
                      "Remove the model's conditions first");
    command->add_option("--seasons", o->seasons,
                        "Seasonal textures: TEXTURE:SEASON=NAME[@FIRST-LAST],... with seasons "
                        "spring, summer, fall, winter, heavywinter (repeatable)");
    command->add_flag("--recalc-texture-sizes", o->recalcTextureSizes,
                      "Measure every texture's size from the geometry");
    command->add_option("--recalc-texture-size", o->recalcTextureSize,
                        "Measure one texture's size from the geometry (repeatable)");
    command->add_option("--texture-size", o->textureSize,
                        "Set a texture's size: TEXTURE=SIZE (repeatable)");
    command->callback([o] { edit(*o); });
}

}  // namespace tool
