#pragma once

#include "../Tool.h"

#include <httplib.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tool::studio {

struct StudioOptions {
    std::vector<std::string> folders;
    int port = 0;  // 0: a free one
    bool noBrowser = false;
    std::string textures;
    bool followLinks = false;
};

// When a file was last changed and how long it is: a cached answer about it holds while this does.
struct Stamp {
    int64_t time = 0;
    int64_t size = -1;
    bool operator==(const Stamp&) const = default;
};
Stamp stampOf(const std::string& path);

// One model the studio serves: an .mdl file, or one model of a compiled file.
struct Entry {
    std::string id;  // 12 hex digits
    std::string path;
    std::string file;    // from its folder, "/" between the parts
    std::string folder;  // as given
    int model = 1;       // position in a compiled file, from 1
    bool compiled = false;
};

// Every model of the folders, found once when the studio starts, and what the studio keeps of
// them: a lock for each file, so that edits of one file follow each other.
class Catalogue {
  public:
    Catalogue(const std::vector<std::string>& folders, bool followLinks);

    const std::vector<Entry>& entries() const { return entries_; }
    const Entry* find(const std::string& id) const;
    // Reads the entry's model from its file.
    std::shared_ptr<velmora::MDLObject> load(const Entry& entry) const;
    std::mutex& lockOf(const Entry& entry);

  private:
    std::vector<Entry> entries_;
    std::map<std::string, std::unique_ptr<std::mutex>> locks_;
};

// Answers kept for as long as the file they are about is unchanged.
class AnswerCache {
  public:
    std::optional<std::string> get(const std::string& key, const Stamp& stamp);
    void put(const std::string& key, const Stamp& stamp, std::string answer);
    // Drops the answer, for a file changed within the stamp's resolution.
    void forget(const std::string& key);

  private:
    std::mutex mutex_;
    std::map<std::string, std::pair<Stamp, std::string>> answers_;
};

// A random token of 32 hex digits from the system's random source.
std::string newToken();

// Refuses, before a request is read further, one that is not for this server (its Host), that
// comes from another site's page (its Origin) or that lacks the token; sets the token's cookie
// when the page is asked for with the token in its address.
void guardRequests(httplib::Server& server, int port, const std::string& token);

// Where a model's textures are found: --textures, the folder beside it, or a "texture" or
// "textures" folder next to it, whichever holds the most of its textures.
std::string textureFolderFor(const velmora::MDLObject& model, const std::string& path,
                             const std::string& textures);

// The routes: the model list, a model's info, thumbnail and glTF, its edit, and the page.
struct Studio {
    Catalogue catalogue;
    std::string textures;
    AnswerCache thumbnails;
    AnswerCache records;  // of the model list, as JSON text
};
void addModelRoutes(httplib::Server& server, Studio& studio);
void addEditRoute(httplib::Server& server, Studio& studio);
void addPage(httplib::Server& server);

// Answers with JSON; with {"error": message} for a failure.
void answerJson(httplib::Response& response, const json& body, int status = 200);
void answerError(httplib::Response& response, int status, const std::string& message);
// Runs `answer` for the model the address names; unknown ids are 404, the tool's failures 400
// for bad values and 500 otherwise.
httplib::Server::Handler forModel(
    Studio& studio,
    std::function<void(const Entry&, const httplib::Request&, httplib::Response&)> answer);

}  // namespace tool::studio
