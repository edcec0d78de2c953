#include <velmora/BGLObject.h>

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"
#include "scenery/TableBounds.h"

namespace velmora {

namespace {

constexpr int16_t kXMLBGLMagic = 513;  // the bytes 01 02
constexpr int64_t kHeaderSize = 56;
constexpr int64_t kSectionRecordSize = 20;

}  // namespace

BGLObject::BGLObject()
    : modelList_(std::make_shared<velmora::ModelList>()),
      sections_(std::make_shared<XMLBGLSectionList>()) {}

BGLObject::~BGLObject() = default;

bool BGLObject::isXMLBGL(const std::string& f) {
    if (!fs::fileExists(f)) return false;
    hex::ScopedFile scoped(hex::nextFreeFile());
    hex::openReadOnlyFile(scoped.file(), f);
    const bool magicFound = hex::readInteger(scoped.file()) == kXMLBGLMagic;
    scoped.close();
    return magicFound;
}

void BGLObject::readXMLBGL(const std::string& f) {
    if (!fs::fileExists(f)) return;
    // Read once and walked in memory: the tables send the walk back and forth through the
    // file, and on disk every such step costs a seek and a new read.
    const std::string bytes = fs::readWholeFile(f);
    hex::MemoryReader reader(bytes);
    const int16_t file = reader.file();

    if (hex::readInteger(file) != kXMLBGLMagic) {
        raiseLibraryError(scenery::kSource, "This is not a valid XML style BGL file");
    }
    hex::readString(file, 18);
    const int16_t sectionCount = numbers::narrow16(hex::readLong(file));
    hex::readString(file, 32);

    // Checked before the walk, so a false count can't make records out of nothing.
    if (!scenery::tableFitsInFile(file, kHeaderSize, sectionCount, kSectionRecordSize)) {
        scenery::raiseDamagedTable("section table of this BGL file");
    }
    for (int32_t i = 1; i <= sectionCount; ++i) {
        auto section = std::make_shared<XMLBGLSection>();
        section->readFromFile(file);
        section->position_ = sections_->Count() + 1;
        sections_->Add(std::move(section));
    }
    for (const auto& section : *sections_)
        section->readSubSections(file);
    fillModels(file);
}

void BGLObject::fillModels(int16_t file) {
    for (const auto& section : *sections_) {
        if (section->sectionType() != mdl) continue;
        modelList_ = std::make_shared<velmora::ModelList>();
        section->fillModelList(modelList_, file);
    }
}

}  // namespace velmora
