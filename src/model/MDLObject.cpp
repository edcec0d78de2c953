#include <velmora/MDLObject.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"
#include "model/SectionIndex.h"

#include <array>
#include <string_view>

namespace velmora {

namespace {

struct KnownSection {
    std::string_view tag;
    int16_t parent;
};

constexpr std::array<KnownSection, sections::kKnownSections> kKnownSections{{
    {"RIFF", -1},
    {"MDLH", sections::RIFF},
    {"ISFT", sections::RIFF},
    {"DICT", sections::RIFF},
    {"BBOX", sections::RIFF},
    {"SHAD", sections::RIFF},
    {"CRAS", sections::RIFF},
    {"EXTE", sections::RIFF},
    {"TEXT", sections::EXTE},
    {"MATE", sections::EXTE},
    {"VERT", sections::EXTE},
    {"BGL ", sections::EXTE},
    {"TRAN", sections::EXTE},
    {"ANIP", sections::EXTE},
    {"ANIC", sections::EXTE},
    {"SCEN", sections::EXTE},
    {"ATTA", sections::EXTE},
    {"ATTO", sections::EXTE},
    {"PLAT", sections::EXTE},
}};

std::size_t tableSlot(int16_t index) {
    if (index < 0 || index >= sections::kTableSlots) raisePlatformError(kSubscriptOutOfRange);
    return static_cast<std::size_t>(index);
}

}  // namespace

MDLObject::MDLObject() {
    for (std::size_t i = 0; i < kKnownSections.size(); ++i) {
        sectionTable_[i].tag = std::string(kKnownSections[i].tag);
        sectionTable_[i].parent = kKnownSections[i].parent;
    }
}

void MDLObject::requireLoaded() const {
    if (!header_ || !boundingBox_ || !materialList_ || !textureList_ || !vertexList_ ||
        !commandList_) {
        raisePlatformError(kObjectNotSet);
    }
}

std::string MDLObject::getISFT() const {
    return sectionTable_[sections::ISFT].data;
}

std::string MDLObject::isftText() const {
    const std::string& data = sectionTable_[sections::ISFT].data;
    return data.substr(0, data.find('\0'));
}

void MDLObject::setISFT(const std::string& data) {
    RIFFSection& isft = sectionTable_[sections::ISFT];
    isft.data = data;
    isft.size = numbers::narrow32(static_cast<int64_t>(data.size()));
}

int16_t MDLObject::getRIFFSectionIndex(const std::string& t) const {
    for (int16_t i = 0; i < sections::kKnownSections; ++i) {
        if (sectionTable_[static_cast<std::size_t>(i)].tag == t) return i;
    }
    return -1;
}

int32_t MDLObject::getRIFFSectionSize(int16_t i) const {
    return sectionTable_[tableSlot(i)].size;
}

std::string MDLObject::getRIFFSectionTag(int16_t i) const {
    return sectionTable_[tableSlot(i)].tag;
}

std::string MDLObject::getRIFFSectionData(int16_t i) const {
    return sectionTable_[tableSlot(i)].data;
}

}  // namespace velmora
