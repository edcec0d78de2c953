#include <velmora/BGLObject.h>

#include "foundation/ByteReader.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/NumberText.h"
#include "scenery/TableBounds.h"

namespace velmora {

namespace {

constexpr int16_t kXMLBGLMagic = 513;  // the bytes 01 02
constexpr int64_t kHeaderSize = 56;
constexpr int64_t kSectionRecordSize = 20;
constexpr int64_t kSubSectionRecordSize = 16;

}  // namespace

BGLObject::BGLObject()
    : modelList_(std::make_shared<velmora::ModelList>()),
      sections_(std::make_shared<XMLBGLSectionList>()) {}

BGLObject::~BGLObject() = default;

bool BGLObject::isXMLBGL(const std::string& f) {
    if (!fs::fileExists(f)) return false;
    const std::string head = fs::readFileStart(f, 2);
    return ByteReader(head).int16() == kXMLBGLMagic;
}

void BGLObject::readXMLBGL(const std::string& f) {
    if (!fs::fileExists(f)) return;
    // Read once and walked in memory: the tables send the walk back and forth through the
    // file, and on disk every such step costs a seek and a new read.
    try {
        const std::string bytes = fs::readWholeFile(f);
        ByteReader in(bytes);
        scan(in);
    } catch (Error& error) {
        throw error.setFile(f);
    }
}

void BGLObject::scan(ByteReader& in) {
    if (in.int16() != kXMLBGLMagic) {
        raiseLibraryError(scenery::kSource, "This is not a valid XML style BGL file");
    }
    in.skip(18);
    const int32_t claimedSections = in.int32();
    if (claimedSections > 32767 || claimedSections < -32768) {
        raisePlatformError(
            kOverflow, "the file claims " + numbers::formatGrouped(claimedSections) + " sections");
    }
    const auto sectionCount = static_cast<int16_t>(claimedSections);
    in.skip(32);
    const int32_t firstOfThisFile = sections_->Count() + 1;

    // Checked before the walk, so a false count can't make records out of nothing.
    if (!scenery::tableFitsInFile(in.size(), kHeaderSize, sectionCount, kSectionRecordSize)) {
        scenery::raiseDamagedTable("section table of this BGL file");
    }
    for (int32_t i = 1; i <= sectionCount; ++i) {
        auto section = std::make_shared<XMLBGLSection>();
        section->readRecord(in);
        section->position_ = sections_->Count() + 1;
        sections_->Add(std::move(section));
    }
    // The subsection tables of a file don't overlap, so together they fit in it: sections that
    // all point at one table can't make a small file hold its records many times over.
    int64_t subSectionBytes = 0;
    for (const auto& section : *sections_) {
        if (section->position_ >= firstOfThisFile && section->numSubSection() > 0) {
            subSectionBytes += section->numSubSection() * kSubSectionRecordSize;
        }
        if (subSectionBytes > in.size()) {
            scenery::raiseDamagedTable("subsection table of " +
                                       scenery::sectionName(section->position_));
        }
        section->readSubSections(in);
    }
    fillModels(in, firstOfThisFile);
}

void BGLObject::fillModels(ByteReader& in, int32_t firstOfThisFile) {
    detail::ScanBudget thisFile;
    for (const auto& section : *sections_) {
        if (section->sectionType() != mdl) continue;
        modelList_ = std::make_shared<velmora::ModelList>();
        detail::ScanBudget anotherFile;
        section->fillModelList(*modelList_, in,
                               section->position_ >= firstOfThisFile ? thisFile : anotherFile);
    }
}

}  // namespace velmora
