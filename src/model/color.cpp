#include <velmora/color.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"

namespace velmora {

namespace {

// The product is taken as a single before it is rounded: 0.1f * 255 is 25.5 and goes to 26.
int16_t byteView(float component) {
    const float product = component * 255.0f;
    return numbers::toInt16(product);
}

float fromByteView(int16_t value) {
    return static_cast<float>(static_cast<double>(value) / 255.0);
}

char packedByte(int16_t value) {
    if (value < 0 || value > 255) raisePlatformError(kInvalidProcedureCall);
    return static_cast<char>(static_cast<uint8_t>(value));
}

}  // namespace

int16_t color::Ri() const {
    return byteView(r_);
}
int16_t color::Gi() const {
    return byteView(g_);
}
int16_t color::Bi() const {
    return byteView(b_);
}
int16_t color::Ai() const {
    return byteView(a_);
}

void color::Ri(int16_t value) {
    r_ = fromByteView(value);
}
void color::Gi(int16_t value) {
    g_ = fromByteView(value);
}
void color::Bi(int16_t value) {
    b_ = fromByteView(value);
}
void color::Ai(int16_t value) {
    a_ = fromByteView(value);
}

std::string color::packedColor() const {
    std::string packed(1, static_cast<char>(0xFF));
    packed.push_back(packedByte(Bi()));
    packed.push_back(packedByte(Gi()));
    packed.push_back(packedByte(Ri()));
    return packed;
}

}  // namespace velmora
