#include <velmora/XMLBGLSection.h>

#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>
#include <velmora/MaterialList.h>
#include <velmora/ModelList.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>
#include <velmora/XMLBGLSectionList.h>

#include "foundation/ByteReader.h"
#include "foundation/Errors.h"
#include "foundation/HexFunctions.h"
#include "foundation/NumberText.h"
#include "scenery/TableBounds.h"

namespace velmora {

namespace {

constexpr int64_t kSubSectionRecordSize = 16;
constexpr int64_t kModelEntrySize = 24;

// What the entries of a model's lists take in its file: 32 bytes a vertex, 80 a texture, 68 a
// material and at least 2 a command.
int64_t bytesOfEntries(const MDLObject& model) {
    return int64_t{model.VertexList()->Count()} * 32 + int64_t{model.TextureList()->Count()} * 80 +
           int64_t{model.MaterialList()->Count()} * 68 +
           int64_t{model.BGLCommandList()->Count()} * 2;
}

// The most that the 16-bit counts of one model can claim: 65,535 vertices, 32,767 textures and
// materials, and two list headers' 32,767 items each.
constexpr int64_t kOneModelsClaims = 65535 * 32 + 32767 * (80 + 68) + 2 * 32768 * 2;

}  // namespace

XMLBGLSection::XMLBGLSection() = default;

XMLBGLSection::~XMLBGLSection() = default;

void XMLBGLSection::readFromFile(int16_t file) {
    hex::readThrough(file, [this](ByteReader& in) { readRecord(in); });
}

void XMLBGLSection::readSubSections(int16_t file) {
    hex::readThrough(file, [this](ByteReader& in) { readSubSections(in); });
}

void XMLBGLSection::fillModelList(const std::shared_ptr<ModelList>& m, int16_t file) {
    if (!m) raisePlatformError(kObjectNotSet);
    detail::ScanBudget budget;
    hex::readThrough(file, [&](ByteReader& in) { fillModelList(*m, in, budget); });
}

void XMLBGLSection::readRecord(ByteReader& in) {
    sectionType_ = static_cast<XMLBGLSectionType>(in.int32());
    in.int32();
    numSubSection_ = in.int32();
    offset_ = in.int32();
    headerSize_ = in.int32();
}

void XMLBGLSection::readSubSections(ByteReader& in) {
    subSections_ = std::make_shared<XMLBGLSectionList>();
    // Checked before the walk, so a false count can't make records out of nothing.
    if (!scenery::tableFitsInFile(in.size(), offset_, numSubSection_, kSubSectionRecordSize)) {
        scenery::raiseDamagedTable("subsection table of " + scenery::sectionName(position_));
    }
    if (numSubSection_ <= 0) return;
    in.seek(offset_);
    for (int32_t k = 1; k <= numSubSection_; ++k) {
        auto subSection = std::make_shared<XMLBGLSection>();
        in.int32();
        subSection->numSubSection_ = in.int32();
        subSection->offset_ = in.int32();
        subSection->headerSize_ = in.int32();
        subSection->position_ = k;
        subSections_->Add(std::move(subSection));
    }
}

// Tables or entries that all point at the same bytes, or models whose counts all claim entries
// beyond their data, can't make a small file hold many times its size.
void XMLBGLSection::fillModelList(ModelList& m, ByteReader& in, detail::ScanBudget& budget) {
    if (!subSections_) return;
    const int64_t length = in.size();
    for (const auto& subSection : *subSections_) {
        const int64_t tableOffset = subSection->offset_;
        const int32_t count = subSection->numSubSection_;
        const std::string table = "model table of subsection " +
                                  numbers::formatInteger(subSection->position_) + " of " +
                                  scenery::sectionName(position_);
        // A table or a model reaching past the end of the file is refused before anything is read.
        if (!scenery::tableFitsInFile(length, tableOffset, count, kModelEntrySize)) {
            scenery::raiseDamagedTable(table);
        }
        int64_t& claimed = budget.tableAndModelBytes;
        if (count > 0) claimed += count * kModelEntrySize;
        if (claimed > length) scenery::raiseDamagedTable(table);
        for (int32_t j = 1; j <= count; ++j) {
            in.seek((j - 1) * kModelEntrySize + tableOffset);
            const std::string guid = in.text(16);
            const int64_t dataStart = tableOffset + in.int32();
            const int32_t dataSize = in.int32();
            if (dataSize > 0) claimed += dataSize;
            if (dataStart < 0 || dataSize < 0 || dataSize > length - dataStart ||
                claimed > length) {
                scenery::raiseDamagedTable(table);
            }
            auto model = std::make_shared<MDLObject>();
            // The model's bytes go to the reader in memory, not through scratch files.
            try {
                model->readMDLBytes(in.bytes().substr(static_cast<std::size_t>(dataStart),
                                                      static_cast<std::size_t>(dataSize)));
            } catch (Error& error) {
                throw error.shiftOffset(dataStart).prependDetail(
                    "model " + numbers::formatInteger(j) + " of the " + table);
            }
            model->sceneryGuid(guid);
            // Beyond the file's own bytes, the scan allows one model's worth of counts that claim
            // entries beyond their data (decoded as zeros), not one per model.
            budget.entryBytes += bytesOfEntries(*model);
            if (budget.entryBytes > length + kOneModelsClaims) scenery::raiseDamagedTable(table);
            m.Add(std::move(model));
        }
    }
}

}  // namespace velmora
