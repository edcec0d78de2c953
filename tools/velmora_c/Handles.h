#pragma once

#include <velmora/velmora.h>
#include <velmora/velmora_c.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// What a handle of the C interface holds: the object, and the texts and arrays handed out from
// it, which live as long as the handle.
struct velmora_model {
    std::shared_ptr<velmora::MDLObject> model;
    std::string path;  // as opened; the file the reports name
    std::string info;
    std::string commands;
    std::string said;
    std::vector<float> vertices;
};

struct velmora_scan {
    std::string path;
    std::shared_ptr<velmora::ModelList> models;
    std::string records;
};

struct velmora_geometry {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<float> uvs;
    std::vector<uint32_t> indices;
    std::vector<int32_t> materials;
    std::vector<int32_t> textures;
    std::vector<int32_t> commands;
    std::vector<int32_t> surfaceCommands;
    std::vector<float> materialValues;
    std::vector<velmora_light> lights;
};

namespace capi {

// Runs `work`, turning whatever it throws into the thread's last error and a code: VELMORA_FAILED
// for the library's errors and the tool's, VELMORA_REFUSED for a refused edit, and
// VELMORA_BAD_ARGUMENT for wrong options. `file` names the file the work is about, where the
// error doesn't. Nothing is thrown past it.
int guarded(const std::string& file, const std::function<void()>& work);

// A NULL handle or text given where one is needed: VELMORA_BAD_ARGUMENT, with the last error
// saying which argument.
int missing(const char* what);

// A text of the interface's: "" for NULL.
inline std::string textOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace capi
