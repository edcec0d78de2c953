#include <velmora/MaterialList.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kMaterialListBegin = 182;
constexpr int16_t kReturn = 34;

void readColor(ByteReader& in, color& target) {
    target.r(in.single());
    target.g(in.single());
    target.b(in.single());
    target.a(in.single());
}

void writeColor(ByteWriter& out, const color& source) {
    out.single(source.r());
    out.single(source.g());
    out.single(source.b());
    out.single(source.a());
}

}  // namespace

void MaterialList::readList(const std::string& data) {
    ByteReader in(data);
    if (in.int16() != kMaterialListBegin) {
        raiseLibraryError("Velmora.MaterialList", "Data does not contain a valid material list");
    }
    const int16_t count = in.int16();
    in.int32();  // reserved
    if (count <= 0) return;

    detail::ElementBlock<material> block(static_cast<std::size_t>(count));
    items_.reserve(items_.elements().size() + static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        material& entry = block[i];
        readColor(in, *entry.Diffuse());
        readColor(in, *entry.Ambient());
        readColor(in, *entry.Specular());
        readColor(in, *entry.Emmisive());
        entry.Power(in.single());
        items_.append(block.share(i));
    }
}

std::string MaterialList::asString() const {
    const int16_t count = numbers::narrow16(items_.Count());
    ByteWriter out(static_cast<std::size_t>(count) * 68 + 10);
    out.int16(kMaterialListBegin);
    out.int16(count);
    out.int32(0);
    for (const auto& entry : items_) {
        writeColor(out, *entry->Diffuse());
        writeColor(out, *entry->Ambient());
        writeColor(out, *entry->Specular());
        writeColor(out, *entry->Emmisive());
        out.single(entry->Power());
    }
    out.int16(kReturn);
    return out.take();
}

}  // namespace velmora
