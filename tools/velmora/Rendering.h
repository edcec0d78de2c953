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
    // Keep the scenario as it is even where the model's guard hides the model.
    bool asIs = false;
};

struct Picture {
    std::vector<uint8_t> rgb;  // rows from the top
    int width = 0;
    int height = 0;
    int64_t pixelsDrawn = 0;  // for the fixed frame, the pixels other than its white
    // Where the scenario left the model's guard false, the values set to draw it ("250=1") and
    // why ("its guard is (250 & 1)"); empty otherwise.
    std::string drawnWith;
    std::string guard;
    // Triangles whose fronts face against their normals, hidden where back faces are culled.
    int64_t reversedHidden = 0;
};

// What a picture's notes say of it on standard error, a line each, `name` naming the model.
std::vector<std::string> pictureNotes(const Picture& picture, const std::string& name);
// What the note on reversed triangles says: how many are hidden and how to show or fix them.
std::string reversedNote(const Picture& picture);

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
    bool cull = false;  // the default; kept so that older command lines still work
    bool bothSides = false;
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
    bool asIs = false;
};
void addRenderOptions(CLI::App& command, RenderOptions& options, bool withFixedFrame);
// The scenario's options alone (--day, --season, --night, --set) and --textures.
void addScenarioOptions(CLI::App& command, RenderOptions& options);
// The settings the options describe; out-of-range values are usage errors.
RenderSettings checkRenderSettings(const RenderOptions& options);
// The scenario the options set; nothing when they set none. Bad values are usage errors.
std::optional<velmora::Scenario> scenarioOf(const RenderOptions& options);

}  // namespace tool
