#include "Handles.h"
#include "ModelReport.h"

namespace {

// Texts from a model may hold bytes that are not UTF-8 where the reports keep raw bytes; JSON
// readers get them replaced rather than a failure.
std::string jsonText(const tool::json& value) {
    return value.dump(-1, ' ', false, tool::json::error_handler_t::replace);
}

}  // namespace

extern "C" {

const char* velmora_version(void) {
    static const std::string version = velmora::versionString();
    return version.c_str();
}

velmora_model* velmora_open(const char* path) {
    if (path == nullptr) {
        capi::missing("the path");
        return nullptr;
    }
    auto handle = std::make_unique<velmora_model>();
    handle->path = path;
    handle->model = std::make_shared<velmora::MDLObject>();
    const int code = capi::guarded(path, [&] { handle->model->readMDL(path); });
    return code == VELMORA_OK ? handle.release() : nullptr;
}

void velmora_close(velmora_model* model) {
    delete model;
}

int velmora_save(velmora_model* model, const char* path) {
    if (model == nullptr) return capi::missing("the model");
    if (path == nullptr) return capi::missing("the path");
    return capi::guarded(path, [&] { model->model->saveMDL(path); });
}

const char* velmora_info_json(velmora_model* model) {
    if (model == nullptr) {
        capi::missing("the model");
        return nullptr;
    }
    const int code = capi::guarded(model->path, [&] {
        model->info = jsonText(tool::modelReport(model->path, *model->model));
    });
    return code == VELMORA_OK ? model->info.c_str() : nullptr;
}

const char* velmora_commands_json(velmora_model* model) {
    if (model == nullptr) {
        capi::missing("the model");
        return nullptr;
    }
    const int code = capi::guarded(model->path, [&] {
        model->model->BGLCommandList()->processParent();
        model->commands =
            jsonText(tool::commandsReport(model->path, *model->model->BGLCommandList()));
    });
    return code == VELMORA_OK ? model->commands.c_str() : nullptr;
}

const float* velmora_vertices(velmora_model* model, size_t* count) {
    if (model == nullptr) {
        capi::missing("the model");
        return nullptr;
    }
    model->vertices.clear();
    for (const auto& v : *model->model->VertexList()) {
        model->vertices.insert(model->vertices.end(), {v->x(), v->y(), v->z(), v->nx(), v->ny(),
                                                       v->nz(), v->tx(), v->ty()});
    }
    if (count != nullptr) *count = model->vertices.size() / 8;
    // A pointer that is not NULL also for a model without vertices.
    model->vertices.reserve(1);
    return model->vertices.data();
}

}  // extern "C"
