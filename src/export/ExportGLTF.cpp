#include <velmora/FrontFace.h>
#include <velmora/GeometryCollector.h>
#include <velmora/MDLObject.h>
#include <velmora/StreamAnalysis.h>
#include <velmora/Windows1252.h>

#include "export/GLTFBuilder.h"
#include "export/GLTFSeasons.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/GeneralFunctions.h"
#include "foundation/NativeFiles.h"
#include "image/ImageFile.h"
#include "model/TextureFiles.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <tuple>

// Axes: a model has x to the east, y up and z to the north. glTF is right-handed with +Y up and
// +Z forward: a model's (x, y, z) is written as (x, y, -z), north being -Z and the model's south
// side facing forward. Which side of a triangle is its front follows velmora/FrontFace.h: the
// mirror to glTF's axes with the corners kept in their order puts glTF's counter-clockwise front
// where the simulator shows it, so materials are single-sided as the simulator culls back faces
// (double-sided on request). Texture coordinates count v from the image's top: v = 1 - ty.
namespace velmora {

namespace {

using nlohmann::json;

struct Output {
    std::string path;
    bool binary = true;
};

Output outputOf(const std::string& f) {
    const std::string lower = asciiLower(f);
    if (lower.size() > 4 && lower.ends_with(".glb")) return {f, true};
    if (lower.size() > 5 && lower.ends_with(".gltf")) return {f, false};
    raisePlatformError(kInvalidProcedureCall, "give a file name ending in .glb or .gltf");
}

// A position or direction of the model in glTF's axes.
Vector3 gltfAxes(const Vector3& model) {
    return {model[0], model[1], -model[2]};
}

// The triangle's corners in glTF, with a unit normal; nothing for a triangle without area.
std::optional<std::array<gltf::Vertex, 3>> cornersOf(const GeometryCollector::Triangle& t,
                                                     bool textured) {
    std::array<gltf::Vertex, 3> corners;
    for (std::size_t k = 0; k < 3; ++k) {
        corners[k].position = gltfAxes(t.corners[k].position);
        if (textured) corners[k].uv = {t.corners[k].texCoord[0], 1.0f - t.corners[k].texCoord[1]};
    }
    // The front mirrored to glTF's axes is glTF's counter-clockwise normal (b - a) x (c - a).
    const Vector3 face = gltfAxes(
        frontNormal({t.corners[0].position, t.corners[1].position, t.corners[2].position}));
    const double area = std::hypot(double{face[0]}, double{face[1]}, double{face[2]});
    if (!(area > 0) || !std::isfinite(area)) return std::nullopt;
    // One normal for the triangle, its first corner's, as the simulator lights it.
    Vector3 normal = gltfAxes(t.corners[0].normal);
    double length = std::hypot(double{normal[0]}, double{normal[1]}, double{normal[2]});
    if (!(length > 0) || !std::isfinite(length)) {
        normal = face;
        length = area;
    }
    for (auto& corner : corners) {
        for (std::size_t i = 0; i < 3; ++i)
            corner.normal[i] = static_cast<float>(normal[i] / length);
    }
    return corners;
}

float clamp01(float value) {
    return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 0.0f;
}

// Materials and images of the export, made once each as the triangles ask for them.
class Looks {
  public:
    Looks(const MDLObject& model, gltf::Builder& builder, const GLTFOptions& options,
          GLTFExport& summary)
        : model_(model), builder_(builder), summary_(summary) {
        const velmora::TextureList& textures = *model.TextureList();
        files_ = options.textureFolder.empty()
                     ? std::vector<std::string>()
                     : detail::textureFiles(textures, options.textureFolder);
        folder_ = options.textureFolder;
        doubleSided_ = options.doubleSided;
    }

