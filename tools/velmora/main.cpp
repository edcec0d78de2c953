#include <velmora/velmora.h>

#include <cstring>
#include <iostream>

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
        std::cout << "velmora " << velmora::versionString() << "\n";
        return 0;
    }
    std::cerr << "usage: velmora --version\n";
    return 2;
}
