#include "export/GLTFBuilder.h"

#include <velmora/Version.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

namespace velmora::gltf {

namespace {

using nlohmann::json;

constexpr int32_t kFloat = 5126;
constexpr int32_t kUnsignedShort = 5123;
constexpr int32_t kUnsignedInt = 5125;
constexpr int32_t kArrayBuffer = 34962;
constexpr int32_t kElementArrayBuffer = 34963;

void pad(std::string& bytes, char with) {
    while (bytes.size() % 4 != 0)
        bytes.push_back(with);
}

void appendLE32(std::string& out, uint32_t value) {
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

}  // namespace

void Primitive::addTriangle(const std::array<Vertex, 3>& corners) {
    for (const Vertex& corner : corners) {
        const auto [found, added] = known.emplace(corner, static_cast<uint32_t>(vertices.size()));
        if (added) vertices.push_back(corner);
        indices.push_back(found->second);
    }
}

Builder::Builder() {
    document_["asset"] = {{"version", "2.0"}, {"generator", "Velmora " + versionString()}};
    document_["scene"] = 0;
    for (const char* list : {"nodes", "meshes", "materials", "accessors", "bufferViews"})
        document_[list] = json::array();
}

int32_t Builder::addView(const void* data, std::size_t bytes, int32_t target) {
    pad(binary_, '\0');
    json view{{"buffer", 0}, {"byteOffset", binary_.size()}, {"byteLength", bytes}};
    if (target != 0) view["target"] = target;
    binary_.append(static_cast<const char*>(data), bytes);
    document_["bufferViews"].push_back(view);
    return static_cast<int32_t>(document_["bufferViews"].size() - 1);
}

int32_t Builder::addAccessor(int32_t view, int32_t componentType, std::size_t count,
                             const char* type, json extra) {
    json accessor{
        {"bufferView", view}, {"componentType", componentType}, {"count", count}, {"type", type}};
    if (!extra.is_null()) accessor.update(extra);
    document_["accessors"].push_back(accessor);
    return static_cast<int32_t>(document_["accessors"].size() - 1);
}

int32_t Builder::addImage(std::string pngBytes) {
    images_.push_back(std::move(pngBytes));
    return static_cast<int32_t>(images_.size() - 1);
}

int32_t Builder::addMaterial(const MaterialLook& look) {
    json pbr{{"baseColorFactor", look.baseColour},
             {"metallicFactor", 0.0},
             {"roughnessFactor", look.roughness}};
    if (look.image) pbr["baseColorTexture"] = {{"index", *look.image}};
    // Files differ in winding, so both sides of a surface show.
    json material{{"name", look.name}, {"pbrMetallicRoughness", pbr}, {"doubleSided", true}};
    if (look.emissive != std::array<float, 3>{0, 0, 0}) material["emissiveFactor"] = look.emissive;
    if (look.alpha == MaterialLook::Alpha::Mask) {
        material["alphaMode"] = "MASK";
        material["alphaCutoff"] = 0.5;
    } else if (look.alpha == MaterialLook::Alpha::Blend) {
        material["alphaMode"] = "BLEND";
    }
    document_["materials"].push_back(material);
    return static_cast<int32_t>(document_["materials"].size() - 1);
}

int32_t Builder::addMeshNode(const std::string& name, const std::vector<Primitive>& primitives,
                             json extras) {
    json parts = json::array();
    for (const Primitive& primitive : primitives) {
        if (primitive.indices.empty()) continue;
        std::vector<float> positions, normals, uvs;
        std::array<float, 3> low{HUGE_VALF, HUGE_VALF, HUGE_VALF};
        std::array<float, 3> high{-HUGE_VALF, -HUGE_VALF, -HUGE_VALF};
        for (const Vertex& v : primitive.vertices) {
            positions.insert(positions.end(), v.position.begin(), v.position.end());
            normals.insert(normals.end(), v.normal.begin(), v.normal.end());
            uvs.insert(uvs.end(), v.uv.begin(), v.uv.end());
            for (std::size_t a = 0; a < 3; ++a) {
                low[a] = std::min(low[a], v.position[a]);
                high[a] = std::max(high[a], v.position[a]);
            }
        }
        const std::size_t count = primitive.vertices.size();
        json attributes;
        attributes["POSITION"] =
            addAccessor(addView(positions.data(), positions.size() * 4, kArrayBuffer), kFloat,
                        count, "VEC3", {{"min", low}, {"max", high}});
        attributes["NORMAL"] = addAccessor(
            addView(normals.data(), normals.size() * 4, kArrayBuffer), kFloat, count, "VEC3");
        if (primitive.textured) {
            attributes["TEXCOORD_0"] = addAccessor(
                addView(uvs.data(), uvs.size() * 4, kArrayBuffer), kFloat, count, "VEC2");
        }
        int32_t indices = 0;
        if (count <= 0xFFFF) {
            std::vector<uint16_t> narrow(primitive.indices.begin(), primitive.indices.end());
            indices = addAccessor(addView(narrow.data(), narrow.size() * 2, kElementArrayBuffer),
                                  kUnsignedShort, narrow.size(), "SCALAR");
        } else {
            indices = addAccessor(addView(primitive.indices.data(), primitive.indices.size() * 4,
                                          kElementArrayBuffer),
                                  kUnsignedInt, primitive.indices.size(), "SCALAR");
        }
        parts.push_back({{"attributes", attributes},
                         {"indices", indices},
                         {"material", primitive.material},
                         {"mode", 4}});
    }
    if (parts.empty()) return -1;
    document_["meshes"].push_back({{"name", name}, {"primitives", parts}});
    json node{{"name", name}, {"mesh", document_["meshes"].size() - 1}};
    if (!extras.is_null()) node["extras"] = std::move(extras);
    document_["nodes"].push_back(node);
    nodes_.push_back(static_cast<int32_t>(document_["nodes"].size() - 1));
    return nodes_.back();
}

int32_t Builder::addPointLight(const std::array<float, 3>& position,
                               const std::array<float, 3>& colour, const std::string& name) {
    auto& lights = document_["extensions"]["KHR_lights_punctual"]["lights"];
    lights.push_back({{"type", "point"}, {"color", colour}, {"intensity", 1.0}, {"name", name}});
    document_["nodes"].push_back(
        {{"name", name},
         {"translation", position},
         {"extensions", {{"KHR_lights_punctual", {{"light", lights.size() - 1}}}}}});
    nodes_.push_back(static_cast<int32_t>(document_["nodes"].size() - 1));
    document_["extensionsUsed"] = {"KHR_lights_punctual"};
    return lights_++;
}

void Builder::finish(const std::string& name, json extras) {
    if (!images_.empty()) {
        document_["samplers"] = {
            {{"magFilter", 9729}, {"minFilter", 9987}, {"wrapS", 10497}, {"wrapT", 10497}}};
        document_["textures"] = json::array();
        document_["images"] = json::array();
        for (std::size_t i = 0; i < images_.size(); ++i) {
            document_["textures"].push_back({{"sampler", 0}, {"source", i}});
            document_["images"].push_back(json::object());
        }
    }
    json root{{"name", name}, {"extras", std::move(extras)}};
    if (!nodes_.empty()) root["children"] = nodes_;
    document_["nodes"].push_back(root);
    document_["scenes"] = {{{"name", name}, {"nodes", {document_["nodes"].size() - 1}}}};
    // A glTF array holds at least one entry: lists that stayed empty go.
    for (const char* list : {"meshes", "materials", "accessors", "bufferViews"}) {
        if (document_[list].empty()) document_.erase(list);
    }
}

std::string Builder::glb() const {
    json document = document_;
    std::string bin = binary_;
    for (std::size_t i = 0; i < images_.size(); ++i) {
        pad(bin, '\0');
        document["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", bin.size()}, {"byteLength", images_[i].size()}});
        bin += images_[i];
        document["images"][i] = {{"bufferView", document["bufferViews"].size() - 1},
                                 {"mimeType", "image/png"}};
    }
    pad(bin, '\0');
    if (!bin.empty()) document["buffers"] = {{{"byteLength", bin.size()}}};
    std::string text = document.dump();
    pad(text, ' ');
    std::string out = "glTF";
    appendLE32(out, 2);
    appendLE32(out,
               static_cast<uint32_t>(12 + 8 + text.size() + (bin.empty() ? 0 : 8 + bin.size())));
    appendLE32(out, static_cast<uint32_t>(text.size()));
    appendLE32(out, 0x4E4F534A);  // JSON
    out += text;
    if (!bin.empty()) {
        appendLE32(out, static_cast<uint32_t>(bin.size()));
        appendLE32(out, 0x004E4942);  // BIN
        out += bin;
    }
    return out;
}

namespace {

// A file name as a relative URI: every byte but the unreserved ones percent-encoded.
std::string uriOf(const std::string& name) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (const unsigned char c : name) {
        if (std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            out.push_back(static_cast<char>(c));
        } else {
            out += '%';
            out.push_back(digits[c >> 4]);
            out.push_back(digits[c & 15]);
        }
    }
    return out;
}

}  // namespace

std::string Builder::gltfJson(const std::string& binName,
                              const std::vector<std::string>& imageNames) const {
    json document = document_;
    if (!binary_.empty()) {
        document["buffers"] = {{{"byteLength", binary_.size()}, {"uri", uriOf(binName)}}};
    }
    for (std::size_t i = 0; i < images_.size(); ++i)
        document["images"][i] = {{"uri", uriOf(imageNames[i])}};
    return document.dump(1);
}

}  // namespace velmora::gltf
