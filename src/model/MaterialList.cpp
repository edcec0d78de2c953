#include <velmora/MaterialList.h>

#include "model/TableSection.h"

namespace velmora {

namespace {

constexpr int16_t kMaterialListBegin = 182;
constexpr std::size_t kMaterialBytes = 68;

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
    const std::size_t count = detail::readTableHead(
        in, kMaterialListBegin, detail::CountWord::Signed, "Velmora.MaterialList",
        "Data does not contain a valid material list");
    detail::appendEntries(items_, count, [&in](material& entry) {
        readColor(in, *entry.Diffuse());
        readColor(in, *entry.Ambient());
        readColor(in, *entry.Specular());
        readColor(in, *entry.Emmisive());
        entry.Power(in.single());
    });
}

std::string MaterialList::asString() const {
    return detail::writeTable(items_, kMaterialListBegin, detail::CountWord::Signed, kMaterialBytes,
                              [](ByteWriter& out, const material& entry) {
                                  writeColor(out, *entry.Diffuse());
                                  writeColor(out, *entry.Ambient());
                                  writeColor(out, *entry.Specular());
                                  writeColor(out, *entry.Emmisive());
                                  out.single(entry.Power());
                              });
}

}  // namespace velmora
