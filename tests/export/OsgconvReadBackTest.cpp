#include <velmora/MDLObject.h>

#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

using namespace velmora;

namespace {

using Position = std::array<double, 3>;
using Triangle = std::array<Position, 3>;

// What OpenSceneGraph's osgconv, an independent OpenFlight reader, makes of a database: it is
// converted to Wavefront OBJ with every face kept apart, which lists the faces' objects, their
// vertices and triangles in face order, and the images of their materials.
struct Scene {
    bool loaded = false;
    std::string messages;  // less the closing "Data written" line
    std::string objects;   // the object names, each followed by ";"
    std::vector<Triangle> triangles;
    std::set<std::string> images;  // file names without folders
};

Scene readBack(const std::string& database, const std::string& obj) {
    const std::string log = obj + ".log";
    Scene scene;
    scene.loaded = std::system(("timeout 60 osgconv -O preserveFace '" + database + "' '" + obj +
                                "' >'" + log + "' 2>&1")
                                   .c_str()) == 0;
    std::istringstream messages(readFile(log));
    for (std::string line; std::getline(messages, line);)
        if (line.rfind("Data written to", 0) != 0) scene.messages += line + "\n";
    if (!scene.loaded) return scene;
    std::vector<Position> vertices;
    std::istringstream text(readFile(obj) +
                            readFile(std::filesystem::path(obj).replace_extension(".mtl")));
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string key, value;
        words >> key;
        if (key == "o") {
            std::getline(words, value);
            scene.objects += value + ";";
        } else if (key == "v") {
            Position& p = vertices.emplace_back();
            words >> p[0] >> p[1] >> p[2];
        } else if (key == "f") {
            Triangle& t = scene.triangles.emplace_back();
            for (Position& corner : t) {
                words >> value;  // "vertex/texture/normal", 1-based
                corner = vertices.at(std::stoul(value) - 1);
            }
        } else if (key == "map_Kd") {
            words >> value;
            scene.images.insert(std::filesystem::path(value).filename().string());
        }
    }
    return scene;
}

// A 2 x 2 uncompressed true-colour TGA, so that the reader finds every texture it is told of.
void writeTinyImage(const std::string& path) {
    std::string image(18, '\0');
    image[2] = 2;   // uncompressed true colour
    image[12] = 2;  // width
    image[14] = 2;  // height
    image[16] = 24;
    writeFile(path, image + std::string(12, '\x7F'));
}

}  // namespace

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
    writeTinyImage(dir.file("wall.tga"));
    writeTinyImage(dir.file("roof.tga"));
    object.exportFLT(dir.file("model.flt"), "tga", true, 0.0f);
    const Scene scene = readBack(dir.file("model.flt"), dir.file("model.obj"));
    ASSERT_TRUE(scene.loaded) << scene.messages;
    EXPECT_EQ(scene.messages, "");
    for (const char* face : {"_p1_", "_p2_", "_p3_", "_p4_"})
        EXPECT_NE(scene.objects.find(face), std::string::npos) << face << " in " << scene.objects;
    EXPECT_EQ(scene.images, (std::set<std::string>{"roof.tga", "wall.tga"}));

    // The triangles in the file's frame, where y and z are exchanged.
    ASSERT_EQ(scene.triangles.size(), model.drawn.size());
    for (std::size_t i = 0; i < model.drawn.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& v = model.vertices.at(static_cast<std::size_t>(model.drawn[i][k]));
            const Position want{v.x, v.z, v.y};
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(scene.triangles[i][k][axis], want[axis], 1e-5) << i << "," << k;
        }
    }
}
