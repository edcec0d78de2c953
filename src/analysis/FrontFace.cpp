#include <velmora/FrontFace.h>
#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"

#include <cmath>

namespace velmora {

namespace {

std::array<double, 3> difference(const Vector3& to, const Vector3& from) {
    return {double{to[0]} - from[0], double{to[1]} - from[1], double{to[2]} - from[2]};
}

std::array<double, 3> cross(const std::array<double, 3>& u, const std::array<double, 3>& v) {
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

std::array<double, 3> front(const std::array<Vector3, 3>& p) {
    return cross(difference(p[2], p[0]), difference(p[1], p[0]));
}

// The corner `k` of a list item as a 1-based key into the vertex list; 0 when it is no number.
int64_t keyOf(const BGLCommand& item, int k, int64_t base) {
    try {
        const double value = detail::CommandSlots::number(item, k);
        if (!std::isfinite(value) || std::abs(value) > 1e9) return 0;
        return static_cast<int64_t>(std::llround(value)) + base + 1;
    } catch (const Error&) {
        return 0;
    }
}

}  // namespace

Vector3 frontNormal(const std::array<Vector3, 3>& corners) {
    const std::array<double, 3> n = front(corners);
    return {static_cast<float>(n[0]), static_cast<float>(n[1]), static_cast<float>(n[2])};
}

bool isReversed(const std::array<Corner, 3>& corners) {
    const std::array<double, 3> n =
        front({corners[0].position, corners[1].position, corners[2].position});
    double along = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double normal =
            double{corners[0].normal[i]} + corners[1].normal[i] + corners[2].normal[i];
        along += n[i] * normal;
    }
    return along < 0;
}

std::vector<int32_t> reversedTriangles(const MDLObject& model) {
    std::vector<int32_t> out;
    const auto commands = model.BGLCommandList();
    const auto vertexList = model.VertexList();
    if (!commands || !vertexList) return out;
    const KeyedCollection<Vertex>& vertices = vertexList->elements();
    const auto cornerAt = [&vertices](int64_t key, Corner& corner) {
        if (key < 1 || key > vertices.Count()) return false;
        const Vertex& v = *vertices.at0(static_cast<std::size_t>(key - 1));
        corner = {{v.x(), v.y(), v.z()}, {v.nx(), v.ny(), v.nz()}, {}};
        return true;
    };
    int64_t base = 0;
    int32_t position = 0;
    for (const auto& element : commands->commands()) {
        ++position;
        const BGLCommand& command = *element;
        if (command.opcode() == DRAW_TRI_LIST_BEGIN) {
            base = keyOf(command, 0, -1);
            continue;
        }
        if (command.opcode() != DRAW_TRI_LIST_ITEM) continue;
        std::array<Corner, 3> corners;
        bool found = true;
        for (int k = 0; k < 3 && found; ++k)
            found = cornerAt(keyOf(command, k, base), corners[static_cast<std::size_t>(k)]);
        if (found && isReversed(corners)) out.push_back(position);
    }
    return out;
}

}  // namespace velmora
