// The files that the service makes and removes.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

const char* const kDoomed[] = {"/x.pls", "/My.PLS.bak", "/home/root/iap2db/Phone.db",
                               "/home/root/iap2db/Phone.db-journal"};
const char* const kKept[] = {
    "/keep.txt",        "/xpls", "/home/root/x.pls", "/home/root/Phone.db", "/home/root/iap2db/notes.txt",
    "/folder.pls/x.pls"};

void PlantFiles() {
    fs::create_directories("/folder.pls");
    fs::create_directories("/home/root/iap2db");
    for (const char* path : kDoomed)
        WriteFile(path, "x");
    for (const char* path : kKept)
        WriteFile(path, "x");
}

void ExpectCleanedUp() {
    for (const char* path : kDoomed)
        EXPECT_FALSE(fs::exists(path)) << path;
    for (const char* path : kKept)
        EXPECT_TRUE(fs::exists(path)) << path;
}

TEST(FilesTest, PlaylistsAndDatabasesGoWithTheDeviceAndWithTheService) {
    Scene scene;
    EXPECT_TRUE(fs::is_directory("/home/root/iap2db"));
    const std::uint32_t handle = scene.PlugPlayer("iap");
    PlantFiles();
    scene.control.Unplug(handle);
    scene.WaitForConnection(false);
    ExpectCleanedUp();

    PlantFiles();
    EXPECT_EQ(scene.Stop(), 0);
    ExpectCleanedUp();
    EXPECT_TRUE(scene.log.Contains("iPod - Clearing playlist files! \n"));
    EXPECT_TRUE(scene.log.Contains("iPod - Clearing database files! \n"));
}

}  // namespace
}  // namespace EndToEnd
