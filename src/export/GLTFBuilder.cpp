#include "export/GLTFBuilder.h"

#include <velmora/Version.h>

#include "export/JsonText.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <variant>

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
    document_["nodes"] = json::array();
}

int32_t Builder::addView(const void* data, std::size_t bytes, int32_t target) {
    pad(binary_, '\0');
    views_.push_back({binary_.size(), bytes, target});
    binary_.append(static_cast<const char*>(data), bytes);
    return static_cast<int32_t>(views_.size() - 1);
}

int32_t Builder::addAccessor(int32_t view, int32_t componentType, std::size_t count,
                             const char* type, const std::optional<Bounds>& bounds) {
    accessors_.push_back({view, componentType, count, type, bounds});
    return static_cast<int32_t>(accessors_.size() - 1);
}

int32_t Builder::addImage(std::string pngBytes) {
    images_.push_back(std::move(pngBytes));
    return static_cast<int32_t>(images_.size() - 1);
}

int32_t Builder::addMaterial(const MaterialLook& look) {
    materials_.push_back(look);
    return static_cast<int32_t>(materials_.size() - 1);
}

// The accessors of one primitive, each over a buffer view of its own.
Builder::Part Builder::partOf(const Primitive& primitive) {
    std::vector<float> positions, normals, uvs;
    const std::size_t count = primitive.vertices.size();
    positions.reserve(3 * count);
    normals.reserve(3 * count);
    uvs.reserve(2 * count);
    Bounds bounds{{HUGE_VALF, HUGE_VALF, HUGE_VALF}, {-HUGE_VALF, -HUGE_VALF, -HUGE_VALF}};
    for (const Vertex& v : primitive.vertices) {
        positions.insert(positions.end(), v.position.begin(), v.position.end());
        normals.insert(normals.end(), v.normal.begin(), v.normal.end());
        uvs.insert(uvs.end(), v.uv.begin(), v.uv.end());
        for (std::size_t a = 0; a < 3; ++a) {
            bounds.low[a] = std::min(bounds.low[a], v.position[a]);
            bounds.high[a] = std::max(bounds.high[a], v.position[a]);
        }
    }
    Part part;
    const int32_t position =
        addAccessor(addView(positions.data(), positions.size() * 4, kArrayBuffer), kFloat, count,
                    "VEC3", bounds);
    part.attributes.emplace_back(
        "NORMAL", addAccessor(addView(normals.data(), normals.size() * 4, kArrayBuffer), kFloat,
                              count, "VEC3"));
    part.attributes.emplace_back("POSITION", position);
    if (primitive.textured) {
        part.attributes.emplace_back(
            "TEXCOORD_0",
            addAccessor(addView(uvs.data(), uvs.size() * 4, kArrayBuffer), kFloat, count, "VEC2"));
    }
    if (count <= 0xFFFF) {
        std::vector<uint16_t> narrow(primitive.indices.begin(), primitive.indices.end());
        part.indices = addAccessor(addView(narrow.data(), narrow.size() * 2, kElementArrayBuffer),
                                   kUnsignedShort, narrow.size(), "SCALAR");
    } else {
        part.indices = addAccessor(
            addView(primitive.indices.data(), primitive.indices.size() * 4, kElementArrayBuffer),
            kUnsignedInt, primitive.indices.size(), "SCALAR");
    }
    part.material = primitive.material;
    part.mappings = primitive.mappings;
    part.extras = primitive.extras;
    return part;
}

int32_t Builder::addMeshNode(const std::string& name, const std::vector<Primitive>& primitives,
                             json extras) {
    Mesh mesh{name, {}};
    for (const Primitive& primitive : primitives) {
        if (!primitive.indices.empty()) mesh.parts.push_back(partOf(primitive));
    }
    if (mesh.parts.empty()) return -1;
    meshes_.push_back(std::move(mesh));
    json node{{"name", name}, {"mesh", meshes_.size() - 1}};
    if (!extras.is_null()) node["extras"] = std::move(extras);
    json& nodes = document_["nodes"];
    nodes.push_back(std::move(node));
    nodes_.push_back(static_cast<int32_t>(nodes.size() - 1));
    return nodes_.back();
}

