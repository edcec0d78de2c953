#include <velmora/velmora.h>

#include "support/ImageFiles.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <numbers>
#include <regex>
#include <set>

using namespace velmora;
using namespace bgltest;
using nlohmann::json;

namespace {

const std::string kSamples = VELMORA_SAMPLES_DIR;
// Without the preview the library reads no images: textures are written without them.
#ifdef VELMORA_HAS_PREVIEW
constexpr bool kReadsImages = true;
#else
constexpr bool kReadsImages = false;
#endif

// The readers (node with the Khronos validator and three.js, assimp) run on the build machine;
// a cross-built test program has none of them beside it.
#ifdef VELMORA_HOST_READERS
#define SKIP_WITHOUT_READERS() (void)0
#else
#define SKIP_WITHOUT_READERS() GTEST_SKIP() << "the glTF readers are not on this system"
#endif

std::string run(const std::string& line) {
    std::string out;
    FILE* pipe = popen((line + " 2>&1").c_str(), "r");
    char buffer[4096];
    for (std::size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out.append(buffer, got);
    pclose(pipe);
    return out;
}

// A .glb's JSON and binary chunk.
struct Glb {
    json document;
    std::string bin;

    explicit Glb(const std::string& bytes) {
        uint32_t length = 0;
        std::memcpy(&length, bytes.data() + 12, 4);
        document = json::parse(bytes.substr(20, length));
        if (bytes.size() > 28 + length) bin = bytes.substr(28 + length);
    }
    std::vector<float> floats(int accessor) const {
        const json& a = document["accessors"][accessor];
        const json& view = document["bufferViews"][a["bufferView"].get<int>()];
        const std::size_t count = a["count"].get<std::size_t>() * (a["type"] == "VEC3" ? 3 : 2);
        std::vector<float> out(count);
        std::memcpy(out.data(), bin.data() + view["byteOffset"].get<std::size_t>(), count * 4);
        return out;
    }
    std::vector<uint32_t> indices(int accessor) const {
        const json& a = document["accessors"][accessor];
        const json& view = document["bufferViews"][a["bufferView"].get<int>()];
        const std::size_t count = a["count"].get<std::size_t>();
        const char* at = bin.data() + view["byteOffset"].get<std::size_t>();
        std::vector<uint32_t> out(count);
        for (std::size_t i = 0; i < count; ++i) {
            uint16_t narrow = 0;
            a["componentType"] == 5123 ? std::memcpy(&narrow, at + 2 * i, 2)
                                       : std::memcpy(&out[i], at + 4 * i, 4);
            if (a["componentType"] == 5123) out[i] = narrow;
        }
        return out;
    }
    // The triangles whose counter-clockwise face normal (b - a) x (c - a) points against the sum
    // of their corners' normals, and all the triangles.
    std::pair<int, int> facesAgainstNormals() const {
        int against = 0, all = 0;
        for (const auto& mesh : document["meshes"]) {
            for (const auto& primitive : mesh["primitives"]) {
                const auto p = floats(primitive["attributes"]["POSITION"].get<int>());
                const auto n = floats(primitive["attributes"]["NORMAL"].get<int>());
                const auto corner = indices(primitive["indices"].get<int>());
                for (std::size_t t = 0; t + 2 < corner.size(); t += 3, ++all) {
                    std::array<double, 3> u{}, v{}, sum{};
                    for (std::size_t i = 0; i < 3; ++i) {
                        u[i] = p[3 * corner[t + 1] + i] - p[3 * corner[t] + i];
                        v[i] = p[3 * corner[t + 2] + i] - p[3 * corner[t] + i];
                        for (std::size_t k = 0; k < 3; ++k)
                            sum[i] += n[3 * corner[t + k] + i];
                    }
                    const double along = (u[1] * v[2] - u[2] * v[1]) * sum[0] +
                                         (u[2] * v[0] - u[0] * v[2]) * sum[1] +
                                         (u[0] * v[1] - u[1] * v[0]) * sum[2];
                    against += along <= 0;
                }
            }
        }
        return {against, all};
    }
    // Every corner of every primitive, in glTF's axes.
    std::set<std::array<float, 3>> positions() const {
        std::set<std::array<float, 3>> out;
        for (const auto& mesh : document["meshes"]) {
            for (const auto& primitive : mesh["primitives"]) {
                const auto p = floats(primitive["attributes"]["POSITION"].get<int>());
                for (std::size_t i = 0; i < p.size(); i += 3)
                    out.insert({p[i], p[i + 1], p[i + 2]});
            }
        }
        return out;
    }
    int vertices() const {
        int n = 0;
        for (const auto& mesh : document["meshes"])
            for (const auto& primitive : mesh["primitives"])
                n += document["accessors"][primitive["attributes"]["POSITION"].get<int>()]["count"]
                         .get<int>();
        return n;
    }
    std::vector<std::string> nodeNames() const {
        std::vector<std::string> names;
        for (const auto& node : document["nodes"])
            names.push_back(node["name"]);
        return names;
    }
};

// A model drawn at two levels of detail: a detailed triangle where size 10 covers 50 pixels,
// a coarse one where it doesn't; its vertices lie off every axis.
std::string detailModel() {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});                     // 0
    a.add(BGL_END);                                  // 1
    a.add(IFSIZEV, {jw(7), w(10), w(50)});           // 2
    a.add(SET_MATERIAL, {w(0), w(-1)});              // 3
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 4
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 5
    a.add(BGL_JUMP_32, {jl(10)});                    // 6: over the coarse part
    a.add(SET_MATERIAL, {w(0), w(-1)});              // 7: the coarse part
    a.add(DRAW_TRI_LIST_BEGIN, {w(3), w(0), w(3)});  // 8
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 9
    a.add(BGL_RETURN);                               // 10
    modelbytes::Model m;
    m.materials = {{{0.2f, 0.6f, 0.3f, 1}, {}, {}, {0.5f, 0, 0, 1}, 32}};
    m.vertices = {{1, 2, 3, 0, 1, 0, 0, 0}, {4, 2, 3, 0, 1, 0, 1, 0}, {4, 2, 7, 0, 1, 0, 1, 1},
                  {1, 2, 9, 0, 1, 0, 0, 0}, {4, 2, 9, 0, 1, 0, 1, 0}, {4, 2, 11, 0, 1, 0, 1, 1}};
    m.commands = a.bytes();
    return m.bytes();
}

