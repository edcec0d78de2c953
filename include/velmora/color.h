#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// A colour of four singles 0.0 to 1.0, with a 0 to 255 integer view of the same fields.
class color {
  public:
    float r() const { return r_; }
    float g() const { return g_; }
    float b() const { return b_; }
    float a() const { return a_; }
    // r * 255 rounded half to even; error 6 when it doesn't fit 16 bits.
    int16_t Ri() const;
    int16_t Gi() const;
    int16_t Bi() const;
    int16_t Ai() const;

    void r(float value) { r_ = value; }
    void g(float value) { g_ = value; }
    void b(float value) { b_ = value; }
    void a(float value) { a_ = value; }
    // value / 255, exact for every byte.
    void Ri(int16_t value);
    void Gi(int16_t value);
    void Bi(int16_t value);
    void Ai(int16_t value);

    // The bytes 255, Bi, Gi, Ri; error 5 when a component is outside 0 to 255.
    std::string packedColor() const;

  private:
    float r_ = 0;
    float g_ = 0;
    float b_ = 0;
    float a_ = 0;
};

}  // namespace velmora
