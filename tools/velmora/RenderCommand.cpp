#include "Rendering.h"

#include <cmath>
#include <iostream>

namespace tool {

namespace {

struct RenderCommandOptions {
    std::string model;
    std::string output;
    int sheet = 0;
    RenderOptions render;
};

void render(const RenderCommandOptions& o) {
    const RenderSettings settings = checkRenderSettings(o.render);
    if (o.sheet < 0 || o.sheet > 64) throw UsageError("--sheet takes 1 to 64 headings");
    if (o.render.specFrame && o.render.flat) {
        throw UsageError("--spec-frame draws every part already; leave out --flat");
    }
    const Output out(o.output, Output::Stream::Binary);
    const auto model = loadModel(o.model);

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
        throw fromLibrary(e, o.model);
    }
    if (picture.pixelsDrawn == 0) {
        throw ToolError(o.model, "nothing was drawn: no triangle of the model reaches the frame",
                        "try --flat to draw every part whatever its tests, another --day or "
                        "--set for the tests in front of them, or --distance and --zoom");
    }
    out.write([&](const std::string& path) {
        velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, path);
    });
    if (!out.toStandardOutput()) {
        std::cout << "rendered " << o.model << " (" << picture.width << "x" << picture.height
                  << ") to " << o.output << "\n";
    }
}

}  // namespace

void addRenderCommand(CLI::App& app) {
    auto* command = addCommand(
        app, "render", "Draw a model into a PNG as the simulator would show it",
        "velmora render MODEL.mdl -o OUT.png [--size WxH] [--textures DIR] [view] [scenario]");
    auto o = std::make_shared<RenderCommandOptions>();
    command->add_option("MODEL", o->model, "Model file (.mdl)")->required();
    command->add_option("-o,--output", o->output, "PNG file to write (- for stdout)")->required();
    command->add_option("--sheet", o->sheet, "N headings around the model in one picture");
    addRenderOptions(*command, o->render, true);
    command->callback([o] { render(*o); });
}

}  // namespace tool
