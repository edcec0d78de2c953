#pragma once

#include <array>
#include <string>
#include <vector>

// Reads an OpenFlight database back with OpenSceneGraph's osgconv (a real, independent
// reader) and picks out of its text output what a test compares with the model.
namespace osgreader {

using Position = std::array<double, 3>;
using Triangle = std::array<Position, 3>;

struct Scene {
    bool loaded = false;
    // What osgconv printed, less its closing "Data written" line; empty when it had nothing
    // to say about the database.
    std::string messages;
    std::vector<Triangle> triangles;        // in the order of the faces
    std::vector<std::string> textureFiles;  // file names of the images, without folders
    std::vector<std::string> nodeNames;     // every Name of the scene graph, in order
};

// The osgconv program, or "" when it is not installed.
std::string osgconvProgram();

// Converts `database` into `database` + ".osgt", each face a node of its own, and parses it.
Scene readDatabase(const std::string& database);

}  // namespace osgreader
