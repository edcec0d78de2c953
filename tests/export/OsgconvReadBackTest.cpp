#include <velmora/MDLObject.h>

#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

using namespace velmora;

// OpenSceneGraph's osgconv, an independent OpenFlight reader, converts the database to
// Wavefront OBJ with every face kept apart: the faces' objects, their vertices and triangles in
// face order, and the images of their materials come back.
TEST(OsgconvReadBack, TexturedModelComesBackWithItsFacesVerticesAndTextures) {
    if (std::system("command -v osgconv >/dev/null") != 0) {
        GTEST_SKIP() << "osgconv (package openscenegraph) is not installed";
    }
    // Eight corners of a house with a wall and a roof texture, and four triangles over two lists.
    modelbytes::Model model;
    model.materials = {{{1, 0, 0, 1}}, {{0, 0.5f, 1, 1}}};
    model.textures = {"Wall.bmp", "ROOF.BMP"};
    for (int i = 0; i < 8; ++i) {
        model.vertices.push_back({static_cast<float>(i % 2) * 4 - 2,
                                  static_cast<float>(i / 4) * 3 + 0.5f,
                                  static_cast<float>((i / 2) % 2) * 6 - 3.25f, 0, 1, 0,
                                  static_cast<float>(i % 2), static_cast<float>(i / 4)});
    }
    model.commands += modelbytes::setMaterial(0, 0);
    model.draw(0, {{0, 1, 5}, {0, 5, 4}});
    model.commands += modelbytes::setMaterial(1, 1);
    model.draw(2, {{2, 3, 5}, {0, 1, 4}});
    model.commands += modelbytes::bglEnd();

    TempDir dir;
    MDLObject object;
    object.readMDLBytes(model.bytes());
    // 2 x 2 uncompressed true-colour TGAs, so that the reader finds every texture it is told of.
    const std::string tga =
        testbytes::bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2, 0, 24, 0});
    writeFile(dir.file("wall.tga"), tga + std::string(12, '\x7F'));
    writeFile(dir.file("roof.tga"), tga + std::string(12, '\x7F'));
    object.exportFLT(dir.file("model.flt"), "tga", true, 0.0f);
    const int status =
        std::system(("timeout 60 osgconv -O preserveFace '" + dir.file("model.flt") + "' '" +
                     dir.file("model.obj") + "' >'" + dir.file("log") + "' 2>&1")
                        .c_str());
    const std::string log = readFile(dir.file("log"));
    const std::string messages = log.substr(0, log.find("Data written to"));
    ASSERT_EQ(status, 0) << messages;
    EXPECT_EQ(messages, "");

    using Position = std::array<double, 3>;
    std::vector<Position> vertices;
    std::vector<std::array<Position, 3>> triangles;
    std::string objects;
    std::set<std::string> images;
    std::istringstream text(readFile(dir.file("model.obj")) + readFile(dir.file("model.mtl")));
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string key, value;
        words >> key;
        if (key == "o") objects += line + ";";
        if (key == "v")
            words >> vertices.emplace_back()[0] >> vertices.back()[1] >> vertices.back()[2];
        if (key == "map_Kd" && words >> value)
            images.insert(std::filesystem::path(value).filename());
        if (key == "f") {
            for (Position& corner : triangles.emplace_back()) {
                words >> value;  // "vertex/texture/normal", 1-based
                corner = vertices.at(std::stoul(value) - 1);
            }
        }
    }
    for (const char* face : {"_p1_", "_p2_", "_p3_", "_p4_"})
        EXPECT_NE(objects.find(face), std::string::npos) << face << " in " << objects;
    EXPECT_EQ(images, (std::set<std::string>{"roof.tga", "wall.tga"}));
    // The triangles in the file's frame, where y and z are exchanged.
    ASSERT_EQ(triangles.size(), model.drawn.size());
    for (std::size_t i = 0; i < model.drawn.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& v = model.vertices.at(static_cast<std::size_t>(model.drawn[i][k]));
            const Position want{v.x, v.z, v.y};
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(triangles[i][k][axis], want[axis], 1e-5) << i << "," << k;
        }
    }
}
