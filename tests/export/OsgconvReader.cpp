#include "export/OsgconvReader.h"

#include "support/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace osgreader {

namespace {

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

std::string trimmed(const std::string& line) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos) return {};
    const auto last = line.find_last_not_of(" \t\r");
    return line.substr(first, last - first + 1);
}

bool startsWith(const std::string& text, const std::string& head) {
    return text.compare(0, head.size(), head) == 0;
}

std::string quotedValue(const std::string& line) {
    const auto open = line.find('"');
    const auto close = line.rfind('"');
    if (open == std::string::npos || close <= open) return {};
    return line.substr(open + 1, close - open - 1);
}

// One osg::Geometry of the output: its vertex positions and the triangles drawn from them.
struct Geometry {
    std::vector<Position> vertices;
    std::vector<std::pair<int, int>> triangleRuns;  // first vertex, vertex count
};

void parseScene(std::istream& in, Scene& scene) {
    std::vector<Geometry> geometries;
    std::string line;
    bool inVertexArray = false;
    int pendingFirst = 0;
    bool inTriangles = false;
    while (std::getline(in, line)) {
        const std::string text = trimmed(line);
        if (text == "osg::Geometry {") {
            geometries.emplace_back();
        } else if (startsWith(text, "Name \"")) {
            scene.nodeNames.push_back(quotedValue(text));
        } else if (startsWith(text, "FileName \"")) {
            scene.textureFiles.push_back(
                std::filesystem::path(quotedValue(text)).filename().string());
        } else if (text == "VertexArray TRUE {") {
            inVertexArray = true;
        } else if (inVertexArray && startsWith(text, "vector ")) {
            const int count = std::stoi(text.substr(7));
            for (int i = 0; i < count && std::getline(in, line); ++i) {
                std::istringstream numbers(line);
                Position p{};
                numbers >> p[0] >> p[1] >> p[2];
                geometries.back().vertices.push_back(p);
            }
            inVertexArray = false;
        } else if (text == "Mode TRIANGLES") {
            inTriangles = true;
            pendingFirst = 0;
        } else if (inTriangles && startsWith(text, "First ")) {
            pendingFirst = std::stoi(text.substr(6));
        } else if (inTriangles && startsWith(text, "Count ")) {
            geometries.back().triangleRuns.emplace_back(pendingFirst, std::stoi(text.substr(6)));
            inTriangles = false;
        }
    }
    for (const auto& g : geometries) {
        for (const auto& [first, count] : g.triangleRuns) {
            for (int i = first; i + 2 < first + count; i += 3) {
                const auto at = [&](int k) { return g.vertices.at(static_cast<std::size_t>(k)); };
                scene.triangles.push_back({at(i), at(i + 1), at(i + 2)});
            }
        }
    }
}

}  // namespace

std::string osgconvProgram() {
    for (const char* candidate : {"/usr/bin/osgconv", "/usr/local/bin/osgconv"}) {
        if (std::filesystem::exists(candidate)) return candidate;
    }
    return {};
}

Scene readDatabase(const std::string& database) {
    Scene scene;
    const std::string output = database + ".osgt";
    const std::string log = database + ".log";
    // Faces are kept apart; the reader would otherwise merge the ones that share a state.
    const std::string command = "timeout 60 " + quoted(osgconvProgram()) + " -O preserveFace " +
                                quoted(database) + " " + quoted(output) + " >" + quoted(log) +
                                " 2>&1";
    const int status = std::system(command.c_str());
    std::istringstream messages(readFile(log));
    std::string line;
    while (std::getline(messages, line)) {
        if (!startsWith(line, "Data written to")) scene.messages += line + "\n";
    }
    scene.loaded = status == 0 && std::filesystem::exists(output);
    if (!scene.loaded) return scene;
    std::istringstream text(readFile(output));
    parseScene(text, scene);
    return scene;
}

}  // namespace osgreader
