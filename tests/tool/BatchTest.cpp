#include "support/Bytes.h"
#include "support/TempDir.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <set>
#include <sstream>

using namespace tooltest;
using nlohmann::json;

namespace {

namespace stdfs = std::filesystem;

// A compiled scenery file of one mdl section holding `models`, each under a GUID that ends in
// `tag` and its number.
std::string compiled(const std::vector<std::string>& models, int tag) {
    using testbytes::le32;
    const int64_t table = 56 + 20 + 16;
    std::string entries, data;
    int64_t offset = 24 * static_cast<int64_t>(models.size());
    for (std::size_t i = 0; i < models.size(); ++i) {
        entries += std::string(14, '\x11') + static_cast<char>(tag) + static_cast<char>(i + 1) +
                   le32(offset) + le32(std::ssize(models[i]));
        data += models[i];
        offset += std::ssize(models[i]);
    }
    return testbytes::bytes({1, 2}) + std::string(18, '\0') + le32(1) + std::string(32, '\0') +
           le32(43) + le32(0) + le32(1) + le32(76) + le32(16) + le32(0) + le32(std::ssize(models)) +
           le32(table) + le32(std::ssize(entries + data)) + entries + data;
}

// The summary a batch gives on standard error among its other lines, or null.
json summaryOf(const std::string& err) {
    std::istringstream in(err);
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with('{') && json::parse(line).contains("summary"))
            return json::parse(line)["summary"];
    }
    return nullptr;
}

class Batch : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"building.mdl", "lightpad.mdl", "tree.mdl"})
            samples_.push_back(readFile(std::string(VELMORA_SAMPLES_DIR) + "/" + name));
    }
    // `files` compiled files of 1 to 5 models in nested folders under `root`; gives the models
    // made, by file.
    std::map<std::string, int> makeTree(const std::string& root, int files) {
        std::map<std::string, int> made;
        for (int f = 0; f < files; ++f) {
            std::vector<std::string> models;
            for (int m = 0; m <= f % 5; ++m)
                models.push_back(samples_[static_cast<std::size_t>((f + m) % 3)]);
            const std::string folder =
                root + "/area" + std::to_string(f % 7) + "/tile" + std::to_string(f % 3);
            stdfs::create_directories(folder);
            const std::string path =
                folder + "/scenery" + std::to_string(f) + (f % 4 == 0 ? ".BGL" : ".bgl");
            writeFile(path, compiled(models, f % 250));
            made[path] = static_cast<int>(models.size());
        }
        return made;
    }

    TempDir dir;
    std::vector<std::string> samples_;
};

}  // namespace

