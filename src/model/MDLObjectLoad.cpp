#include <velmora/MDLObject.h>

#include "foundation/ByteReader.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/Host.h"
#include "foundation/NativeFiles.h"
#include "foundation/NumberText.h"
#include "model/SectionIndex.h"

#include <array>
#include <filesystem>

namespace velmora {

namespace {

using PayloadStarts = std::array<int64_t, sections::kTableSlots>;

[[noreturn]] void raiseNotAModel(const std::string& why, int64_t offset = -1) {
    Error error(100, "Velmora.MDLObject", "This is not a valid RIFF scenery MDL file");
    if (offset >= 0) error.setOffset(offset);
    throw error.setDetail(why);
}

// A tag for people: printable bytes as they are, others as \xNN.
std::string printableTag(const std::string& tag) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (const unsigned char c : tag) {
        if (c >= 32 && c < 127 && c != '"' && c != '\\') {
            out.push_back(static_cast<char>(c));
        } else {
            out += "\\x";
            out.push_back(digits[c >> 4]);
            out.push_back(digits[c & 15]);
        }
    }
    return out;
}

// Splits a whole model file into the section table, noting where each payload starts. The file
// is one flat run of sections: the size of "EXTE" is kept but not used, since the sections it
// contains follow its head.
void readSectionTable(MDLObject& model, ByteReader& in, PayloadStarts& payloadStarts) {
    const int64_t length = in.size();
    if (length < 12) {
        raiseNotAModel(length == 0 ? "it is empty"
                                   : "it holds only " + numbers::formatGrouped(length) + " bytes");
    }
    const std::string head = in.text(4);
    if (model.getRIFFSectionIndex(head) != sections::RIFF) {
        raiseNotAModel("it starts with \"" + printableTag(head) + "\", not \"RIFF\"", 0);
    }
    RIFFSection& riff = model.section(sections::RIFF);
    riff.size = in.int32();
    riff.data = in.text(4);
    if (riff.data != "MDL9") {
        raiseNotAModel("its form is \"" + printableTag(riff.data) + "\", not \"MDL9\"", 8);
    }

    // The bound is size + 4, not size + 8: the last five bytes of the extent hold no section.
    while (in.offset() + 1 < static_cast<int64_t>(riff.size) + 4) {
        const int64_t sectionHead = in.offset();
        const std::string tag = in.text(4);
        const int16_t index = model.getRIFFSectionIndex(tag);
        if (index < 0 || index >= sections::kTableSlots) {
            Error error = platformError(kSubscriptOutOfRange);
            error.setOffset(sectionHead);
            if (sectionHead + 8 > length) {
                throw error.setDetail("the file ends at byte " + numbers::formatGrouped(length) +
                                      ", but its RIFF head says it runs to byte " +
                                      numbers::formatGrouped(int64_t{riff.size} + 8));
            }
            throw error.setDetail("unknown section tag \"" + printableTag(tag) + "\"");
        }
        RIFFSection& found = model.section(index);
        found.size = in.int32();
        if (index == sections::EXTE) continue;
        if (found.size < 0) {
            throw platformError(kInvalidProcedureCall)
                .setSection(tag)
                .setOffset(sectionHead)
                .setDetail("its size is negative (" + numbers::formatGrouped(found.size) + ")");
        }
        // Refused before any reservation, so a false size can't claim memory.
        if (found.size > in.remaining()) {
            throw platformError(kSubscriptOutOfRange)
                .setSection(tag)
                .setOffset(sectionHead)
                .setDetail("says " + numbers::formatGrouped(found.size) + " bytes, but only " +
                           numbers::formatGrouped(in.remaining()) + " follow");
        }
        payloadStarts[static_cast<std::size_t>(index)] = in.offset();
        found.data = in.text(found.size);
    }
}

}  // namespace

void MDLObject::readMDL(const std::string& file) {
    // A file that is missing or can't be read holds no "RIFF" tag: it fails like an empty one.
    std::string bytes;
    std::string missing;
    std::error_code code;
    if (fs::fileExists(file)) {
        try {
            bytes = fs::readWholeFile(file);
        } catch (const Error& error) {
            missing = error.detail();
        }
    } else {
        missing = std::filesystem::is_directory(fs::nativePath(file), code) ? "it is a folder"
                                                                            : "no such file";
    }
    try {
        if (!missing.empty()) raiseNotAModel(missing);
        readMDLBytes(bytes, file);
    } catch (Error& error) {
        throw error.setFile(file);
    }
}

void MDLObject::readMDLBytes(std::string_view bytes, const std::string& path) {
    loaded_ = false;
    loadingStatus_ = loadingHEAD;
    sceneryGuid_.clear();
    yieldToHost();

    // Each load starts from an empty table, so nothing of an earlier file is saved with this one.
    for (auto& entry : sectionTable_) {
        entry.size = 0;
        entry.data.clear();
    }
    PayloadStarts payloadStarts{};
    {
        ByteReader in(bytes);
        readSectionTable(*this, in, payloadStarts);
    }

    header_ = std::make_shared<velmora::MDLHeader>();
    materialList_ = std::make_shared<velmora::MaterialList>();
    textureList_ = std::make_shared<velmora::TextureList>();
    vertexList_ = std::make_shared<velmora::VertexList>();
    commandList_ = std::make_shared<velmora::BGLCommandList>();
    boundingBox_ = std::make_shared<velmora::BoundingBox>();

    // Decodes one section if the file holds it; an error learns the section and where it lies.
    const auto decode = [&](int16_t index, auto&& read) {
        RIFFSection& section = sectionTable_[static_cast<std::size_t>(index)];
        if (section.size <= 0) return;
        try {
            read(section.data);
        } catch (Error& error) {
            error.setSection(section.tag);
            if (error.offset() >= 0) {
                error.shiftOffset(payloadStarts[static_cast<std::size_t>(index)]);
            } else {
                error.setOffset(payloadStarts[static_cast<std::size_t>(index)] - 8);
            }
            throw;
        }
    };

    decode(sections::MDLH, [this](const std::string& data) { header_->readList(data); });
    decode(sections::BBOX, [this](const std::string& data) { boundingBox_->readList(data); });

    loadingStatus_ = loadingMATE;
    yieldToHost();
    decode(sections::MATE, [this](const std::string& data) { materialList_->readList(data); });

    loadingStatus_ = loadingTEXT;
    yieldToHost();
    decode(sections::TEXT, [this](const std::string& data) { textureList_->fillCollection(data); });

    loadingStatus_ = loadingVERT;
    yieldToHost();
    decode(sections::VERT, [this](const std::string& data) { vertexList_->fillCollection(data); });

    loadingStatus_ = loadingBGL;
    yieldToHost();
    decode(sections::BGL, [this](const std::string& data) { commandList_->readList(data); });

    mdlPath_ = path;
}

}  // namespace velmora
