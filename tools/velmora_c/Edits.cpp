#include "Handles.h"
#include "Tool.h"

namespace {

int edit(velmora_model* model, const std::function<velmora::EditRequest()>& request) {
    if (model == nullptr) return capi::missing("the model");
    return capi::guarded(model->path, [&] {
        const velmora::EditResult result = velmora::editModel(*model->model, request());
        model->said.clear();
        for (const std::string& line : result.said())
            model->said += line + "\n";
    });
}

}  // namespace

extern "C" {

int velmora_edit(velmora_model* model, const char* options_json) {
    if (options_json == nullptr) return capi::missing("the options");
    return edit(model, [&] {
        const tool::json options = tool::json::parse(options_json, nullptr, false);
        if (options.is_discarded()) throw tool::UsageError("the edit options are not JSON");
        return tool::editRequestOfOptions(options);
    });
}

int velmora_add_kill_shadow(velmora_model* model) {
    return edit(model, [] {
        velmora::EditRequest request;
        request.addKillShadow = true;
        return request;
    });
}

int velmora_fix_lights(velmora_model* model) {
    return edit(model, [] {
        velmora::EditRequest request;
        request.fixLights = true;
        return request;
    });
}

const char* velmora_edit_said(velmora_model* model) {
    return model == nullptr ? "" : model->said.c_str();
}

}  // extern "C"
