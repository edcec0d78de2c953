#include "walk/DrawListAdapter.h"

#include "foundation/NumberText.h"

namespace velmora::walk {

namespace {

constexpr uint32_t kCompile = 0x1300;
constexpr uint32_t kTexture2D = 0x0DE1;
constexpr uint32_t kFront = 0x0404;
constexpr uint32_t kAmbient = 0x1200;
constexpr uint32_t kDiffuse = 0x1201;
constexpr uint32_t kSpecular = 0x1202;
constexpr uint32_t kEmission = 0x1600;
constexpr uint32_t kPolygon = 9;
// An untextured surface binds a name that holds no image.
constexpr uint32_t kNoTexture = 0xFFFFFFFF;

constexpr std::array<float, 4> kWhite{1.0f, 1.0f, 1.0f, 1.0f};
constexpr std::array<float, 4> kBlack{0.0f, 0.0f, 0.0f, 0.0f};

}  // namespace

int16_t DrawListAdapter::beginList() {
    const int16_t name = numbers::narrow16(static_cast<int64_t>(sink_.glGenLists(1)));
    sink_.glNewList(static_cast<uint32_t>(name), kCompile);
    return name;
}

void DrawListAdapter::surface(const Surface& surface) {
    if (surface.texture < 0) {
        sink_.glBindTexture(kTexture2D, kNoTexture);
        sink_.glMaterialfv(kFront, kDiffuse, surface.diffuse);
        sink_.glMaterialfv(kFront, kAmbient, surface.ambient);
        sink_.glMaterialfv(kFront, kSpecular, surface.specular);
        sink_.glMaterialfv(kFront, kEmission, surface.emissive);
        return;
    }
    // A textured surface is lit white: its material's colours are not used.
    sink_.glBindTexture(kTexture2D, static_cast<uint32_t>(surface.textureName));
    sink_.glMaterialfv(kFront, kDiffuse, kWhite);
    sink_.glMaterialfv(kFront, kAmbient, kWhite);
    sink_.glMaterialfv(kFront, kSpecular, kBlack);
    sink_.glMaterialfv(kFront, kEmission, kBlack);
}

void DrawListAdapter::depthBias(float bias) {
    sink_.glPolygonOffset(-bias, 0.0f);
}

void DrawListAdapter::triangle(const std::array<Corner, 3>& corners) {
    sink_.glBegin(kPolygon);
    const Vector3& n = corners[0].normal;
    sink_.glNormal3f(n[0], n[2], n[1]);
    for (const Corner& corner : corners) {
        sink_.glTexCoord2f(corner.texCoord[0], corner.texCoord[1]);
        sink_.glVertex3f(corner.position[0], corner.position[2], corner.position[1]);
    }
    sink_.glEnd();
}

}  // namespace velmora::walk
