#include "Tool.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>

namespace tool {

namespace {

namespace stdfs = std::filesystem;

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// Finds each texture's image in `folder` by the model's name, without regard to case, trying
// the name itself and then the usual image extensions.
int attachTextures(velmora::MDLObject& model, const std::string& folder) {
    std::map<std::string, std::string> files;
    std::error_code code;
    for (const auto& entry : stdfs::directory_iterator(folder, code)) {
        if (entry.is_regular_file())
            files[lower(entry.path().filename().string())] = entry.path().string();
    }
    if (code) throw ToolError(folder, "cannot be read as a texture folder: " + code.message());
    int found = 0;
    for (const auto& texture : *model.TextureList()) {
        std::string name = texture->bitmap();
        const auto cut = name.find_last_of("/\\");
        if (cut != std::string::npos) name = name.substr(cut + 1);
        const std::string stem = lower(stdfs::path(name).stem().string());
        std::vector<std::string> candidates{lower(name)};
        for (const char* ext : {".bmp", ".dds", ".tga", ".png", ".jpg", ".jpeg"}) {
            candidates.push_back(stem + ext);
        }
        for (const auto& candidate : candidates) {
            const auto match = files.find(candidate);
            if (match != files.end()) {
                texture->file(match->second);
                ++found;
                break;
            }
        }
    }
    return found;
}

struct RenderOptions {
    std::string model;
    std::string output;
    std::string size = "800x600";
    float heading = 30;
    float pitch = -65;
    float zoom = 70;
    float panX = 0;
    float panY = 0;
    std::string textures;
};

void render(const RenderOptions& options) {
    int width = 0;
    int height = 0;
    char separator = 0;
    if (std::sscanf(options.size.c_str(), "%d%c%d", &width, &separator, &height) != 3 ||
        (separator != 'x' && separator != 'X') || width < 1 || height < 1 || width > 8192 ||
        height > 8192) {
        throw UsageError("bad --size '" + options.size +
                         "': give WIDTHxHEIGHT from 1x1 to 8192x8192, such as 800x600");
    }
    for (const auto& [name, value] :
         {std::pair{"--heading", options.heading}, std::pair{"--pitch", options.pitch},
          std::pair{"--pan-x", options.panX}, std::pair{"--pan-y", options.panY}}) {
        if (!std::isfinite(value)) throw UsageError(std::string(name) + " must be a number");
    }
    if (!(options.zoom > 0) || !std::isfinite(options.zoom)) {
        throw UsageError("--zoom must be a percentage above 0");
    }
    const Output out(options.output, Output::Stream::Binary);
    const auto model = loadModel(options.model);
    if (!options.textures.empty()) attachTextures(*model, options.textures);

    const int32_t surface = velmora::createPreviewSurface(width, height);
    try {
        auto preview = std::make_shared<velmora::OpenGLPreviewObject>();
        preview->initOpenGL(surface);
        model->glPreparepreview(preview);
        model->glDrawMDL(options.heading, options.pitch, options.panX, options.panY,
                         static_cast<float>(width) * velmora::TwipsPerPixelX(),
                         static_cast<float>(height) * velmora::TwipsPerPixelY(), surface,
                         options.zoom);
        out.write([&](const std::string& path) { velmora::savePreviewSurfacePNG(surface, path); });
    } catch (const velmora::Error& e) {
        velmora::destroyPreviewSurface(surface);
        throw fromLibrary(e, options.model);
    } catch (...) {
        velmora::destroyPreviewSurface(surface);
        throw;
    }
    velmora::destroyPreviewSurface(surface);
    if (!out.toStandardOutput()) {
        std::cout << "rendered " << options.model << " (" << width << "x" << height << ") to "
                  << options.output << "\n";
    }
}

}  // namespace

void addRenderCommand(CLI::App& app) {
    auto* command =
        addCommand(app, "render", "Draw a preview frame of a model into a PNG",
                   "velmora render MODEL.mdl -o OUT.png [--size WxH] [--textures DIR] [view]");
    auto options = std::make_shared<RenderOptions>();
    command->add_option("MODEL", options->model, "Model file (.mdl)")->required();
    command->add_option("-o,--output", options->output, "PNG file to write (- for stdout)")
        ->required();
    command->add_option("--size", options->size, "Frame size WIDTHxHEIGHT")->capture_default_str();
    command->add_option("--heading", options->heading, "Turn about the vertical axis, degrees")
        ->capture_default_str();
    command->add_option("--pitch", options->pitch, "Tilt, degrees")->capture_default_str();
    command
        ->add_option("--zoom", options->zoom,
                     "Zoom in percent (100: the base distance, larger is nearer)")
        ->capture_default_str();
    command->add_option("--pan-x", options->panX, "Shift along the model's x, model units");
    command->add_option("--pan-y", options->panY, "Shift along the model's z, model units");
    command->add_option("--textures", options->textures,
                        "Folder of the texture images, matched by name without regard to case");
    command->callback([options] { render(*options); });
}

}  // namespace tool
