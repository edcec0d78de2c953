#include <velmora/VertexList.h>

#include "foundation/Host.h"
#include "foundation/NumberText.h"
#include "model/TableSection.h"

namespace velmora {

namespace {

constexpr int16_t kVertexListBegin = 181;
constexpr std::size_t kVertexBytes = 32;
constexpr int32_t kMostVertices = 65535;

}  // namespace

void VertexList::fillCollection(const std::string& data) {
    ByteReader in(data);
    // Unsigned: a model holds up to 65,535 vertices.
    const std::size_t count =
        detail::readTableHead(in, kVertexListBegin, detail::CountWord::Unsigned,
                              "Velmora.VertexList", "Error while reading vertex list");
    detail::appendEntries(items_, count, [&in](Vertex& vertex) {
        yieldToHost();
        vertex.x(in.single());
        vertex.y(in.single());
        vertex.z(in.single());
        vertex.nx(in.single());
        vertex.ny(in.single());
        vertex.nz(in.single());
        vertex.tx(in.single());
        vertex.ty(in.single());
    });
}

std::string VertexList::asString() const {
    // The count field is unsigned 16-bit; a longer list can't be saved.
    if (items_.Count() > kMostVertices) {
        raisePlatformError(kOverflow, "the model holds " + numbers::formatGrouped(items_.Count()) +
                                          " vertices; a model file holds at most 65,535");
    }
    return detail::writeTable(items_, kVertexListBegin, detail::CountWord::Unsigned, kVertexBytes,
                              [](ByteWriter& out, const Vertex& vertex) {
                                  out.single(vertex.x());
                                  out.single(vertex.y());
                                  out.single(vertex.z());
                                  out.single(vertex.nx());
                                  out.single(vertex.ny());
                                  out.single(vertex.nz());
                                  out.single(vertex.tx());
                                  out.single(vertex.ty());
                              });
}

}  // namespace velmora
