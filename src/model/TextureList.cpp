#include <velmora/TextureList.h>

#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kTextureListBegin = 183;
constexpr int16_t kReturn = 34;
constexpr int16_t kBitmapField = 64;

}  // namespace

TextureList::~TextureList() {
    items_.clear();
}

std::shared_ptr<texture> TextureList::Add(std::shared_ptr<texture> sTexture,
                                          const std::string& sKey, IndexKey bfrIndexKey) {
    return items_.Add(std::move(sTexture), sKey, bfrIndexKey);
}

std::shared_ptr<texture> TextureList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t TextureList::Count() const {
    return items_.Count();
}

void TextureList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

TextureList::const_iterator TextureList::begin() const {
    return items_.begin();
}

TextureList::const_iterator TextureList::end() const {
    return items_.end();
}

void TextureList::fillCollection(const std::string& data) {
    hex::MemoryReader reader(data);
    const int16_t file = reader.file();
    if (hex::readInteger(file) != kTextureListBegin) {
        raiseLibraryError("Velmora.TextureList", "No valid texture list data in string");
    }
    const int16_t count = hex::readInteger(file);
    hex::readLong(file);  // reserved
    if (count <= 0) return;

    detail::ElementBlock<texture> block(static_cast<std::size_t>(count));
    items_.reserve(items_.elements().size() + static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        texture& entry = block[i];
        entry.textureType(static_cast<velmora::textureType>(hex::readLong(file)));
        // The colour bytes stand as blue, alpha, red, green.
        velmora::color& shade = *entry.color();
        shade.Bi(hex::readByte(file));
        shade.Ai(hex::readByte(file));
        shade.Ri(hex::readByte(file));
        shade.Gi(hex::readByte(file));
        hex::readLong(file);  // reserved
        entry.size(hex::readSingle(file));
        entry.bitmap(hex::readString(file, kBitmapField));
        items_.append(block.share(i));
    }
}

std::string TextureList::asString() const {
    const int16_t count = numbers::narrow16(items_.Count());
    hex::MemoryWriter writer(static_cast<std::size_t>(count) * 80 + 10);
    const int16_t file = writer.file();
    hex::writeInteger(file, kTextureListBegin);
    hex::writeInteger(file, count);
    hex::writeLong(file, 0);
    for (const auto& entry : items_) {
        const velmora::color& shade = *entry->color();
        hex::writeLong(file, entry->textureType());
        hex::writeByte(file, numbers::toByte(shade.Bi()));
        hex::writeByte(file, numbers::toByte(shade.Ai()));
        hex::writeByte(file, numbers::toByte(shade.Ri()));
        hex::writeByte(file, numbers::toByte(shade.Gi()));
        hex::writeLong(file, 0);
        hex::writeSingle(file, entry->size());
        hex::writeString(file, entry->bitmap(), kBitmapField);
    }
    hex::writeInteger(file, kReturn);
    return writer.take();
}

int16_t TextureList::findTextureIndex(int16_t parent, int16_t season) const {
    // The position is a 16-bit counter: a longer list is an overflow before the walk starts.
    const int16_t count = numbers::narrow16(items_.Count());
    for (int32_t position = 1; position <= count; ++position) {
        const auto& entry = items_.at0(static_cast<std::size_t>(position - 1));
        if (entry->textureVariant() == season && entry->parent() == parent) {
            return static_cast<int16_t>(position);
        }
    }
    return 0;
}

}  // namespace velmora
