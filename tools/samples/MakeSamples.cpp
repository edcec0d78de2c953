// Builds the sample models under samples/ with the public library: a textured building with a
// condition and seasonal textures, a lit pad with a kill shadow, and a compiled scenery file
// that holds several models. Usage: velmora-make-samples OUTPUT_FOLDER
#include <velmora/velmora.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velmora;

std::string le16(int value) {
    return std::string{static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF)};
}

std::string le32(int64_t value) {
    std::string out(4, '\0');
    for (int i = 0; i < 4; ++i)
        out[static_cast<std::size_t>(i)] = static_cast<char>((value >> (8 * i)) & 0xFF);
    return out;
}

std::string section(const std::string& tag, const std::string& payload) {
    return tag + le32(static_cast<int64_t>(payload.size())) + payload;
}

// A model with an empty header and bounding box and nothing else, to be filled through the
// library's lists.
std::shared_ptr<MDLObject> emptyModel() {
    const std::string sections =
        section("MDLH", std::string(36, '\0')) + section("BBOX", std::string(24, '\0'));
    const std::string file =
        "RIFF" + le32(static_cast<int64_t>(4 + sections.size())) + "MDL9" + sections;
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(file);
    return model;
}

void addVertex(MDLObject& model, float x, float y, float z, float nx, float ny, float nz, float tx,
               float ty) {
    auto v = model.VertexList()->Add();
    v->x(x), v->y(y), v->z(z), v->nx(nx), v->ny(ny), v->nz(nz), v->tx(tx), v->ty(ty);
}

std::shared_ptr<BGLCommand> command(BGLOpcode opcode, std::vector<std::string> params = {}) {
    auto c = std::make_shared<BGLCommand>();
    c->opcode(opcode);
    for (std::size_t i = 0; i < params.size(); ++i)
        c->param(static_cast<int16_t>(i), params[i]);
    return c;
}

void addMaterial(MDLObject& model, float r, float g, float b) {
    auto m = model.MaterialList()->Add();
    for (const auto& c : {m->Diffuse(), m->Ambient()})
        c->r(r), c->g(g), c->b(b), c->a(1);
    m->Specular()->a(1);
    m->Emmisive()->a(1);
    m->Power(8);
}

void addTexture(MDLObject& model, const std::string& name) {
    auto t = model.TextureList()->Add();
    t->textureType(TEXTURE_BUILDING);
    t->bitmap(name);
    t->color()->Ri(255), t->color()->Gi(255), t->color()->Bi(255), t->color()->Ai(255);
}

// Appends a triangle list over vertices [base, base + count) taken as quads of 4.
void addQuadList(BGLCommandList& commands, int base, int quads) {
    commands.Add(command(DRAW_TRI_LIST_BEGIN, {std::to_string(base), std::to_string(quads * 4),
                                               std::to_string(quads * 6)}));
    for (int q = 0; q < quads; ++q) {
        const int a = q * 4;
        commands.Add(command(DRAW_TRI_LIST_ITEM,
                             {std::to_string(a), std::to_string(a + 1), std::to_string(a + 2)}));
        commands.Add(command(DRAW_TRI_LIST_ITEM,
                             {std::to_string(a), std::to_string(a + 2), std::to_string(a + 3)}));
    }
}

// The head every sample starts with: the guarded call of the body, then the end of the model.
void startBody(BGLCommandList& commands) {
    auto call = commands.Add(command(BGL_CALL_32));
    commands.Add(command(BGL_END));
    call->jumpDest(0, 3);
}

// Material 0 without a texture over the first four vertices.
void addUntexturedQuad(BGLCommandList& commands) {
    commands.Add(command(SET_MATERIAL, {"0", "-1"}));
    addQuadList(commands, 0, 1);
}

void setBox(MDLObject& model) {
    auto box = model.BoundingBox();
    bool first = true;
    for (const auto& v : *model.VertexList()) {
        if (first) {
            box->xmin(v->x()), box->ymin(v->y()), box->zmin(v->z());
            box->xmax(v->x()), box->ymax(v->y()), box->zmax(v->z());
            first = false;
        }
        box->xmin(std::min(box->xmin(), v->x())), box->xmax(std::max(box->xmax(), v->x()));
        box->ymin(std::min(box->ymin(), v->y())), box->ymax(std::max(box->ymax(), v->y()));
        box->zmin(std::min(box->zmin(), v->z())), box->zmax(std::max(box->zmax(), v->z()));
    }
}

