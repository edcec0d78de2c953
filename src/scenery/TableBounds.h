#pragma once

#include <cstdint>
#include <string>

// Checks that keep a damaged compiled scenery file from being walked past its end.
namespace velmora::scenery {

inline constexpr const char* kSource = "Velmora.BGLObject";

// True when `count` records of `recordSize` bytes from the 0-based `offset` lie inside a file of
// `length` bytes. An empty table always fits, wherever it claims to be.
bool tableFitsInFile(int64_t length, int64_t offset, int64_t count, int64_t recordSize);

// Raises error 100 "The <table> is damaged".
[[noreturn]] void raiseDamagedTable(const std::string& table);

// "section 2", or "this section" when the record's place is unknown (0).
std::string sectionName(int32_t position);

}  // namespace velmora::scenery

namespace velmora::detail {

// What the model tables and the models of one scanned file have claimed so far. Tables and
// models don't overlap, so together they take no more bytes than the file; and the entries of
// the models' lists take no more bytes than the models hold, but for what one model's 16-bit
// counts may claim beyond its data.
struct ScanBudget {
    int64_t tableAndModelBytes = 0;
    int64_t entryBytes = 0;
};

}  // namespace velmora::detail
