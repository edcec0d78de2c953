#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The one place where numbers held as text are read and written, and where values are
// narrowed to the widths of the file formats. Overflow is error 6 and text that is no
// number is error 13, everywhere, for the same reason.
namespace velmora::numbers {

// Reads a number: surrounding blanks, an optional sign, digits, an optional fraction and an
// optional exponent. Anything else, the empty text included, is error 13.
double parseNumber(std::string_view text);

// Rounds to the nearest whole number, exact halves to the even neighbour.
double roundHalfEven(double value);

// Narrowing with rounding; a value that does not fit is error 6.
int16_t toInt16(double value);
int32_t toInt32(double value);
uint8_t toByte(double value);
float toSingle(double value);
int16_t narrow16(int64_t value);
int32_t narrow32(int64_t value);

// Text to a 16-bit value in one step.
int16_t textToInt16(std::string_view text);

// Decimal text with "." as the decimal mark whatever the locale.
std::string formatInteger(int64_t value);
// A single with at most seven significant digits ("1.5", "0.1", "1E+10").
std::string formatSingle(float value);
// A count for people, with a comma between groups of three digits ("4,096").
std::string formatGrouped(int64_t value);

// True when `text` is exactly the text formatInteger gives for a 32-bit value.
bool parseCanonicalInteger(std::string_view text, int32_t& value);
// True when `text` is exactly the text formatSingle gives for some single.
bool parseCanonicalSingle(std::string_view text, float& value);

}  // namespace velmora::numbers
