#include <velmora/velmora.h>

#include "support/ErrorMatchers.h"
#include "support/StreamAssembler.h"
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
using namespace velmora;
using bgltest::command;

// A 16-bit count reads the entries beyond the data as zeros: bounded by 65,535, whatever the
// file, in a load, a save and a decode.
TEST(MemoryBound, SixteenBitCountsCostAtMostTheirBoundedEntries) {
    const std::size_t kSixteenBitPart = 16 * 1024 * 1024;  // 65,535 entries read as zeros
    // Vertices, textures, materials and list items claimed beyond the data.
    const std::string claims = section("VERT", le16(181) + le16(0xFFFF) + le32(0)) +
                               section("TEXT", le16(183) + le16(0x7FFF) + le32(0)) +
                               section("MATE", le16(182) + le16(0x7FFF) + le32(0)) +
                               section("BGL ", le16(185) + le16(0) + le16(0) + le16(0xFFFF));
    MDLObject model;
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

    BGLCommandList list;
    const std::size_t decoding =
        peakDuring([&] { list.readList(le16(186) + le16(0) + le16(0) + le16(0xFFFE)); });
    EXPECT_EQ(list.Count(), 1 + 32767);
    EXPECT_LE(decoding, kSixteenBitPart);
}

// The 16-bit counters and fields that overflow on long lists do so with error 6; this program
// runs under UndefinedBehaviorSanitizer, so a wrap or a bad cast on the way fails it as well.
// The walks that index commands with 16 bits: a guarded call, a seasonal texture or a light
// beyond position 32,767. The counts written in 16 bits: 65,535 vertices (unsigned: the test
// above saves that many) and 32,767 commands; a failed save leaves the old file.
TEST(SixteenBitOverflow, LongListsEndInError6) {
    // A loaded empty model whose list holds `fillers` harmless commands, then the given tail.
    const auto longModel = [](int fillers,
                              std::initializer_list<std::shared_ptr<BGLCommand>> tail) {
        auto model = std::make_shared<MDLObject>();
        model->readMDLBytes(riff(""));
        for (int i = 0; i < fillers; ++i)
            model->BGLCommandList()->Add(command(SETWRD, {"1", "2"}));
        for (const auto& c : tail)
            model->BGLCommandList()->Add(c);
        return model;
    };
    EXPECT_EQ(
        longModel(32766, {command(BGL_CALL_32)})->BGLCommandList()->getConditions(-1)->commandEnd(),
        32767);
    auto model = longModel(32767, {command(BGL_CALL_32)});
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->getConditions(-1); }, 6));

    model = longModel(32767, {command(SET_MATERIAL, {"0", "0"})});
    model->TextureList()->Add()->parent(1);
    EXPECT_TRUE(throwsPlatform([&] { model->readSeasonalDates(1); }, 6));
    seasonalTextures seasons;
    seasons.active[0] = true;
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->addSeasonalTextures(seasons); }, 6));
    EXPECT_EQ(model->BGLCommandList()->Count(), 32768);

    // The mask test in front of the light goes; its repair would name position 40,001.
    model = longModel(39999, {command(IFMSK, {"0", "100", "1"}), command(BGL_LIGHT)});
    EXPECT_TRUE(throwsPlatform([&] { model->fixLights(); }, 6));
    EXPECT_EQ(model->BGLCommandList()->Count(), 40000);
    EXPECT_EQ(model->BGLCommandList()->Item(40000)->opcode(), BGL_LIGHT);

    VertexList vertices;
    for (int i = 0; i <= 65535; ++i)
        vertices.Add();
    EXPECT_TRUE(throwsPlatform([&] { vertices.asString(); }, 6));
    TempDir folder;
    model = longModel(32767, {});
    model->saveMDL(folder.file("fits.mdl"));
    model->BGLCommandList()->Add(command(BGL_END));
    writeFile(folder.file("kept.mdl"), "old");
    EXPECT_TRUE(throwsPlatform([&] { model->saveMDL(folder.file("kept.mdl")); }, 6));
    EXPECT_EQ(readFile(folder.file("kept.mdl")), "old");
}
