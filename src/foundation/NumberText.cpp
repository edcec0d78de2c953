#include "foundation/NumberText.h"

#include "foundation/Errors.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace velmora::numbers {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Checks the shape of a number and gives the part that from_chars can read
// (without a leading '+').
bool numberShape(std::string_view text, std::string_view& body) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && isBlank(text[begin]))
        ++begin;
    while (end > begin && isBlank(text[end - 1]))
        --end;
    std::string_view t = text.substr(begin, end - begin);
    std::size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    const std::size_t mantissaStart = i;
    std::size_t digits = 0;
    while (i < t.size() && isDigit(t[i]))
        ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && isDigit(t[i]))
            ++i, ++digits;
    }
    if (digits == 0) return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        std::size_t exponentDigits = 0;
        while (i < t.size() && isDigit(t[i]))
            ++i, ++exponentDigits;
        if (exponentDigits == 0) return false;
    }
    if (i != t.size()) return false;
    body = (t[0] == '+') ? t.substr(1) : t;
    (void)mantissaStart;
    return true;
}

// The power of ten of the first significant digit of a well-formed number.
long decimalMagnitude(std::string_view body) {
    long exponent = 0;
    const auto e = body.find_first_of("eE");
    if (e != std::string_view::npos) {
        std::string_view digits = body.substr(e + 1);
        bool negative = false;
        if (!digits.empty() && (digits[0] == '+' || digits[0] == '-')) {
            negative = digits[0] == '-';
            digits.remove_prefix(1);
        }
        for (char c : digits)
            exponent = std::min(exponent * 10 + (c - '0'), 100000L);
        if (negative) exponent = -exponent;
        body = body.substr(0, e);
    }
    const auto point = body.find('.');
    const long integerDigits =
        static_cast<long>(point == std::string_view::npos ? body.size() : point);
    long position = 0;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] == '.' || body[i] == '-' || body[i] == '0') continue;
        position = (static_cast<long>(i) < integerDigits)
                       ? integerDigits - static_cast<long>(i)
                       : integerDigits - static_cast<long>(i) + 1;
        break;
    }
    return position + exponent;
}

}  // namespace

double parseNumber(std::string_view text) {
    std::string_view body;
    if (!numberShape(text, body)) raisePlatformError(kTypeMismatch);
    // from_chars does not take a '.' without a digit in front of it, nor a sign before it.
    std::string buffer;
    if (body.find('.') != std::string_view::npos) {
        buffer.reserve(body.size() + 1);
        for (std::size_t i = 0; i < body.size(); ++i) {
            if (body[i] == '.' && (i == 0 || !isDigit(body[i - 1]))) buffer.push_back('0');
            buffer.push_back(body[i]);
        }
        body = buffer;
    }
    double value = 0;
    const auto [ptr, ec] = std::from_chars(body.data(), body.data() + body.size(), value);
    if (ec == std::errc::result_out_of_range) {
        // Underflow reads as zero; overflow does not fit any target.
        if (decimalMagnitude(body) < 0) return 0.0;
        raisePlatformError(kOverflow);
    }
    if (ec != std::errc() || ptr != body.data() + body.size()) raisePlatformError(kTypeMismatch);
    return value;
}

double roundHalfEven(double value) {
    const double below = std::floor(value);
    const double fraction = value - below;
    if (fraction > 0.5) return below + 1.0;
    if (fraction < 0.5) return below;
    return std::fmod(below, 2.0) == 0.0 ? below : below + 1.0;
}

namespace {

template <class Target>
Target roundInto(double value) {
    if (std::isnan(value)) raisePlatformError(kOverflow);
    const double rounded = roundHalfEven(value);
    if (rounded < static_cast<double>(std::numeric_limits<Target>::min()) ||
        rounded > static_cast<double>(std::numeric_limits<Target>::max())) {
        raisePlatformError(kOverflow);
    }
    return static_cast<Target>(rounded);
}

}  // namespace

int16_t toInt16(double value) {
    return roundInto<int16_t>(value);
}
int32_t toInt32(double value) {
    return roundInto<int32_t>(value);
}
uint8_t toByte(double value) {
    return roundInto<uint8_t>(value);
}

float toSingle(double value) {
    if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max()) {
        raisePlatformError(kOverflow);
    }
    return static_cast<float>(value);
}

int16_t narrow16(int64_t value) {
    if (value < std::numeric_limits<int16_t>::min() ||
        value > std::numeric_limits<int16_t>::max()) {
        raisePlatformError(kOverflow);
    }
    return static_cast<int16_t>(value);
}

int32_t narrow32(int64_t value) {
    if (value < std::numeric_limits<int32_t>::min() ||
        value > std::numeric_limits<int32_t>::max()) {
        raisePlatformError(kOverflow);
    }
    return static_cast<int32_t>(value);
}

int16_t textToInt16(std::string_view text) {
    int32_t exact = 0;
    if (parseCanonicalInteger(text, exact)) return narrow16(exact);
    return toInt16(parseNumber(text));
}

std::string formatInteger(int64_t value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string formatSingle(float value) {
    if (value == 0.0f) return "0";
    char buffer[32];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 7);
    std::string text(buffer, result.ptr);
    // "1e+10" becomes "1E+10", the usual form of a printed single.
    for (char& c : text) {
        if (c == 'e') c = 'E';
    }
    return text;
}

std::string formatGrouped(int64_t value) {
    const std::string digits = formatInteger(value);
    const std::size_t sign = value < 0 ? 1 : 0;
    std::string out = digits.substr(0, sign);
    for (std::size_t i = sign; i < digits.size(); ++i) {
        if (i > sign && (digits.size() - i) % 3 == 0) out.push_back(',');
        out.push_back(digits[i]);
    }
    return out;
}

bool parseCanonicalInteger(std::string_view text, int32_t& value) {
    if (text.empty() || text.size() > 11) return false;
    std::size_t i = 0;
    bool negative = false;
    if (text[0] == '-') {
        negative = true;
        i = 1;
        if (text.size() == 1) return false;
    }
    if (text[i] == '0' && (text.size() != i + 1 || negative)) return false;
    int64_t magnitude = 0;
    for (; i < text.size(); ++i) {
        if (!isDigit(text[i])) return false;
        magnitude = magnitude * 10 + (text[i] - '0');
    }
    const int64_t signedValue = negative ? -magnitude : magnitude;
    if (signedValue < std::numeric_limits<int32_t>::min() ||
        signedValue > std::numeric_limits<int32_t>::max()) {
        return false;
    }
    value = static_cast<int32_t>(signedValue);
    return true;
}

bool parseCanonicalSingle(std::string_view text, float& value) {
    std::string_view body;
    if (!numberShape(text, body) || body.size() != text.size()) return false;
    float parsed = 0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec != std::errc() || ptr != text.data() + text.size()) return false;
    if (formatSingle(parsed) != text) return false;
    value = parsed;
    return true;
}

}  // namespace velmora::numbers
