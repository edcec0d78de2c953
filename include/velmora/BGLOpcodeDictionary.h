#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace velmora {

// Opcodes of the BGL command stream. Only 33 of them have a row in BGLOpcodeDictionary.
enum BGLOpcode : int32_t {
    EOF_ = 0,
    LOGOL = 1,
    NOOP = 2,
    BGL_DEBUG = 4,
    surface = 5,
    SPNT = 6,
    CPNT = 7,
    CLOSURE = 8,
    GSURF = 9,
    GSPNT = 10,
    GCPNT = 11,
    GCLOSURE = 12,
    jump = 13,
    DEFRES = 14,
    STRRES = 15,
    CNTRES = 16,
    GDEFRES = 17,
    GSTRRES = 18,
    GCNTRES = 19,
    SETCOLOR = 20,
    ELEVATION_MAP = 21,
    TEXTURE_ENABLE = 23,
    Texture = 24,
    Palette = 25,
    RESLIST = 26,
    IFIN_BOX_PLANE = 27,
    IFIN2 = 28,
    FACE = 29,
    HAZE = 30,
    HORIZON = 31,
    BGL_TAXI_MARKINGS = 31,
    SUPERMESH = 33,
    IFIN3 = 33,
    BGL_RETURN = 34,
    BGL_CALL = 35,
    IFIN1 = 36,
    SEPARATION_PLANE = 37,
    SETWRD = 38,
    BALL = 40,
    GRESLIST = 41,
    GFACET = 42,
    ADDOBJ_32 = 43,
    REJECT = 44,
    SCOLOR24 = 45,
    LCOLOR24 = 46,
    SET_BRIGHTNESS = 48,
    RESROW = 49,
    ADDOBJ = 50,
    INSTANCE_CALL = 51,
    SUPER_SCALE = 52,
    PNTROW = 53,
    PNT = 55,
    CONCAVE = 56,
    IFMSK = 57,
    VPOSITION = 58,
    VINSTANCE_CALL16 = 59,
    position = 60,
    SEED = 61,
    FACET = 62,
    SHADOW_CALL = 63,
    SHADOW_VPOSITION = 64,
    SHADOW_VICALL16 = 65,
    BGL_TEXTURE = 67,
    BGL_RUNWAY = 68,
    POINT_VICALL_16 = 70,
    MAP_SCALE = 71,
    VAR_SEG = 72,
    BLDING = 73,
    LANDING_LIGHTS_VICALL = 74,
    BGL_OVERLAY = 75,
    VSCALE = 76,
    VAR2LOW64K = 77,
    LOW64K2VAR = 78,
    MOVWRD = 79,
    GCOLOR = 80,
    LCOLOR = 81,
    SCOLOR = 82,
    GCOLOR_ABS = 83,
    SET_SURFACE_TYPE = 85,
    SET_WEATHER = 86,
    BGL_WEATHER = 87,
    TEXTURE_BOUNDS = 88,
    VAR_SEG_ID = 89,
    SEED_ADDOBJ = 90,
    INDIRECT_CALL = 91,
    BGL_FAR_CALL = 92,
    TEXTURE_REPEAT = 93,
    TEXTURE_ROTATE = 94,
    IFSIZEV = 95,
    RESLIST_SCALE = 97,
    BGL_LIBRARY_CALL = 99,
    BGL_LIST = 100,
    VSCOLOR = 101,
    VGCOLOR = 102,
    VLCOLOR = 103,
    TMAP_LIGHT_SHADE = 104,
    ROAD_START = 105,
    ROAD_CONT = 106,
    RIVER_START = 107,
    RIVER_CONT = 108,
    IFSIZEH = 109,
    TAXIWAY_START = 110,
    TAXIWAY_CONT = 111,
    ALTITUDE_SET = 113,
    APPROACH_LIGHTS = 114,
    IFINBOXP = 115,
    ADDCAT = 116,
    ADDMTN = 117,
    SCALE_AGL = 119,
    ROAD_CONTW = 120,
    RIVER_CONTW = 121,
    GFACETN_TMAP = 122,
    GFACE4_TMAP = 123,
    BGL_SELECT = 124,
    PERSPECTIVE = 125,
    SETWRD_LOW64K = 126,
    CITY = 127,
    RESPNT = 128,
    ANTI_ALIAS = 129,
    SHADOW_POSITION = 130,
    RESCALE = 131,
    SURFACE_NORMAL = 132,
    NIGHT_COLOR_RANGE = 135,
    BGL_JUMP_32 = 136,
    VAR_BASE_32 = 137,
    BGL_CALL_32 = 138,
    ADDCAT_32 = 139,
    ASMCALL_32 = 140,
    FILE_MARKER_32 = 141,
    VFILE_MARKER = 142,
    ALPHA = 143,
    BGL_TEXT = 145,
    BGL_AIRCRAFT_LABEL = 145,
    MIPMAP = 146,
    Specular = 147,
    BGL_CRASH_START = 150,
    TILED_ELEVATION_MAP = 154,
    VRESLIST = 155,
    BGL_VLIBRARY_CALL = 156,
    VSCALEV = 157,
    BGL_INTERPOLATE = 158,
    VAR_BASE_OVERRIDE = 159,
    BGL_BUILDING = 160,
    SET_CLASSIFICATION_LIST_ENTRY = 161,
    SET_CURRENT_VARIATION_TEXTURE_LIST = 162,
    TILED_CLASSIFICATION_ELEVATION_MAP = 163,
    VALPHA = 164,
    SET_CURRENT_VARIATION_FROM_CLASSIFICATION = 165,
    BGL_TARGET_INDICATOR = 166,
    SPRITE_VICALL = 167,
    IFIN_INSTANCED_BOX_PLANE = 169,
    BGL_NEW_RUNWAY = 170,
    BGL_ZBIAS = 172,
    BGL_ANIMATE = 173,
    BGL_TRANSFORM_END = 174,
    BGL_TRANSFORM_MAT = 175,
    BGL_TAG = 177,
    BGL_LIGHT = 178,
    IFINF1 = 179,
    VERTEX_LIST_BEGIN = 181,
    MATERIAL_LIST_BEGIN = 182,
    TEXTURE_LIST_BEGIN = 183,
    SET_MATERIAL = 184,
    DRAW_TRI_LIST_BEGIN = 185,
    DRAW_LINE_LIST_BEGIN = 186,
    BGL_END = 189,
    BGL_SET_MATRIX_INDIRECT = 196,
    DRAW_TRI_LIST_ITEM = 256,
    DRAW_LINE_LIST_ITEM = 257,
};

