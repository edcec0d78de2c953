#include <velmora/VertexList.h>

#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"
#include "foundation/Host.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kVertexListBegin = 181;
constexpr int16_t kReturn = 34;
constexpr int32_t kMostVertices = 65535;

}  // namespace

VertexList::~VertexList() {
    items_.clear();
}

std::shared_ptr<Vertex> VertexList::Add(std::shared_ptr<Vertex> sVertex, const std::string& sKey) {
    return items_.Add(std::move(sVertex), sKey, IndexKey());
}

std::shared_ptr<Vertex> VertexList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t VertexList::Count() const {
    return items_.Count();
}

void VertexList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

VertexList::const_iterator VertexList::begin() const {
    return items_.begin();
}

VertexList::const_iterator VertexList::end() const {
    return items_.end();
}

void VertexList::fillCollection(const std::string& data) {
    hex::MemoryReader reader(data);
    const int16_t file = reader.file();
    if (hex::readInteger(file) != kVertexListBegin) {
        raiseLibraryError("Velmora.VertexList", "Error while reading vertex list");
    }
    // Unsigned: a model holds up to 65,535 vertices.
    const auto count = static_cast<std::size_t>(hex::readUInteger(file));
    hex::readLong(file);  // reserved
    if (count == 0) return;

    detail::ElementBlock<Vertex> block(count);
    items_.reserve(items_.elements().size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        yieldToHost();
        Vertex& vertex = block[i];
        vertex.x(hex::readSingle(file));
        vertex.y(hex::readSingle(file));
        vertex.z(hex::readSingle(file));
        vertex.nx(hex::readSingle(file));
        vertex.ny(hex::readSingle(file));
        vertex.nz(hex::readSingle(file));
        vertex.tx(hex::readSingle(file));
        vertex.ty(hex::readSingle(file));
        items_.append(block.share(i));
    }
}

std::string VertexList::asString() const {
    // The count field is unsigned 16-bit; a longer list can't be saved.
    if (items_.Count() > kMostVertices) raisePlatformError(kOverflow);
    hex::MemoryWriter writer(static_cast<std::size_t>(items_.Count()) * 32 + 10);
    const int16_t file = writer.file();
    hex::writeInteger(file, kVertexListBegin);
    hex::writeUInteger(file, items_.Count());
    hex::writeLong(file, 0);
    for (const auto& vertex : items_) {
        hex::writeSingle(file, vertex->x());
        hex::writeSingle(file, vertex->y());
        hex::writeSingle(file, vertex->z());
        hex::writeSingle(file, vertex->nx());
        hex::writeSingle(file, vertex->ny());
        hex::writeSingle(file, vertex->nz());
        hex::writeSingle(file, vertex->tx());
        hex::writeSingle(file, vertex->ty());
    }
    hex::writeInteger(file, kReturn);
    return writer.take();
}

}  // namespace velmora
