#include "Rendering.h"

#include <cmath>
#include <cstdio>
#include <sstream>

namespace tool {

namespace {

// A surface with a current context for the length of one rendering.
class Surface {
  public:
    Surface(int width, int height) : handle_(velmora::createPreviewSurface(width, height)) {
        preview_->initOpenGL(handle_);
    }
    ~Surface() { velmora::destroyPreviewSurface(handle_); }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    int32_t handle() const { return handle_; }
    const std::shared_ptr<velmora::OpenGLPreviewObject>& preview() const { return preview_; }

  private:
    int32_t handle_;
    std::shared_ptr<velmora::OpenGLPreviewObject> preview_ =
        std::make_shared<velmora::OpenGLPreviewObject>();
};

// A whole number from `low` to `high` of a --set; anything else is a usage error.
int32_t setting(const std::string& text, const std::string& what, const std::string& given,
                double low, double high) {
    try {
        std::size_t used = 0;
        const double value = std::stod(text, &used);
        if (used == text.size() && value == std::floor(value) && value >= low && value <= high)
            return static_cast<int32_t>(value);
    } catch (const std::exception&) {
    }
    throw UsageError("bad --set '" + given + "': the " + what + " '" + text +
                     "' is no whole number from " + std::to_string(static_cast<int64_t>(low)) +
                     " to " + std::to_string(static_cast<int64_t>(high)));
}

std::array<float, 3> parseColour(const std::string& text) {
    std::string hex = text;
    if (!hex.empty() && hex.front() == '#') hex.erase(0, 1);
    unsigned value = 0;
    int used = 0;
    if (hex.size() == 6 && std::sscanf(hex.c_str(), "%6x%n", &value, &used) == 1 && used == 6) {
        return {static_cast<float>((value >> 16) & 255) / 255.0f,
                static_cast<float>((value >> 8) & 255) / 255.0f,
                static_cast<float>(value & 255) / 255.0f};
    }
    throw UsageError("bad --background '" + text + "': give RRGGBB in hexadecimal, such as ffffff");
}

}  // namespace

void addScenarioOptions(CLI::App& command, RenderOptions& o) {
    command.add_option("--day", o.day, "Day of the year, 1 to 366 (variable 906; default 172)")
        ->check(numberFrom(1, 366, true));
    command.add_option("--season", o.season,
                       "The middle of a season: spring, summer, fall, winter, heavywinter");
    command.add_flag("--night", o.night, "Night (time of day, variable 652, set to 4)");
    addRepeatable(command, "--set", o.set, "Set a scenery variable: VAR=VALUE");
    command.add_option("--textures", o.textures,
                       "Folder of the texture images, matched by name without regard to case");
}

void addRenderOptions(CLI::App& command, RenderOptions& o, bool withFixedFrame) {
    command.add_option("--size", o.size, "Frame size WIDTHxHEIGHT")->capture_default_str();
    command
        .add_option("--heading", o.heading,
                    "Compass heading the camera looks along, degrees (0 north, 90 east)")
        ->check(numberFrom(-HUGE_VAL, HUGE_VAL))
        ->capture_default_str();
    command
        .add_option("--elevation", o.elevation,
                    "How far the camera looks down, degrees (0 horizontal, 90 from above)")
        ->check(numberFrom(-90, 90))
        ->capture_default_str();
    command
        .add_option("--distance", o.distance,
                    "Camera distance from the model's centre, metres (default: fitted)")
        ->check(numberFrom(0, HUGE_VAL));
    command
        .add_option("--zoom", o.zoom,
                    "Percent: 200 twice as near, 50 twice as far (with --fixed-frame: the "
                    "fixed frame's zoom)")
        ->check(numberFrom(1e-6, HUGE_VAL))
        ->capture_default_str();
    command.add_option("--background", o.background, "Background colour RRGGBB")
        ->capture_default_str();
    command.add_flag("--both-sides", o.bothSides,
                     "Draw the back faces too (by default only the fronts, as the simulator)");
    command.add_flag("--cull", o.cull, "Draw only the front faces (the default)")->group("");
    command.add_flag("--as-is", o.asIs,
                     "Keep the scenario even where the model's guard hides the model (by "
                     "default values that show it are set, and said)");
    command.add_flag("--blend", o.blend, "Blend alpha textures instead of testing their alpha");
    command.add_flag("--flat", o.flat,
                     "Draw every part of the stream at once (no tests evaluated)");
    addScenarioOptions(command, o);
    if (!withFixedFrame) return;
    command.add_flag("--fixed-frame", o.fixedFrame,
                     "The fixed frame of the preview: every part, turned by --heading and "
                     "--pitch, panned by --pan-x and --pan-y, at --zoom percent");
    command
        .add_option("--pitch", o.pitch,
                    "With --fixed-frame: tilt about the frame's x axis, degrees (0 looks down "
                    "the model's y axis from above, -90 from the side)")
        ->check(numberFrom(-HUGE_VAL, HUGE_VAL))
        ->capture_default_str();
    command.add_option("--pan-x", o.panX, "With --fixed-frame: shift along the model's x")
        ->check(numberFrom(-HUGE_VAL, HUGE_VAL));
    command.add_option("--pan-y", o.panY, "With --fixed-frame: shift along the model's z")
        ->check(numberFrom(-HUGE_VAL, HUGE_VAL));
}

std::optional<velmora::Scenario> scenarioOf(const RenderOptions& o) {
    if (o.day == 0 && o.season.empty() && !o.night && o.set.empty()) return std::nullopt;
    velmora::Scenario scenario;
    if (o.day != 0) scenario.day(o.day);
    if (!o.season.empty()) {
        const std::optional<velmora::textureVariant> season = velmora::seasonNamed(o.season);
        if (!season) {
            throw UsageError("unknown --season '" + o.season +
                             "': give spring, summer, fall, winter or heavywinter");
        }
        scenario.season(*season);
    }
    if (o.night) scenario.night();
    for (const std::string& setting : o.set) {
        const auto equals = setting.find('=');
        if (equals == std::string::npos) {
            throw UsageError("bad --set '" + setting + "': give VAR=VALUE, such as 798=2");
        }
        scenario.set(tool::setting(setting.substr(0, equals), "variable", setting, 0, 65535),
                     tool::setting(setting.substr(equals + 1), "value", setting, -2147483648.0,
                                   2147483647.0));
    }
    return scenario;
}

RenderSettings checkRenderSettings(const RenderOptions& o) {
    RenderSettings s;
    char separator = 0;
    if (std::sscanf(o.size.c_str(), "%d%c%d", &s.width, &separator, &s.height) != 3 ||
        (separator != 'x' && separator != 'X') || s.width < 1 || s.height < 1) {
        throw UsageError("bad --size '" + o.size + "': give WIDTHxHEIGHT, such as 800x600");
    }
    const int limit = velmora::previewSurfaceLimit();
    if (limit > 0 && (s.width > limit || s.height > limit)) {
        throw UsageError("--size " + o.size + " is larger than the drawing surfaces allow, " +
                         std::to_string(limit) + " pixels a side");
    }
    s.view.heading = o.heading;
    s.view.elevation = o.elevation;
    s.view.distance = o.distance;
    s.view.zoom = o.zoom;
    s.view.background = parseColour(o.background);
    if (o.cull && o.bothSides) throw UsageError("--cull and --both-sides contradict each other");
    s.view.cullBackFaces = !o.bothSides;
    s.asIs = o.asIs;
    s.view.blendAlpha = o.blend;
    s.scenario = scenarioOf(o).value_or(velmora::Scenario());
    s.flat = o.flat;
    s.fixedFrame = o.fixedFrame;
    s.pitch = o.pitch;
    s.panX = o.panX;
    s.panY = o.panY;
    s.textures = o.textures;
    return s;
}

namespace {

// The scenario to draw under: the settings' own or, where that leaves the model's guard false
// and the settings don't keep it as it is, values that make the guard true, noted in `picture`.
velmora::Scenario scenarioToDraw(const velmora::MDLObject& model, const RenderSettings& settings,
                                 Picture& picture) {
    if (settings.asIs || settings.flat || settings.fixedFrame) return settings.scenario;
    const velmora::GuardAnalysis guard(*model.BGLCommandList());
    const std::optional<velmora::ScenarioToShow> shown =
        velmora::scenarioToShow(guard, settings.scenario);
    if (!shown || shown->changed.empty()) return settings.scenario;
    for (const auto& [variable, value] : shown->changed) {
        picture.drawnWith += (picture.drawnWith.empty() ? "" : ", ") + std::to_string(variable) +
                             "=" + std::to_string(value);
    }
    picture.guard = guard.formula();
    return shown->scenario;
}

// The pixels of a fixed frame that its white background doesn't show.
int64_t pixelsOtherThanWhite(const std::vector<uint8_t>& rgb) {
    int64_t count = 0;
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3)
        count += (rgb[i] & rgb[i + 1] & rgb[i + 2]) != 255 ? 1 : 0;
    return count;
}

// Copies one frame into its place in the picture's grid.
void placeFrame(Picture& picture, const std::vector<uint8_t>& frame, const RenderSettings& settings,
                int column, int row) {
    const std::size_t frameRow = static_cast<std::size_t>(settings.width) * 3;
    for (int y = 0; y < settings.height; ++y) {
        const std::size_t to = (static_cast<std::size_t>(row * settings.height + y) *
                                    static_cast<std::size_t>(picture.width) +
                                static_cast<std::size_t>(column * settings.width)) *
                               3;
        std::copy_n(frame.begin() + static_cast<std::ptrdiff_t>(frameRow * y), frameRow,
                    picture.rgb.begin() + static_cast<std::ptrdiff_t>(to));
    }
}

}  // namespace

