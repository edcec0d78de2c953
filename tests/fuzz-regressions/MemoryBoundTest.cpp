#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
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

void* countedAllocation(std::size_t size) {
    auto* block = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (block == nullptr) return nullptr;
    *reinterpret_cast<std::size_t*>(block) = size;
    const std::size_t live = liveBytes.fetch_add(size) + size;
    std::size_t peak = peakBytes.load();
    while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
    }
    return block + kHeader;
}

void countedRelease(void* pointer) {
    if (pointer == nullptr) return;
    auto* block = static_cast<unsigned char*>(pointer) - kHeader;
    liveBytes.fetch_sub(*reinterpret_cast<std::size_t*>(block));
    std::free(block);
}

void* allocateOrThrow(std::size_t size) {
    if (void* pointer = countedAllocation(size)) return pointer;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
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

using namespace testbytes;

namespace {

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;
// What any one call may hold whatever its input: a few tables and buffers.
constexpr std::size_t kFixedPart = 64 * kKiB;
// What one 16-bit count may claim beyond the bytes: up to 65,535 entries read as zeros.
constexpr std::size_t kSixteenBitPart = 16 * kMiB;

// The most bytes held at once while `action` ran, beyond what was held before.
std::size_t peakDuring(const std::function<void()>& action) {
    const std::size_t before = liveBytes.load();
    peakBytes.store(before);
    action();
    return peakBytes.load() - before;
}

// A file that claims far more than it holds, the error it gets and what it may hold meanwhile.
struct HostileFile {
    const char* name;
    std::string bytes;
    int number;
    std::string source;
    std::string description;
};

void expectBounded(const HostileFile& file, const std::function<void(const std::string&)>& use,
                   std::size_t bound) {
    SCOPED_TRACE(file.name);
    const std::size_t peak = peakDuring([&] {
        EXPECT_TRUE(
            throwsError([&] { use(file.bytes); }, file.number, file.source, file.description));
    });
    EXPECT_LE(peak, bound) << "held " << peak << " bytes for a file of " << file.bytes.size();
}

std::string compiledHeader(int32_t sections) {
    return bytes({1, 2}) + std::string(18, '\0') + le32(sections) + std::string(32, '\0');
}

// One model section whose one subsection has a model table of `count` entries, each pointing
// at the same `model` bytes behind the table.
std::string compiledWithSharedModel(int32_t count, const std::string& model) {
    const int64_t subTable = 56 + 20;
    const int64_t modelTable = subTable + 16;
    std::string entries;
    for (int32_t i = 0; i < count; ++i) {
        entries += le32(0) + le32(0) + le32(0) + le32(0) + le32(24 * int64_t{count}) +
                   le32(static_cast<int64_t>(model.size()));
    }
    return compiledHeader(1) + le32(43) + le32(0) + le32(1) + le32(subTable) + le32(0) + le32(0) +
           le32(count) + le32(modelTable) + le32(0) + entries + model;
}

// `sections` model sections that all name one table of `subSections` records, whose model
// tables all name one table of `models` entries, each naming the same `model` bytes.
std::string compiledWithSharedTables(int32_t sections, int32_t subSections, int32_t models,
                                     const std::string& model) {
    const int64_t subTable = 56 + 20 * int64_t{sections};
    const int64_t modelTable = subTable + 16 * int64_t{subSections};
    std::string file = compiledHeader(sections);
    for (int32_t i = 0; i < sections; ++i)
        file += le32(43) + le32(0) + le32(subSections) + le32(subTable) + le32(0);
    for (int32_t i = 0; i < subSections; ++i)
        file += le32(0) + le32(models) + le32(modelTable) + le32(0);
    for (int32_t i = 0; i < models; ++i) {
        file += le32(0) + le32(0) + le32(0) + le32(0) + le32(24 * int64_t{models}) +
                le32(static_cast<int64_t>(model.size()));
    }
    return file + model;
}

void scan(const std::string& bytes) {
    TempDir folder;
    writeFile(folder.file("scenery.bgl"), bytes);
    velmora::BGLObject bgl;
    bgl.readXMLBGL(folder.file("scenery.bgl"));
}

void load(const std::string& bytes) {
    velmora::MDLObject model;
    model.readMDLBytes(bytes);
}

}  // namespace

// What a model's 32-bit sizes claim beyond its bytes ends in an error before anything of that
// size is reserved.
TEST(MemoryBound, ModelSizesBeyondTheFileFailBeforeAnyReservation) {
    const std::string head = "RIFF" + le32(0x7FFFFFF0) + "MDL9";
    const HostileFile files[] = {
        {"huge section size", head + "MDLH" + le32(0x7FFFFFF0) + std::string(20, 'x'), 9, "Velmora",
         ""},
        {"negative section size", head + "BBOX" + le32(-2) + std::string(20, 'x'), 5, "Velmora",
         ""},
        {"huge size inside EXTE", head + "EXTE" + le32(-1) + "BGL " + le32(0x40000000) + "ab", 9,
         "Velmora", ""},
        {"RIFF size past the end", head + "MDLH" + le32(4) + "abcd", 9, "Velmora", ""},
    };
    for (const auto& file : files)
        expectBounded(file, load, 4 * file.bytes.size() + kFixedPart);
}

// A compiled scenery file's tables are checked against the file before they are walked.
TEST(MemoryBound, CompiledTablesBeyondTheFileFailBeforeTheyAreRead) {
    const std::string model = riff("");
    const std::string source = "Velmora.BGLObject";
    const std::string modelTable = "The model table of subsection 1 of section 1 is damaged";
    const HostileFile files[] = {
        {"section count", compiledHeader(32767) + std::string(40, '\0'), 100, source,
         "The section table of this BGL file is damaged"},
        {"subsection count",
         compiledHeader(1) + le32(43) + le32(0) + le32(0x7FFFFFFF) + le32(76) + le32(0), 100,
         source, "The subsection table of section 1 is damaged"},
        {"model count",
         compiledHeader(1) + le32(43) + le32(0) + le32(1) + le32(76) + le32(0) + le32(0) +
             le32(0x10000000) + le32(92) + le32(0),
         100, source, modelTable},
        {"model size", compiledWithSharedModel(1, model).replace(112, 4, le32(0x7FFFFFF0)), 100,
         source, modelTable},
        // Tables that all name the same bytes would hold their records many times over.
        {"sections sharing a subsection table", compiledWithSharedTables(200, 100, 0, ""), 100,
         source, "The subsection table of section 4 is damaged"},
        {"subsections sharing a model table",
         compiledWithSharedTables(200, 1, 1, riff(section("ISFT", std::string(400, 'z')))), 100,
         source, "The model table of subsection 1 of section 11 is damaged"},
        // Entries that all name the same bytes would load one model a thousand times.
        {"models sharing their bytes",
         compiledWithSharedModel(1000, riff(section("ISFT", std::string(4000, 'z')))), 100, source,
         modelTable},
    };
    for (const auto& file : files)
        expectBounded(file, scan, 4 * file.bytes.size() + kFixedPart);
}

// A model's 16-bit counts may claim entries beyond its data once in a scan, not once per model.
TEST(MemoryBound, ScannedModelsShareOneAllowanceForCountsBeyondTheirData) {
    const std::string claiming = riff(section("VERT", le16(181) + le16(0xFFFF) + le32(0)) +
                                      section("TEXT", le16(183) + le16(0x7FFF) + le32(0)));
    std::string models;
    std::string entries;
    const int count = 40;
    for (int i = 0; i < count; ++i) {
        entries += le32(0) + le32(0) + le32(0) + le32(0) +
                   le32(24 * count + static_cast<int64_t>(models.size())) +
                   le32(static_cast<int64_t>(claiming.size()));
        models += claiming;
    }
    const std::string file = compiledHeader(1) + le32(43) + le32(0) + le32(1) + le32(76) + le32(0) +
                             le32(0) + le32(count) + le32(92) + le32(0) + entries + models;
    expectBounded({"models whose counts all claim entries beyond their data", file, 100,
                   "Velmora.BGLObject", "The model table of subsection 1 of section 1 is damaged"},
                  scan, 4 * file.size() + 2 * kSixteenBitPart);
}

// A 16-bit count reads the entries beyond the data as zeros: bounded by 65,535, whatever the
// file. A 32-bit size beyond the data is refused first.
TEST(MemoryBound, SixteenBitCountsCostAtMostTheirBoundedEntries) {
    const std::string claims = section("VERT", le16(181) + le16(0xFFFF) + le32(0)) +
                               section("TEXT", le16(183) + le16(0x7FFF) + le32(0)) +
                               section("MATE", le16(182) + le16(0x7FFF) + le32(0)) +
                               section("BGL ", le16(185) + le16(0) + le16(0) + le16(0xFFFF));
    const std::string file = riff(claims);
    velmora::MDLObject model;
    const std::size_t loading = peakDuring([&] { model.readMDLBytes(file); });
    EXPECT_EQ(model.VertexList()->Count(), 65535);
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
