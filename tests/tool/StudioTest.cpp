#include "support/TempDir.h"
#include "tool/PadModel.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#ifdef VELMORA_HAS_STUDIO

#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace tooltest;
using nlohmann::json;

// `velmora studio --no-browser --port 0 samples` run in `folder`, its address read from the
// first line it prints.
class StudioProcess {
  public:
    explicit StudioProcess(const std::string& folder) {
        int pipeEnds[2];
        if (pipe(pipeEnds) != 0) return;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(pipeEnds[1], 1);
            close(pipeEnds[0]);
            close(pipeEnds[1]);
            if (chdir(folder.c_str()) != 0) _exit(127);
            setenv("LSAN_OPTIONS", "suppressions=" VELMORA_TOOL_TEST_DIR "/lsan-suppressions.txt",
                   1);
            execl(VELMORA_TOOL, VELMORA_TOOL, "studio", "samples", "--no-browser", "--port", "0",
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        close(pipeEnds[1]);
        output_ = fdopen(pipeEnds[0], "r");
        char line[256] = {};
        if (!output_ || !std::fgets(line, sizeof line, output_)) return;
        const std::string url = line;
        const auto colon = url.rfind(':');
        const auto equals = url.find("token=");
        if (colon == std::string::npos || equals == std::string::npos) return;
        port = std::atoi(url.c_str() + colon + 1);
        token = url.substr(equals + 6, 32);
    }
    ~StudioProcess() { stop(); }

    // Stops it with SIGTERM; its exit status, or -1 when it didn't exit by itself.
    int stop() {
        if (pid_ <= 0) return status_;
        kill(pid_, SIGTERM);
        int raw = 0;
        waitpid(pid_, &raw, 0);
        pid_ = 0;
        if (output_) std::fclose(output_);
        output_ = nullptr;
        status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        return status_;
    }

    int port = 0;
    std::string token;

  private:
    pid_t pid_ = 0;
    FILE* output_ = nullptr;
    int status_ = -1;
};

class StudioTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(makeSamples(dir.file("samples")));
        studio = std::make_unique<StudioProcess>(dir.path());
        ASSERT_GT(studio->port, 0);
        ASSERT_EQ(studio->token.size(), 32u);
    }

    // A client that gives the token; `headers` add to or replace it.
    std::unique_ptr<httplib::Client> client(const httplib::Headers& headers = {}) const {
        auto made = std::make_unique<httplib::Client>("127.0.0.1", studio->port);
        httplib::Headers all = {{"Authorization", "Bearer " + studio->token}};
        for (const auto& [name, value] : headers) {
            all.erase(name);
            all.emplace(name, value);
        }
        made->set_default_headers(all);
        return made;
    }
    std::map<std::string, json> modelsByName() const {
        const auto answer = client()->Get("/api/models");
        std::map<std::string, json> byName;
        if (!answer || answer->status != 200) return byName;
        for (const json& record : json::parse(answer->body))
            byName[record["file"].get<std::string>() + "#" +
                   std::to_string(record["model"].get<int>())] = record;
        return byName;
    }
    std::string idOf(const std::string& name) const { return modelsByName()[name]["id"]; }
    httplib::Result edit(const std::string& id, const json& body) const {
        return client()->Post("/api/models/" + id + "/edit", body.dump(), "application/json");
    }
    json info(const std::string& model) const {
        const ToolRun run = runTool("info --json " + q(model), dir.path());
        EXPECT_EQ(run.status, 0) << run.err;
        return json::parse(run.out);
    }

    TempDir dir;
    std::unique_ptr<StudioProcess> studio;
};

int statusOf(const httplib::Result& result) {
    return result ? result->status : -1;
}

}  // namespace

