#include <velmora/MDLObject.h>
#include <velmora/OpenFlightWriter.h>

#include "export/ModelBytes.h"
#include "export/OsgconvReader.h"
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

// A 2 x 2 uncompressed true-colour TGA, so that the reader finds every texture it is told of.
void writeTinyImage(const std::string& path) {
    std::string image(18, '\0');
    image[2] = 2;   // uncompressed true colour
    image[12] = 2;  // width
    image[14] = 2;  // height
    image[16] = 24;
    image += std::string(12, '\x7F');
    writeFile(path, image);
}

// The triangles of a model in the file's frame, where y and z are exchanged.
std::vector<Triangle> expectedTriangles(const modelbytes::Model& model) {
    std::vector<Triangle> triangles;
    for (const auto& [a, b, c] : model.triangles()) {
        Triangle t;
        const std::array<int, 3> corners{a, b, c};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& v = model.vertices.at(static_cast<std::size_t>(corners[k]));
            t[k] = Position{v.x, v.z, v.y};
        }
        triangles.push_back(t);
    }
    return triangles;
}

// The face nodes the reader made, which the export names p1, p2 and so on.
std::vector<std::string> faceNames(const osgreader::Scene& scene) {
    std::vector<std::string> faces;
    for (const auto& name : scene.nodeNames) {
        if (name.size() > 1 && name[0] == 'p' &&
            name.find_first_not_of("0123456789", 1) == std::string::npos) {
            faces.push_back(name);
        }
    }
    return faces;
}

std::vector<std::string> numberedFaces(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 1; i <= count; ++i)
        names.push_back("p" + std::to_string(i));
    return names;
}

void expectSameTriangles(const std::vector<Triangle>& read, const std::vector<Triangle>& want) {
    ASSERT_EQ(read.size(), want.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                EXPECT_NEAR(read[i][k][axis], want[i][k][axis], 1e-5)
                    << "face " << i + 1 << ", corner " << k << ", axis " << axis;
            }
        }
    }
}

// Exports `model` as a database and reads it back with osgconv.
osgreader::Scene exportAndRead(const TempDir& dir, const modelbytes::Model& model) {
    MDLObject object;
    object.readMDLBytes(model.bytes());
    for (const auto& t : model.textures) {
        std::string stem = t.substr(0, t.rfind('.'));
        std::transform(stem.begin(), stem.end(), stem.begin(), ::tolower);
        writeTinyImage(dir.file(stem + ".tga"));
    }
    object.exportFLT(dir.file("model.flt"), "tga", true, 0.0f);
    return osgreader::readDatabase(dir.file("model.flt"));
}

}  // namespace

TEST(OsgconvReadBack, TexturedModelComesBackWithItsFacesVerticesAndTextures) {
    SKIP_WITHOUT_OSGCONV();
    TempDir dir;
    const auto model = modelbytes::texturedHouse();
    const auto scene = exportAndRead(dir, model);
    ASSERT_TRUE(scene.loaded) << scene.messages;
    EXPECT_EQ(scene.messages, "");
    EXPECT_EQ(faceNames(scene), numberedFaces(4));
    expectSameTriangles(scene.triangles, expectedTriangles(model));
    std::vector<std::string> files = scene.textureFiles;
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    EXPECT_EQ(files, (std::vector<std::string>{"roof.tga", "wall.tga"}));
}

TEST(OsgconvReadBack, ModelsWithoutTrianglesOrWithoutTexturesLoad) {
    SKIP_WITHOUT_OSGCONV();
    {
        TempDir dir;
        auto model = modelbytes::texturedHouse();
        model.commands.clear();
        model.drawn.clear();
        model.setMaterial(0, 0);
        model.end();
        const auto scene = exportAndRead(dir, model);
        ASSERT_TRUE(scene.loaded) << scene.messages;
        EXPECT_EQ(scene.messages, "");
        EXPECT_TRUE(scene.triangles.empty());
        EXPECT_TRUE(faceNames(scene).empty());
    }
    {
        TempDir dir;
        const auto model = modelbytes::untexturedBox();
        const auto scene = exportAndRead(dir, model);
        ASSERT_TRUE(scene.loaded) << scene.messages;
        EXPECT_EQ(scene.messages, "");
        EXPECT_EQ(faceNames(scene), numberedFaces(3));
        expectSameTriangles(scene.triangles, expectedTriangles(model));
        EXPECT_TRUE(scene.textureFiles.empty());
    }
}

TEST(OsgconvReadBack, NamesLongerThanSevenCharactersComeBackWhole) {
    SKIP_WITHOUT_OSGCONV();
    TempDir dir;
    const auto model = modelbytes::untexturedBox();
    MDLObject object;
    object.readMDLBytes(model.bytes());

    const std::string path = dir.file("names.flt");
    OpenFlightWriter w;
    w.createDB(path);
    w.writeHeader();
    w.writeColorPalette(object.MaterialList());
    w.writeMaterialPalette(object.MaterialList());
    w.writeTexturePalette(object.TextureList(), "tga", false);
    w.writeVertexPalette(object.VertexList(), 0.0f);
    w.writePushLevel();
    w.writeGroup("building-group");
    w.writePushLevel();
    w.writeLOD("detail-level", 5000.0, 0.0);
    w.writePushLevel();
    w.writeObject("object-long");
    w.writePushLevel();
    w.writeFace("face-number-one", 0, -1, 0);
    w.writePushLevel();
    w.writeVertexList(0, 1, 2);
    w.writePopLevel();
    for (int i = 0; i < 4; ++i)
        w.writePopLevel();
    w.closeDB();

    const auto scene = osgreader::readDatabase(path);
    ASSERT_TRUE(scene.loaded) << scene.messages;
    EXPECT_EQ(scene.messages, "");
    for (const char* name : {"building-group", "detail-level", "object-long", "face-number-one"}) {
        EXPECT_NE(std::find(scene.nodeNames.begin(), scene.nodeNames.end(), name),
                  scene.nodeNames.end())
            << name;
    }
    ASSERT_EQ(scene.triangles.size(), 1u);
    const auto& v = model.vertices;
    expectSameTriangles(scene.triangles, {Triangle{Position{v[0].x, v[0].z, v[0].y},
                                                   Position{v[1].x, v[1].z, v[1].y},
                                                   Position{v[2].x, v[2].z, v[2].y}}});
}
