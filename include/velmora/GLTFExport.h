#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// What MDLObject::exportGLTF wrote.
struct GLTFExport {
    int64_t triangles =
        0;  // triangles written; a triangle shown in several variants counts once a variant
    int32_t nodes = 0;       // nodes that hold a mesh
    int32_t primitives = 0;  // one a material and texture combination of a node
    int32_t images = 0;
    int32_t lights = 0;
    int64_t bytes = 0;  // bytes written, all files together
    // What the export could not keep, such as a texture whose image wasn't found (its material
    // is written without it).
    std::vector<std::string> warnings;
};

}  // namespace velmora
