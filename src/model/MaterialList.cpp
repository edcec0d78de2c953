#include <velmora/MaterialList.h>

#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kMaterialListBegin = 182;
constexpr int16_t kReturn = 34;

void readColor(int16_t file, color& target) {
    target.r(hex::readSingle(file));
    target.g(hex::readSingle(file));
    target.b(hex::readSingle(file));
    target.a(hex::readSingle(file));
}

void writeColor(int16_t file, const color& source) {
    hex::writeSingle(file, source.r());
    hex::writeSingle(file, source.g());
    hex::writeSingle(file, source.b());
    hex::writeSingle(file, source.a());
}

}  // namespace

MaterialList::~MaterialList() {
    items_.clear();
}

std::shared_ptr<material> MaterialList::Add(std::shared_ptr<material> sMaterial,
                                            const std::string& sKey) {
    return items_.Add(std::move(sMaterial), sKey, IndexKey());
}

std::shared_ptr<material> MaterialList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t MaterialList::Count() const {
    return items_.Count();
}

void MaterialList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

MaterialList::const_iterator MaterialList::begin() const {
    return items_.begin();
}

MaterialList::const_iterator MaterialList::end() const {
    return items_.end();
}

void MaterialList::readList(const std::string& data) {
    hex::MemoryReader reader(data);
    const int16_t file = reader.file();
    if (hex::readInteger(file) != kMaterialListBegin) {
        raiseLibraryError("Velmora.MaterialList", "Data does not contain a valid material list");
    }
    const int16_t count = hex::readInteger(file);
    hex::readLong(file);  // reserved
    if (count <= 0) return;

    detail::ElementBlock<material> block(static_cast<std::size_t>(count));
    items_.reserve(items_.elements().size() + static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        material& entry = block[i];
        readColor(file, *entry.Diffuse());
        readColor(file, *entry.Ambient());
        readColor(file, *entry.Specular());
        readColor(file, *entry.Emmisive());
        entry.Power(hex::readSingle(file));
        items_.append(block.share(i));
    }
}

std::string MaterialList::asString() const {
    const int16_t count = numbers::narrow16(items_.Count());
    hex::MemoryWriter writer(static_cast<std::size_t>(count) * 68 + 10);
    const int16_t file = writer.file();
    hex::writeInteger(file, kMaterialListBegin);
    hex::writeInteger(file, count);
    hex::writeLong(file, 0);
    for (const auto& entry : items_) {
        writeColor(file, *entry->Diffuse());
        writeColor(file, *entry->Ambient());
        writeColor(file, *entry->Specular());
        writeColor(file, *entry->Emmisive());
        hex::writeSingle(file, entry->Power());
    }
    hex::writeInteger(file, kReturn);
    return writer.take();
}

}  // namespace velmora
