#include <velmora/TextureList.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"
#include "model/ElementBlock.h"

namespace velmora {

namespace {

constexpr int16_t kTextureListBegin = 183;
constexpr int16_t kReturn = 34;
constexpr int16_t kBitmapField = 64;

}  // namespace

void TextureList::fillCollection(const std::string& data) {
    ByteReader in(data);
    if (in.int16() != kTextureListBegin) {
        raiseLibraryError("Velmora.TextureList", "No valid texture list data in string");
    }
    const int16_t count = in.int16();
    in.int32();  // reserved
    if (count <= 0) return;

    detail::ElementBlock<texture> block(static_cast<std::size_t>(count));
    items_.reserve(items_.elements().size() + static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        texture& entry = block[i];
        entry.textureType(static_cast<velmora::textureType>(in.int32()));
        // The colour bytes stand as blue, alpha, red, green.
        velmora::color& shade = *entry.color();
        shade.Bi(in.byte());
        shade.Ai(in.byte());
        shade.Ri(in.byte());
        shade.Gi(in.byte());
        in.int32();  // reserved
        entry.size(in.single());
        entry.bitmap(in.text(kBitmapField));
        items_.append(block.share(i));
    }
}

std::string TextureList::asString() const {
    const int16_t count = numbers::narrow16(items_.Count());
    ByteWriter out(static_cast<std::size_t>(count) * 80 + 10);
    out.int16(kTextureListBegin);
    out.int16(count);
    out.int32(0);
    int32_t position = 0;
    for (const auto& entry : items_) {
        ++position;
        try {
            const velmora::color& shade = *entry->color();
            out.int32(entry->textureType());
            out.byte(numbers::toByte(shade.Bi()));
            out.byte(numbers::toByte(shade.Ai()));
            out.byte(numbers::toByte(shade.Ri()));
            out.byte(numbers::toByte(shade.Gi()));
            out.int32(0);
            out.single(entry->size());
            out.field(entry->bitmap(), kBitmapField);
        } catch (Error& error) {
            throw error.setSection("TEXT").setTexture(position);
        }
    }
    out.int16(kReturn);
    return out.take();
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
