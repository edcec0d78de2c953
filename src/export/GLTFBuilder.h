#pragma once

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// Builds a glTF 2.0 document: the JSON and the one binary buffer it points into.
namespace velmora::gltf {

class JsonText;

struct Vertex {
    std::array<float, 3> position{};
    std::array<float, 3> normal{};
    std::array<float, 2> uv{};
    bool operator<(const Vertex& other) const {
        return std::tie(position, normal, uv) < std::tie(other.position, other.normal, other.uv);
    }
};

// The triangles of one material in one node, with their corners shared where they are equal.
struct Primitive {
    int32_t material = 0;
    // The materials other variants of the document show it in: each with the variants' indices
    // (KHR_materials_variants); a variant not named shows `material`.
    std::vector<std::pair<int32_t, std::vector<int32_t>>> mappings;
    bool textured = false;  // has texture coordinates: one of its materials has an image
    nlohmann::json extras;  // null for none
    std::vector<Vertex> vertices;
    std::vector<uint32_t> indices;
    std::map<Vertex, uint32_t> known;

    void addTriangle(const std::array<Vertex, 3>& corners);
};

struct MaterialLook {
    std::string name;
    std::array<float, 4> baseColour{1, 1, 1, 1};
    std::array<float, 3> emissive{0, 0, 0};
    float roughness = 1;
    std::optional<int32_t> image;  // index of an added image
    enum class Alpha { Opaque, Mask, Blend } alpha = Alpha::Opaque;
    bool doubleSided = false;  // otherwise back faces are culled
};

// The document's many accessors, buffer views, materials and meshes are kept as plain records
// and written as text at the end; the few other parts are JSON values.
class Builder {
  public:
    Builder();

    int32_t addImage(std::string pngBytes);
    int32_t addMaterial(const MaterialLook& look);
    // A node with a mesh of the primitives (those without triangles are left out); -1 when
    // none has any.
    int32_t addMeshNode(const std::string& name, const std::vector<Primitive>& primitives,
                        nlohmann::json extras);
    int32_t addPointLight(const std::array<float, 3>& position, const std::array<float, 3>& colour,
                          const std::string& name);
    // The material variants the primitives' mappings count in, by their names.
    void addVariants(const std::vector<std::string>& names);
    // The scene: one root node holding every node added, with `extras`.
    void finish(const std::string& name, nlohmann::json extras);

    // The document as one .glb file; it takes the binary buffer along, so it ends the builder's
    // work, as gltfJson does.
    std::string glb();
    // The JSON of a .gltf whose buffer is the file `binName` and whose images are `imageNames`.
    std::string gltfJson(const std::string& binName, const std::vector<std::string>& imageNames);
    const std::string& binary() const { return binary_; }
    const std::vector<std::string>& images() const { return images_; }

  private:
    struct Bounds {
        std::array<float, 3> low;
        std::array<float, 3> high;
    };
    struct View {
        std::size_t offset = 0;
        std::size_t length = 0;
        int32_t target = 0;  // 0: none
    };
    struct Accessor {
        int32_t view = 0;
        int32_t componentType = 0;
        std::size_t count = 0;
        const char* type = "";
        std::optional<Bounds> bounds;
    };
    struct Part {
        std::vector<std::pair<const char*, int32_t>> attributes;  // in the order of their names
        int32_t indices = 0;
        int32_t material = 0;
        std::vector<std::pair<int32_t, std::vector<int32_t>>> mappings;
        nlohmann::json extras;
    };
    struct Mesh {
        std::string name;
        std::vector<Part> parts;
    };

    int32_t addView(const void* data, std::size_t bytes, int32_t target);
    int32_t addAccessor(int32_t view, int32_t componentType, std::size_t count, const char* type,
                        const std::optional<Bounds>& bounds = std::nullopt);
    Part partOf(const Primitive& primitive);
    void useExtension(const char* name);
    std::string text(bool pretty) const;
    void writeViews(JsonText& out) const;
    void writeAccessors(JsonText& out) const;
    void writeMaterials(JsonText& out) const;
    void writeMeshes(JsonText& out) const;
    static void writePart(JsonText& out, const Part& part);

    nlohmann::json document_;  // every part but the four kept as records
    std::vector<View> views_;
    std::vector<Accessor> accessors_;
    std::vector<MaterialLook> materials_;
    std::vector<Mesh> meshes_;
    std::string binary_;
    std::vector<std::string> images_;
    std::vector<int32_t> nodes_;
    int32_t lights_ = 0;
};

}  // namespace velmora::gltf
