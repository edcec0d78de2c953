#include "Handles.h"
#include "Tool.h"

namespace {

int exportTo(velmora_model* model, const char* path,
             const std::function<void(velmora::MDLObject&, const std::string&)>& write) {
    if (model == nullptr) return capi::missing("the model");
    if (path == nullptr) return capi::missing("the path");
    return capi::guarded(path, [&] {
        // The tool's rule: written beside the target, moved into place when whole.
        tool::Output(path, tool::Output::Stream::Refused).write([&](const std::string& temporary) {
            write(*model->model, temporary);
        });
    });
}

}  // namespace

extern "C" {

int velmora_export_gltf(velmora_model* model, const char* path, const char* texture_folder,
                        int double_sided) {
    if (model == nullptr) return capi::missing("the model");
    if (path == nullptr) return capi::missing("the path");
    const velmora::GLTFOptions options{capi::textOf(texture_folder), std::nullopt,
                                       double_sided != 0};
    // The library writes each of the files beside its target and moves it in whole; a .gltf's
    // files beside it take their names from the target's.
    return capi::guarded(path, [&] { model->model->exportGLTF(path, options); });
}

int velmora_export_flt(velmora_model* model, const char* path, const char* texture_extension,
                       int attribute_files) {
    const std::string extension =
        texture_extension == nullptr ? std::string("bmp") : std::string(texture_extension);
    return exportTo(model, path, [&](velmora::MDLObject& m, const std::string& temporary) {
        m.exportFLT(temporary, extension, attribute_files != 0);
    });
}

int velmora_export_asm(velmora_model* model, const char* path) {
    return exportTo(model, path, [](velmora::MDLObject& m, const std::string& temporary) {
        m.exportASM(temporary);
    });
}

}  // extern "C"