// A house: four walls (x and z horizontal, y up) and a pitched roof.
std::shared_ptr<MDLObject> building() {
    auto model = emptyModel();
    const float w = 10, d = 8, h = 6, ridge = 9;
    // Walls, counter-clockwise seen from outside, one quad each.
    struct Wall {
        float x0, z0, x1, z1, nx, nz;
    };
    const Wall walls[] = {
        {-w, -d, w, -d, 0, -1}, {w, -d, w, d, 1, 0}, {w, d, -w, d, 0, 1}, {-w, d, -w, -d, -1, 0}};
    for (const auto& wall : walls) {
        const float len = std::hypot(wall.x1 - wall.x0, wall.z1 - wall.z0) / 4;
        addVertex(*model, wall.x0, 0, wall.z0, wall.nx, 0, wall.nz, 0, 0);
        addVertex(*model, wall.x1, 0, wall.z1, wall.nx, 0, wall.nz, len, 0);
        addVertex(*model, wall.x1, h, wall.z1, wall.nx, 0, wall.nz, len, 1.5f);
        addVertex(*model, wall.x0, h, wall.z0, wall.nx, 0, wall.nz, 0, 1.5f);
    }
    // Roof: two slopes.
    addVertex(*model, -w, h, -d, 0, 0.75f, -0.66f, 0, 0);
    addVertex(*model, w, h, -d, 0, 0.75f, -0.66f, 4, 0);
    addVertex(*model, w, ridge, 0, 0, 0.75f, -0.66f, 4, 2);
    addVertex(*model, -w, ridge, 0, 0, 0.75f, -0.66f, 0, 2);
    addVertex(*model, w, h, d, 0, 0.75f, 0.66f, 0, 0);
    addVertex(*model, -w, h, d, 0, 0.75f, 0.66f, 4, 0);
    addVertex(*model, -w, ridge, 0, 0, 0.75f, 0.66f, 4, 2);
    addVertex(*model, w, ridge, 0, 0, 0.75f, 0.66f, 0, 2);
    // Gable ends: a triangle under each end of the roof, in the walls' material.
    for (const float side : {-1.0f, 1.0f}) {
        addVertex(*model, side * w, h, -side * d, side, 0, 0, 0, 1.5f);
        addVertex(*model, side * w, h, side * d, side, 0, 0, 4, 1.5f);
        addVertex(*model, side * w, ridge, 0, side, 0, 0, 2, 2.25f);
    }
    setBox(*model);

    addMaterial(*model, 1, 1, 1);
    addMaterial(*model, 0.55f, 0.25f, 0.2f);
    addTexture(*model, "wall_summer.bmp");
    addTexture(*model, "wall_winter.bmp");
    addTexture(*model, "roof.bmp");

    auto& commands = *model->BGLCommandList();
    startBody(commands);
    commands.Add(command(SET_MATERIAL, {"0", "0"}));
    addQuadList(commands, 0, 4);
    commands.Add(command(DRAW_TRI_LIST_BEGIN, {"24", "6", "6"}));
    commands.Add(command(DRAW_TRI_LIST_ITEM, {"0", "1", "2"}));
    commands.Add(command(DRAW_TRI_LIST_ITEM, {"3", "4", "5"}));
    commands.Add(command(SET_MATERIAL, {"1", "2"}));
    addQuadList(commands, 16, 2);
    commands.Add(command(BGL_RETURN));

    // Drawn only when scenery variable 0x31E (complexity) is 2 or more.
    auto conditions = commands.getConditions(-1);
    auto complexity = conditions->Add();
    complexity->cType(Between);
    complexity->var("798");
    complexity->min(2);
    complexity->max(5);
    commands.addCondition(conditions);

    // Summer walls from day 60 to 300, winter walls the rest of the year.
    seasonalTextures seasons;
    seasons.Material[summer] = 0;
    seasons.Material[winter] = 1;
    seasons.active[summer] = seasons.active[winter] = true;
    seasons.dayStart[summer] = 60;
    seasons.dayEnd[summer] = 300;
    seasons.dayStart[winter] = 301;
    seasons.dayEnd[winter] = 59;
    commands.addSeasonalTextures(seasons);

    // Texture sizes from the geometry: the two wall variants form one group.
    model->TextureList()->Item(1)->parent(1);
    model->TextureList()->Item(2)->parent(1);
    model->TextureList()->Item(2)->textureVariant(winter);
    model->TextureList()->Item(3)->parent(3);
    model->updateTextureSize();
    model->setISFT("Velmora sample");
    return model;
}

