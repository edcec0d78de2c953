#pragma once

#include <velmora/KeyedCollection.h>

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

// The frame that the material, texture and vertex sections share: a list-begin opcode, a 16-bit
// count, a reserved long, the entries, and a closing BGL_RETURN.
namespace velmora::detail {

enum class CountWord { Signed, Unsigned };

// Reads the head of a table section and gives its count (0 for a negative signed count).
// A section that doesn't start with `beginOpcode` is error 100 with that source and description.
inline std::size_t readTableHead(ByteReader& in, int16_t beginOpcode, CountWord countWord,
                                 const char* source, const char* description) {
    if (in.int16() != beginOpcode) raiseLibraryError(source, description);
    const int32_t count = countWord == CountWord::Signed ? in.int16() : in.uint16();
    in.int32();  // reserved
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

// Appends `count` entries, each filled by `readEntry(entry)`. They live in one allocation and
// each is handed out as a shared_ptr that aliases it: 65,535 vertices cost one allocation.
template <class T, class ReadEntry>
void appendEntries(KeyedCollection<T>& items, std::size_t count, ReadEntry&& readEntry) {
    if (count == 0) return;
    const std::shared_ptr<T[]> block = std::make_shared<T[]>(count);
    items.reserve(items.elements().size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        readEntry(block[i]);
        items.append(std::shared_ptr<T>(block, &block[i]));
    }
}

// A whole table section: the head, each entry by `writeEntry(out, entry)`, the closing return.
template <class T, class WriteEntry>
std::string writeTable(const KeyedCollection<T>& items, int16_t beginOpcode, CountWord countWord,
                       std::size_t entryBytes, WriteEntry&& writeEntry) {
    constexpr int16_t kReturn = 34;
    ByteWriter out(static_cast<std::size_t>(items.Count()) * entryBytes + 10);
    out.int16(beginOpcode);
    if (countWord == CountWord::Signed) {
        if (items.Count() > 32767) raisePlatformError(kOverflow);
        out.int16(static_cast<int16_t>(items.Count()));
    } else {
        out.uint16(items.Count());
    }
    out.int32(0);
    for (const auto& entry : items)
        writeEntry(out, *entry);
    out.int16(kReturn);
    return out.take();
}

}  // namespace velmora::detail