    // The glTF material of a surface, made once for each material and texture (-1: none), and
    // whether it is textured.
    std::pair<int32_t, bool> material(const Surface& surface) {
        const auto key = std::pair(surface.material, surface.texture);
        const auto found = made_.find(key);
        if (found != made_.end()) return found->second;
        gltf::MaterialLook look;
        look.name = "material " + std::to_string(surface.material);
        look.baseColour = {clamp01(surface.diffuse[0]), clamp01(surface.diffuse[1]),
                           clamp01(surface.diffuse[2]), clamp01(surface.diffuse[3])};
        look.emissive = {clamp01(surface.emissive[0]), clamp01(surface.emissive[1]),
                         clamp01(surface.emissive[2])};
        // Roughness from the specular power: 0 matte, 8 gives 0.75, 32 gives 0.5, 128 0.1.
        look.roughness =
            std::clamp(1.0f - std::sqrt(std::max(0.0f, surface.power) / 128.0f), 0.1f, 1.0f);
        if (!std::isfinite(look.roughness)) look.roughness = 1;
        if (look.baseColour[3] < 1) look.alpha = gltf::MaterialLook::Alpha::Blend;
        look.doubleSided = doubleSided_;
        const std::optional<Image> image = imageOf(surface.texture);
        if (image) {
            // A textured surface is lit white: the material's colours are not used.
            look.name += ", " + utf8FromWindows1252(textureName(surface.texture));
            look.baseColour = {1, 1, 1, 1};
            look.emissive = {0, 0, 0};
            look.image = image->index;
            look.alpha = image->translucent ? gltf::MaterialLook::Alpha::Mask
                                            : gltf::MaterialLook::Alpha::Opaque;
        }
        const std::pair<int32_t, bool> made{builder_.addMaterial(look), image.has_value()};
        made_.emplace(key, made);
        return made;
    }

  private:
    struct Image {
        int32_t index = 0;
        bool translucent = false;
    };

    std::string textureName(int32_t texture) const {
        return model_.TextureList()->elements().at0(static_cast<std::size_t>(texture))->bitmap();
    }

    std::optional<Image> imageOf(int32_t texture) {
        if (texture < 0 || texture >= model_.TextureList()->Count()) return std::nullopt;
        const auto found = images_.find(texture);
        if (found != images_.end()) return found->second;
        const auto t = static_cast<std::size_t>(texture);
        const std::string file =
            !files_.empty() ? files_[t] : model_.TextureList()->elements().at0(t)->file();
        std::optional<Image> image;
        const std::optional<image::RgbaImage> pixels =
            file.empty() ? std::nullopt : image::readRgbaImage(file);
        if (pixels) {
            image = Image{builder_.addImage(image::encodePNG(*pixels)), pixels->translucent};
            ++summary_.images;
        } else {
            summary_.warnings.push_back(
                "texture " + std::to_string(texture) + " (" +
                utf8FromWindows1252(textureName(texture)) + "): " +
                (file.empty()
                     ? "no image found" + (folder_.empty() ? std::string() : " in " + folder_)
                     : "the image " + file + " can't be read") +
                "; its material is written without it");
        }
        images_.emplace(texture, image);
        return image;
    }