class GLTFExportTest : public ::testing::Test {
  protected:
    std::shared_ptr<MDLObject> sample(const std::string& name) {
        auto m = std::make_shared<MDLObject>();
        m->readMDL(kSamples + "/" + name);
        return m;
    }
    // The validator's verdict on each file.
    std::vector<json> validate(const std::vector<std::string>& files) {
        std::string line = "cd " VELMORA_GLTF_TOOLS " && node validate.mjs";
        for (const std::string& f : files)
            line += " '" + f + "'";
        std::vector<json> reports;
        std::istringstream out(run(line));
        for (std::string report; std::getline(out, report);)
            reports.push_back(json::parse(report));
        return reports;
    }

    TempDir dir;
};

}  // namespace

TEST_F(GLTFExportTest, ValidatorAndAssimpReadEveryExportAsWritten) {
    SKIP_WITHOUT_READERS();
    struct Case {
        std::string name;
        std::shared_ptr<MDLObject> model;
        std::optional<Scenario> scenario;
        int nodes, images, lights;
        int64_t triangles;
    };
    auto detail = std::make_shared<MDLObject>();
    detail->readMDLBytes(detailModel(), "detail.mdl");
    const Case cases[] = {
        {"building.glb", sample("building.mdl"), std::nullopt, 1, 3, 0, 14},
        {"winter.glb", sample("building.mdl"), Scenario().day(15), 1, 2, 0, 14},
        {"lightpad.gltf", sample("lightpad.mdl"), std::nullopt, 1, 0, 4, 2},
        {"tree.glb", sample("tree.mdl"), std::nullopt, 1, 1, 0, 2},
        {"detail.glb", detail, std::nullopt, 2, 0, 0, 2},
        {"detail-far.glb", detail, Scenario().viewingDistance(500), 1, 0, 0, 1},
    };
    std::vector<std::string> files;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const GLTFExport summary =
            c.model->exportGLTF(dir.file(c.name), kSamples + "/textures", c.scenario);
        EXPECT_EQ(summary.nodes, c.nodes);
        EXPECT_EQ(summary.images, kReadsImages ? c.images : 0);
        EXPECT_EQ(summary.lights, c.lights);
        EXPECT_EQ(summary.triangles, c.triangles);
        EXPECT_EQ(summary.warnings.empty(), kReadsImages || c.images == 0);
        files.push_back(dir.file(c.name));
    }
    const std::vector<json> reports = validate(files);
    ASSERT_EQ(reports.size(), files.size()) << "is the validator installed (scripts/setup.sh)?";
    for (const json& report : reports) {
        EXPECT_EQ(report["errors"], 0) << report.dump(1);
        EXPECT_EQ(report["warnings"], 0) << report.dump(1);
    }
    // assimp's counts of what it read, against what the files say.
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (files[i].ends_with(".gltf")) continue;
        const std::string info = run("assimp info '" + files[i] + "'");
        std::smatch faces, vertices;
        ASSERT_TRUE(std::regex_search(info, faces, std::regex(R"(Faces:\s+(\d+))"))) << info;
        ASSERT_TRUE(std::regex_search(info, vertices, std::regex(R"(Vertices:\s+(\d+))")));
        EXPECT_EQ(std::stoll(faces[1]), cases[i].triangles) << files[i];
        EXPECT_EQ(std::stoi(vertices[1]), Glb(readFile(files[i])).vertices()) << files[i];
    }
    EXPECT_NE(run("assimp info '" + dir.file("lightpad.gltf") + "'").find("Lights:             4"),
              std::string::npos);
}

