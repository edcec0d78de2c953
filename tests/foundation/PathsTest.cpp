#include "foundation/FileSystem.h"
#include "foundation/GeneralFunctions.h"

#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace velmora;

TEST(FolderOfPath, CutsAtTheLastSeparatorOfEitherKind) {
    EXPECT_EQ(folderOfPath("C:\\scenery\\model.mdl"), "C:\\scenery");
    EXPECT_EQ(folderOfPath("/home/a/model.flt"), "/home/a");
    EXPECT_EQ(folderOfPath("a/b\\c"), "a/b");
    EXPECT_EQ(folderOfPath("model.mdl"), "model.mdl");
    EXPECT_EQ(folderOfPath(""), "");
    EXPECT_EQ(folderOfPath("folder\\"), "folder");
}

TEST(FileSystem, JoinInsideNeverLeavesTheFolder) {
    EXPECT_EQ(fs::joinInside("/db", "wall.bmp"), "/db/wall.bmp");
    EXPECT_EQ(fs::joinInside("/db", "..\\..\\etc\\passwd"), "/db/passwd");
    EXPECT_EQ(fs::joinInside("/db", "../x/y.bmp"), "/db/y.bmp");
    EXPECT_EQ(fs::joinInside("/db", ".."), "/db/");
}

TEST(FileSystem, OperationsReportThePlatformErrors) {
    TempDir dir;
    const std::string a = dir.file("a.bin");
    writeFile(a, "12345");
    EXPECT_TRUE(fs::fileExists(a));
    EXPECT_FALSE(fs::fileExists(dir.path())) << "a folder is not a file";
    EXPECT_EQ(fs::fileSize(a), 5);
    fs::copyFile(a, dir.file("b.bin"), true);
    EXPECT_EQ(readFile(dir.file("b.bin")), "12345");

    std::filesystem::permissions(a, std::filesystem::perms::owner_read);
    if (getuid() != 0) {
        EXPECT_TRUE(throwsPlatform([&] { fs::deleteFile(a, false); }, 70));
    }
    fs::deleteFile(a, true);
    EXPECT_FALSE(fs::fileExists(a));
    EXPECT_TRUE(throwsPlatform([&] { fs::deleteFile(a, true); }, 53));
    EXPECT_TRUE(throwsPlatform([&] { fs::readWholeFile(a); }, 53));
}

TEST(FileSystem, ReplaceFileIsAllOrNothing) {
    TempDir dir;
    const std::string target = dir.file("model.mdl");
    writeFile(target, "old");
    fs::replaceFile(target, "new bytes");
    EXPECT_EQ(readFile(target), "new bytes");
    EXPECT_EQ(dir.listing(), "model.mdl") << "no stray file beside the target";
    EXPECT_TRUE(throwsPlatform([&] { fs::replaceFile(dir.file("none/x.mdl"), "x"); }, 76));
}
