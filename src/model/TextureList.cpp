#include <velmora/TextureList.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"
#include "model/TableSection.h"

namespace velmora {

namespace {

constexpr int16_t kTextureListBegin = 183;
constexpr std::size_t kTextureBytes = 80;
constexpr int16_t kBitmapField = 64;

}  // namespace

void TextureList::fillCollection(const std::string& data) {
    ByteReader in(data);
    const std::size_t count =
        detail::readTableHead(in, kTextureListBegin, detail::CountWord::Signed,
                              "Velmora.TextureList", "No valid texture list data in string");
    detail::appendEntries(items_, count, [&in](texture& entry) {
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
    });
}

std::string TextureList::asString() const {
    int32_t position = 0;
    const auto writeEntry = [&position](ByteWriter& out, const texture& entry) {
        ++position;
        try {
            const velmora::color& shade = *entry.color();
            out.int32(entry.textureType());
            out.byte(numbers::toByte(shade.Bi()));
            out.byte(numbers::toByte(shade.Ai()));
            out.byte(numbers::toByte(shade.Ri()));
            out.byte(numbers::toByte(shade.Gi()));
            out.int32(0);
            out.single(entry.size());
            out.field(entry.bitmap(), kBitmapField);
        } catch (Error& error) {
            throw error.setTexture(position);
        }
    };
    return detail::writeTable(items_, kTextureListBegin, detail::CountWord::Signed, kTextureBytes,
                              writeEntry);
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
