#include <velmora/MDLObject.h>
#include <velmora/Version.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

// The names of the commands of bgltest::everyOpcode, in order.
// clang-format off
const char* const kNames[] = {
    "BGL_TAG", "VAR_BASE_32", "VAR_BASE_OVERRIDE", "MATERIAL_LIST_BEGIN", "TEXTURE_LIST_BEGIN",
    "SETWRD", "BGL_ZBIAS", "BGL_SET_MATRIX_INDIRECT", "IFIN1", "SET_MATERIAL", "IFIN2", "IFIN3",
    "IFIN_BOX_PLANE", "IFIN_INSTANCED_BOX_PLANE", "IFINBOXP", "IFMSK", "IFSIZEV", "IFSIZEH",
    "SEPARATION_PLANE", "SPRITE_VICALL", "BGL_ANIMATE", "BGL_INTERPOLATE", "DRAW_TRI_LIST_BEGIN",
    "DRAW_TRI_LIST_ITEM", "DRAW_TRI_LIST_ITEM", "BGL_LIGHT", "DRAW_LINE_LIST_BEGIN",
    "DRAW_LINE_LIST_ITEM", "DRAW_LINE_LIST_ITEM", "JUMP", "BGL_JUMP_32", "BGL_CALL_32", "BGL_CALL",
    "BGL_RETURN", "BGL_RETURN", "BGL_END"};
// clang-format on

}  // namespace

TEST(ExportASM, ListingShowsTexturesAndEveryCommandOrStopsAtOneWithoutRow) {
    const bgltest::StreamAssembler stream = bgltest::everyOpcode();
    modelbytes::Model model;
    model.textures = {"Wall.bmp", std::string(31, 'b'), std::string(32, 'd'), std::string(40, 'c')};
    model.commands = stream.bytes();
    MDLObject object;
    object.readMDLBytes(model.bytes());

    std::string expected = "; Start of texture list\r\n" + std::string("Wall.bmp") +
                           std::string(23, ' ') + " 0 \r\n" + std::string(31, 'b') + " 1 \r\n" +
                           std::string(32, 'd') + "  2 \r\n" + std::string(40, 'c') + "  3 \r\n" +
                           "\r\n; Start of BGL command list\r\n";
    // Each parameter is followed by its jump destination, 0 when it is no jump.
    for (int i = 0; i < stream.size(); ++i) {
        expected += kNames[i];
        const auto& fields = stream.ops[static_cast<std::size_t>(i)].fields;
        for (std::size_t p = 0; p < fields.size(); ++p) {
            const int destination = fields[p].target < 0 ? 0 : fields[p].target + 1;
            expected += " " + stream.text(i, p) + " JD: " + std::to_string(destination) + ",";
        }
        expected += "\r\n";
    }
    expected += "\r\n";

    TempDir dir;
    const std::string path = dir.file("model.asm");
    writeFile(path, std::string(100000, 'x'));  // an older, longer listing is replaced
    object.exportASM(path);
    // The banner in front names the version.
    const std::string listing = readFile(path);
    const std::size_t body = listing.find("; Start of texture list\r\n");
    EXPECT_NE(listing.substr(0, body).find("; Velmora DLL version " + versionString() + "\r\n"),
              std::string::npos);
    EXPECT_EQ(listing.substr(body), expected);

    // A command without a row stops the listing; what was written stays.
    MDLObject bad;
    bad.readMDLBytes(modelbytes::Model{}.bytes());
    bad.BGLCommandList()->Add()->opcode(BGL_END);
    bad.BGLCommandList()->Add()->opcode(static_cast<BGLOpcode>(5000));
    EXPECT_TRUE(throwsPlatform([&] { bad.exportASM(path); }, 9));
    EXPECT_EQ(readFile(path).substr(body),
              "; Start of texture list\r\n\r\n; Start of BGL command list\r\nBGL_END\r\n");
}
