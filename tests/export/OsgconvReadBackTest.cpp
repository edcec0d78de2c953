#include <velmora/MDLObject.h>

#include "export/OsgconvReader.h"
#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace velmora;
using osgreader::Position;
using osgreader::Triangle;

namespace {

#define SKIP_WITHOUT_OSGCONV()                                               \
    if (osgreader::osgconvProgram().empty()) {                               \
        GTEST_SKIP() << "osgconv (package openscenegraph) is not installed"; \
    }

// Eight corners of a house with a wall and a roof texture, and four triangles over two lists.
modelbytes::Model texturedHouse() {
    modelbytes::Model m;
    m.materials = {{{1, 0, 0, 1}}, {{0, 0.5f, 1, 1}}};
    m.textures = {"Wall.bmp", "ROOF.BMP"};
    for (int i = 0; i < 8; ++i) {
        m.vertices.push_back({static_cast<float>(i % 2) * 4 - 2,
                              static_cast<float>(i / 4) * 3 + 0.5f,
                              static_cast<float>((i / 2) % 2) * 6 - 3.25f, 0, 1, 0,
                              static_cast<float>(i % 2), static_cast<float>(i / 4)});
    }
    m.commands += modelbytes::setMaterial(0, 0);
    m.draw(0, {{0, 1, 5}, {0, 5, 4}});
    m.commands += modelbytes::setMaterial(1, 1);
    m.draw(2, {{2, 3, 5}, {0, 1, 4}});
    m.commands += modelbytes::bglEnd();
    return m;
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

// The triangles of a model in the file's frame, where y and z are exchanged.
std::vector<Triangle> expectedTriangles(const modelbytes::Model& model) {
    std::vector<Triangle> triangles;
    for (const auto& corners : model.drawn) {
        Triangle t;
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& v = model.vertices.at(static_cast<std::size_t>(corners[k]));
            t[k] = Position{v.x, v.z, v.y};
        }
        triangles.push_back(t);
    }
    return triangles;
}

void expectSameTriangles(const std::vector<Triangle>& read, const std::vector<Triangle>& want) {
    ASSERT_EQ(read.size(), want.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        for (std::size_t k = 0; k < 3; ++k)
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(read[i][k][axis], want[i][k][axis], 1e-5)
                    << i << "," << k << "," << axis;
}

bool hasName(const osgreader::Scene& scene, const std::string& name) {
    return std::find(scene.nodeNames.begin(), scene.nodeNames.end(), name) != scene.nodeNames.end();
}

}  // namespace

TEST(OsgconvReadBack, TexturedModelComesBackWithItsFacesVerticesAndTextures) {
    SKIP_WITHOUT_OSGCONV();
    TempDir dir;
    const auto model = texturedHouse();
    MDLObject object;
    object.readMDLBytes(model.bytes());
    writeTinyImage(dir.file("wall.tga"));
    writeTinyImage(dir.file("roof.tga"));
    object.exportFLT(dir.file("model.flt"), "tga", true, 0.0f);
    const auto scene = osgreader::readDatabase(dir.file("model.flt"));
    ASSERT_TRUE(scene.loaded) << scene.messages;
    EXPECT_EQ(scene.messages, "");
    for (const char* face : {"p1", "p2", "p3", "p4"})
        EXPECT_TRUE(hasName(scene, face)) << face;
    expectSameTriangles(scene.triangles, expectedTriangles(model));
    std::vector<std::string> files = scene.textureFiles;
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"roof.tga", "wall.tga"}));
}
