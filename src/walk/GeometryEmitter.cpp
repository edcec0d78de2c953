#include "walk/DrawEmitter.h"

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numbers>

namespace velmora::walk {

namespace {

using Colour = std::array<float, 4>;

constexpr Colour kWhite{1.0f, 1.0f, 1.0f, 1.0f};
constexpr Colour kBlack{0.0f, 0.0f, 0.0f, 0.0f};

using MarkPosition = Error& (Error::*)(int32_t);

// The element at a 1-based position; outside the list, error 9 naming what was looked for.
template <class T>
const T& itemAt(const KeyedCollection<T>& list, int64_t position, const char* what,
                MarkPosition mark) {
    if (position < 1 || position > list.Count()) {
        Error error = platformError(kSubscriptOutOfRange);
        (error.*mark)(static_cast<int32_t>(std::clamp<int64_t>(position, INT32_MIN, INT32_MAX)));
        throw error.setDetail(std::string(what) + " " + numbers::formatGrouped(position - 1) +
                              " is not in the model, which has " +
                              numbers::formatGrouped(list.Count()));
    }
    return *list.at0(static_cast<std::size_t>(position - 1));
}

Colour rgba(const std::shared_ptr<color>& c) {
    return {required(c).r(), c->g(), c->b(), c->a()};
}

double parameter(const BGLCommand& command, int index) {
    return detail::CommandSlots::number(command, index);
}

}  // namespace

std::array<float, 3> Transform::point(float x, float y, float z) const {
    return {m[0] * x + m[1] * y + m[2] * z + m[9], m[3] * x + m[4] * y + m[5] * z + m[10],
            m[6] * x + m[7] * y + m[8] * z + m[11]};
}

std::array<float, 3> Transform::direction(float x, float y, float z) const {
    return {m[0] * x + m[1] * y + m[2] * z, m[3] * x + m[4] * y + m[5] * z,
            m[6] * x + m[7] * y + m[8] * z};
}

Transform Transform::after(const Transform& inner) const {
    Transform out;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            out.m[static_cast<std::size_t>(3 * r + c)] =
                m[static_cast<std::size_t>(3 * r)] * inner.m[static_cast<std::size_t>(c)] +
                m[static_cast<std::size_t>(3 * r + 1)] * inner.m[static_cast<std::size_t>(3 + c)] +
                m[static_cast<std::size_t>(3 * r + 2)] * inner.m[static_cast<std::size_t>(6 + c)];
        }
    }
    const auto moved = point(inner.m[9], inner.m[10], inner.m[11]);
    out.m[9] = moved[0];
    out.m[10] = moved[1];
    out.m[11] = moved[2];
    return out;
}

Transform Transform::turnAboutVertical(float degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    const auto c = static_cast<float>(std::cos(radians));
    const auto s = static_cast<float>(std::sin(radians));
    // +z turns towards +x: x' = c x + s z, z' = -s x + c z.
    return Transform{{c, 0, s, 0, 1, 0, -s, 0, c, 0, 0, 0}};
}

bool Transform::isIdentity() const {
    return m == Transform{}.m;
}

DrawEmitter::DrawEmitter(const MaterialList& materials, const TextureList& textures,
                         const VertexList& vertices, DrawListSink& sink)
    : materials_(materials.elements()),
      textures_(textures.elements()),
      vertices_(vertices.elements()),
      sink_(sink) {}

void DrawEmitter::emit(const BGLCommand& command) {
    switch (command.opcode()) {
        case BGL_ZBIAS:
            zBias(command);
            break;
        case SET_MATERIAL:
            setMaterial(command);
            break;
        case DRAW_TRI_LIST_BEGIN:
            beginTriangleList(command);
            break;
        case DRAW_TRI_LIST_ITEM:
            triangle(command);
            break;
        case BGL_LIGHT:
            light(command);
            break;
        default:
            break;
    }
}