// A square pad with four lights at its corners, each behind a test as older tools wrote them,
// and a kill shadow.
std::shared_ptr<MDLObject> litPad() {
    auto model = emptyModel();
    const float s = 20;
    addVertex(*model, -s, 0, -s, 0, 1, 0, 0, 0);
    addVertex(*model, s, 0, -s, 0, 1, 0, 1, 0);
    addVertex(*model, s, 0, s, 0, 1, 0, 1, 1);
    addVertex(*model, -s, 0, s, 0, 1, 0, 0, 1);
    setBox(*model);
    model->BoundingBox()->ymax(2);
    addMaterial(*model, 0.35f, 0.35f, 0.38f);

    auto& commands = *model->BGLCommandList();
    startBody(commands);
    addUntexturedQuad(commands);
    const float corners[4][2] = {{-s, -s}, {-s, s}, {s, s}, {s, -s}};
    for (const auto& corner : corners) {
        auto test = commands.Add(command(IFMSK, {"", "120", "1"}));
        commands.Add(command(VAR_BASE_OVERRIDE, {"0"}));
        commands.Add(
            command(BGL_LIGHT, {"1", std::to_string(corner[0]), "1", std::to_string(corner[1]),
                                "-1", "0.8", "0.4", "-1", "0", "0", "1"}));
        test->jumpDest(0, commands.Count() + 1);
    }
    commands.Add(command(BGL_RETURN));
    model->addKillShadow();
    return model;
}

// A tree: a card with a transparent image around its crown and trunk that turns to face the
// user.
std::shared_ptr<MDLObject> tree() {
    auto model = emptyModel();
    addVertex(*model, -3, 0, 0, 0, 0, -1, 0, 0);
    addVertex(*model, 3, 0, 0, 0, 0, -1, 1, 0);
    addVertex(*model, 3, 8, 0, 0, 0, -1, 1, 1);
    addVertex(*model, -3, 8, 0, 0, 0, -1, 0, 1);
    setBox(*model);
    addMaterial(*model, 0.2f, 0.5f, 0.15f);
    addTexture(*model, "tree.tga");
    auto& commands = *model->BGLCommandList();
    startBody(commands);
    commands.Add(command(SET_MATERIAL, {"0", "0"}));
    addQuadList(commands, 0, 1);
    commands.Add(command(BGL_RETURN));
    auto conditions = commands.getConditions(-1);
    conditions->Add()->cType(RotUser);
    commands.addCondition(conditions);
    return model;
}

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// An XML-style compiled scenery file with one mdl section of one subsection holding `models`.
std::string compiledScenery(const std::vector<std::string>& models) {
    const int headerSize = 56, sectionRecord = 20, subsectionRecord = 16, entry = 24;
    const int subsectionTable = headerSize + sectionRecord;
    const int modelTable = subsectionTable + subsectionRecord;
    std::string header = le16(0x0201) + std::string(18, '\0') + le32(1) + std::string(32, '\0');
    std::string sectionTable =
        le32(43) + le32(0) + le32(1) + le32(subsectionTable) + le32(subsectionRecord);
    std::string table;
    std::string data;
    int dataOffset = static_cast<int>(models.size()) * entry;
    for (const auto& bytes : models) {
        // Each model's GUID: a fixed pattern with the model's number in its last byte.
        std::string guid = "\x1b\x2c\x3d\x4e\x5f\x60\x71\x42\x83\x94\xa5\xb6\xc7\xd8\xe9";
        guid.push_back(static_cast<char>(table.size() / 24 + 1));
        table += guid + le32(dataOffset) + le32(static_cast<int64_t>(bytes.size()));
        data += bytes;
        dataOffset += static_cast<int>(bytes.size());
    }
    std::string subsections = le32(0) + le32(static_cast<int64_t>(models.size())) +
                              le32(modelTable) +
                              le32(static_cast<int64_t>(table.size() + data.size()));
    return header + sectionTable + subsections + table + data;
}

