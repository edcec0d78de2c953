#include <velmora/MDLObject.h>

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <array>
#include <cmath>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmora {

namespace {

constexpr int16_t kNoTexture = -1;
constexpr std::array<std::pair<std::size_t, std::size_t>, 3> kEdges{{{0, 1}, {1, 2}, {2, 0}}};

// Lengths are summed in double precision and kept as singles.
float lengthOf(float a, float b, float c) {
    const double da = a;
    const double db = b;
    const double dc = c;
    return static_cast<float>(std::sqrt(da * da + db * db + dc * dc));
}

}  // namespace

// Raises the size of each texture group to the longest stretch of model space that one unit of
// texture coordinate covers on any drawn edge. Sizes are never lowered.
void MDLObject::updateTextureSize() {
    if (!commandList_ || !textureList_ || !vertexList_) raisePlatformError(kObjectNotSet);
    const velmora::TextureList& textures = *textureList_;
    const velmora::VertexList& vertices = *vertexList_;

    // The members of each group, found once: the groups don't change during the walk.
    std::unordered_map<int16_t, std::vector<texture*>> groups;
    for (const auto& entry : textures)
        groups[entry->parent()].push_back(entry.get());

    int16_t currentParent = 0;
    int16_t baseVertex = 0;
    int32_t position = 0;
    try {
        for (const auto& element : commandList_->commands()) {
            ++position;
            const BGLCommand& command = *element;
            switch (command.opcode()) {
                case SET_MATERIAL: {
                    const int16_t t = detail::parameterAsInt16(command, 1);
                    currentParent =
                        t == kNoTexture
                            ? kNoTexture
                            : textures.Item(numbers::narrow16(int32_t{t} + 1))->parent();
                    break;
                }
                case DRAW_TRI_LIST_BEGIN:
                    baseVertex = detail::parameterAsInt16(command, 0);
                    break;
                case DRAW_TRI_LIST_ITEM: {
                    if (currentParent == kNoTexture) break;
                    std::array<int16_t, 3> corner{};
                    for (int k = 0; k < 3; ++k) {
                        // Corners are 0-based from the list's base vertex; the vertex list is
                        // 1-based.
                        corner[static_cast<std::size_t>(k)] = numbers::toInt16(
                            detail::CommandSlots::number(command, k) + baseVertex + 1);
                    }
                    for (const auto& [a, b] : kEdges) {
                        const std::shared_ptr<Vertex> endA = vertices.Item(corner[a]);
                        const std::shared_ptr<Vertex> endB = vertices.Item(corner[b]);
                        const Vertex& A = *endA;
                        const Vertex& B = *endB;
                        const float modelLength =
                            lengthOf(A.x() - B.x(), A.y() - B.y(), A.z() - B.z());
                        const float textureLength =
                            lengthOf(A.tx() - B.tx(), A.ty() - B.ty(), 0.0f);
                        if (!(textureLength > 0)) continue;
                        const float ratio = modelLength / textureLength;
                        if (!(ratio > textures.Item(currentParent)->size())) continue;
                        const auto group = groups.find(currentParent);
                        if (group == groups.end()) continue;
                        for (texture* member : group->second)
                            member->size(ratio);
                    }
                    break;
                }
                default:
                    break;
            }
        }
    } catch (Error& error) {
        throw error.setCommand(position);
    }
}

// Kept for hosts that call it; the sizes come from updateTextureSize.
void MDLObject::recalcTextureSizes() {}

}  // namespace velmora
