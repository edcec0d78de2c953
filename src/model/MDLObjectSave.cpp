#include <velmora/MDLObject.h>

#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/NumberText.h"
#include "model/SectionIndex.h"

namespace velmora {

namespace {

constexpr int32_t kHeaderPayload = 36;
constexpr int32_t kBoxPayload = 24;
constexpr int64_t kListFrame = 10;  // list-begin word, count, reserved long, closing return
constexpr int64_t kMaterialEntry = 68;
constexpr int64_t kTextureEntry = 80;
constexpr int64_t kVertexEntry = 32;
constexpr int64_t kSectionHead = 8;
constexpr int64_t kFormType = 4;

int32_t listPayload(int64_t entries, int64_t entrySize) {
    return numbers::narrow32(entries * entrySize + kListFrame);
}

}  // namespace

void MDLObject::updateData() {
    requireLoaded();
    const auto rebuild = [this](int16_t index, auto&& build) {
        RIFFSection& section = sectionTable_[static_cast<std::size_t>(index)];
        try {
            section.data = build();
        } catch (Error& error) {
            throw error.setSection(section.tag);
        }
    };
    rebuild(sections::MDLH, [this] { return header_->asString(); });
    rebuild(sections::BBOX, [this] { return boundingBox_->asString(); });
    rebuild(sections::MATE, [this] { return materialList_->asString(); });
    rebuild(sections::TEXT, [this] { return textureList_->asString(); });
    rebuild(sections::VERT, [this] { return vertexList_->asString(); });
    rebuild(sections::BGL, [this] { return commandList_->asString(); });
    updateSectionSize();
}

void MDLObject::updateSectionSize() {
    requireLoaded();

    // The stream's size comes from the opcode rows, as the encoder writes exactly that many bytes
    // for each command.
    RIFFSection& stream = sectionTable_[sections::BGL];
    stream.size = 0;
    // Commands are counted in 16 bits: more than 32,767 is an overflow.
    if (commandList_->Count() > 32767) {
        raisePlatformError(kOverflow, "the stream holds " +
                                          numbers::formatGrouped(commandList_->Count()) +
                                          " commands; a model holds at most 32,767");
    }
    int64_t streamBytes = 0;
    int32_t position = 0;
    for (const auto& command : commandList_->commands().elements()) {
        ++position;
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(command->opcode());
        if (row == nullptr) {
            throw platformError(kSubscriptOutOfRange)
                .setCommand(position)
                .setDetail("opcode " + numbers::formatInteger(command->opcode()) +
                           " lies outside the opcode table (0 to 260)");
        }
        streamBytes += row->length;
    }
    stream.size = numbers::narrow32(streamBytes);

    sectionTable_[sections::TEXT].size = listPayload(textureList_->Count(), kTextureEntry);

    // Sizes follow the payloads that updateData rebuilds, so a section's head always agrees with
    // what is written behind it; a section the model never held stays absent.
    RIFFSection& header = sectionTable_[sections::MDLH];
    if (header.size > 0) header.size = kHeaderPayload;
    RIFFSection& box = sectionTable_[sections::BBOX];
    if (box.size > 0) box.size = kBoxPayload;
    RIFFSection& materials = sectionTable_[sections::MATE];
    if (materials.size > 0 || materialList_->Count() > 0) {
        materials.size = listPayload(materialList_->Count(), kMaterialEntry);
    }
    RIFFSection& vertices = sectionTable_[sections::VERT];
    if (vertices.size > 0 || vertexList_->Count() > 0) {
        vertices.size = listPayload(vertexList_->Count(), kVertexEntry);
    }

    const auto sumOfChildren = [this](int16_t parent) {
        int64_t total = 0;
        for (int16_t i = 0; i < sections::kKnownSections; ++i) {
            const RIFFSection& child = sectionTable_[static_cast<std::size_t>(i)];
            if (child.parent == parent && child.size > 0) total += child.size + kSectionHead;
        }
        return total;
    };
    RIFFSection& extension = sectionTable_[sections::EXTE];
    extension.size = 0;
    extension.size = numbers::narrow32(sumOfChildren(sections::EXTE));
    RIFFSection& riff = sectionTable_[sections::RIFF];
    riff.size = 0;
    riff.size = numbers::narrow32(sumOfChildren(sections::RIFF) + kFormType);
}

void MDLObject::cleanDICT() {
    RIFFSection& dict = sectionTable_[sections::DICT];
    dict.data.clear();
    dict.size = 0;
}

void MDLObject::saveMDL(const std::string& file) {
    try {
        writeModelFile(file);
    } catch (Error& error) {
        throw error.setFile(file);
    }
}

void MDLObject::writeModelFile(const std::string& file) {
    updateData();
    // The table is written flat in its own order; "EXTE" has no payload, so the sections after
    // it land inside it.
    std::size_t fileBytes = 0;
    for (int16_t i = 0; i < sections::kKnownSections; ++i) {
        const RIFFSection& entry = sectionTable_[static_cast<std::size_t>(i)];
        if (entry.size > 0) fileBytes += entry.tag.size() + 4 + entry.data.size();
    }
    ByteWriter out(fileBytes);
    for (int16_t i = 0; i < sections::kKnownSections; ++i) {
        const RIFFSection& entry = sectionTable_[static_cast<std::size_t>(i)];
        if (entry.size <= 0) continue;
        out.bytes(entry.tag);
        out.int32(entry.size);
        out.bytes(entry.data);
    }
    fs::replaceFile(file, out.take());
}

}  // namespace velmora