// How a parameter is encoded in the stream.
enum parameterType : int32_t {
    pByte = 0,      // unsigned 8-bit
    pInteger = 1,   // signed 16-bit
    pLong = 2,      // signed 32-bit
    pSingle = 3,    // IEEE single
    pString = 4,    // fixed-length byte string of strLength bytes
    pUInteger = 5,  // unsigned 16-bit
};

// The shape of one opcode: its name, its parameters and its size in the stream.
// A length of 0 marks an opcode without a row.
struct BGLCommandDictEntry {
    std::string name;
    int16_t numParam = 0;
    std::array<parameterType, 33> paramType{};
    std::array<bool, 33> isJump{};
    std::array<int16_t, 33> strLength{};
    int16_t length = 0;
};

// The table of the 261 opcode slots 0 to 260, of which 33 are filled. Every instance holds the
// same values.
class BGLOpcodeDictionary {
  public:
    // A copy of slot `i`; an empty record for an unfilled slot; error 9 outside 0 to 260.
    BGLCommandDictEntry getEntry(int16_t i) const;

    // The row of `opcode` without a copy, or nullptr outside 0 to 260. For the library's loops.
    static const BGLCommandDictEntry* row(int32_t opcode);
    // The name of an opcode for people: its row's name, "IFINF1" (a test without a row), or
    // "OPCODE n".
    static std::string nameOf(int32_t opcode);
};

}  // namespace velmora
