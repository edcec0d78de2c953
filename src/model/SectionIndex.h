#pragma once

#include <cstdint>

namespace velmora::sections {

// Positions in the section table of MDLObject. Saving walks the table in this order, so that
// "EXTE" (which carries no payload of its own) is followed by the sections it contains.
enum Index : int16_t {
    RIFF = 0,
    MDLH = 1,
    ISFT = 2,
    DICT = 3,
    BBOX = 4,
    SHAD = 5,
    CRAS = 6,
    EXTE = 7,
    TEXT = 8,
    MATE = 9,
    VERT = 10,
    BGL = 11,
};

constexpr int16_t kKnownSections = 19;  // indexes 0 to 18
constexpr int16_t kTableSlots = 20;     // index 19 stays empty and may be looked up

}  // namespace velmora::sections
