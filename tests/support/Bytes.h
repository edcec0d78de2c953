#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

// Small byte builders, so a test reads as what its bytes mean.
namespace testbytes {

inline std::string le16(int32_t value) {
    const auto v = static_cast<uint16_t>(value);
    return std::string{static_cast<char>(v & 0xFF), static_cast<char>(v >> 8)};
}

inline std::string le32(int64_t value) {
    return le16(static_cast<int32_t>(value & 0xFFFF)) + le16(static_cast<int32_t>(value >> 16));
}

inline std::string f32(float value) {
    std::string out(4, '\0');
    std::memcpy(out.data(), &value, 4);
    return out;
}

inline std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (int v : values)
        out.push_back(static_cast<char>(v));
    return out;
}

// A RIFF section: tag, 32-bit size, payload.
inline std::string section(const std::string& tag, const std::string& payload) {
    return tag + le32(static_cast<int64_t>(payload.size())) + payload;
}

// A whole model file: "RIFF", size, "MDL9", then the sections as given.
inline std::string riff(const std::string& sections, const std::string& form = "MDL9") {
    return "RIFF" + le32(static_cast<int64_t>(4 + sections.size())) + form + sections;
}

// A section of a compiled scenery file: its type and, for each subsection, its models' bytes.
struct CompiledSection {
    int32_t type;
    std::vector<std::vector<std::string>> subSections;
};

// A compiled scenery file: the header, the section records, then per section its subsection
// records, and per subsection its model table, five stray bytes and the models' data. The fields
// the reader passes over hold junk. `tables` receives the offset of every record and model entry.
inline std::string compiledFile(const std::vector<CompiledSection>& sections,
                                std::vector<int64_t>* tables = nullptr,
                                const std::string& magic = bytes({0x01, 0x02})) {
    const auto recordsEnd = 56 + 20 * std::ssize(sections);
    std::string records, body;
    for (const CompiledSection& section : sections) {
        const int64_t subTable = recordsEnd + std::ssize(body);
        if (tables) tables->push_back(56 + std::ssize(records));
        records += le32(section.type) + le32(0x5A5A5A5A) + le32(std::ssize(section.subSections)) +
                   le32(subTable) + le32(0x40);
        body += std::string(16 * section.subSections.size(), '\0');
        for (std::size_t k = 0; k < section.subSections.size(); ++k) {
            const auto& models = section.subSections[k];
            const auto record = static_cast<std::size_t>(subTable - recordsEnd) + 16 * k;
            if (tables) tables->push_back(recordsEnd + static_cast<int64_t>(record));
            body.replace(record, 16,
                         le32(0x3C3C3C3C) + le32(std::ssize(models)) +
                             le32(recordsEnd + std::ssize(body)) + le32(0x20));
            int64_t dataOffset = 24 * std::ssize(models) + 5;
            std::string data;
            for (const std::string& m : models) {
                if (tables) tables->push_back(recordsEnd + std::ssize(body));
                body +=
                    le32(1) + le32(2) + le32(3) + le32(4) + le32(dataOffset) + le32(std::ssize(m));
                data += m;
                dataOffset += std::ssize(m);
            }
            body += "stray" + data;
        }
    }
    return magic + std::string(18, '\xAB') + le32(std::ssize(sections)) + std::string(32, '\xCD') +
           records + body;
}

// Hex dump "B8 00 02 00" for readable failure messages.
inline std::string hex(const std::string& data) {
    std::string out;
    for (unsigned char c : data)
        out += (out.empty() ? "" : " ") + std::string{"0123456789ABCDEF"[c >> 4]} +
               "0123456789ABCDEF"[c & 15];
    return out;
}

}  // namespace testbytes
