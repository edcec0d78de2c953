#pragma once

#include "support/Bytes.h"

#include <string>

// Section payloads of a small, complete model, built byte by byte. Every list section is in
// its canonical form (reserved fields 0, closing return present), so a load and a save give
// back the same bytes.
namespace modelbytes {

using namespace testbytes;

inline std::string headerPayload() {
    std::string payload;
    for (int i = 1; i <= 9; ++i)
        payload += le32(i * 1111);
    return payload;  // 36 bytes
}

inline std::string boxPayload() {
    return f32(-1) + f32(-2) + f32(-3) + f32(1) + f32(2) + f32(3);  // 24 bytes
}

inline std::string texturePayload() {
    std::string name = "brick.bmp";
    name.resize(64, '\0');
    return le16(183) + le16(1) + le32(0) + le32(6) + bytes({0x11, 0xFF, 0x80, 0x01}) + le32(0) +
           f32(4.5f) + name + le16(34);  // 90 bytes
}

inline std::string materialPayload() {
    std::string entry;
    for (int i = 0; i < 17; ++i)
        entry += f32(0.25f * static_cast<float>(i));
    return le16(182) + le16(1) + le32(0) + entry + le16(34);  // 78 bytes
}

inline std::string vertexPayload() {
    std::string entries;
    for (int i = 0; i < 24; ++i)
        entries += f32(static_cast<float>(i) - 3.5f);
    return le16(181) + le16(3) + le32(0) + entries + le16(34);  // 106 bytes
}

// Ten commands, 50 bytes: SET_MATERIAL, a list of two triangles, SETWRD, BGL_ZBIAS,
// BGL_SET_MATRIX_INDIRECT, SET_MATERIAL, BGL_RETURN, BGL_END.
inline std::string commandPayload() {
    return le16(184) + le16(0) + le16(0) + le16(185) + le16(0) + le16(0) + le16(6) + le16(0) +
           le16(1) + le16(2) + le16(2) + le16(1) + le16(0) + le16(38) + le16(100) + le16(-5) +
           le16(172) + le16(2) + le16(196) + le16(3) + le16(184) + le16(0) + le16(-1) + le16(34) +
           le16(189);
}

// The sections inside "EXTE" of the complete model, with odd sizes and high bytes in the ones
// the library never interprets.
inline std::string extensionSections() {
    return section("TEXT", texturePayload()) + section("MATE", materialPayload()) +
           section("VERT", vertexPayload()) + section("BGL ", commandPayload()) +
           section("TRAN", "t") + section("ANIP", bytes({0, 0xFE})) + section("ANIC", "abc") +
           section("SCEN", bytes({0x80, 0, 0x81, 0})) + section("ATTA", "attac") +
           section("ATTO", bytes({0xFF, 0, 0, 0, 0, 0xFF})) + section("PLAT", "plat\x7F\x80.");
}

// Every section of the table, in table order.
inline std::string completeModel() {
    const std::string inner = extensionSections();
    return riff(section("MDLH", headerPayload()) +
                section("ISFT", std::string("Velmora test\0", 13)) +
                section("DICT", bytes({1, 2, 3, 0, 5, 6, 7})) + section("BBOX", boxPayload()) +
                section("SHAD", bytes({9, 9, 9, 9, 9})) + section("CRAS", "crs") + "EXTE" +
                le32(static_cast<int64_t>(inner.size())) + inner);
}

}  // namespace modelbytes
