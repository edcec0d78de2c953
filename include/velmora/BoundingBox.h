#pragma once

#include <string>

namespace velmora {

// The six singles of the "BBOX" section: the lower corner, then the upper corner.
class BoundingBox {
  public:
    float xmin() const { return xmin_; }
    void xmin(float value) { xmin_ = value; }
    float ymin() const { return ymin_; }
    void ymin(float value) { ymin_ = value; }
    float zmin() const { return zmin_; }
    void zmin(float value) { zmin_ = value; }
    float xmax() const { return xmax_; }
    void xmax(float value) { xmax_ = value; }
    float ymax() const { return ymax_; }
    void ymax(float value) { ymax_ = value; }
    float zmax() const { return zmax_; }
    void zmax(float value) { zmax_ = value; }

    void readList(const std::string& data);
    std::string asString() const;

  private:
    float xmin_ = 0, ymin_ = 0, zmin_ = 0;
    float xmax_ = 0, ymax_ = 0, zmax_ = 0;
};

}  // namespace velmora
