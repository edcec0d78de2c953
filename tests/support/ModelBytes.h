#pragma once

#include "support/Bytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// Model files built byte by byte from their parts.
namespace modelbytes {

using namespace testbytes;

using Rgba = std::array<float, 4>;

struct Material {
    Rgba diffuse{}, ambient{}, specular{}, emissive{};
    float power = 0;
};

struct Vert {
    float x = 0, y = 0, z = 0, nx = 0, ny = 0, nz = 0, tx = 0, ty = 0;
};

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
inline const auto zBias = [](int value) { return le16(0xAC) + le16(value); };
inline const auto bglEnd = [] { return le16(0xBD); };

// A model: "MDLH" and "BBOX", then "EXTE" holding "TEXT", "MATE", "VERT" and "BGL ".
struct Model {
    std::vector<Material> materials;
    std::vector<std::string> textures;
    std::vector<Vert> vertices;
    std::string commands;
    std::array<float, 6> box{-1, -1, -1, 1, 1, 1};  // minima, then maxima
    std::vector<std::array<int, 3>> drawn;  // vertex numbers of every triangle, in stream order

    void draw(int base, const std::vector<std::array<int, 3>>& items) {
        commands += triangleList(base, items);
        for (const auto& [a, b, c] : items)
            drawn.push_back({base + a, base + b, base + c});
    }

    std::string bytes() const {
        const auto count = [](const auto& entries) { return le16(std::ssize(entries)) + le32(0); };
        std::string header, bbox, mate = le16(0xB6) + count(materials),
                                  text = le16(0xB7) + count(textures),
                                  vert = le16(0xB5) + count(vertices);
        for (int i = 1; i <= 9; ++i)
            header += le32(i);
        for (float v : box)
            bbox += f32(v);
        for (const Material& m : materials) {
            for (const Rgba* c : {&m.diffuse, &m.ambient, &m.specular, &m.emissive})
                for (float v : *c)
                    mate += f32(v);
            mate += f32(m.power);
        }
        // Textures named after their bitmaps, of type 1, white, size 0.
        for (const std::string& name : textures)
            text +=
                le32(1) + le32(-1) + le32(0) + f32(0) + name + std::string(64 - name.size(), '\0');
        for (const Vert& v : vertices)
            for (float c : {v.x, v.y, v.z, v.nx, v.ny, v.nz, v.tx, v.ty})
                vert += f32(c);
        const std::string inner = section("TEXT", text + le16(0x22)) +
                                  section("MATE", mate + le16(0x22)) +
                                  section("VERT", vert + le16(0x22)) + section("BGL ", commands);
        return riff(section("MDLH", header) + section("BBOX", bbox) + section("EXTE", inner));
    }
};

}  // namespace modelbytes
