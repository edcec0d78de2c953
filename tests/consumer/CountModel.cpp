// Loads a model with the library and prints the library's version and the model's counts.
#include <velmora/velmora.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: count_model MODEL.mdl\n";
        return 2;
    }
    try {
        velmora::MDLObject model;
        model.readMDL(argv[1]);
        std::cout << "velmora " << velmora::versionString() << "\n"
                  << "vertices " << model.VertexList()->Count() << "\n"
                  << "materials " << model.MaterialList()->Count() << "\n"
                  << "textures " << model.TextureList()->Count() << "\n"
                  << "commands " << model.BGLCommandList()->Count() << "\n";
    } catch (const velmora::Error& e) {
        std::cerr << "count_model: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