TEST_F(StudioTest, OnlyTheTokenHoldersOwnPagesGetIn) {
    EXPECT_EQ(statusOf(client({{"Authorization", ""}})->Get("/api/models")), 401);
    EXPECT_EQ(
        statusOf(client({{"Authorization", "Bearer " + std::string(32, '0')}})->Get("/api/models")),
        401);
    EXPECT_EQ(statusOf(client()->Get("/api/models")), 200);
    EXPECT_EQ(statusOf(client({{"Authorization", ""}})->Get("/?token=" + std::string(32, '1'))),
              401);

    // The page asked for with the token sets the cookie that lets the page's requests in.
    const auto page = client({{"Authorization", ""}})->Get("/?token=" + studio->token);
    ASSERT_EQ(statusOf(page), 200);
    const std::string cookie = page->get_header_value("Set-Cookie");
    EXPECT_NE(cookie.find("HttpOnly"), std::string::npos);
    EXPECT_NE(cookie.find("SameSite=Strict"), std::string::npos);
    const auto viaCookie =
        client({{"Authorization", ""}, {"Cookie", cookie.substr(0, cookie.find(';'))}})
            ->Get("/api/models");
    EXPECT_EQ(statusOf(viaCookie), 200);

    const std::string port = std::to_string(studio->port);
    EXPECT_EQ(statusOf(client({{"Host", "localhost:" + port}})->Get("/api/models")), 200);
    EXPECT_EQ(statusOf(client({{"Host", "attacker.example:" + port}})->Get("/api/models")), 403);
    EXPECT_EQ(statusOf(client()->Get("/api/models/000000000000")), 404);

    // Another site's page can't change a model, however it is asked.
    const std::string model = dir.file("samples/building.mdl");
    const std::string before = readFile(model);
    const std::string id = idOf("building.mdl#1");
    const json edit = {{"add-kill-shadow", true}, {"force", true}};
    EXPECT_EQ(statusOf(client({{"Origin", "http://attacker.example"}})
                           ->Post("/api/models/" + id + "/edit", edit.dump(), "application/json")),
              403);
    EXPECT_EQ(readFile(model), before);
    EXPECT_EQ(statusOf(client()->Post("/api/models/" + id + "/edit", std::string(2 << 20, ' '),
                                      "application/json")),
              413);
    EXPECT_EQ(readFile(model), before);
}

TEST_F(StudioTest, ListsTheModelsOfFilesAndCompiledFilesWithTheirGuards) {
    const std::map<std::string, json> models = modelsByName();
    ASSERT_EQ(models.size(), 6u);
    for (const std::string name : {"building.mdl", "lightpad.mdl", "tree.mdl"}) {
        const json& record = models.at(name + "#1");
        EXPECT_TRUE(record["editable"]);
        EXPECT_EQ(record["folder"], "samples");
        const json report = info(dir.file("samples/" + name));
        EXPECT_EQ(record["guard"], report["guard"]["formula"]) << name;
        EXPECT_EQ(record["vertices"], report["counts"]["vertices"]) << name;
        EXPECT_EQ(record["lights"], report["lights"].size()) << name;
    }
    const ToolRun scan = runTool("scan --json samples/scenery.bgl", dir.path());
    ASSERT_EQ(scan.status, 0) << scan.err;
    for (const json& line : jsonLines(scan.out)) {
        const json& record = models.at("scenery.bgl#" + std::to_string(line["model"].get<int>()));
        EXPECT_FALSE(record["editable"]);
        EXPECT_EQ(record["guard"], line["guard"]);
        EXPECT_EQ(record["commands"], line["commands"]);
    }
    EXPECT_EQ(jsonLines(scan.out).size(), 3u);
}