TEST_F(GLTFExportTest, AxesVariantsAndTexturesSurviveTheConversion) {
    SKIP_WITHOUT_READERS();
    auto detail = std::make_shared<MDLObject>();
    detail->readMDLBytes(detailModel(), "detail.mdl");
    detail->exportGLTF(dir.file("detail.glb"));
    const Glb glb(readFile(dir.file("detail.glb")));
    // The model's (x, y, z) is glTF's (x, y, -z).
    const auto positions = glb.positions();
    EXPECT_EQ(positions.count({1, 2, -3}), 1u);
    EXPECT_EQ(positions.count({4, 2, -11}), 1u);
    EXPECT_EQ(positions.count({1, 2, 3}), 0u);
    EXPECT_EQ(glb.nodeNames(),
              (std::vector<std::string>{"coarse where not (size(10) >= 50 px)",
                                        "detail where size(10) >= 50 px", "detail"}));
    EXPECT_EQ(glb.document["nodes"][1]["extras"]["levelOfDetail"]["holds"], true);
    const json& material = glb.document["materials"][0];
    EXPECT_EQ(material["pbrMetallicRoughness"]["roughnessFactor"], 0.5);
    EXPECT_EQ(material["emissiveFactor"], json::array({0.5, 0, 0}));

    // The seasons are no nodes; the root says the guard and the ISFT text without its zero; the
    // walls' image comes through.
    sample("building.mdl")->exportGLTF(dir.file("building.glb"), kSamples + "/textures");
    const Glb building(readFile(dir.file("building.glb")));
    EXPECT_EQ(building.nodeNames(), (std::vector<std::string>{"model", "building"}));
    EXPECT_EQ(building.document["nodes"][1]["extras"]["guard"], "798 in 2..5");
    EXPECT_EQ(building.document["nodes"][1]["extras"]["isft"], "Velmora sample");
#ifdef VELMORA_HAS_PREVIEW
    const json& image = building.document["images"][0];
    const json& view = building.document["bufferViews"][image["bufferView"].get<int>()];
    std::string png = building.bin.substr(view["byteOffset"].get<std::size_t>(),
                                          view["byteLength"].get<std::size_t>());
    const imagefiles::Picture exported = imagefiles::readPicture(png);
    const imagefiles::Picture source =
        imagefiles::readPicture(readFile(kSamples + "/textures/wall_summer.bmp"));
    ASSERT_EQ(exported.width, source.width);
    EXPECT_EQ(exported.pixels, source.pixels);
#endif

    // A missing image is a warning and a material without it, never a broken file.
    const GLTFExport bare = sample("building.mdl")->exportGLTF(dir.file("bare.glb"), dir.path());
    EXPECT_EQ(bare.warnings.size(), 3u);
    EXPECT_NE(bare.warnings[0].find("no image found"), std::string::npos) << bare.warnings[0];
    EXPECT_EQ(validate({dir.file("bare.glb")})[0]["errors"], 0);
    EXPECT_THROW(sample("tree.mdl")->exportGLTF(dir.file("tree.obj")), Error);
}

