#pragma once

#include <velmora/color.h>

#include <memory>

namespace velmora {

// A lighting material of four colours and a power.
class material {
  public:
    material();

    std::shared_ptr<color> Diffuse() const { return diffuse_; }
    void Diffuse(std::shared_ptr<color> value) { diffuse_ = std::move(value); }
    std::shared_ptr<color> Ambient() const { return ambient_; }
    void Ambient(std::shared_ptr<color> value) { ambient_ = std::move(value); }
    std::shared_ptr<color> Specular() const { return specular_; }
    void Specular(std::shared_ptr<color> value) { specular_ = std::move(value); }
    std::shared_ptr<color> Emmisive() const { return emmisive_; }
    void Emmisive(std::shared_ptr<color> value) { emmisive_ = std::move(value); }
    float Power() const { return power_; }
    void Power(float value) { power_ = value; }

  private:
    std::shared_ptr<color> diffuse_;
    std::shared_ptr<color> ambient_;
    std::shared_ptr<color> specular_;
    std::shared_ptr<color> emmisive_;
    float power_ = 0;
};

}  // namespace velmora
