#pragma once

#include <cstdint>
#include <string>

// Checks that keep a damaged compiled scenery file from being walked past its end.
namespace velmora::scenery {

inline constexpr const char* kSource = "Velmora.BGLObject";

// True when `count` records of `recordSize` bytes from the 0-based `offset` lie inside the open
// file. An empty table always fits, wherever it claims to be.
bool tableFitsInFile(int16_t file, int64_t offset, int64_t count, int64_t recordSize);

// Raises error 100 "The <table> is damaged".
[[noreturn]] void raiseDamagedTable(const std::string& table);

// "section 2", or "this section" when the record's place is unknown (0).
std::string sectionName(int32_t position);

}  // namespace velmora::scenery
