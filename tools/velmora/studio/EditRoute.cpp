#include "../ModelReport.h"
#include "Studio.h"

namespace tool::studio {

namespace {

json refusalOf(const velmora::EditRefused& refused, const std::string& path) {
    return {{"refused",
             {{"reasons", refused.reasons()},
              {"note", refused.note()},
              {"whenForced", refused.whenForced()},
              {"message", saidOf(editRefusal(refused, path))}}}};
}

// Edits the model of `entry` as the studio shows it. Saved, it is written in place by the tool's
// output rule (beside, read back, moved into place) with its earlier unsaved edits; otherwise the
// edit joins them. Answers with the model's info.
void edit(Studio& studio, const Entry& entry, const velmora::EditRequest& request, bool save,
          httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(studio.catalogue.lockOf(entry));
    const auto model = studio.load(entry);
    std::optional<velmora::EditResult> result;
    try {
        result = velmora::editModel(*model, request);
    } catch (const velmora::EditRefused& refused) {
        return answerJson(response, refusalOf(refused, entry.path), 409);
    } catch (const velmora::Error& e) {
        return answerError(response, 400, saidOf(fromLibrary(e, entry.path)));
    }
    if (save) {
        Output(entry.path, Output::Stream::Refused)
            .write([&](const std::string& path) { model->saveMDL(path); },
                   [&](const std::string& path) { result->checkWritten(path); });
        studio.drafts.clear(entry.id);
    } else {
        studio.drafts.push(entry.id, bytesOf(*model));
    }
    studio.changed(entry);
    answerJson(response, modelReport(entry.path, *studio.load(entry)));
}

}  // namespace

void addEditRoute(httplib::Server& server, Studio& studio) {
    server.Post(R"(/api/models/([0-9a-f]{12})/edit)",
                forModel(studio, [&studio](const Entry& entry, const httplib::Request& request,
                                           httplib::Response& response) {
                    bool save = true;
                    const velmora::EditRequest edits = editRequestOfBody(request.body, save);
                    if (entry.compiled && save) {
                        return answerError(response, 409,
                                           "model " + std::to_string(entry.model) + " of " +
                                               entry.file +
                                               " is inside a compiled file and can't be saved "
                                               "in place");
                    }
                    edit(studio, entry, edits, save, response);
                }));
}

}  // namespace tool::studio
