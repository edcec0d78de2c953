#include <velmora/BGLOpcodeDictionary.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <initializer_list>
#include <vector>

namespace velmora {

namespace {

constexpr int kSlots = 261;

using Table = std::vector<BGLCommandDictEntry>;

void fill(Table& table, int32_t opcode, const char* name,
          std::initializer_list<parameterType> types, std::initializer_list<int> jumps,
          int16_t length) {
    BGLCommandDictEntry& entry = table[static_cast<std::size_t>(opcode)];
    entry.name = name;
    entry.numParam = static_cast<int16_t>(types.size());
    std::size_t i = 0;
    for (parameterType type : types)
        entry.paramType[i++] = type;
    for (int jumpIndex : jumps)
        entry.isJump[static_cast<std::size_t>(jumpIndex)] = true;
    entry.length = length;
}

Table buildTable() {
    Table t(kSlots);
    const auto I = pInteger;
    const auto L = pLong;
    const auto S = pSingle;
    const auto U = pUInteger;
    fill(t, jump, "JUMP", {I}, {0}, 4);
    fill(t, IFIN_BOX_PLANE, "IFIN_BOX_PLANE", {I, I, I, I, I, I, I, I, I, I}, {0}, 22);
    fill(t, IFIN2, "IFIN2", {I, I, I, I, I, I, I}, {0}, 16);
    fill(t, IFIN3, "IFIN3", {I, I, I, I, I, I, I, I, I, I}, {0}, 22);
    fill(t, BGL_RETURN, "BGL_RETURN", {}, {}, 2);
    fill(t, BGL_CALL, "BGL_CALL", {I}, {0}, 4);
    fill(t, IFIN1, "IFIN1", {I, I, I, I}, {0}, 10);
    fill(t, SEPARATION_PLANE, "SEPARATION_PLANE", {I, I, I, I, L}, {0}, 14);
    fill(t, SETWRD, "SETWRD", {I, I}, {}, 6);
    fill(t, IFMSK, "IFMSK", {I, I, I}, {0}, 8);
    fill(t, IFSIZEV, "IFSIZEV", {I, I, I}, {0}, 8);
    fill(t, IFSIZEH, "IFSIZEH", {I, I, I}, {0}, 8);
    fill(t, IFINBOXP, "IFINBOXP", {I, I, I, I, I, I, I}, {0}, 16);
    fill(t, BGL_JUMP_32, "BGL_JUMP_32", {L}, {0}, 6);
    fill(t, VAR_BASE_32, "VAR_BASE_32", {L}, {}, 6);
    fill(t, BGL_CALL_32, "BGL_CALL_32", {L}, {0}, 6);
    fill(t, BGL_INTERPOLATE, "BGL_INTERPOLATE", {L, I, L, I, L, I}, {1, 3, 5}, 20);
    fill(t, VAR_BASE_OVERRIDE, "VAR_BASE_OVERRIDE", {L}, {}, 6);
    fill(t, SPRITE_VICALL, "SPRITE_VICALL", {I, I, I, I, I, I, I, I, I, I}, {0}, 22);
    fill(t, IFIN_INSTANCED_BOX_PLANE, "IFIN_INSTANCED_BOX_PLANE", {I, I, I, I, I, I, I, I, I, I},
         {0}, 22);
    fill(t, BGL_ZBIAS, "BGL_ZBIAS", {I}, {}, 4);
    fill(t, BGL_ANIMATE, "BGL_ANIMATE", {L, L, L, L, S, S, S}, {1, 3}, 30);
    fill(t, BGL_TAG, "BGL_TAG", {pString, S}, {}, 22);
    t[BGL_TAG].strLength[0] = 16;
    fill(t, BGL_LIGHT, "BGL_LIGHT", {I, S, S, S, L, S, S, L, S, S, S}, {}, 44);
    fill(t, MATERIAL_LIST_BEGIN, "MATERIAL_LIST_BEGIN", {I, L}, {}, 8);
    fill(t, TEXTURE_LIST_BEGIN, "TEXTURE_LIST_BEGIN", {I, L}, {}, 8);
    fill(t, SET_MATERIAL, "SET_MATERIAL", {I, I}, {}, 6);
    fill(t, DRAW_TRI_LIST_BEGIN, "DRAW_TRI_LIST_BEGIN", {U, U, U}, {}, 8);
    fill(t, DRAW_LINE_LIST_BEGIN, "DRAW_LINE_LIST_BEGIN", {I, I, I}, {}, 8);
    fill(t, BGL_END, "BGL_END", {}, {}, 2);
    fill(t, BGL_SET_MATRIX_INDIRECT, "BGL_SET_MATRIX_INDIRECT", {I}, {}, 4);
    // List items have no opcode word in the stream: their length is their parameters alone.
    fill(t, DRAW_TRI_LIST_ITEM, "DRAW_TRI_LIST_ITEM", {I, I, I}, {}, 6);
    fill(t, DRAW_LINE_LIST_ITEM, "DRAW_LINE_LIST_ITEM", {I, I}, {}, 4);
    return t;
}

const Table& table() {
    static const Table rows = buildTable();
    return rows;
}

}  // namespace

BGLCommandDictEntry BGLOpcodeDictionary::getEntry(int16_t i) const {
    if (i < 0 || i >= kSlots) raisePlatformError(kSubscriptOutOfRange);
    return table()[static_cast<std::size_t>(i)];
}

const BGLCommandDictEntry* BGLOpcodeDictionary::row(int32_t opcode) {
    if (opcode < 0 || opcode >= kSlots) return nullptr;
    return &table()[static_cast<std::size_t>(opcode)];
}

std::string BGLOpcodeDictionary::nameOf(int32_t opcode) {
    const BGLCommandDictEntry* found = row(opcode);
    if (found != nullptr && !found->name.empty()) return found->name;
    if (opcode == IFINF1) return "IFINF1";
    return "OPCODE " + numbers::formatInteger(opcode);
}

}  // namespace velmora
