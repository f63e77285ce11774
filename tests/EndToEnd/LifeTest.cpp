// One life of a player: it comes, is browsed, plays, goes and comes again, with two clients watching; and
// every method's reply without a player and with one.

#include <gtest/gtest.h>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

void AwaitFlag(Client& client, const char* notification, const char* member, bool value) {
    client.Notification(notification, [=](const Json::Value& params) { return params[member] == value; });
}

Json::Value FirstItem(Client& client) {
    const Json::Value page = client.Result("getBrowseList", "{'startIndex':0,'itemCount':10}");
    EXPECT_FALSE(page["isRootCategory"].asBool());
    EXPECT_GT(page["totalCount"].asInt(), 0);
    return page["categoryItems"][0];
}

std::string Select(Client& client, const Json::Value& itemId) {
    return client.Result("selectBrowseItem", "{'itemId':" + ToLine(itemId) + "}").asString();
}

/// From the top through artists and albums down to a track, which plays.
void BrowseToTrack(Client& client) {
    const Json::Value top = client.Result("getBrowseList");
    ASSERT_TRUE(top["isRootCategory"].asBool());
    ASSERT_EQ(top["categoryItems"].size(), 6U) << ToLine(top);
    ASSERT_EQ(Select(client, 4), "browsing");
    ASSERT_EQ(Select(client, FirstItem(client)["itemId"]), "browsing");
    ASSERT_EQ(client.Result("selectBrowseBack"), "success");
    ASSERT_EQ(Select(client, FirstItem(client)["itemId"]), "browsing");
    ASSERT_EQ(Select(client, FirstItem(client)["itemId"]), "browsing");
    const Json::Value track = FirstItem(client);
    ASSERT_EQ(Select(client, track["itemId"]), "success");
    ASSERT_TRUE(client.Result("getBrowseList")["isRootCategory"].asBool());
    const std::string told = client.Notification("trackInfoNotification", [](const Json::Value& params) {
        return params["trackInfo"]["isPlaying"] == true;
    });
    EXPECT_EQ(ParseJson(told)["params"]["trackInfo"]["trackTitle"], track["itemName"]);
}

TEST(LifeTest, PlayerComesPlaysGoesAndComesAgain) {
    constexpr const char* kConnection = "ipodConnectionNotification";
    Scene scene;
    Client& client = scene.client;
    Client watcher;
    watcher.Result("isIpodConnected");

    scene.PlugPlayer("iap2");
    AwaitFlag(client, kConnection, "connected", true);
    scene.service.WaitForLog("Database is getting build Percentage Completion =100\n");
    ASSERT_NO_FATAL_FAILURE(BrowseToTrack(client));

    const Json::Value before = client.Result("getCurrentTrackInfo")["trackInfo"]["trackTitle"];
    EXPECT_EQ(client.Result("next"), Quoted("{'success':true}"));
    client.Notification("trackInfoNotification", [&](const Json::Value& params) {
        const Json::Value& info = params["trackInfo"];
        return info["trackTitle"] != before && info["trackIndex"].asInt() >= 1 &&
               info["trackDuration"].asInt() > 0;
    });
    EXPECT_EQ(client.Result("pause"), Quoted("{'success':true}"));
    AwaitFlag(client, "trackPausedNotification", "isTrackPaused", true);
    EXPECT_EQ(client.Result("isTrackPaused"), Quoted("{'isPaused':true}"));
    EXPECT_EQ(client.Result("play"), Quoted("{'success':true}"));
    AwaitFlag(client, "trackPausedNotification", "isTrackPaused", false);

    scene.Do("{'command':'unplug'}");
    AwaitFlag(client, kConnection, "connected", false);
    AwaitFlag(watcher, kConnection, "connected", false);
    EXPECT_EQ(watcher.History(), client.History());
    EXPECT_EQ(client.Result("isIpodConnected"), Quoted("{'connected':false}"));
    EXPECT_EQ(client.Result("play"), Quoted("{'success':false}"));

    scene.PlugPlayer("iap");
    AwaitFlag(client, kConnection, "connected", true);
    EXPECT_EQ(client.Result("playFirst"), Quoted("{'success':true}"));
    EXPECT_EQ(scene.service.Stop(), 0);
    EXPECT_TRUE(watcher.WaitForHangUp());
}

TEST(LifeTest, NotificationsTellThePositionThatTheAnswerDoesNot) {
    Scene scene;
    scene.PlugPlayer();
    Client& client = scene.client;
    client.Result("playFirst");
    client.Result("next");
    const Json::Value info = client.Result("getCurrentTrackInfo")["trackInfo"];
    EXPECT_EQ(info["trackIndex"], -1);
    EXPECT_EQ(info["trackCount"], 1);
    const std::string told = client.Notification("trackInfoNotification", [&](const Json::Value& params) {
        return params["trackInfo"]["trackTitle"] == info["trackTitle"];
    });
    EXPECT_EQ(ParseJson(told)["params"]["trackInfo"]["trackIndex"], 2);
    EXPECT_GT(ParseJson(told)["params"]["trackInfo"]["trackCount"].asInt(), 1);
    EXPECT_EQ(client.Result("getCurrentAlbumArtDelayed"), Quoted("{'success':true}"));
    Json::Value expected = client.Result("getCurrentAlbumArt");
    expected["trackIndex"] = 2;
    EXPECT_EQ(ParseJson(client.Notification("ipodAlbumArtNotification"))["params"], expected);
}