TEST_F(GLTFExportTest, FrontFacesAreCounterClockwiseAndSingleSidedUnlessAsked) {
    // A triangle whose corners have no normal takes its front's.
    modelbytes::Model bare;
    bare.materials = {{{0.5f, 0.5f, 0.5f, 1}, {}, {}, {}, 0}};
    bare.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 0, 1}};
    bare.commands = modelbytes::setMaterial(0, -1);
    bare.draw(0, {{0, 1, 2}});
    bare.commands += modelbytes::bglEnd();
    auto unlit = std::make_shared<MDLObject>();
    unlit->readMDLBytes(bare.bytes(), "unlit.mdl");
    const std::pair<std::string, std::shared_ptr<MDLObject>> models[] = {
        {"building", sample("building.mdl")},
        {"lightpad", sample("lightpad.mdl")},
        {"tree", sample("tree.mdl")},
        {"unlit", unlit}};
    for (const auto& [name, model] : models) {
        SCOPED_TRACE(name);
        for (const bool doubleSided : {false, true}) {
            const std::string file = dir.file(name + (doubleSided ? "2.glb" : ".glb"));
            model->exportGLTF(file, {kSamples + "/textures", std::nullopt, doubleSided});
            const Glb glb(readFile(file));
            const auto [against, all] = glb.facesAgainstNormals();
            EXPECT_EQ(against, 0) << "of " << all;
            EXPECT_GT(all, 0);
            for (const json& material : glb.document["materials"])
                EXPECT_EQ(material.value("doubleSided", false), doubleSided) << material.dump();
        }
    }
    const Glb pad(readFile(dir.file("unlit.glb")));
    EXPECT_EQ(pad.floats(pad.document["meshes"][0]["primitives"][0]["attributes"]["NORMAL"]),
              (std::vector<float>{0, 1, 0, 0, 1, 0, 0, 1, 0}));
}

TEST_F(GLTFExportTest, SeasonsAreMaterialVariantsOfTrianglesHeldOnce) {
    auto building = sample("building.mdl");
    const std::string textures = kSamples + "/textures";
    const GLTFExport all = building->exportGLTF(dir.file("all.glb"), textures);
    for (const textureVariant season : {summer, winter}) {
        EXPECT_EQ(all.triangles,
                  building->exportGLTF(dir.file("one.glb"), textures, Scenario().season(season))
                      .triangles);
    }
    EXPECT_FALSE(Glb(readFile(dir.file("one.glb"))).document.contains("extensions"));

    const Glb glb(readFile(dir.file("all.glb")));
    EXPECT_EQ(glb.document["extensionsUsed"], json::array({"KHR_materials_variants"}));
    EXPECT_FALSE(glb.document.contains("extensionsRequired"));
    EXPECT_EQ(glb.document["extensions"]["KHR_materials_variants"]["variants"],
              json::parse(R"([{"name": "spring"}, {"name": "summer"}, {"name": "fall"},
                              {"name": "winter"}, {"name": "heavywinter"}])"));
    // The walls: one primitive in summer's material (day 172), the winter texture in winter.
    const json* walls = nullptr;
    for (const json& primitive : glb.document["meshes"][0]["primitives"])
        if (primitive.contains("extensions")) walls = &primitive;
    ASSERT_NE(walls, nullptr);
    std::map<int, int> materialOf;
    for (const json& mapping : (*walls)["extensions"]["KHR_materials_variants"]["mappings"])
        for (const json& variant : mapping["variants"])
            materialOf[variant.get<int>()] = mapping["material"].get<int>();
    ASSERT_EQ(materialOf.size(), 5u);
    EXPECT_EQ(materialOf[1], (*walls)["material"]);
    EXPECT_NE(materialOf[3], materialOf[1]);
    EXPECT_EQ(materialOf[4], materialOf[3]);
    if (kReadsImages) {
        EXPECT_EQ(glb.document["materials"][materialOf[3]]["name"], "material 0, wall_winter.bmp");
        EXPECT_EQ(glb.document["materials"][materialOf[1]]["name"], "material 0, wall_summer.bmp");
    }
    EXPECT_TRUE((*walls)["attributes"].contains("TEXCOORD_0"));
    const json& winterVariant = (*walls)["extras"]["seasonalRun"]["variants"][1];
    EXPECT_EQ(winterVariant["setMaterial"], 7);
    EXPECT_EQ(winterVariant["seasons"], json::array({"winter", "heavywinter"}));
}

