#include "Handles.h"
#include "ModelReport.h"

extern "C" {

velmora_scan* velmora_scan_open(const char* path) {
    if (path == nullptr) {
        capi::missing("the path");
        return nullptr;
    }
    auto scan = std::make_unique<velmora_scan>();
    scan->path = path;
    const int code = capi::guarded(path, [&] {
        velmora::BGLObject bgl;
        if (!bgl.isXMLBGL(path)) {
            throw tool::ToolError(path,
                                  "is not an XML-style compiled scenery file (it doesn't start "
                                  "with the bytes 01 02)");
        }
        bgl.readXMLBGL(path);
        scan->models = bgl.ModelList();
        tool::json records = tool::json::array();
        int index = 0;
        for (const auto& model : *scan->models) {
            tool::json record = tool::compiledModelReport(path, ++index, *model);
            record["format"] = tool::kJsonFormat;
            records.push_back(record);
        }
        scan->records = records.dump(-1, ' ', false, tool::json::error_handler_t::replace);
    });
    return code == VELMORA_OK ? scan.release() : nullptr;
}

void velmora_scan_close(velmora_scan* scan) {
    delete scan;
}

const char* velmora_scan_json(velmora_scan* scan) {
    return scan == nullptr ? "[]" : scan->records.c_str();
}

int velmora_scan_count(const velmora_scan* scan) {
    return scan == nullptr ? 0 : scan->models->Count();
}

velmora_model* velmora_scan_model(velmora_scan* scan, int index) {
    if (scan == nullptr) {
        capi::missing("the scan");
        return nullptr;
    }
    if (index < 0 || index >= scan->models->Count()) {
        capi::guarded(scan->path, [] { velmora::detail::raisePlatformError(9); });
        return nullptr;
    }
    auto handle = std::make_unique<velmora_model>();
    handle->path = scan->path;
    handle->model = scan->models->Item(index + 1);
    return handle.release();
}

}  // extern "C"