/// `value` with "text" and 0 for its texts and numbers; of an array the first element.
Json::Value Shape(Json::Value value) {
    if (value.isArray() && !value.empty())
        value.resize(1);
    for (Json::Value& part : value)
        part = Shape(part);
    if (value.isString())
        return "text";
    return value.isIntegral() ? Json::Value(0) : value;
}

constexpr const char* kText = "'text'";
constexpr const char* kNone = "";
constexpr const char* kDone = "{'success':true}";
constexpr const char* kNotDone = "{'success':false}";
constexpr const char* kOn = "{'enabled':true}";
constexpr const char* kOff = "{'enabled':false}";
constexpr const char* kIndex = "{'itemIndex':0}";
constexpr const char* kTrackInfo =
    "{'trackInfo':{'isPlaying':true,'trackAlbum':'text','trackArtist':'text','trackCount':0,"
    "'trackDuration':0,'trackIndex':0,'trackTime':0,'trackTitle':'text'}}";
constexpr const char* kTopLevel =
    "{'categoryItems':[{'isSupported':true,'itemId':0,'itemName':'text'}],'currIndex':0,"
    "'isLastCategory':false,'isRootCategory':true,'totalCount':0}";
constexpr const char* kTopLevelWithout =
    "{'categoryItems':[{'isSupported':false,'itemId':0,'itemName':'text'}],'currIndex':0,"
    "'isLastCategory':false,'isRootCategory':true,'totalCount':0}";
constexpr const char* kSongs =
    "{'categoryItems':[{'itemId':0,'itemName':'text'}],'isLastCategory':true,'isRootCategory':false}";

struct Exchange {
    const char* method;
    const char* params;
    const char* without;  ///< a player: the result's shape or the error's code, or kNone for neither
    const char* with;
};

constexpr Exchange kExchanges[] = {
    {"start", "null", kText, kText},
    {"isIpodConnected", "null", "{'connected':false}", "{'connected':true}"},
    {"setRepeatMode", "{'mode':'all'}", "{'mode':'text'}", "{'mode':'text'}"},
    {"setRepeatMode", "[1]", "-32602", "-32602"},
    {"getRepeatMode", "null", "{'mode':'text'}", "{'mode':'text'}"},
    {"enableShuffle", "{'enable':true}", kOff, kOn},
    {"enableShuffle", "{'enable':{}}", "-32602", "-32602"},
    {"isShuffleEnabled", "null", kOff, kOn},
    {"getHasPlayableData", "null", "{'hasPlayableData':false}", "{'hasPlayableData':true}"},
    {"playFirst", "null", kNotDone, kDone},
    {"play", "null", kNotDone, "null"},
    {"pause", "null", kNotDone, kDone},
    {"isTrackPaused", "null", "{'isPaused':false}", "{'isPaused':true}"},
    {"getCurrentTrackInfo", "null", kTrackInfo, kTrackInfo},
    {"play", "null", kNotDone, kDone},
    {"playPause", "null", kNotDone, kDone},
    {"next", "null", kNotDone, kDone},
    {"previous", "null", kNotDone, kDone},
    {"fastForwardSong", "{'enable':true}", kOff, kOn},
    {"rewindSong", "{'enable':false}", kOff, kOn},
    {"getCurrentAlbumArt", "null", "{'albumArt':'text'}",
     "{'albumArt':'text','imageHeight':0,'imageWidth':0}"},
    {"getCurrentAlbumArtDelayed", "null", kNotDone, kDone},
    {"getBrowseList", "null", kTopLevelWithout, kTopLevel},
    {"getSongList", "null", kNone, kSongs},
    {"getNextAlphaNumericIndex", "{'startIndex':0}", kIndex, kIndex},
    {"getPrevAlphaNumericIndex", "{'startIndex':9}", kIndex, kIndex},
    {"filterBrowseList", "{'searchText':'e'}", kText, kText},
    {"selectBrowseBack", "null", kText, kText},
    {"selectBrowseItem", "{'itemId':4}", kText, kText},
    {"selectBrowseItem", "null", kNone, kNone},
    {"resetBrowseList", "null", "{'resetSuccess':false}", "{'resetSuccess':true}"},
    {"stop", "null", kText, kText},
    {"setVolume", "null", "-32601", "-32601"},
    {"exit", "null", kText, kText},
};

TEST(LifeTest, EveryMethodAnswersWithoutAPlayerAndWithOne) {
    for (const bool isPlugged : {false, true}) {
        Scene scene;
        if (isPlugged)
            scene.PlugPlayer();
        for (const Exchange& exchange : kExchanges) {
            const Json::Value reply = scene.client.Call(exchange.method, exchange.params);
            std::string shape = reply.isMember("result") ? ToLine(Shape(reply["result"])) : kNone;
            if (reply.isMember("error"))
                shape = ToLine(reply["error"]["code"]);
            const std::string expected = isPlugged ? exchange.with : exchange.without;
            EXPECT_EQ(reply["jsonrpc"], "2.0");
            EXPECT_EQ(shape, expected == kNone ? kNone : ToLine(Quoted(expected)))
                << exchange.method << (isPlugged ? " with" : " without") << " a player";
        }
    }
}

}  // namespace
}  // namespace EndToEnd
