#include <velmora/VertexList.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "foundation/NumberText.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kVertexListBegin = 181;
constexpr int16_t kReturn = 34;
constexpr int32_t kMostVertices = 65535;

}  // namespace

void VertexList::fillCollection(const std::string& data) {
    ByteReader in(data);
    if (in.int16() != kVertexListBegin) {
        raiseLibraryError("Velmora.VertexList", "Error while reading vertex list");
    }
    // Unsigned: a model holds up to 65,535 vertices.
    const auto count = static_cast<std::size_t>(in.uint16());
    in.int32();  // reserved
    if (count == 0) return;

    detail::ElementBlock<Vertex> block(count);
    items_.reserve(items_.elements().size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        yieldToHost();
        Vertex& vertex = block[i];
        vertex.x(in.single());
        vertex.y(in.single());
        vertex.z(in.single());
        vertex.nx(in.single());
        vertex.ny(in.single());
        vertex.nz(in.single());
        vertex.tx(in.single());
        vertex.ty(in.single());
        items_.append(block.share(i));
    }
}

std::string VertexList::asString() const {
    // The count field is unsigned 16-bit; a longer list can't be saved.
    if (items_.Count() > kMostVertices) {
        raisePlatformError(kOverflow, "the model holds " + numbers::formatGrouped(items_.Count()) +
                                          " vertices; a model file holds at most 65,535");
    }
    ByteWriter out(static_cast<std::size_t>(items_.Count()) * 32 + 10);
    out.int16(kVertexListBegin);
    out.uint16(items_.Count());
    out.int32(0);
    for (const auto& vertex : items_) {
        out.single(vertex->x());
        out.single(vertex->y());
        out.single(vertex->z());
        out.single(vertex->nx());
        out.single(vertex->ny());
        out.single(vertex->nz());
        out.single(vertex->tx());
        out.single(vertex->ty());
    }
    out.int16(kReturn);
    return out.take();
}

}  // namespace velmora
