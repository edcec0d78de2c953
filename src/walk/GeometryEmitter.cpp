#include "walk/GeometryEmitter.h"

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <climits>

namespace velmora::walk {

namespace {

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

std::array<float, 4> rgba(const std::shared_ptr<color>& c) {
    return {required(c).r(), c->g(), c->b(), c->a()};
}

double parameter(const BGLCommand& command, int index) {
    return detail::CommandSlots::number(command, index);
}

// The parameter plus `add`, rounded to 32 bits: error 6 where it doesn't fit. A parameter held as
// a whole number takes the short way, with the same outcome.
int32_t parameterPlus(const BGLCommand& command, int index, int32_t add) {
    int32_t whole = 0;
    if (detail::CommandSlots::integer(command, index, whole))
        return numbers::narrow32(int64_t{whole} + add);
    return numbers::toInt32(parameter(command, index) + add);
}

}  // namespace

GeometryEmitter::GeometryEmitter(const MaterialList& materials, const TextureList& textures,
                                 const VertexList& vertices, GeometrySink& sink)
    : materials_(materials.elements()),
      textures_(textures.elements()),
      vertices_(vertices.elements()),
      sink_(sink) {}

void GeometryEmitter::emit(const BGLCommand& command, int32_t position) {
    switch (command.opcode()) {
        case BGL_ZBIAS:
            zBias(command);
            break;
        case SET_MATERIAL:
            setMaterial(command, position);
            break;
        case DRAW_TRI_LIST_BEGIN:
            vertexBase_ = numbers::toInt32(parameter(command, 0));
            break;
        case DRAW_TRI_LIST_ITEM:
            triangle(command);
            break;
        case DRAW_LINE_LIST_BEGIN:
            try {
                lineBase_ = numbers::toInt32(parameter(command, 0));
            } catch (const Error&) {
                lineBase_ = 0;  // lines draw nothing in the preview, so they never fail a walk
            }
            break;
        case DRAW_LINE_LIST_ITEM:
            line(command);
            break;
        case BGL_LIGHT:
            light(command, position);
            break;
        default:
            break;
    }
}

void GeometryEmitter::zBias(const BGLCommand& command) {
    sink_.depthBias(numbers::toSingle(parameter(command, 0)));
}

void GeometryEmitter::setMaterial(const BGLCommand& command, int32_t position) {
    // The material is read in both cases, so an untextured surface needs a valid one too.
    const int32_t materialPosition = parameterPlus(command, 0, 1);
    const material& m = itemAt(materials_, materialPosition, "material", &Error::setMaterial);
    Surface surface;
    surface.material = materialPosition - 1;
    surface.diffuse = rgba(m.Diffuse());
    surface.ambient = rgba(m.Ambient());
    surface.specular = rgba(m.Specular());
    surface.emissive = rgba(m.Emmisive());
    surface.power = m.Power();
    surface.command = position;
    const double textureIndex = parameter(command, 1);
    if (textureIndex != -1.0) {
        const int32_t texturePosition = parameterPlus(command, 1, 1);
        const texture& t = itemAt(textures_, texturePosition, "texture", &Error::setTexture);
        surface.texture = texturePosition - 1;
        surface.textureName = t.glPointer();
    }
    sink_.surface(surface);
}

Corner GeometryEmitter::cornerOf(const Vertex& v) const {
    Corner corner{{v.x(), v.y(), v.z()}, {v.nx(), v.ny(), v.nz()}, {v.tx(), v.ty()}};
    if (transformed_) {
        corner.position = transform_.point(corner.position);
        corner.normal = transform_.direction(corner.normal);
    }
    return corner;
}

// All three corners are fetched before the triangle is emitted.
void GeometryEmitter::triangle(const BGLCommand& command) {
    const int32_t offset = numbers::narrow32(int64_t{vertexBase_} + 1);
    std::array<int32_t, 3> keys{};
    for (std::size_t k = 0; k < 3; ++k)
        keys[k] = parameterPlus(command, static_cast<int>(k), offset);
    const Vertex& a = itemAt(vertices_, keys[0], "vertex", &Error::setVertex);
    const Vertex& b = itemAt(vertices_, keys[1], "vertex", &Error::setVertex);
    const Vertex& c = itemAt(vertices_, keys[2], "vertex", &Error::setVertex);
    sink_.triangle({cornerOf(a), cornerOf(b), cornerOf(c)});
}

// A line whose vertices are not both in the model, or whose parameters are no numbers, is
// passed over.
void GeometryEmitter::line(const BGLCommand& command) {
    std::array<Vector3, 2> ends{};
    try {
        for (std::size_t k = 0; k < 2; ++k) {
            const int64_t key =
                int64_t{numbers::toInt32(parameter(command, static_cast<int>(k)))} + lineBase_ + 1;
            if (key < 1 || key > vertices_.Count()) return;
            const Vertex& v = *vertices_.at0(static_cast<std::size_t>(key - 1));
            ends[k] = transform_.point({v.x(), v.y(), v.z()});
        }
    } catch (const Error&) {
        return;
    }
    sink_.line(ends);
}

void GeometryEmitter::light(const BGLCommand& command, int32_t position) {
    Light light;
    light.command = position;
    try {
        light.position = transform_.point({static_cast<float>(parameter(command, 1)),
                                           static_cast<float>(parameter(command, 2)),
                                           static_cast<float>(parameter(command, 3))});
        light.colour = static_cast<uint32_t>(numbers::toInt32(parameter(command, 7)));
    } catch (const Error&) {
        return;  // a light whose place or colour is no number is passed over
    }
    try {
        light.type = numbers::toInt32(parameter(command, 0));
    } catch (const Error&) {
        light.type = 0;
    }
    sink_.light(light);
}

}  // namespace velmora::walk
