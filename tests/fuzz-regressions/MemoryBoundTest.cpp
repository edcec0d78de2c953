#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>

// Every allocation of this test program is counted, so a test can see the most memory that one
// load, decode, scan or save held at once.
namespace {

std::atomic<std::size_t> liveBytes{0};
std::atomic<std::size_t> peakBytes{0};
constexpr std::size_t kHeader = 16;  // keeps the blocks aligned as operator new must

void* countedAllocation(std::size_t size) noexcept {
    auto* block = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (block == nullptr) return nullptr;
    *reinterpret_cast<std::size_t*>(block) = size;
    const std::size_t live = liveBytes.fetch_add(size) + size;
    std::size_t peak = peakBytes.load();
    while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
    }
    return block + kHeader;
}

void countedRelease(void* pointer) noexcept {
    if (pointer == nullptr) return;
    auto* block = static_cast<unsigned char*>(pointer) - kHeader;
    liveBytes.fetch_sub(*reinterpret_cast<std::size_t*>(block));
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* pointer = countedAllocation(size)) return pointer;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return countedAllocation(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return countedAllocation(size);
}
void operator delete(void* pointer) noexcept {
    countedRelease(pointer);
}
void operator delete[](void* pointer) noexcept {
    countedRelease(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    countedRelease(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    countedRelease(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    countedRelease(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    countedRelease(pointer);
}

std::size_t peakDuring(const std::function<void()>& action) {
    const std::size_t before = liveBytes.load();
    peakBytes.store(before);
    action();
    return peakBytes.load() - before;
}

using namespace testbytes;

// A 16-bit count reads the entries beyond the data as zeros: bounded by 65,535, whatever the
// file, in a load, a save and a decode.
TEST(MemoryBound, SixteenBitCountsCostAtMostTheirBoundedEntries) {
    const std::size_t kSixteenBitPart = 16 * 1024 * 1024;  // 65,535 entries read as zeros
    // Vertices, textures, materials and list items claimed beyond the data.
    const std::string claims = section("VERT", le16(181) + le16(0xFFFF) + le32(0)) +
                               section("TEXT", le16(183) + le16(0x7FFF) + le32(0)) +
                               section("MATE", le16(182) + le16(0x7FFF) + le32(0)) +
                               section("BGL ", le16(185) + le16(0) + le16(0) + le16(0xFFFF));
    velmora::MDLObject model;
    const std::size_t loading = peakDuring([&] { model.readMDLBytes(riff(claims)); });
    EXPECT_EQ(model.VertexList()->Count(), 65535);
    EXPECT_EQ(model.VertexList()->Item(65535)->x(), 0.0f);
    EXPECT_EQ(model.TextureList()->Count(), 32767);
    EXPECT_EQ(model.BGLCommandList()->Count(), 1 + 21845);
    EXPECT_LE(loading, 4 * kSixteenBitPart);

    TempDir folder;
    const std::size_t saving = peakDuring([&] { model.saveMDL(folder.file("saved.mdl")); });
    const std::size_t savedSize = readFile(folder.file("saved.mdl")).size();
    EXPECT_GT(savedSize, 65535u * 32);
    EXPECT_LE(saving, 4 * savedSize + 4 * kSixteenBitPart);

    velmora::BGLCommandList list;
    const std::size_t decoding =
        peakDuring([&] { list.readList(le16(186) + le16(0) + le16(0) + le16(0xFFFE)); });
    EXPECT_EQ(list.Count(), 1 + 32767);
    EXPECT_LE(decoding, kSixteenBitPart);
}
