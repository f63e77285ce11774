// A device manager that lies and fails.

#include <gtest/gtest.h>

#include "DeviceSimulator/FunctionId.h"
#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

constexpr std::uint32_t kBusy = 94;
constexpr std::uint32_t kExited = 1;

struct MethodCall {
    const char* method;
    const char* params;
};

constexpr MethodCall kAllButExit[] = {
    {"start", "null"},
    {"isIpodConnected", "null"},
    {"setRepeatMode", "{'mode':'all'}"},
    {"getRepeatMode", "null"},
    {"enableShuffle", "{'enable':true}"},
    {"isShuffleEnabled", "null"},
    {"getCurrentTrackInfo", "null"},
    {"getCurrentAlbumArt", "null"},
    {"getCurrentAlbumArtDelayed", "null"},
    {"getHasPlayableData", "null"},
    {"playFirst", "null"},
    {"play", "null"},
    {"playPause", "null"},
    {"pause", "null"},
    {"next", "null"},
    {"previous", "null"},
    {"fastForwardSong", "{'enable':true}"},
    {"rewindSong", "{'enable':false}"},
    {"isTrackPaused", "null"},
    {"getBrowseList", "null"},
    {"getSongList", "null"},
    {"selectBrowseBack", "null"},
    {"selectBrowseItem", "{'itemId':4}"},
    {"filterBrowseList", "{'searchText':'a'}"},
    {"getBrowseList", "{'startIndex':-3,'itemCount':5}"},
    {"getNextAlphaNumericIndex", "{'startIndex':-3}"},
    {"getPrevAlphaNumericIndex", "{'startIndex':2147483647}"},
    {"selectBrowseItem", "{'itemId':0}"},
    {"getBrowseList", "{'startIndex':2147483647,'itemCount':2147483647}"},
    {"resetBrowseList", "null"},
    {"stop", "null"},
};

void CallAll(RpcClient& client) {
    for (const MethodCall& call : kAllButExit)
        EXPECT_FALSE(client.Call(call.method, Quoted(call.params)).isMember("error")) << call.method;
}

/// While `function` fails, a player goes, another comes, and every method is called.
void ExpectSurvival(Scene& scene, std::uint32_t& handle, const std::string& function, std::uint32_t code) {
    // The service waits for a busy player for as long as it is busy.
    scene.control.Fail(function, code, code == kBusy ? 1 : SimulatorControl::kForEver);
    scene.control.Unplug(handle);
    // One that has a database to build, or one that can be browsed at once.
    handle = scene.control.Plug(code == 0 ? "iap2" : "iap");
    CallAll(scene.client);
    scene.control.ClearScripts();
    ASSERT_TRUE(scene.service.IsRunning()) << function << " answering " << code;
}

TEST(DeviceTest, EveryFunctionMayFailWithAnyCode) {
    Scene scene;
    std::uint32_t handle = scene.PlugPlayer();
    for (const std::string_view function : DeviceSimulator::kFunctionNames)
        for (const std::uint32_t code : {0U, 52U, kBusy, 0x80000000U, 0xffffffffU})
            ASSERT_NO_FATAL_FAILURE(ExpectSurvival(scene, handle, std::string(function), code));
    scene.control.Unplug(handle);
    scene.WaitForConnection(false);
    scene.PlugPlayer();
    EXPECT_EQ(scene.client.Result("playFirst")["success"], true);
    EXPECT_EQ(scene.Stop(), 0);
}

TEST(DeviceTest, EveryEventMayCarryAnything) {
    const std::uint32_t words[] = {0, 1, 7, 14, 23, 26, 279, 1000, 0x7fffffff, 0xffffffff};
    const std::vector<std::vector<std::string>> texts = {{},
                                                         {"", "", ""},
                                                         {"%s%n%d", "\xef\xbf\xbd", "]["},
                                                         {std::string(1024, 'x')},
                                                         {std::string(2000, '%')}};
    Scene scene;
    scene.PlugPlayer();
    EXPECT_EQ(scene.client.Result("start"), "success");
    for (std::uint32_t id = 0; id <= 60; ++id) {
        if (id == kExited)
            continue;
        for (const std::uint32_t word : words)
            for (const auto& text : texts)
                scene.control.Event({id, word, word, word, word, word}, text);
        EXPECT_TRUE(scene.client.Result("isIpodConnected").isObject()) << id;
    }
    scene.control.Event({0xffffffff});
    CallAll(scene.client);
    EXPECT_EQ(scene.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
