#pragma once

#include <array>
#include <cstdint>

namespace velmora {

// How MDLObject::glDrawView shows a model. The model's frame has x to the
// east, y up and z to the north; the frame fits what the walk draws, whatever its size.
struct View {
    // The compass heading the camera looks along: 0 north (the model's +z), 90 east (+x).
    float heading = 45;
    // How far the camera looks down: 0 horizontal, 90 straight down from above.
    float elevation = 30;
    // Metres from the centre of what is drawn to the camera; 0 fits it into the frame with a
    // margin.
    float distance = 0;
    // In percent of that distance's closeness: 200 is twice as near, 50 twice as far.
    float zoom = 100;
    // The colour where the model isn't, 0 to 1.
    std::array<float, 3> background{0.62f, 0.73f, 0.85f};
    // Only the front of a triangle is drawn (FrontFace.h), as the simulator draws it; unset, both
    // sides are, for models whose triangles face both ways.
    bool cullBackFaces = true;
    // Texels of an alpha texture are kept where their alpha reaches one half and dropped below,
    // as the simulator does for billboards; with this set they are blended instead.
    bool blendAlpha = false;
};

// What a frame of glDrawView showed.
struct ViewResult {
    int64_t triangles = 0;  // triangles the walk drew
    int64_t lights = 0;     // lights the walk drew, each a point of its colour
    int64_t pixels = 0;     // pixels of the frame the model covers
    float distance = 0;     // the camera's distance from the centre of what was drawn
    float radius = 0;       // the radius of what was drawn, around its centre
    // The centre of what was drawn, in the drawing's axes: (x, y, -z) of the model's, which are
    // glTF's axes too.
    std::array<float, 3> centre{};
};

}  // namespace velmora
