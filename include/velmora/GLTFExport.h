#pragma once

#include <velmora/Scenario.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

// How MDLObject::exportGLTF writes a model.
struct GLTFOptions {
    // Where the images of the textures are found by their names; empty: at their `file`.
    std::string textureFolder;
    // Without one every part is written, the seasons as material variants; with one, what its
    // walk draws.
    std::optional<Scenario> scenario;
    // Every material shows both sides, for models whose faces point both ways; otherwise only
    // the front faces show, as in the simulator.
    bool doubleSided = false;
};

// What MDLObject::exportGLTF wrote.
struct GLTFExport {
    int64_t triangles = 0;   // triangles written, each once whatever its season variants
    int32_t nodes = 0;       // nodes that hold a mesh
    int32_t primitives = 0;  // one a material and texture (with its seasons' ones) of a node
    int32_t images = 0;
    int32_t lights = 0;
    int64_t bytes = 0;  // bytes written, all files together
    // What the export could not keep, such as a texture whose image wasn't found (its material
    // is written without it).
    std::vector<std::string> warnings;
};

}  // namespace velmora