Picture renderModel(velmora::MDLObject& model, const RenderSettings& settings,
                    const std::vector<float>& headings, int columns) {
    if (!settings.textures.empty()) model.TextureList()->findFiles(settings.textures);
    const std::vector<float> turns =
        headings.empty() ? std::vector<float>{settings.view.heading} : headings;
    const int rows = (static_cast<int>(turns.size()) + columns - 1) / columns;
    Picture picture;
    picture.width = settings.width * columns;
    picture.height = settings.height * rows;
    picture.rgb.assign(static_cast<std::size_t>(picture.width) * picture.height * 3, 255);
    const velmora::Scenario scenario = scenarioToDraw(model, settings, picture);
    if (settings.fixedFrame || settings.view.cullBackFaces)
        picture.reversedHidden = static_cast<int64_t>(velmora::reversedTriangles(model).size());
    Surface surface(settings.width, settings.height);
    if (settings.fixedFrame) {
        model.glPreparepreview(surface.preview());
    } else {
        model.glPrepareView(surface.preview());
    }
    for (std::size_t i = 0; i < turns.size(); ++i) {
        if (settings.fixedFrame) {
            model.glDrawMDL(turns[i], settings.pitch, settings.panX, settings.panY,
                            static_cast<float>(settings.width) * velmora::TwipsPerPixelX(),
                            static_cast<float>(settings.height) * velmora::TwipsPerPixelY(),
                            surface.handle(), settings.view.zoom);
        } else {
            velmora::View view = settings.view;
            view.heading = turns[i];
            const velmora::ViewResult result =
                settings.flat ? model.glDrawView(view, surface.handle(), std::nullopt)
                              : model.glDrawView(view, surface.handle(), scenario);
            picture.pixelsDrawn += result.pixels;
        }
        const std::vector<uint8_t> frame = velmora::previewSurfacePixels(surface.handle());
        if (settings.fixedFrame) picture.pixelsDrawn += pixelsOtherThanWhite(frame);
        placeFrame(picture, frame, settings, static_cast<int>(i) % columns,
                   static_cast<int>(i) / columns);
    }
    return picture;
}

std::string reversedNote(const Picture& picture) {
    const bool one = picture.reversedHidden == 1;
    return std::to_string(picture.reversedHidden) +
           (one ? " reversed triangle hidden: its front faces"
                : " reversed triangles hidden: their fronts face") +
           " against the normals; --both-sides shows " + (one ? "it" : "them") +
           ", velmora edit --fix-winding turns " + (one ? "it" : "them") + " round";
}

std::vector<std::string> pictureNotes(const Picture& picture, const std::string& name) {
    std::vector<std::string> notes;
    if (!picture.drawnWith.empty()) {
        notes.push_back(name + " drawn with " + picture.drawnWith + ": its guard is " +
                        picture.guard + " (--as-is keeps the scenario)");
    }
    if (picture.reversedHidden > 0) notes.push_back(name + ": " + reversedNote(picture));
    return notes;
}

}  // namespace tool
