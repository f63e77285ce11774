// The image library, which is loaded when there is a picture for it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStaysAsItIs = "Large pictures stay as they are. ";

bool HasMapped(const Scene& scene, const char* library) {
    return ReadFile(scene.service.Proc() + "/maps").find(library) != std::string::npos;
}

void PlayWithCover(Scene& scene, const std::string& variant) {
    scene.PlugPlayer();
    scene.Do("{'command':'artwork','variant':'" + variant + "'}");
    scene.client.Result("playFirst");
}

TEST(PicturesTest, ImageLibraryComesWithTheFirstLargePicture) {
    Scene scene;
    PlayWithCover(scene, "limit");
    EXPECT_EQ(scene.client.Result("getCurrentAlbumArt")["imageHeight"], 320);
    scene.Do("{'command':'artwork','variant':'not-jpeg'}");
    EXPECT_EQ(scene.client.Call("getCurrentAlbumArt")["error"]["code"], -32603);
    EXPECT_FALSE(HasMapped(scene, "vips"));
    EXPECT_FALSE(HasMapped(scene, "pictures.so"));

    scene.Do("{'command':'artwork','variant':'huge'}");
    EXPECT_EQ(scene.client.Result("getCurrentAlbumArt")["imageHeight"], 100);
    EXPECT_TRUE(HasMapped(scene, "libvips.so"));
    EXPECT_TRUE(HasMapped(scene, kPictureModule.c_str()));
    EXPECT_FALSE(HasMapped(scene, "vips-modules")) << "decoders of other formats";
    EXPECT_EQ(scene.service.Stop(), 0);
}

// Wherever the program stands: neither the working directory nor the environment has a say.
TEST(PicturesTest, ModuleIsTheOneBesideTheProgram) {
    const std::string program = "/tmp/unit/bin/ipod-service";
    const std::string module = "/tmp/unit/lib/ipod-service/pictures.so";
    for (const char* folder : {"/tmp/unit/bin", "/tmp/unit/lib/ipod-service", "/tmp/elsewhere"}) {
        fs::create_directories(folder);
    }
    fs::copy_file(kServiceProgram, program);
    for (const char* folder : {"/", "/tmp/unit/", "/tmp/elsewhere/"}) {
        fs::copy_file(kPictureModule, std::string(folder) + "pictures.so");
    }
    setenv("LD_LIBRARY_PATH", "/tmp/elsewhere", 1);
    Scene scene({.program = program});
    unsetenv("LD_LIBRARY_PATH");
    PlayWithCover(scene, "huge");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(scene.client.Call("getCurrentAlbumArt")["error"]["code"], -32603);
    }
    scene.client.Result("getCurrentAlbumArtDelayed");
    EXPECT_EQ(scene.client.Notification("ipodAlbumArtNotification")["imageHeight"], 2000)
        << "as it was delivered";
    const std::string log = ReadFile(kLogPath);
    const std::size_t told = log.find(kStaysAsItIs + module);
    ASSERT_NE(told, std::string::npos) << log;
    EXPECT_EQ(log.find(kStaysAsItIs, told + 1), std::string::npos) << "once";
    EXPECT_EQ(CountEntries(log, "WARN ", "Failed Jpeg Decode\n"), 1);

    fs::copy_file(kPictureModule, module);
    EXPECT_EQ(scene.client.Result("getCurrentAlbumArt")["imageHeight"], 100);
    EXPECT_TRUE(HasMapped(scene, module.c_str()));
    EXPECT_EQ(scene.service.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