    const MDLObject& model_;
    gltf::Builder& builder_;
    GLTFExport& summary_;
    std::vector<std::string> files_;
    std::string folder_;
    bool doubleSided_ = false;
    std::map<std::pair<int32_t, int32_t>, std::pair<int32_t, bool>> made_;
    std::map<int32_t, std::optional<Image>> images_;
};

// What a triangle is made of: its glTF material on the default day and, when a seasonal run
// sets its surface, its material in each season.
struct Look {
    int32_t material = 0;
    gltf::SeasonMaterials seasons{};
    bool textured = false;  // one of its materials has an image
    const SeasonalRun* run = nullptr;
    bool operator<(const Look& other) const {
        return std::tuple(material, seasons, runStart()) <
               std::tuple(other.material, other.seasons, other.runStart());
    }
    int32_t runStart() const { return run ? run->first : 0; }
};

// The look of a triangle; `run` is the seasonal run that sets its surface, or nullptr. A day no
// variant of the run is shown on keeps the surface the walk drew the triangle with.
Look lookOf(const GeometryCollector& geometry, const GeometryCollector::Triangle& triangle,
            const SeasonalRun* run, Looks& looks) {
    const Surface& surface = geometry.surfaceOf(triangle);
    const auto materialOn = [&](int32_t day) {
        const SeasonalVariant* variant = run ? gltf::variantOn(*run, day) : nullptr;
        const Surface* chosen = variant ? geometry.surfaceAt(variant->position) : nullptr;
        return looks.material(chosen ? *chosen : surface);
    };
    Look look;
    std::tie(look.material, look.textured) = materialOn(gltf::defaultDay());
    if (run == nullptr) return look;
    look.run = run;
    for (std::size_t i = 0; i < gltf::kSeasonCount; ++i) {
        const auto [material, textured] = materialOn(gltf::seasonDays()[i]);
        look.seasons[i] = material;
        look.textured = look.textured || textured;
    }
    return look;
}

// The triangles of one node, a primitive a look.
class NodeMesh {
  public:
    void add(const GeometryCollector::Triangle& t, const Look& look, GLTFExport& summary) {
        const auto corners = cornersOf(t, look.textured);
        if (!corners) return;
        auto& primitive = primitives_[look];
        if (primitive.indices.empty()) {
            primitive.material = look.material;
            primitive.textured = look.textured;
            if (look.run) {
                primitive.mappings = gltf::mappingsOf(look.seasons);
                primitive.extras = {{"seasonalRun", gltf::runExtras(*look.run)}};
            }
        }
        primitive.addTriangle(*corners);
        ++summary.triangles;
    }
    // The primitives, in the order of their looks; the mesh is empty afterwards.
    std::vector<gltf::Primitive> takePrimitives() {
        std::vector<gltf::Primitive> out;
        out.reserve(primitives_.size());
        for (auto& [look, primitive] : primitives_)
            out.push_back(std::move(primitive));
        primitives_.clear();
        return out;
    }