TEST_F(StudioTest, ServesAModelsInfoPictureAndGLTF) {
    const std::string id = idOf("tree.mdl#1");
    const auto answer = client()->Get("/api/models/" + id);
    ASSERT_EQ(statusOf(answer), 200);
    EXPECT_EQ(json::parse(answer->body), info("samples/tree.mdl"));

#ifdef VELMORA_HAS_PREVIEW
    // Every model's picture at once, drawn on as many threads, then one again from the cache.
    std::vector<std::string> ids;
    for (const auto& [name, record] : modelsByName())
        ids.push_back(record["id"]);
    ids.push_back(id);
    std::vector<std::string> pictures(ids.size());
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i + 1 < ids.size(); ++i) {
        threads.emplace_back([&, i] {
            const auto png = client()->Get("/api/models/" + ids[i] + "/thumbnail.png");
            if (statusOf(png) == 200) pictures[i] = png->body;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const auto again = client()->Get("/api/models/" + id + "/thumbnail.png");
    ASSERT_EQ(statusOf(again), 200);
    pictures.back() = again->body;
    for (const std::string& png : pictures) {
        ASSERT_GT(png.size(), 24u);
        EXPECT_EQ(png.substr(1, 3), "PNG");
        // The width and height of its IHDR: 256 by 192.
        EXPECT_EQ(png.substr(16, 8), std::string("\0\0\1\0\0\0\0\xc0", 8));
    }
#endif
    const auto glb = client()->Get("/api/models/" + id + "/model.glb?day=200&night=1");
    ASSERT_EQ(statusOf(glb), 200);
    EXPECT_EQ(glb->body.substr(0, 4), "glTF");
    EXPECT_EQ(statusOf(client()->Get("/api/models/" + id + "/model.glb?day=400")), 400);
    EXPECT_EQ(statusOf(client()->Get("/api/models/" + id + "/model.glb?set=798")), 400);
}

TEST_F(StudioTest, GivesTheListingTheScenarioThatShowsAModelAndItsReversedTriangles) {
    // A pad behind the mask test (250 & 1), wound against its normals.
    writeFile(dir.file("samples/pad.mdl"),
              padModel({{velmora::IFMSK, {jw(2), w(250), w(1)}}}, true));
    studio = std::make_unique<StudioProcess>(dir.path());
    const std::string id = idOf("pad.mdl#1");
    const auto get = [&](const std::string& what) {
        const auto answer = client()->Get("/api/models/" + id + "/" + what);
        return statusOf(answer) == 200 ? json::parse(answer->body) : json();
    };

    EXPECT_EQ(get("commands")["commands"].size(), 8u);
    const json scenario = get("scenario");
    EXPECT_EQ(scenario["drawnWith"], json({{"250", 1}}));
    EXPECT_EQ(scenario["variables"], json::parse(R"([{"variable": 798, "value": 5},
                                                     {"variable": 250, "value": 1}])"));
    // In glTF's axes: the model's z turned round.
    const json reversed = get("reversed?set=250%3D1")["triangles"];
    ASSERT_EQ(reversed.size(), 2u);
    EXPECT_EQ(reversed[0]["command"], 6);
    EXPECT_EQ(reversed[0]["corners"], json::parse("[[-5, 0, 5], [5, 0, -5], [5, 0, 5]]"));
    EXPECT_TRUE(get("reversed?set=250%3D0")["triangles"].empty());

    EXPECT_EQ(statusOf(edit(id, {{"fix-winding", true}})), 200);
    EXPECT_TRUE(get("reversed?set=250%3D1")["triangles"].empty());
}

TEST_F(StudioTest, AnEditIsPreviewedUndoneAndSavedInPlaceOrUnderANewName) {
    const std::string model = dir.file("samples/building.mdl");
    const std::string id = idOf("building.mdl#1");
    const std::string before = readFile(model);
    const auto post = [&](const std::string& what, const json& body) {
        return client()->Post("/api/models/" + id + "/" + what, body.dump(), "application/json");
    };
    const auto formulaOf = [](const httplib::Result& answer) {
        return answer ? json::parse(answer->body)["guard"]["formula"].get<std::string>() : "";
    };

    // Previewed edits pile up unsaved; the studio shows them, the file stays as it was.
    json preview = {{"condition", {"between 500 1 2"}}, {"save", false}};
    EXPECT_EQ(formulaOf(post("edit", preview)), "798 in 2..5 and 500 in 1..2");
    preview["condition"] = {"mask 240 16"};
    EXPECT_EQ(formulaOf(post("edit", preview)), "798 in 2..5 and 500 in 1..2 and (240 & 16)");
    EXPECT_EQ(readFile(model), before);
    EXPECT_EQ(modelsByName()["building.mdl#1"]["unsaved"], 2);
    EXPECT_EQ(statusOf(client()->Get("/api/models/" + id + "/model.glb?season=winter")), 200);

    EXPECT_EQ(formulaOf(post("undo", json::object())), "798 in 2..5 and 500 in 1..2");
    EXPECT_EQ(formulaOf(post("save", json::object())), "798 in 2..5 and 500 in 1..2");
    EXPECT_EQ(info(model)["guard"]["formula"], "798 in 2..5 and 500 in 1..2");
    EXPECT_EQ(statusOf(post("undo", json::object())), 409);

    // An edit saved at once, as scripts make them.
    const auto saved =
        post("edit", {{"condition", {"between 798 3 5"}}, {"clear-conditions", true}});
    EXPECT_EQ(formulaOf(saved), "798 in 3..5");
    EXPECT_EQ(info(model)["guard"]["formula"], "798 in 3..5");

    // Save as: a plain new name beside the file, which joins the list.
    EXPECT_EQ(statusOf(post("edit", {{"add-kill-shadow", true}, {"save", false}})), 200);
    for (const char* name : {"../out.mdl", "sub/out.mdl", "out.txt", ".mdl", ""})
        EXPECT_EQ(statusOf(post("save", {{"as", name}})), 400) << name;
    EXPECT_EQ(statusOf(post("save", {{"as", "tree.mdl"}})), 409);
    const auto copy = post("save", {{"as", "copy.mdl"}});
    ASSERT_EQ(statusOf(copy), 200) << copy->body;
    EXPECT_EQ(json::parse(copy->body)["id"], idOf("copy.mdl#1"));
    EXPECT_TRUE(info(dir.file("samples/copy.mdl"))["killShadow"]);
    EXPECT_FALSE(info(model)["killShadow"]);
    EXPECT_EQ(modelsByName()["building.mdl#1"]["unsaved"], 0);
}

TEST_F(StudioTest, ARefusedEditSaysWhyAndIsForcedOnRequest) {
    const std::string model = dir.file("samples/building.mdl");
    const std::string id = idOf("building.mdl#1");
    const std::string before = readFile(model);
    json never = {{"condition", {"between 798 1 2", "between 798 4 5"}}, {"combine", "and"}};
    const auto refused = edit(id, never);
    ASSERT_EQ(statusOf(refused), 409);
    const json why = json::parse(refused->body)["refused"];
    EXPECT_FALSE(why["reasons"].empty());
    EXPECT_TRUE(why["whenForced"].is_string());
    EXPECT_NE(why["message"].get<std::string>().find("--force"), std::string::npos);
    EXPECT_EQ(readFile(model), before);

    never["force"] = true;
    EXPECT_EQ(statusOf(edit(id, never)), 200);
    EXPECT_NE(readFile(model), before);
}

TEST_F(StudioTest, BadEditsAreRefusedBeforeAnythingIsWritten) {
    const std::string model = dir.file("samples/building.mdl");
    const std::string id = idOf("building.mdl#1");
    const std::string before = readFile(model);
    const std::vector<json> bad = {
        {{"condition", "between 798 x 5"}}, {{"no-such-option", true}}, {{"force", "yes"}},
        {{"rotate", "sideways"}},           {{"condition", {1, 2}}},    json::array()};
    for (const json& body : bad)
        EXPECT_EQ(statusOf(edit(id, body)), 400) << body;
    EXPECT_EQ(statusOf(client()->Post("/api/models/" + id + "/edit", "{", "application/json")),
              400);
    EXPECT_EQ(readFile(model), before);

    // A model inside a compiled file can be tried, but not saved in place.
    const std::string inside = idOf("scenery.bgl#2");
    EXPECT_EQ(statusOf(edit(inside, {{"set-isft", "studio"}})), 409);
    EXPECT_EQ(statusOf(edit(inside, {{"set-isft", "studio"}, {"save", false}})), 200);
}

TEST_F(StudioTest, EditsOfOneModelFollowEachOtherAndTheStudioStopsCleanly) {
    const std::string model = dir.file("samples/building.mdl");
    const std::string id = idOf("building.mdl#1");
    int first = 0;
    int second = 0;
    std::thread one([&] { first = statusOf(edit(id, {{"set-isft", "studio edit"}})); });
    std::thread two([&] {
        second = statusOf(edit(id, {{"condition", "between 798 3 5"}, {"combine", "and"}}));
    });
    one.join();
    two.join();
    EXPECT_EQ(first, 200);
    EXPECT_EQ(second, 200);
    // Both edits are in the file: neither was made on a model read before the other was saved.
    const json report = info(model);
    EXPECT_NE(report["isft"].dump().find("studio edit"), std::string::npos) << report["isft"];
    EXPECT_NE(report["guard"]["formula"].get<std::string>().find("798 in 3..5"), std::string::npos);
    EXPECT_EQ(studio->stop(), 0);
}

#endif
