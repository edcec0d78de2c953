#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <array>
#include <climits>

namespace velmora {

namespace {

// The OpenGL 1.1 values the walk emits; the walk itself needs no graphics library.
constexpr uint32_t kCompile = 0x1300;
constexpr uint32_t kTexture2D = 0x0DE1;
constexpr uint32_t kFront = 0x0404;
constexpr uint32_t kAmbient = 0x1200;
constexpr uint32_t kDiffuse = 0x1201;
constexpr uint32_t kSpecular = 0x1202;
constexpr uint32_t kEmission = 0x1600;
constexpr uint32_t kPolygon = 9;
constexpr uint32_t kNoTexture = 0xFFFFFFFF;

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
    if (!c) raisePlatformError(kObjectNotSet);
    return {c->r(), c->g(), c->b(), c->a()};
}

double parameter(const BGLCommand& command, int index) {
    return detail::CommandSlots::number(command, index);
}

class DrawListWalk {
  public:
    DrawListWalk(const MaterialList& materials, const TextureList& textures,
                 const VertexList& vertices, DrawListSink& sink)
        : materials_(materials.elements()),
          textures_(textures.elements()),
          vertices_(vertices.elements()),
          sink_(sink) {}

    void zBias(const BGLCommand& command) {
        sink_.glPolygonOffset(numbers::toSingle(-parameter(command, 0)), 0.0f);
    }

    void setMaterial(const BGLCommand& command) {
        // The material is read in both cases, so an untextured surface needs a valid one too.
        const material& m = itemAt(materials_, numbers::toInt32(parameter(command, 0) + 1.0),
                                   "material", &Error::setMaterial);
        const Colour diffuse = rgba(m.Diffuse());
        const Colour ambient = rgba(m.Ambient());
        const Colour specular = rgba(m.Specular());
        const Colour emissive = rgba(m.Emmisive());
        const double textureIndex = parameter(command, 1);
        if (textureIndex == -1.0) {
            sink_.glBindTexture(kTexture2D, kNoTexture);
            sink_.glMaterialfv(kFront, kDiffuse, diffuse);
            sink_.glMaterialfv(kFront, kAmbient, ambient);
            sink_.glMaterialfv(kFront, kSpecular, specular);
            sink_.glMaterialfv(kFront, kEmission, emissive);
            return;
        }
        // A textured surface is lit white: its material's colours are not used.
        const texture& t =
            itemAt(textures_, numbers::toInt32(textureIndex + 1.0), "texture", &Error::setTexture);
        sink_.glBindTexture(kTexture2D, static_cast<uint32_t>(t.glPointer()));
        sink_.glMaterialfv(kFront, kDiffuse, kWhite);
        sink_.glMaterialfv(kFront, kAmbient, kWhite);
        sink_.glMaterialfv(kFront, kSpecular, kBlack);
        sink_.glMaterialfv(kFront, kEmission, kBlack);
    }

    void beginTriangleList(const BGLCommand& command) {
        vertexBase_ = numbers::toInt32(parameter(command, 0));
    }

    void triangle(const BGLCommand& command) {
        const double offset = static_cast<double>(numbers::narrow32(int64_t{vertexBase_} + 1));
        std::array<int32_t, 3> keys{};
        for (int k = 0; k < 3; ++k)
            keys[k] = numbers::toInt32(parameter(command, k) + offset);
        drawTriangle(keys[0], keys[1], keys[2]);
    }

  private:
    // One polygon per triangle, with the first vertex's normal for all three; the model's y
    // and z change places on the way to OpenGL.
    void drawTriangle(int32_t key1, int32_t key2, int32_t key3) {
        const std::array<const Vertex*, 3> corners{
            &itemAt(vertices_, key1, "vertex", &Error::setVertex),
            &itemAt(vertices_, key2, "vertex", &Error::setVertex),
            &itemAt(vertices_, key3, "vertex", &Error::setVertex)};
        sink_.glBegin(kPolygon);
        sink_.glNormal3f(corners[0]->nx(), corners[0]->nz(), corners[0]->ny());
        for (const Vertex* v : corners) {
            sink_.glTexCoord2f(v->tx(), v->ty());
            sink_.glVertex3f(v->x(), v->z(), v->y());
        }
        sink_.glEnd();
    }

    const KeyedCollection<material>& materials_;
    const KeyedCollection<texture>& textures_;
    const KeyedCollection<Vertex>& vertices_;
    DrawListSink& sink_;
    int32_t vertexBase_ = 0;
};

}  // namespace

void MDLObject::glGenerateDrawList(DrawListSink& sink) {
    const velmora::BGLCommandList& commands = required(commandList_);
    DrawListWalk walk(required(materialList_), required(textureList_), required(vertexList_), sink);

    drawListId_ = numbers::narrow16(static_cast<int64_t>(sink.glGenLists(1)));
    sink.glNewList(static_cast<uint32_t>(drawListId_), kCompile);
    // A flat pass in file order: jumps are not followed and tests not evaluated, so every
    // triangle of the stream is drawn.
    int32_t position = 0;
    try {
        for (const auto& element : commands.commands()) {
            yieldToHost();
            ++position;
            const BGLCommand& command = *element;
            switch (command.opcode()) {
                case BGL_ZBIAS:
                    walk.zBias(command);
                    break;
                case SET_MATERIAL:
                    walk.setMaterial(command);
                    break;
                case DRAW_TRI_LIST_BEGIN:
                    walk.beginTriangleList(command);
                    break;
                case DRAW_TRI_LIST_ITEM:
                    walk.triangle(command);
                    break;
                default:
                    break;
            }
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }
    sink.glEndList();
}

}  // namespace velmora
