#pragma once

namespace velmora {

// One entry of the vertex pool: position, normal and texture coordinates.
class Vertex {
  public:
    float x() const { return x_; }
    float y() const { return y_; }
    float z() const { return z_; }
    float nx() const { return nx_; }
    float ny() const { return ny_; }
    float nz() const { return nz_; }
    float tx() const { return tx_; }
    float ty() const { return ty_; }
    void x(float value) { x_ = value; }
    void y(float value) { y_ = value; }
    void z(float value) { z_ = value; }
    void nx(float value) { nx_ = value; }
    void ny(float value) { ny_ = value; }
    void nz(float value) { nz_ = value; }
    void tx(float value) { tx_ = value; }
    void ty(float value) { ty_ = value; }

  private:
    float x_ = 0, y_ = 0, z_ = 0;
    float nx_ = 0, ny_ = 0, nz_ = 0;
    float tx_ = 0, ty_ = 0;
};

}  // namespace velmora