TEST_F(Batch, ScansATreeInTheSameOrderWhateverTheJobsAndReportsEveryDamagedFile) {
    const std::string root = dir.file("scenery");
    std::map<std::string, int> expected = makeTree(root, 240);
    // Damaged files among them: cut short, not compiled scenery, a model that is no model.
    writeFile(root + "/area1/cut.bgl", compiled({samples_[0]}, 1).substr(0, 120));
    writeFile(root + "/area2/tile1/notes.bgl", "not a compiled file");
    writeFile(root + "/area3/wrong.bgl", compiled({std::string("RIFF\x08\0\0\0MDL8junk", 16)}, 2));
    writeFile(root + "/area3/readme.txt", "passed over");

    const ToolRun one = runTool("scan " + q(root) + " --json --jobs 1");
    const ToolRun four = runTool("scan " + q(root) + " --json --jobs 4");
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(four.status, 1);
    const std::vector<json> a = jsonLines(one.out), b = jsonLines(four.out);
    EXPECT_EQ(a, b) << "the same lines in the same order";
    const json summary = summaryOf(one.err);
    EXPECT_EQ(summary["files"], 243);
    EXPECT_EQ(summary["failures"], 3);

    std::map<std::string, int> listed;
    std::vector<std::string> failed;
    std::set<std::string> guids;
    for (const json& line : a) {
        if (line.contains("failure")) {
            failed.push_back(stdfs::path(line["failure"]["file"].get<std::string>()).filename());
            EXPECT_FALSE(line["failure"]["message"].get<std::string>().empty());
            continue;
        }
        EXPECT_EQ(line["model"].get<int>(), ++listed[line["file"]]) << "each model once, in order";
        guids.insert(line["guid"]);
        EXPECT_EQ(line["vertices"].is_number() && line["guard"].is_string(), true) << line;
    }
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(summary["models"], 720);
    EXPECT_GT(guids.size(), 240u);
    EXPECT_EQ(failed, (std::vector<std::string>{"cut.bgl", "notes.bgl", "wrong.bgl"}));
    // The failures again at the end, as a table on standard error, with their errors.
    EXPECT_NE(four.err.find("3 of 243 file(s) failed"), std::string::npos) << four.err;
    // Where the model's bytes say so, in the compiled file.
    EXPECT_NE(four.err.find("wrong.bgl: byte 124: model 1 of the model table of subsection 1 of "
                            "section 1: its form is \"MDL8\""),
              std::string::npos)
        << four.err;
    EXPECT_EQ(four.err.find('\r'), std::string::npos) << "no progress when it isn't a terminal";

    // Without the damaged files every file passes; with --fail-fast the first failure stops it.
    const ToolRun good =
        runTool("scan " + q(root + "/area0") + " " + q(root + "/area4") + " --json");
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(runTool("scan " + q(root) + " --jobs 1 --fail-fast").status, 1);

    // Extracts keep the folders, a folder a compiled file; a terminal sees the progress.
    const ToolRun extract =
        runTool("scan " + q(root + "/area0") + " --extract " + q(dir.file("out")) + " --jobs 2");
    EXPECT_EQ(extract.status, 0) << extract.err;
    EXPECT_TRUE(stdfs::exists(dir.file("out/tile0/scenery0/model_001.mdl")));
    EXPECT_EQ(readFile(dir.file("out/tile0/scenery0/model_001.mdl")), samples_[0]);
    // A pseudo-terminal from script(1): the progress line is there, updated in place.
    const std::string line = "script -qec \"LSAN_OPTIONS=suppressions=" VELMORA_TOOL_TEST_DIR
                             "/lsan-suppressions.txt " VELMORA_TOOL " scan '" +
                             root + "/area5'\" /dev/null";
    FILE* pipe = popen(line.c_str(), "r");
    ToolRun terminal;
    char buffer[4096];
    for (std::size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        terminal.out.append(buffer, got);
    pclose(pipe);
    EXPECT_NE(terminal.out.find("\r"), std::string::npos) << terminal.out;
    EXPECT_NE(terminal.out.find(" files, "), std::string::npos) << terminal.out;
}

TEST_F(Batch, OneInputGivesTheRecordsOfManyAndTheSummaryStaysOffStandardOutput) {
    const std::string bgl = q(VELMORA_SAMPLES_DIR "/scenery.bgl");
    const std::string building = q(VELMORA_SAMPLES_DIR "/building.mdl");
    const std::string pairs[][2] = {
        {"scan --json " + bgl, "scan --json " + bgl + " " + bgl},
        {"info --json " + building, "info --json " + building + " " + q(VELMORA_SAMPLES_DIR)}};
    for (const auto& [one, many] : pairs) {
        SCOPED_TRACE(one);
        const ToolRun alone = runTool(one), batch = runTool(many);
        ASSERT_EQ(alone.status, 0) << alone.err;
        ASSERT_EQ(batch.status, 0) << batch.err;
        const std::vector<json> a = jsonLines(alone.out), b = jsonLines(batch.out);
        ASSERT_FALSE(a.empty());
        ASSERT_GT(b.size(), a.size());
        // The same file's records are the same, keys and all, whatever else was given.
        EXPECT_EQ(a, std::vector<json>(b.begin(), b.begin() + std::ssize(a)));
        EXPECT_EQ(a[0]["format"], 3);
        for (const json& line : b)
            EXPECT_TRUE(line.contains("file") && !line.contains("summary")) << line;
        EXPECT_TRUE(summaryOf(alone.err).is_null()) << alone.err;
        EXPECT_EQ(summaryOf(batch.err)["failures"], 0) << batch.err;
    }
    EXPECT_EQ(jsonLines(runTool("scan --json " + bgl).out).size(), 3u);

    // A file that fails alone gives its failure line in place, as in a batch.
    writeFile(dir.file("cut.mdl"), samples_[0].substr(0, 30));
    const ToolRun cut = runTool("info --json " + q(dir.file("cut.mdl")));
    EXPECT_EQ(cut.status, 1);
    const std::vector<json> failed = jsonLines(cut.out);
    ASSERT_EQ(failed.size(), 1u) << cut.out;
    EXPECT_EQ(failed[0]["failure"]["file"], dir.file("cut.mdl"));
    EXPECT_EQ(failed[0]["failure"]["section"], "MDLH") << "the library's error, with its place";
    EXPECT_EQ(failed[0]["failure"]["source"], "Velmora");
    EXPECT_NE(cut.err.find("cut.mdl: section \"MDLH\""), std::string::npos) << cut.err;
    // A stream on standard output would mix with the lines.
    EXPECT_EQ(runTool("export-asm --json " + building + " -o -").status, 2);
}

TEST_F(Batch, MemoryHoldsTheFilesInFlightNotTheWholeTree) {
    // One large file among many small ones: what is held at once follows the jobs, not the
    // number of files.
    const std::string root = dir.file("tree");
    makeTree(root, 200);
    std::vector<std::string> many(120, samples_[0]);
    writeFile(root + "/large.bgl", compiled(many, 3));
    const auto peak = [&](const std::string& args) {
        const ToolRun run = runTool("scan " + args + " --json");
        EXPECT_EQ(run.status, 0) << run.err;
        return summaryOf(run.err)["peakHeapBytes"].get<double>();
    };
    const double large = peak(q(root + "/large.bgl") + " " + q(root + "/area0") + " --jobs 1");
    const double all = peak(q(root) + " --jobs 1");
    const double allTwo = peak(q(root) + " --jobs 2");
    EXPECT_LT(all, large * 1.5) << "200 more files hold little more";
    EXPECT_LT(allTwo, large * 2.5) << "two jobs hold about two files";
}