  private:
    std::map<Look, gltf::Primitive> primitives_;
};

json boxJson(const velmora::BoundingBox& box) {
    return {{"min", {box.xmin(), box.ymin(), box.zmin()}},
            {"max", {box.xmax(), box.ymax(), box.zmax()}}};
}

// A node: the triangles of one branch of a size test, or of none.
struct NodeKey {
    const SizeBranch* branch = nullptr;
    bool operator<(const NodeKey& other) const { return std::less<>()(branch, other.branch); }
    std::string name() const {
        if (!branch) return "model";
        return std::string(branch->holds ? "detail where " : "coarse where ") + branch->selectedBy;
    }
    json extras() const {
        json out = json::object();
        if (branch) {
            out["levelOfDetail"] = {{"test", branch->test},
                                    {"holds", branch->holds},
                                    {"selectedBy", branch->selectedBy}};
        }
        return out;
    }
};

void writeFiles(const Output& out, gltf::Builder& builder, GLTFExport& summary) {
    if (out.binary) {
        const std::string bytes = builder.glb();
        fs::replaceFile(out.path, bytes);
        summary.bytes = static_cast<int64_t>(bytes.size());
        return;
    }
    const std::filesystem::path target = fs::nativePath(out.path);
    const std::string stem = fs::utf8Path(target.stem());
    const auto beside = [&target](const std::string& name) {
        return fs::utf8Path(target.has_parent_path() ? target.parent_path() / fs::nativePath(name)
                                                     : fs::nativePath(name));
    };
    std::vector<std::string> imageNames;
    for (std::size_t i = 0; i < builder.images().size(); ++i) {
        imageNames.push_back(stem + "_" + std::to_string(i) + ".png");
        fs::replaceFile(beside(imageNames.back()), builder.images()[i]);
        summary.bytes += static_cast<int64_t>(builder.images()[i].size());
    }
    if (!builder.binary().empty()) {
        fs::replaceFile(beside(stem + ".bin"), builder.binary());
        summary.bytes += static_cast<int64_t>(builder.binary().size());
    }
    const std::string json = builder.gltfJson(stem + ".bin", imageNames);
    fs::replaceFile(out.path, json);
    summary.bytes += static_cast<int64_t>(json.size());
}

// The triangles of each node: without a scenario, each branch of a size test is a node of its
// own, and a triangle whose surface a seasonal run of several variants sets is held once with
// the material of each season.
std::map<NodeKey, NodeMesh> nodesOf(const GeometryCollector& geometry,
                                    const StreamAnalysis* analysis, Looks& looks,
                                    GLTFExport& summary) {
    std::map<NodeKey, NodeMesh> nodes;
    for (const auto& triangle : geometry.triangles()) {
        NodeKey key;
        const SeasonalRun* run = nullptr;
        if (analysis) {
            key.branch = analysis->branchOf(triangle.command);
            run = analysis->runOf(geometry.surfaceOf(triangle).command);
            if (run && run->variants.size() < 2) run = nullptr;
        }
        nodes[key].add(triangle, lookOf(geometry, triangle, run, looks), summary);
    }
    return nodes;
}

// The lights as KHR_lights_punctual point lights of their colour.
void addLights(const GeometryCollector& geometry, gltf::Builder& builder, GLTFExport& summary) {
    for (const Light& light : geometry.lights()) {
        const uint32_t c = light.colour;
        builder.addPointLight(
            gltfAxes(light.position),
            {((c >> 16) & 255) / 255.0f, ((c >> 8) & 255) / 255.0f, (c & 255) / 255.0f},
            "light " + std::to_string(++summary.lights));
    }
}

json scenarioJson(const Scenario& scenario) {
    json values = json::object();
    for (const int32_t variable :
         {variables::kDayOfYear, variables::kComplexity, variables::kTimeOfDay}) {
        values[std::to_string(variable)] = scenario.value(variable);
    }
    for (const auto& [variable, value] : scenario.values())
        values[std::to_string(variable)] = value;
    return values;
}

}  // namespace

GLTFExport MDLObject::exportGLTF(const std::string& f, const std::string& textureFolder,
                                 const std::optional<Scenario>& scenario) const {
    return exportGLTF(f, GLTFOptions{textureFolder, scenario, false});
}

GLTFExport MDLObject::exportGLTF(const std::string& f, const GLTFOptions& options) const {
    try {
        const Output out = outputOf(f);
        GeometryCollector geometry;
        walk(geometry, options.scenario);

        GLTFExport summary;
        gltf::Builder builder;
        Looks looks(*this, builder, options, summary);
        const StreamAnalysis analysis(*commandList_);
        bool seasonal = false;
        for (auto& [key, mesh] :
             nodesOf(geometry, options.scenario ? nullptr : &analysis, looks, summary)) {
            std::vector<gltf::Primitive> primitives = mesh.takePrimitives();
            summary.primitives += static_cast<int32_t>(primitives.size());
            for (const gltf::Primitive& primitive : primitives)
                seasonal = seasonal || !primitive.mappings.empty();
            if (builder.addMeshNode(key.name(), primitives, key.extras()) >= 0) ++summary.nodes;
        }
        if (seasonal) builder.addVariants(gltf::seasonNames());
        addLights(geometry, builder, summary);

        const std::string name =
            mdlPath_.empty() ? std::string("model") : fs::utf8Path(fs::nativePath(mdlPath_).stem());
        const GuardAnalysis& guard = analysis.guard();
        json extras{{"model", fileNameFromModelText(name)},
                    {"isft", utf8FromWindows1252(isftText())},
                    {"guard", guard.guardedCall() == 0 ? json(nullptr) : json(guard.formula())},
                    {"boundingBox", boxJson(required(boundingBox_))},
                    {"axes", "glTF (x, y, z) is the model's (x, y, -z): x east, y up, z south"}};
        if (options.scenario) extras["scenario"] = scenarioJson(*options.scenario);
        builder.finish(fileNameFromModelText(name), extras);
        writeFiles(out, builder, summary);
        return summary;
    } catch (Error& error) {
        throw error.setFile(f);
    }
}

}  // namespace velmora