void DrawEmitter::light(const BGLCommand& command) {
    std::array<float, 3> p{};
    uint32_t colour = 0;
    try {
        p = transform_.point(static_cast<float>(parameter(command, 1)),
                             static_cast<float>(parameter(command, 2)),
                             static_cast<float>(parameter(command, 3)));
        colour = static_cast<uint32_t>(numbers::toInt32(parameter(command, 7)));
    } catch (const Error&) {
        return;  // a light whose parameters are no numbers draws nothing, as every light
    }
    sink_.pointLight(p[0], p[2], p[1], colour);
}

void DrawEmitter::zBias(const BGLCommand& command) {
    sink_.glPolygonOffset(numbers::toSingle(-parameter(command, 0)), 0.0f);
}

void DrawEmitter::setMaterial(const BGLCommand& command) {
    // The material is read in both cases, so an untextured surface needs a valid one too.
    const int32_t materialPosition = numbers::toInt32(parameter(command, 0) + 1.0);
    const material& m = itemAt(materials_, materialPosition, "material", &Error::setMaterial);
    const Colour diffuse = rgba(m.Diffuse());
    const Colour ambient = rgba(m.Ambient());
    const Colour specular = rgba(m.Specular());
    const Colour emissive = rgba(m.Emmisive());
    const double textureIndex = parameter(command, 1);
    if (textureIndex == -1.0) {
        sink_.selectMaterial(materialPosition - 1, -1);
        sink_.glBindTexture(kTexture2D, kNoTexture);
        sink_.glMaterialfv(kFront, kDiffuse, diffuse);
        sink_.glMaterialfv(kFront, kAmbient, ambient);
        sink_.glMaterialfv(kFront, kSpecular, specular);
        sink_.glMaterialfv(kFront, kEmission, emissive);
        return;
    }
    // A textured surface is lit white: its material's colours are not used.
    const int32_t texturePosition = numbers::toInt32(textureIndex + 1.0);
    const texture& t = itemAt(textures_, texturePosition, "texture", &Error::setTexture);
    sink_.selectMaterial(materialPosition - 1, texturePosition - 1);
    sink_.glBindTexture(kTexture2D, static_cast<uint32_t>(t.glPointer()));
    sink_.glMaterialfv(kFront, kDiffuse, kWhite);
    sink_.glMaterialfv(kFront, kAmbient, kWhite);
    sink_.glMaterialfv(kFront, kSpecular, kBlack);
    sink_.glMaterialfv(kFront, kEmission, kBlack);
}

void DrawEmitter::beginTriangleList(const BGLCommand& command) {
    vertexBase_ = numbers::toInt32(parameter(command, 0));
}

void DrawEmitter::triangle(const BGLCommand& command) {
    const double offset = static_cast<double>(numbers::narrow32(int64_t{vertexBase_} + 1));
    std::array<int32_t, 3> keys{};
    for (int k = 0; k < 3; ++k)
        keys[static_cast<std::size_t>(k)] = numbers::toInt32(parameter(command, k) + offset);
    drawTriangle(keys[0], keys[1], keys[2]);
}

// One polygon per triangle, with the first vertex's normal for all three.
void DrawEmitter::drawTriangle(int32_t key1, int32_t key2, int32_t key3) {
    const std::array<const Vertex*, 3> corners{
        &itemAt(vertices_, key1, "vertex", &Error::setVertex),
        &itemAt(vertices_, key2, "vertex", &Error::setVertex),
        &itemAt(vertices_, key3, "vertex", &Error::setVertex)};
    sink_.glBegin(kPolygon);
    if (!transformed_) {
        sink_.glNormal3f(corners[0]->nx(), corners[0]->nz(), corners[0]->ny());
        for (const Vertex* v : corners) {
            sink_.glTexCoord2f(v->tx(), v->ty());
            sink_.glVertex3f(v->x(), v->z(), v->y());
        }
    } else {
        const auto n = transform_.direction(corners[0]->nx(), corners[0]->ny(), corners[0]->nz());
        sink_.glNormal3f(n[0], n[2], n[1]);
        for (const Vertex* v : corners) {
            sink_.glTexCoord2f(v->tx(), v->ty());
            const auto p = transform_.point(v->x(), v->y(), v->z());
            sink_.glVertex3f(p[0], p[2], p[1]);
        }
    }
    sink_.glEnd();
}

}  // namespace velmora::walk
