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
    bool textured = false;
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
};

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
    // The scene: one root node holding every node added, with `extras`.
    void finish(const std::string& name, nlohmann::json extras);

    // One .glb file.
    std::string glb() const;
    // The JSON of a .gltf whose buffer is the file `binName` and whose images are `imageNames`.
    std::string gltfJson(const std::string& binName,
                         const std::vector<std::string>& imageNames) const;
    const std::string& binary() const { return binary_; }
    const std::vector<std::string>& images() const { return images_; }

  private:
    int32_t addView(const void* data, std::size_t bytes, int32_t target);
    int32_t addAccessor(int32_t view, int32_t componentType, std::size_t count, const char* type,
                        nlohmann::json extra = {});

    nlohmann::json document_;
    std::string binary_;
    std::vector<std::string> images_;
    std::vector<int32_t> nodes_;
    int32_t lights_ = 0;
};

}  // namespace velmora::gltf
