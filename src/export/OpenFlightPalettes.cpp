#include <velmora/MaterialList.h>
#include <velmora/OpenFlightWriter.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>

#include "export/BigEndianRecord.h"
#include "export/OpenFlightNames.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_set>

namespace velmora {

namespace {

enum Opcode : int16_t {
    kColorPalette = 32,
    kTexturePalette = 64,
    kVertexPalette = 67,
    kMaterialPalette = 113,
};

constexpr int32_t kPaletteColors = 1024;
constexpr std::string_view kOpaqueWhite = "\xFF\xFF\xFF\xFF";

void writeRgb(flt::BigEndianRecord& out, const color& c) {
    out.single(c.r());
    out.single(c.g());
    out.single(c.b());
}

}  // namespace

void OpenFlightWriter::writeVertexPalette(const std::shared_ptr<VertexList>& vList,
                                          float extraRotation) {
    // Vertices are written where the model has them, whatever the rotation asked for.
    static_cast<void>(extraRotation);
    const auto& vertices = required(vList).elements();
    const int32_t paletteLength =
        numbers::narrow32(static_cast<int64_t>(vertices.Count()) * 64 + 8);
    flt::BigEndianRecord out(db());
    out.head(kVertexPalette, 8);
    out.int32(paletteLength);
    for (const auto& v : vertices) {
        // The file's y is the model's z and its z the model's y, for position and normal.
        writeVertex(v->x(), v->z(), v->y(), v->nx(), v->nz(), v->ny(), v->tx(), v->ty());
    }
}

void OpenFlightWriter::writeColorPalette(const std::shared_ptr<MaterialList>& mList) {
    const auto& materials = required(mList).elements().elements();
    // The record holds 1024 entries; colours of materials beyond those are left out, so the
    // record keeps the length its head gives.
    const auto colored = std::min<std::size_t>(materials.size(), kPaletteColors);
    flt::BigEndianRecord out(db());
    out.head(kColorPalette, 4228);
    out.zeros(128);
    for (std::size_t i = 0; i < colored; ++i)
        out.raw(materials[i]->Diffuse()->packedColor());
    for (auto i = colored; i < kPaletteColors; ++i)
        out.raw(kOpaqueWhite);
}

void OpenFlightWriter::writeMaterialPalette(const std::shared_ptr<MaterialList>& mList) {
    const auto& materials = required(mList).elements();
    flt::BigEndianRecord out(db());
    int32_t index = 0;
    for (const auto& m : materials) {
        out.head(kMaterialPalette, 84);
        out.int32(index);
        out.text(numbers::formatInteger(index), 12);
        out.int32(1);  // flags: material used
        writeRgb(out, *m->Ambient());
        writeRgb(out, *m->Diffuse());
        writeRgb(out, *m->Specular());
        writeRgb(out, *m->Emmisive());
        out.single(m->Power());
        out.single(m->Diffuse()->a());
        out.int32(0);
        ++index;
    }
    // A white material for textured faces, so that the texture is not tinted.
    out.head(kMaterialPalette, 84);
    out.int32(index);
    out.text(numbers::formatInteger(index), 12);
    out.int32(1);
    for (int i = 0; i < 6; ++i)
        out.single(1.0f);  // ambient and diffuse
    for (int i = 0; i < 6; ++i)
        out.single(0.0f);  // specular and emissive
    out.single(0.0f);      // shininess
    out.single(1.0f);      // alpha
    out.int32(0);
}

void OpenFlightWriter::writeTexturePalette(const std::shared_ptr<TextureList>& tList,
                                           const std::string& texFormat, bool saveATTR) {
    const auto& textures = required(tList).elements();
    flt::BigEndianRecord out(db());
    int32_t index = 0;
    // An attribute file holds nothing but its name's fixed words: a name met again is written
    // once, so thousands of textures of one bitmap don't write one file thousands of times.
    std::unordered_set<std::string> attributesWritten;
    for (const auto& t : textures) {
        const std::string fileName = flt::textureFileName(t->bitmap(), texFormat);
        out.head(kTexturePalette, 216);
        out.text(fileName, 200);
        out.int32(index);
        out.zeros(8);  // x and y location in the palette
        if (saveATTR && attributesWritten.insert(fileName).second) writeTextureAttribute(fileName);
        ++index;
    }
}

}  // namespace velmora
