// What every method answers while no player is there. (docs/protocol.md shows the answers with one.)

#include <gtest/gtest.h>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

constexpr const char* kNoResult = "null";
constexpr const char* kNotDone = "{'success':false}";
constexpr const char* kOff = "{'enabled':false}";

struct Exchange {
    const char* method;
    const char* params;
    const char* answer;  ///< the result, the error's code, or kNoResult for neither
};

constexpr Exchange kExchanges[] = {
    {"start", "null", "'success'"},
    {"isIpodConnected", "null", "{'connected':false}"},
    {"setRepeatMode", "{'mode':'all'}", "{'mode':'off'}"},
    {"getRepeatMode", "null", "{'mode':'off'}"},
    {"enableShuffle", "{'enable':true}", kOff},
    {"enableShuffle", "{'enable':{}}", "-32602"},
    {"isShuffleEnabled", "null", kOff},
    {"getHasPlayableData", "null", "{'hasPlayableData':false}"},
    {"playFirst", "null", kNotDone},
    {"play", "null", kNotDone},
    {"pause", "null", kNotDone},
    {"playPause", "null", kNotDone},
    {"isTrackPaused", "null", "{'isPaused':false}"},
    {"getCurrentTrackInfo", "null",
     "{'trackInfo':{'isPlaying':true,'trackAlbum':'','trackArtist':'','trackCount':1,'trackDuration':0,"
     "'trackIndex':-1,'trackTime':0,'trackTitle':''}}"},
    {"next", "null", kNotDone},
    {"previous", "null", kNotDone},
    {"fastForwardSong", "{'enable':true}", kOff},
    {"rewindSong", "{'enable':false}", kOff},
    {"getCurrentAlbumArt", "null", "{'albumArt':''}"},
    {"getCurrentAlbumArtDelayed", "null", kNotDone},
    {"getSongList", "null", kNoResult},
    {"getNextAlphaNumericIndex", "{'startIndex':0}", "{'itemIndex':-1}"},
    {"getPrevAlphaNumericIndex", "{'startIndex':9}", "{'itemIndex':0}"},
    {"filterBrowseList", "{'searchText':'e'}", "'failure'"},
    {"selectBrowseBack", "null", "'failure'"},
    {"selectBrowseItem", "{'itemId':4}", "'failure'"},
    {"selectBrowseItem", "null", kNoResult},
    {"resetBrowseList", "null", "{'resetSuccess':false}"},
    {"stop", "null", "'success'"},
    {"setVolume", "null", "-32601"},
    {"exit", "null", "'success'"},
};

TEST(NoPlayerTest, EveryMethodAnswersThatNothingCanBeDone) {
    Scene scene;
    const Json::Value root = scene.client.Result("getBrowseList");
    EXPECT_EQ(root["categoryItems"].size(), 6U);
    for (const Json::Value& category : root["categoryItems"]) {
        EXPECT_EQ(category["isSupported"], false) << category["itemName"];
    }
    for (const auto& [method, params, answer] : kExchanges) {
        const Json::Value reply = scene.client.Call(method, params);
        EXPECT_EQ(reply["jsonrpc"], "2.0");
        const Json::Value& told = reply.isMember("error") ? reply["error"]["code"] : reply["result"];
        EXPECT_EQ(told, Quoted(answer)) << method;
        EXPECT_EQ(reply.size(), std::string_view(answer) == kNoResult ? 2U : 3U) << method;
    }
}

}  // namespace
}  // namespace EndToEnd
