#include <velmora/MDLObject.h>

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/HexFunctions.h"
#include "foundation/Host.h"
#include "model/SectionIndex.h"

namespace velmora {

namespace {

[[noreturn]] void raiseNotAModel() {
    raiseLibraryError("Velmora.MDLObject", "This is not a valid RIFF scenery MDL file");
}

// Splits a whole model file into the section table. The file is one flat run of sections: the
// size of "EXTE" is kept but not used, since the sections it contains follow its head.
void readSectionTable(MDLObject& model, int16_t file) {
    if (model.getRIFFSectionIndex(hex::readString(file, 4)) != sections::RIFF) raiseNotAModel();
    RIFFSection& riff = model.section(sections::RIFF);
    riff.size = hex::readLong(file);
    riff.data = hex::readString(file, 4);
    if (riff.data != "MDL9") raiseNotAModel();

    const int64_t length = hex::fileLength(file);
    // The bound is size + 4, not size + 8: the last five bytes of the extent hold no section.
    while (static_cast<int64_t>(hex::filePosition(file)) < static_cast<int64_t>(riff.size) + 4) {
        const int16_t index = model.getRIFFSectionIndex(hex::readString(file, 4));
        if (index < 0 || index >= sections::kTableSlots) raisePlatformError(kSubscriptOutOfRange);
        RIFFSection& found = model.section(index);
        found.size = hex::readLong(file);
        if (index == sections::EXTE) continue;
        if (found.size < 0) raisePlatformError(kInvalidProcedureCall);
        // Refused before any reservation, so a false size can't claim memory.
        const int64_t remaining = length - (static_cast<int64_t>(hex::filePosition(file)) - 1);
        if (found.size > remaining) raisePlatformError(kSubscriptOutOfRange);
        found.data = hex::readString(file, found.size);
    }
}

}  // namespace

void MDLObject::readMDL(const std::string& file) {
    // A file that is missing or can't be read holds no "RIFF" tag: it fails like an empty one.
    std::string bytes;
    if (fs::fileExists(file)) {
        try {
            bytes = fs::readWholeFile(file);
        } catch (const Error&) {
            bytes.clear();
        }
    }
    readMDLBytes(bytes, file);
}

void MDLObject::readMDLBytes(std::string_view bytes, const std::string& path) {
    loaded_ = false;
    loadingStatus_ = loadingHEAD;
    yieldToHost();

    // Each load starts from an empty table, so nothing of an earlier file is saved with this one.
    for (auto& entry : sectionTable_) {
        entry.size = 0;
        entry.data.clear();
    }
    {
        hex::MemoryReader reader(bytes);
        readSectionTable(*this, reader.file());
    }

    header_ = std::make_shared<velmora::MDLHeader>();
    materialList_ = std::make_shared<velmora::MaterialList>();
    textureList_ = std::make_shared<velmora::TextureList>();
    vertexList_ = std::make_shared<velmora::VertexList>();
    commandList_ = std::make_shared<velmora::BGLCommandList>();
    boundingBox_ = std::make_shared<velmora::BoundingBox>();

    const auto present = [this](int16_t index) { return sectionTable_[index].size > 0; };
    const auto payload = [this](int16_t index) -> const std::string& {
        return sectionTable_[index].data;
    };

    if (present(sections::MDLH)) header_->readList(payload(sections::MDLH));
    if (present(sections::BBOX)) boundingBox_->readList(payload(sections::BBOX));

    loadingStatus_ = loadingMATE;
    yieldToHost();
    if (present(sections::MATE)) materialList_->readList(payload(sections::MATE));

    loadingStatus_ = loadingTEXT;
    yieldToHost();
    if (present(sections::TEXT)) textureList_->fillCollection(payload(sections::TEXT));

    loadingStatus_ = loadingVERT;
    yieldToHost();
    if (present(sections::VERT)) vertexList_->fillCollection(payload(sections::VERT));

    loadingStatus_ = loadingBGL;
    yieldToHost();
    if (present(sections::BGL)) commandList_->readList(payload(sections::BGL));

    mdlPath_ = path;
}

}  // namespace velmora
