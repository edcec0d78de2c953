#pragma once

#include <velmora/MDLObject.h>

#include "support/Bytes.h"
#include "support/TempDir.h"

#include <cstdint>
#include <string>
#include <vector>

// Models made with the library and compiled scenery files built around them.
namespace sceneryfiles {

using namespace testbytes;

// A small model saved by the library; `number` makes it tell itself apart (ISFT, sizes).
inline std::string savedModel(int number) {
    TempDir folder;
    velmora::MDLObject model;
    model.readMDLBytes(riff(""));
    model.setISFT("model " + std::to_string(number));
    model.MDLHeader()->param(0, number);
    model.BoundingBox()->xmax(static_cast<float>(number));
    model.MaterialList()->Add()->Power(static_cast<float>(number));
    model.TextureList()->Add()->bitmap("model" + std::to_string(number) + ".bmp");
    for (int i = 0; i < 3 + number; ++i) {
        auto vertex = model.VertexList()->Add();
        vertex->x(static_cast<float>(i));
        vertex->y(static_cast<float>(number));
        vertex->nz(1);
    }
    auto& commands = *model.BGLCommandList();
    const auto add = [&commands](velmora::BGLOpcode opcode, std::vector<int> params) {
        auto command = commands.Add();
        command->opcode(opcode);
        int16_t slot = 0;
        for (int value : params)
            command->param(slot++, std::to_string(value));
    };
    add(velmora::SET_MATERIAL, {0, 0});
    add(velmora::DRAW_TRI_LIST_BEGIN, {0, 0, 3});
    add(velmora::DRAW_TRI_LIST_ITEM, {0, 1, 2});
    add(velmora::BGL_END, {});
    model.saveMDL(folder.file("model.mdl"));
    return readFile(folder.file("model.mdl"));
}

// A section of a compiled file: its type and, for each subsection, the bytes of its models.
struct Section {
    int32_t type;
    std::vector<std::vector<std::string>> subSections;
};

// Offsets of the tables of a built file, to damage them in tests.
struct Layout {
    std::vector<int64_t> sectionRecords;                  // one per section
    std::vector<std::vector<int64_t>> subSectionRecords;  // per section, per subsection
    std::vector<std::vector<std::vector<int64_t>>> modelEntries;
};

// The header, the section records, then per section its subsection records, and per subsection
// its model table, a few stray bytes and the model data (offsets from the model table).
// The dropped fields hold junk, which the reader must pass over.
inline std::string compiledFile(const std::vector<Section>& sections, Layout* layout = nullptr,
                                const std::string& magic = bytes({0x01, 0x02})) {
    const int64_t recordsEnd = 56 + 20 * static_cast<int64_t>(sections.size());
    std::string records;
    std::string body;
    Layout found;
    for (const Section& section : sections) {
        const int64_t subTable = recordsEnd + static_cast<int64_t>(body.size());
        found.sectionRecords.push_back(56 + static_cast<int64_t>(records.size()));
        records += le32(section.type) + le32(0x5A5A5A5A) +
                   le32(static_cast<int64_t>(section.subSections.size())) + le32(subTable) +
                   le32(0x40);
        body += std::string(16 * section.subSections.size(), '\0');
        found.subSectionRecords.emplace_back();
        found.modelEntries.emplace_back();
        for (std::size_t k = 0; k < section.subSections.size(); ++k) {
            const auto& models = section.subSections[k];
            const int64_t modelTable = recordsEnd + static_cast<int64_t>(body.size());
            const int64_t record = subTable + 16 * static_cast<int64_t>(k);
            body.replace(static_cast<std::size_t>(record - recordsEnd), 16,
                         le32(0x3C3C3C3C) + le32(static_cast<int64_t>(models.size())) +
                             le32(modelTable) + le32(0x20));
            found.subSectionRecords.back().push_back(record);
            found.modelEntries.back().emplace_back();
            const std::string stray = "stray";
            int64_t dataOffset = 24 * static_cast<int64_t>(models.size()) + 5;
            std::string data;
            for (const std::string& model : models) {
                found.modelEntries.back().back().push_back(recordsEnd +
                                                           static_cast<int64_t>(body.size()));
                body += le32(1) + le32(2) + le32(3) + le32(4) + le32(dataOffset) +
                        le32(static_cast<int64_t>(model.size()));
                data += model;
                dataOffset += static_cast<int64_t>(model.size());
            }
            body += stray + data;
        }
    }
    if (layout) *layout = found;
    return magic + std::string(18, '\xAB') + le32(static_cast<int64_t>(sections.size())) +
           std::string(32, '\xCD') + records + body;
}

// Overwrites the 32-bit value at a 0-based offset.
inline void patch32(std::string& file, int64_t offset, int64_t value) {
    file.replace(static_cast<std::size_t>(offset), 4, le32(value));
}

}  // namespace sceneryfiles
