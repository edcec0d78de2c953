#pragma once

#include "support/Bytes.h"

#include <array>
#include <string>
#include <vector>

// Model files built from their parts, for the export tests: materials, textures, vertices and
// a command stream whose triangles are remembered as they are added.
namespace modelbytes {

using testbytes::f32;
using testbytes::le16;
using testbytes::le32;

struct VertexData {
    float x, y, z, nx, ny, nz, tx, ty;
};

struct MaterialData {
    float r, g, b, a;  // the diffuse colour; the other colours are fixed
};

struct Model {
    std::vector<MaterialData> materials;
    std::vector<std::string> textures;
    std::vector<VertexData> vertices;
    std::string commands;
    std::vector<std::array<int, 3>> drawn;  // vertex numbers of every triangle, in stream order

    void setMaterial(int materialIndex, int textureIndex) {
        commands += le16(0xB8) + le16(materialIndex) + le16(textureIndex);
    }

    // A triangle list: items relative to `base`.
    void drawTriangles(int base, const std::vector<std::array<int, 3>>& items) {
        commands += le16(0xB9) + le16(base) + le16(0) + le16(static_cast<int>(items.size()) * 3);
        for (const auto& [a, b, c] : items) {
            commands += le16(a) + le16(b) + le16(c);
            drawn.push_back({base + a, base + b, base + c});
        }
    }

    void end() { commands += le16(0xBD); }

    const std::vector<std::array<int, 3>>& triangles() const { return drawn; }

    std::string bytes() const {
        std::string mate = le16(0xB6) + le16(static_cast<int>(materials.size())) + le32(0);
        for (const auto& m : materials) {
            for (float v : {m.r, m.g, m.b, m.a, 0.2f, 0.2f, 0.2f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f,
                            0.0f, 0.0f, 0.0f, 1.0f, 8.0f}) {
                mate += f32(v);
            }
        }
        mate += le16(0x22);

        std::string text = le16(0xB7) + le16(static_cast<int>(textures.size())) + le32(0);
        for (const auto& name : textures) {
            text += le32(1) + testbytes::bytes({255, 255, 255, 255}) + le32(0) + f32(256.0f);
            text += name + std::string(64 - name.size(), '\0');
        }
        text += le16(0x22);

        std::string vert = le16(0xB5) + le16(static_cast<int>(vertices.size())) + le32(0);
        for (const auto& v : vertices) {
            for (float f : {v.x, v.y, v.z, v.nx, v.ny, v.nz, v.tx, v.ty})
                vert += f32(f);
        }
        vert += le16(0x22);

        return testbytes::riff(testbytes::section("MATE", mate) + testbytes::section("TEXT", text) +
                               testbytes::section("VERT", vert) +
                               testbytes::section("BGL ", commands));
    }
};

// Eight corners of a house with a wall and a roof texture, and four triangles over two lists.
inline Model texturedHouse() {
    Model m;
    m.materials = {{1.0f, 0.0f, 0.0f, 1.0f}, {0.0f, 0.5f, 1.0f, 1.0f}};
    m.textures = {"Wall.bmp", "ROOF.BMP"};
    for (int i = 0; i < 8; ++i) {
        const float x = static_cast<float>(i % 2) * 4.0f - 2.0f;
        const float y = static_cast<float>(i / 4) * 3.0f + 0.5f;
        const float z = static_cast<float>((i / 2) % 2) * 6.0f - 3.25f;
        m.vertices.push_back(
            {x, y, z, 0.0f, 1.0f, 0.0f, static_cast<float>(i % 2), static_cast<float>(i / 4)});
    }
    m.setMaterial(0, 0);
    m.drawTriangles(0, {{0, 1, 5}, {0, 5, 4}});
    m.setMaterial(1, 1);
    m.drawTriangles(2, {{2, 3, 5}, {0, 1, 4}});
    m.end();
    return m;
}

// A box of five vertices drawn with colours only.
inline Model untexturedBox() {
    Model m;
    m.materials = {{0.0f, 1.0f, 0.0f, 1.0f}};
    m.vertices = {{0, 0, 0, 0, 0, 1, 0, 0},
                  {1, 0, 0, 0, 0, 1, 0, 0},
                  {1, 1, 0, 0, 0, 1, 0, 0},
                  {0, 1, 2, 0, 0, 1, 0, 0},
                  {0.5f, -7.5f, 1, 0, 0, 1, 0, 0}};
    m.setMaterial(0, -1);
    m.drawTriangles(0, {{0, 1, 2}, {0, 2, 3}, {4, 1, 0}});
    m.end();
    return m;
}

}  // namespace modelbytes
