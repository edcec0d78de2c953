#pragma once

#include "Tool.h"

#include <optional>

namespace tool {

// How the tool draws a model: a view under a scenario (or, with `flat`, every part), or the
// fixed frame with its pitch, pan and zoom.
struct RenderSettings {
    int width = 800;
    int height = 600;
    velmora::View view;
    velmora::Scenario scenario;
    bool flat = false;
    bool fixedFrame = false;
    float pitch = -65;  // the fixed frame's
    float panX = 0;
    float panY = 0;
    std::string textures;
};

struct Picture {
    std::vector<uint8_t> rgb;  // rows from the top
    int width = 0;
    int height = 0;
    int64_t pixelsDrawn = 0;  // -1 for the fixed frame, which doesn't count them
};

// Draws one picture for each heading in `headings` (the view's own when empty), side by side in
// a grid of `columns`.
Picture renderModel(velmora::MDLObject& model, const RenderSettings& settings,
                    const std::vector<float>& headings = {}, int columns = 1);

// The options of a rendering that `render` and `scan --thumbnails` share; checked by
// checkRenderSettings once parsed.
struct RenderOptions {
    std::string size = "800x600";
    float heading = 45;
    float elevation = 30;
    float distance = 0;
    float zoom = 100;
    std::string background = "9eb9d9";
    bool cull = false;
    bool blend = false;
    int day = 0;  // 0: not given
    std::string season;
    bool night = false;
    std::vector<std::string> set;
    bool flat = false;
    bool fixedFrame = false;
    float pitch = -65;
    float panX = 0;
    float panY = 0;
    std::string textures;
};
void addRenderOptions(CLI::App& command, RenderOptions& options, bool withFixedFrame);
// The scenario's options alone (--day, --season, --night, --set) and --textures.
void addScenarioOptions(CLI::App& command, RenderOptions& options);
// The settings the options describe; out-of-range values are usage errors.
RenderSettings checkRenderSettings(const RenderOptions& options);
// The scenario the options set; nothing when they set none. Bad values are usage errors.
std::optional<velmora::Scenario> scenarioOf(const RenderOptions& options);

}  // namespace tool
