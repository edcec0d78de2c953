#pragma once

#include <cstdint>
#include <string>

// The naming rules of the OpenFlight writer.
namespace velmora::flt {

// The width of a variable text field: the text and at least one NUL, rounded so that the text
// plus its 4-byte record head never ends on a boundary of 4 (5 characters get 9 bytes).
int16_t paddedLength(const std::string& text);

// The 8-byte ID of a record: the first 7 characters, so that the field keeps a NUL.
std::string shortID(const std::string& name);

// True when the whole name has to follow the record in a Long ID record.
bool needsLongID(const std::string& name);

// The texture's name in the database: the bitmap lowered, every ".bmp" turned into "." and
// `texFormat` (used as given). Only the name changes; no image is converted.
std::string textureFileName(const std::string& bitmap, const std::string& texFormat);

}  // namespace velmora::flt