TEST_F(GLTFExportTest, AlphaLightColourTextureCoordinatesAndDegenerateTrianglesKeepTheirMeaning) {
    StreamAssembler a;
    a.add(SET_MATERIAL, {w(0), w(-1)});              // glass, alpha 0.75
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(6)});  //
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   //
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(3)});   // vertex 3 stands on vertex 1: no area
    a.add(SET_MATERIAL, {w(1), w(-1)});              // opaque
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  //
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   //
    a.add(SET_MATERIAL, {w(1), w(0)});               // the roof's image
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  //
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   //
    a.add(BGL_LIGHT, {w(1), f("0"), f("5"), f("0"), l(1), f("0"), f("0"), l(0xFFFF0000), f("0"),
                      f("0"), f("0")});
    a.add(BGL_END);
    modelbytes::Model m;
    m.materials = {{{0.2f, 0.4f, 0.6f, 0.75f}, {}, {}, {}, 0},
                   {{0.2f, 0.4f, 0.6f, 1}, {}, {}, {}, 0}};
    m.textures = {"roof.bmp"};
    m.vertices = {{0, 0, 0, 0, 1, 0, 0, 0.25f},
                  {1, 0, 0, 0, 1, 0, 1, 0.25f},
                  {0, 0, 1, 0, 1, 0, 0, 1},
                  {1, 0, 0, 0, 1, 0, 1, 0.25f}};
    m.commands = a.bytes();
    MDLObject model;
    model.readMDLBytes(m.bytes(), "looks.mdl");
    const GLTFExport summary = model.exportGLTF(dir.file("looks.glb"), kSamples + "/textures");
    EXPECT_EQ(summary.triangles, 3);
    const Glb glb(readFile(dir.file("looks.glb")));

    std::map<std::string, json> materials;
    for (const json& material : glb.document["materials"])
        materials[material["name"]] = material;
    EXPECT_EQ(materials["material 0"].value("alphaMode", "OPAQUE"), "BLEND");
    EXPECT_EQ(materials["material 1"].value("alphaMode", "OPAQUE"), "OPAQUE");
    const json& light = glb.document["extensions"]["KHR_lights_punctual"]["lights"][0];
    EXPECT_EQ(light["color"], json::array({1.0, 0.0, 0.0})) << "0xFFFF0000 is red";
#ifdef VELMORA_HAS_PREVIEW
    ASSERT_TRUE(materials.contains("material 1, roof.bmp"));
    std::set<std::pair<float, float>> uvs;
    for (const json& primitive : glb.document["meshes"][0]["primitives"]) {
        if (!primitive["attributes"].contains("TEXCOORD_0")) continue;
        const std::vector<float> uv = glb.floats(primitive["attributes"]["TEXCOORD_0"].get<int>());
        for (std::size_t i = 0; i < uv.size(); i += 2)
            uvs.insert({uv[i], uv[i + 1]});
    }
    // v counts from the image's top: v = 1 - ty.
    EXPECT_EQ(uvs, (std::set<std::pair<float, float>>{{0, 0.75f}, {1, 0.75f}, {0, 0}}));
#endif
}