// A 64 x 64 24-bit BMP: bricks, snow or tiles in two colours.
void writeBitmap(const std::string& path, int pattern, uint8_t r1, uint8_t g1, uint8_t b1,
                 uint8_t r2, uint8_t g2, uint8_t b2) {
    const int size = 64;
    const int row = size * 3;
    std::string pixels;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            bool line = false;
            if (pattern == 0) line = (y % 16 == 0) || ((x + ((y / 16) % 2) * 16) % 32 == 0);
            if (pattern == 1) line = ((x * 7 + y * 3) % 23) == 0;
            if (pattern == 2) line = (y % 8 == 0);
            pixels.push_back(static_cast<char>(line ? b2 : b1));
            pixels.push_back(static_cast<char>(line ? g2 : g1));
            pixels.push_back(static_cast<char>(line ? r2 : r1));
        }
    }
    const int imageSize = row * size;
    std::string file = "BM" + le32(54 + imageSize) + le32(0) + le32(54) + le32(40) + le32(size) +
                       le32(size) + le16(1) + le16(24) + le32(0) + le32(imageSize) + le32(2835) +
                       le32(2835) + le32(0) + le32(0) + pixels;
    std::ofstream(path, std::ios::binary)
        .write(file.data(), static_cast<std::streamsize>(file.size()));
}

// A 64 x 128 32-bit TGA of a tree: a green crown over a brown trunk, clear around them.
void writeTreeImage(const std::string& path) {
    const int width = 64, height = 128;
    std::string file = std::string{0, 0, 2} + std::string(5, '\0') + le16(0) + le16(0) +
                       le16(width) + le16(height) + std::string{32, 0x08};
    for (int y = 0; y < height; ++y) {  // from the bottom row up
        for (int x = 0; x < width; ++x) {
            const double dx = x - width / 2.0 + 0.5;
            const bool trunk = y < 40 && std::abs(dx) < 5;
            const bool crown = y >= 32 && std::abs(dx) < (height - y) * 0.34;
            const uint8_t r = trunk && !crown ? 110 : 40;
            const uint8_t g = trunk && !crown ? 70 : 120;
            const uint8_t b = trunk && !crown ? 40 : 35;
            const uint8_t a = trunk || crown ? 255 : 0;
            file += std::string{static_cast<char>(b), static_cast<char>(g), static_cast<char>(r),
                                static_cast<char>(a)};
        }
    }
    std::ofstream(path, std::ios::binary)
        .write(file.data(), static_cast<std::streamsize>(file.size()));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: velmora-make-samples OUTPUT_FOLDER\n";
        return 2;
    }
    const std::filesystem::path out = argv[1];
    try {
        std::filesystem::create_directories(out / "textures");
        building()->saveMDL((out / "building.mdl").string());
        litPad()->saveMDL((out / "lightpad.mdl").string());
        tree()->saveMDL((out / "tree.mdl").string());
        const std::string bgl = compiledScenery({fileBytes((out / "building.mdl").string()),
                                                 fileBytes((out / "lightpad.mdl").string()),
                                                 fileBytes((out / "tree.mdl").string())});
        std::ofstream((out / "scenery.bgl").string(), std::ios::binary)
            .write(bgl.data(), static_cast<std::streamsize>(bgl.size()));
        writeBitmap((out / "textures" / "wall_summer.bmp").string(), 0, 178, 84, 60, 220, 210, 200);
        writeBitmap((out / "textures" / "wall_winter.bmp").string(), 1, 235, 238, 245, 150, 160,
                    180);
        writeBitmap((out / "textures" / "roof.bmp").string(), 2, 90, 60, 50, 40, 30, 25);
        writeTreeImage((out / "textures" / "tree.tga").string());
    } catch (const Error& e) {
        std::cerr << "velmora-make-samples: error " << e.number() << " (" << e.source()
                  << "): " << e.description() << "\n";
        return 1;
    }
    std::cout << "Samples written to " << out.string() << "\n";
    return 0;
}
