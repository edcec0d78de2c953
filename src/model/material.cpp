#include <velmora/material.h>

namespace velmora {

material::material()
    : diffuse_(std::make_shared<color>()),
      ambient_(std::make_shared<color>()),
      specular_(std::make_shared<color>()),
      emmisive_(std::make_shared<color>()) {}

}  // namespace velmora