// three.js in Chromium culls the back of single-sided materials: the lightpad, facing up, shows
// lit from above and not at all from below.
TEST_F(GLTFExportTest, ABrowserShowsThePadFromAboveOnly) {
    SKIP_WITHOUT_READERS();
    static constexpr int kSize = 64;
    sample("lightpad.mdl")->exportGLTF(dir.file("pad.glb"));
    const auto centreSeenFrom = [this](double height) {
        char line[1024];
        std::snprintf(line, sizeof line,
                      "cd " VELMORA_GLTF_TOOLS
                      " && node render.mjs '%s' '%s' %d %d 0 %f 10 0 0 0 40 1 500 3050a0",
                      dir.file("pad.glb").c_str(), dir.file("pad.png").c_str(), kSize, kSize,
                      height);
        const std::string output = run(line);
        const imagefiles::Picture picture = imagefiles::readPicture(readFile(dir.file("pad.png")));
        EXPECT_EQ(picture.width, kSize) << output;
        return picture.width == kSize ? picture.at(kSize / 2, kSize / 2) : imagefiles::Rgb{};
    };
    const auto offBackground = [](const imagefiles::Rgb& p) {
        return std::abs(p[0] - 0x30) + std::abs(p[1] - 0x50) + std::abs(p[2] - 0xa0);
    };
    const imagefiles::Rgb above = centreSeenFrom(60);
    EXPECT_GT(above[0] + above[1] + above[2], 120) << "lit";
    EXPECT_GT(offBackground(above), 60);
    EXPECT_LT(offBackground(centreSeenFrom(-60)), 12) << "culled";
}

#ifdef VELMORA_HAS_PREVIEW
// three.js in Chromium draws the export where our own preview draws the model.
TEST_F(GLTFExportTest, ABrowserShowsTheExportWhereThePreviewDoes) {
    SKIP_WITHOUT_READERS();
    constexpr int kWidth = 320, kHeight = 240;
    auto building = sample("building.mdl");
    building->exportGLTF(dir.file("building.glb"), kSamples + "/textures", Scenario());
    const int32_t surface = createPreviewSurface(kWidth, kHeight);
    auto preview = std::make_shared<OpenGLPreviewObject>();
    preview->initOpenGL(surface);
    building->TextureList()->findFiles(kSamples + "/textures");
    building->glPrepareView(preview);
    const View view;
    const ViewResult drawn = building->glDrawView(view, surface);
    const std::vector<uint8_t> ours = previewSurfacePixels(surface);
    destroyPreviewSurface(surface);

    const double h = view.heading * std::numbers::pi / 180,
                 e = view.elevation * std::numbers::pi / 180;
    const std::array<double, 3> forward{std::sin(h) * std::cos(e), -std::sin(e),
                                        -std::cos(h) * std::cos(e)};
    char line[1024];
    std::snprintf(line, sizeof line,
                  "cd " VELMORA_GLTF_TOOLS
                  " && node render.mjs '%s' '%s' %d %d %f %f %f %f %f %f "
                  "40 %f %f 9eb9d9",
                  dir.file("building.glb").c_str(), dir.file("three.png").c_str(), kWidth, kHeight,
                  drawn.centre[0] - drawn.distance * forward[0],
                  drawn.centre[1] - drawn.distance * forward[1],
                  drawn.centre[2] - drawn.distance * forward[2], drawn.centre[0], drawn.centre[1],
                  drawn.centre[2], drawn.distance - drawn.radius * 1.05,
                  drawn.distance + drawn.radius * 1.05);
    const std::string output = run(line);
    const imagefiles::Picture three = imagefiles::readPicture(readFile(dir.file("three.png")));
    ASSERT_EQ(three.width, kWidth) << output;
    // Silhouettes: where a picture differs from the sky.
    const auto isSky = [](int r, int g, int b) {
        return std::abs(r - 0x9e) + std::abs(g - 0xb9) + std::abs(b - 0xd9) < 12;
    };
    int both = 0, either = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const imagefiles::Rgb& p = three.at(x, y);
            const std::size_t i = (static_cast<std::size_t>(y) * kWidth + x) * 3;
            const bool inOurs = !isSky(ours[i], ours[i + 1], ours[i + 2]);
            const bool inTheirs = !isSky(p[0], p[1], p[2]);
            both += inOurs && inTheirs;
            either += inOurs || inTheirs;
        }
    }
    ASSERT_GT(either, 2000) << output;
    EXPECT_GT(static_cast<double>(both) / either, 0.95) << both << " of " << either;
}
#endif
