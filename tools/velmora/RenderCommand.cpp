#include "Batch.h"
#include "Rendering.h"

#include <cmath>

namespace tool {

namespace {

struct RenderCommandOptions {
    BatchOptions batch;
    std::string output;
    int sheet = 0;
    bool json = false;
    RenderOptions render;
};

// Draws one model into `out`; gives what was done, for people, and notes what the picture
// shows beside the model's own look.
std::string renderOne(const std::string& file, const RenderCommandOptions& o,
                      const RenderSettings& settings, const Output& out,
                      std::vector<std::string>& notes) {
    const auto model = loadModel(file);
    std::vector<float> headings;
    int columns = 1;
    if (o.sheet > 0) {
        columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(o.sheet))));
        for (int i = 0; i < o.sheet; ++i)
            headings.push_back(settings.view.heading + 360.0f * static_cast<float>(i) / o.sheet);
    }
    Picture picture;
    try {
        picture = renderModel(*model, settings, headings, columns);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, file);
    }
    if (picture.pixelsDrawn == 0 && settings.fixedFrame) {
        throw ToolError(file, "nothing was drawn: no triangle of the model reaches the frame",
                        "try other --pan-x, --pan-y, --pitch or --zoom, or leave out "
                        "--fixed-frame for a view fitted to the model");
    }
    if (picture.pixelsDrawn == 0 && picture.reversedHidden > 0) {
        throw ToolError(file, "nothing was drawn: no front of a triangle faces the camera",
                        reversedNote(picture));
    }
    if (picture.pixelsDrawn == 0) {
        throw ToolError(file, "nothing was drawn: no triangle of the model reaches the frame",
                        "try --flat to draw every part whatever its tests, another --day or "
                        "--set for the tests in front of them, --both-sides, or --distance and "
                        "--zoom");
    }
    notes = pictureNotes(picture, file);
    out.write([&](const std::string& path) {
        velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, path);
    });
    return "rendered " + file + " (" + std::to_string(picture.width) + "x" +
           std::to_string(picture.height) + ") to " + out.said();
}

void render(const RenderCommandOptions& o) {
    const RenderSettings settings = checkRenderSettings(o.render);
    if (o.render.fixedFrame && o.render.flat) {
        throw UsageError("--fixed-frame draws every part already; leave out --flat");
    }
    refuseJsonBesideOutput(o.json, o.output);
    const bool batch = isBatch(o.batch.inputs);
    if (batch) {
        if (o.output == "-") throw UsageError("several pictures can't go to standard output");
        prepareOutputFolder(o.output);
    }
    runFiles("render", o.batch, o.json, {".mdl"}, [&](const BatchInput& input) {
        const Output out = batch
                               ? Output(outputFor(o.output, input, ".png"), Output::Stream::Refused)
                               : Output(o.output, Output::Stream::Binary);
        FileResult result;
        const std::string said = renderOne(input.path, o, settings, out, result.notes);
        result.models = 1;
        // A picture on standard output is all that goes there.
        if (!out.toStandardOutput()) result.text = said;
        result.records = {{{"file", input.path}, {"output", out.target()}}};
        return result;
    });
}

}  // namespace

void addRenderCommand(CLI::App& app) {
    auto* command =
        addCommand(app, "render", "Draw a model into a PNG as the simulator would show it",
                   "velmora render MODEL.mdl... -o OUT.png|DIR [--size WxH] "
                   "[--textures DIR] [view] [scenario]");
    auto o = std::make_shared<RenderCommandOptions>();
    command->add_option("MODEL", o->batch.inputs, "Model files (.mdl) or folders of them")
        ->required();
    command
        ->add_option("-o,--output", o->output,
                     "PNG file to write (- for stdout), or a folder for several")
        ->required();
    command->add_option("--sheet", o->sheet, "N headings around the model in one picture")
        ->check(numberFrom(1, 64, true));
    command->add_flag("--json", o->json, "Print a JSON line a picture (see docs/json.md)");
    addBatchOptions(*command, o->batch);
    addRenderOptions(*command, o->render, true);
    command->callback([o] { render(*o); });
}

}  // namespace tool
