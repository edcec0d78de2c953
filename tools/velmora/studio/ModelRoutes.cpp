#include "../ModelReport.h"
#include "../Rendering.h"
#include "Studio.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tool::studio {

namespace {

namespace stdfs = std::filesystem;

const char* const kModelPath = R"(/api/models/([0-9a-f]{12}))";

json recordOf(const Entry& entry, const velmora::MDLObject& model) {
    const velmora::StreamAnalysis analysis(*model.BGLCommandList());
    const velmora::GuardAnalysis& guard = analysis.guard();
    return {{"id", entry.id},
            {"file", entry.file},
            {"folder", entry.folder},
            {"model", entry.model},
            {"guard", guard.guardedCall() == 0 ? json(nullptr) : json(guard.formula())},
            {"vertices", model.VertexList()->Count()},
            {"commands", model.BGLCommandList()->Count()},
            {"reversedTriangles", velmora::reversedTriangles(model).size()},
            {"seasons", !analysis.seasonalRuns().empty()},
            {"lights", analysis.lights().size()},
            {"editable", !entry.compiled}};
}

std::string readAndRemove(const std::string& path) {
    std::string bytes;
    {
        std::ifstream in(pathOf(path), std::ios::binary);
        std::ostringstream out;
        out << in.rdbuf();
        bytes = out.str();
    }
    std::error_code ignored;
    stdfs::remove(pathOf(path), ignored);
    return bytes;
}

// A temporary file for one answer, removed once read.
std::string temporaryFile(const std::string& name) {
    static std::atomic<int> counter = 0;
    return textOf(stdfs::temp_directory_path() /
                  pathOf("velmora-studio-" + std::to_string(processId()) + "-" +
                         std::to_string(counter++) + "-" + name));
}

std::string thumbnailOf(Studio& studio, const Entry& entry) {
    const auto model = studio.catalogue.load(entry);
    // The render command's view and defaults, at the size of a thumbnail.
    RenderOptions options;
    options.size = "256x192";
    options.textures = textureFolderFor(*model, entry.path, studio.textures);
    const RenderSettings settings = checkRenderSettings(options);
    const Picture picture = renderModel(*model, settings);
    const std::string path = temporaryFile("thumbnail.png");
    try {
        velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, path);
    } catch (...) {
        std::error_code ignored;
        stdfs::remove(pathOf(path), ignored);
        throw;
    }
    return readAndRemove(path);
}

// The scenario the address asks for, as --day, --season, --night and --set give it.
RenderOptions scenarioOptions(const httplib::Request& request) {
    RenderOptions options;
    const auto yes = [&](const char* name) {
        const std::string value = request.get_param_value(name);
        return request.has_param(name) && value != "0" && value != "false";
    };
    if (request.has_param("day")) {
        const std::string day = request.get_param_value("day");
        if (day.empty() || day.size() > 3 ||
            day.find_first_not_of("0123456789") != std::string::npos || std::stoi(day) < 1 ||
            std::stoi(day) > 366) {
            throw UsageError("bad day '" + day + "': give a day of the year from 1 to 366");
        }
        options.day = std::stoi(day);
    }
    options.season = request.get_param_value("season");
    options.night = yes("night");
    for (std::size_t i = 0; i < request.get_param_value_count("set"); ++i)
        options.set.push_back(request.get_param_value("set", i));
    return options;
}

std::string glbOf(Studio& studio, const Entry& entry, const httplib::Request& request) {
    const RenderOptions options = scenarioOptions(request);
    const std::string doubleSided = request.get_param_value("double-sided");
    const auto model = studio.catalogue.load(entry);
    const velmora::GLTFOptions gltf{
        textureFolderFor(*model, entry.path, studio.textures), scenarioOf(options),
        request.has_param("double-sided") && doubleSided != "0" && doubleSided != "false"};
    const std::string path = temporaryFile("model.glb");
    try {
        model->exportGLTF(path, gltf);
    } catch (...) {
        std::error_code ignored;
        stdfs::remove(pathOf(path), ignored);
        throw;
    }
    return readAndRemove(path);
}

}  // namespace

// Runs `answer` for the model the address names; unknown ids are 404, the tool's failures 400
// for bad values and 500 otherwise.
httplib::Server::Handler forModel(
    Studio& studio,
    std::function<void(const Entry&, const httplib::Request&, httplib::Response&)> answer) {
    return [&studio, answer](const httplib::Request& request, httplib::Response& response) {
        const Entry* entry = studio.catalogue.find(request.matches[1]);
        if (!entry) return answerError(response, 404, "no model has this id");
        try {
            answer(*entry, request, response);
        } catch (const UsageError& e) {
            answerError(response, 400, e.what());
        } catch (const ToolError& e) {
            answerError(response, 500, saidOf(e));
        } catch (const velmora::Error& e) {
            answerError(response, 500, saidOf(fromLibrary(e, entry->path)));
        }
    };
}

void addModelRoutes(httplib::Server& server, Studio& studio) {
    server.Get("/api/models", [&studio](const httplib::Request&, httplib::Response& response) {
        json records = json::array();
        for (const Entry& entry : studio.catalogue.entries()) {
            try {
                const Stamp stamp = stampOf(entry.path);
                if (const auto known = studio.records.get(entry.id, stamp)) {
                    records.push_back(json::parse(*known));
                    continue;
                }
                records.push_back(recordOf(entry, *studio.catalogue.load(entry)));
                studio.records.put(entry.id, stamp, records.back().dump());
            } catch (const std::exception& e) {
                records.push_back({{"id", entry.id}, {"file", entry.file}, {"error", e.what()}});
            }
        }
        answerJson(response, records);
    });
    server.Get(kModelPath, forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                                      httplib::Response& response) {
                   answerJson(response, modelReport(entry.path, *studio.catalogue.load(entry)));
               }));
    server.Get(std::string(kModelPath) + "/thumbnail.png",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                          httplib::Response& response) {
                   const Stamp stamp = stampOf(entry.path);
                   std::optional<std::string> png = studio.thumbnails.get(entry.id, stamp);
                   if (!png) {
                       png = thumbnailOf(studio, entry);
                       studio.thumbnails.put(entry.id, stamp, *png);
                   }
                   response.set_content(*png, "image/png");
               }));
    server.Get(std::string(kModelPath) + "/model.glb",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request& request,
                                          httplib::Response& response) {
                   response.set_content(glbOf(studio, entry, request), "model/gltf-binary");
               }));
}

}  // namespace tool::studio