int32_t Builder::addPointLight(const std::array<float, 3>& position,
                               const std::array<float, 3>& colour, const std::string& name) {
    json light(json::value_t::object);
    light.emplace("type", "point");
    light.emplace("color", colour);
    light.emplace("intensity", 1.0);
    light.emplace("name", name);
    json& lights = document_["extensions"]["KHR_lights_punctual"]["lights"];
    lights.push_back(std::move(light));
    json reference(json::value_t::object);
    reference.emplace("light", lights.size() - 1);
    json extension(json::value_t::object);
    extension.emplace("KHR_lights_punctual", std::move(reference));
    json node(json::value_t::object);
    node.emplace("name", name);
    node.emplace("translation", position);
    node.emplace("extensions", std::move(extension));
    json& nodes = document_["nodes"];
    nodes.push_back(std::move(node));
    nodes_.push_back(static_cast<int32_t>(nodes.size() - 1));
    if (lights_ == 0) useExtension("KHR_lights_punctual");
    return lights_++;
}

void Builder::addVariants(const std::vector<std::string>& names) {
    json variants = json::array();
    for (const std::string& name : names)
        variants.push_back({{"name", name}});
    document_["extensions"]["KHR_materials_variants"]["variants"] = std::move(variants);
    useExtension("KHR_materials_variants");
}

void Builder::useExtension(const char* name) {
    json& used = document_["extensionsUsed"];
    if (std::find(used.begin(), used.end(), name) == used.end()) used.push_back(name);
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
    document_["nodes"].push_back(std::move(root));
    document_["scenes"] = {{{"name", name}, {"nodes", {document_["nodes"].size() - 1}}}};
}

void Builder::writeViews(JsonText& out) const {
    out.beginArray();
    for (const View& view : views_) {
        out.beginObject();
        out.key("buffer");
        out.number(int64_t{0});
        out.key("byteLength");
        out.number(static_cast<int64_t>(view.length));
        out.key("byteOffset");
        out.number(static_cast<int64_t>(view.offset));
        if (view.target != 0) {
            out.key("target");
            out.number(int64_t{view.target});
        }
        out.endObject();
    }
    out.endArray();
}

void Builder::writeAccessors(JsonText& out) const {
    out.beginArray();
    for (const Accessor& accessor : accessors_) {
        out.beginObject();
        out.key("bufferView");
        out.number(int64_t{accessor.view});
        out.key("componentType");
        out.number(int64_t{accessor.componentType});
        out.key("count");
        out.number(static_cast<int64_t>(accessor.count));
        if (accessor.bounds) {
            out.key("max");
            out.floats(accessor.bounds->high.data(), 3);
            out.key("min");
            out.floats(accessor.bounds->low.data(), 3);
        }
        out.key("type");
        out.string(accessor.type);
        out.endObject();
    }
    out.endArray();
}

void Builder::writeMaterials(JsonText& out) const {
    out.beginArray();
    for (const MaterialLook& look : materials_) {
        out.beginObject();
        if (look.alpha == MaterialLook::Alpha::Mask) {
            out.key("alphaCutoff");
            out.number(0.5);
        }
        if (look.alpha != MaterialLook::Alpha::Opaque) {
            out.key("alphaMode");
            out.string(look.alpha == MaterialLook::Alpha::Mask ? "MASK" : "BLEND");
        }
        if (look.doubleSided) {
            out.key("doubleSided");
            out.boolean(true);
        }
        if (look.emissive != std::array<float, 3>{0, 0, 0}) {
            out.key("emissiveFactor");
            out.floats(look.emissive.data(), 3);
        }
        out.key("name");
        out.string(look.name);
        out.key("pbrMetallicRoughness");
        out.beginObject();
        out.key("baseColorFactor");
        out.floats(look.baseColour.data(), 4);
        if (look.image) {
            out.key("baseColorTexture");
            out.beginObject();
            out.key("index");
            out.number(int64_t{*look.image});
            out.endObject();
        }
        out.key("metallicFactor");
        out.number(0.0);
        out.key("roughnessFactor");
        out.number(static_cast<double>(look.roughness));
        out.endObject();
        out.endObject();
    }
    out.endArray();
}

