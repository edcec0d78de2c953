#pragma once

#include "support/Bytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// Builders for small model files: the payloads of "BBOX", "MATE", "TEXT", "VERT" and the
// commands of "BGL ", and a whole "MDL9" file around them.
namespace modelbytes {

using testbytes::f32;
using testbytes::le16;
using testbytes::le32;

using Rgba = std::array<float, 4>;

struct Material {
    Rgba diffuse{};
    Rgba ambient{};
    Rgba specular{};
    Rgba emissive{};
    float power = 0;
};

struct Vert {
    float x = 0, y = 0, z = 0;
    float nx = 0, ny = 0, nz = 0;
    float tx = 0, ty = 0;
};

inline std::string bbox(float xmin, float ymin, float zmin, float xmax, float ymax, float zmax) {
    return f32(xmin) + f32(ymin) + f32(zmin) + f32(xmax) + f32(ymax) + f32(zmax);
}

inline std::string mate(const std::vector<Material>& materials) {
    std::string out = le16(0xB6) + le16(static_cast<int32_t>(materials.size())) + le32(0);
    for (const Material& m : materials) {
        for (const Rgba* c : {&m.diffuse, &m.ambient, &m.specular, &m.emissive}) {
            for (float v : *c)
                out += f32(v);
        }
        out += f32(m.power);
    }
    return out + le16(0x22);
}

// Entries named after their bitmaps, of type 1 and colour 0.
inline std::string text(const std::vector<std::string>& names) {
    std::string out = le16(0xB7) + le16(static_cast<int32_t>(names.size())) + le32(0);
    for (const std::string& name : names) {
        out += le32(1) + le32(0) + le32(0) + f32(0) + name + std::string(64 - name.size(), '\0');
    }
    return out + le16(0x22);
}

inline std::string vert(const std::vector<Vert>& vertices) {
    std::string out = le16(0xB5) + le16(static_cast<int32_t>(vertices.size())) + le32(0);
    for (const Vert& v : vertices) {
        for (float f : {v.x, v.y, v.z, v.nx, v.ny, v.nz, v.tx, v.ty})
            out += f32(f);
    }
    return out + le16(0x22);
}

// Commands of the "BGL " stream.
inline std::string setMaterial(int material, int texture) {
    return le16(0xB8) + le16(material) + le16(texture);
}

inline std::string triangleList(int base, const std::vector<std::array<int, 3>>& triangles) {
    std::string out =
        le16(0xB9) + le16(base) + le16(0) + le16(static_cast<int32_t>(3 * triangles.size()));
    for (const auto& t : triangles)
        out += le16(t[0]) + le16(t[1]) + le16(t[2]);
    return out;
}

inline std::string zBias(int value) {
    return le16(0xAC) + le16(value);
}
inline std::string bglEnd() {
    return le16(0xBD);
}

// A whole model file: "BBOX", then "EXTE" holding "TEXT", "MATE", "VERT" and "BGL ".
inline std::string model(const std::string& boundingBox, const std::string& materials,
                         const std::string& textures, const std::string& vertices,
                         const std::string& commands) {
    using testbytes::section;
    const std::string inner = section("TEXT", textures) + section("MATE", materials) +
                              section("VERT", vertices) + section("BGL ", commands);
    return testbytes::riff(section("BBOX", boundingBox) + section("EXTE", inner));
}

}  // namespace modelbytes