void Builder::writeMeshes(JsonText& out) const {
    out.beginArray();
    for (const Mesh& mesh : meshes_) {
        out.beginObject();
        out.key("name");
        out.string(mesh.name);
        out.key("primitives");
        out.beginArray();
        for (const Part& part : mesh.parts)
            writePart(out, part);
        out.endArray();
        out.endObject();
    }
    out.endArray();
}

void Builder::writePart(JsonText& out, const Part& part) {
    out.beginObject();
    out.key("attributes");
    out.beginObject();
    for (const auto& [name, accessor] : part.attributes) {
        out.key(name);
        out.number(int64_t{accessor});
    }
    out.endObject();
    if (!part.mappings.empty()) {
        out.key("extensions");
        out.beginObject();
        out.key("KHR_materials_variants");
        out.beginObject();
        out.key("mappings");
        out.beginArray();
        for (const auto& [material, variants] : part.mappings) {
            out.beginObject();
            out.key("material");
            out.number(int64_t{material});
            out.key("variants");
            out.value(variants);
            out.endObject();
        }
        out.endArray();
        out.endObject();
        out.endObject();
    }
    if (!part.extras.is_null()) {
        out.key("extras");
        out.value(part.extras);
    }
    out.key("indices");
    out.number(int64_t{part.indices});
    out.key("material");
    out.number(int64_t{part.material});
    out.key("mode");
    out.number(int64_t{4});
    out.endObject();
}

// The document with its keys in order, as a dump of one JSON value would give it; a glTF array
// holds at least one entry, so lists that stayed empty are left out.
std::string Builder::text(bool pretty) const {
    using Writer = void (Builder::*)(JsonText&) const;
    std::map<std::string, std::variant<const json*, Writer>> parts;
    for (auto part = document_.begin(); part != document_.end(); ++part)
        parts.emplace(part.key(), &part.value());
    if (!accessors_.empty()) parts.emplace("accessors", &Builder::writeAccessors);
    if (!views_.empty()) parts.emplace("bufferViews", &Builder::writeViews);
    if (!materials_.empty()) parts.emplace("materials", &Builder::writeMaterials);
    if (!meshes_.empty()) parts.emplace("meshes", &Builder::writeMeshes);
    JsonText out(pretty);
    out.beginObject();
    for (const auto& [name, part] : parts) {
        out.key(name);
        if (const json* const* value = std::get_if<const json*>(&part)) {
            out.value(**value);
        } else {
            (this->*std::get<Writer>(part))(out);
        }
    }
    out.endObject();
    return out.take();
}

std::string Builder::glb() {
    std::string bin = std::move(binary_);
    binary_.clear();
    for (std::size_t i = 0; i < images_.size(); ++i) {
        pad(bin, '\0');
        views_.push_back({bin.size(), images_[i].size(), 0});
        bin += images_[i];
        document_["images"][i] = {{"bufferView", views_.size() - 1}, {"mimeType", "image/png"}};
    }
    pad(bin, '\0');
    if (!bin.empty()) document_["buffers"] = {{{"byteLength", bin.size()}}};
    std::string json = text(false);
    pad(json, ' ');
    std::string out = "glTF";
    out.reserve(28 + json.size() + bin.size());
    appendLE32(out, 2);
    appendLE32(out,
               static_cast<uint32_t>(12 + 8 + json.size() + (bin.empty() ? 0 : 8 + bin.size())));
    appendLE32(out, static_cast<uint32_t>(json.size()));
    appendLE32(out, 0x4E4F534A);  // JSON
    out += json;
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
                              const std::vector<std::string>& imageNames) {
    if (!binary_.empty()) {
        document_["buffers"] = {{{"byteLength", binary_.size()}, {"uri", uriOf(binName)}}};
    }
    for (std::size_t i = 0; i < images_.size(); ++i)
        document_["images"][i] = {{"uri", uriOf(imageNames[i])}};
    return text(true);
}

}  // namespace velmora::gltf
