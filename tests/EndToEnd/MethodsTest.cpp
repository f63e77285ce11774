// The methods' replies, as a client sees them.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

/// `value` with the names of its types for its texts and numbers; of an array the first element.
Json::Value Shape(const Json::Value& value) {
    Json::Value shape = value;
    if (value.isObject())
        for (const std::string& name : value.getMemberNames())
            shape[name] = Shape(value[name]);
    else if (value.isArray() && !value.empty())
        (shape = Json::arrayValue).append(Shape(value[0]));
    else if (value.isString())
        shape = "text";
    else if (value.isIntegral())
        shape = 0;
    return shape;
}

struct Exchange {
    const char* method;
    const char* params;  ///< or null
    const char* result;  ///< its shape, or "none" where the reply has no such member
};

void ExpectReply(RpcClient& client, const Exchange& exchange) {
    const Json::Value params = exchange.params == nullptr ? Json::Value() : Quoted(exchange.params);
    const Json::Value reply = client.Call(exchange.method, params);
    EXPECT_EQ(reply["jsonrpc"], "2.0");
    EXPECT_FALSE(reply.isMember("error")) << ToLine(reply);
    const std::string shape = reply.isMember("result") ? ToLine(Shape(reply["result"])) : "none";
    const std::string expected =
        std::string(exchange.result) == "none" ? "none" : ToLine(Quoted(exchange.result));
    EXPECT_EQ(shape, expected) << exchange.method;
}

constexpr const char* kTrackInfo =
    "{'trackInfo':{'isPlaying':true,'trackAlbum':'text','trackArtist':'text','trackCount':0,"
    "'trackDuration':0,'trackIndex':0,'trackTime':0,'trackTitle':'text'}}";

TEST(MethodsTest, AllAnswerWithoutAPlayer) {
    Scene scene;
    const Exchange exchanges[] = {
        {"start", nullptr, "'text'"},
        {"stop", nullptr, "'text'"},
        {"isIpodConnected", nullptr, "{'connected':false}"},
        {"setRepeatMode", "{'mode':'all'}", "{'mode':'text'}"},
        {"getRepeatMode", nullptr, "{'mode':'text'}"},
        {"enableShuffle", "{'enable':true}", "{'enabled':false}"},
        {"isShuffleEnabled", nullptr, "{'enabled':false}"},
        {"getCurrentTrackInfo", nullptr, kTrackInfo},
        {"getCurrentAlbumArt", nullptr, "{'albumArt':'text'}"},
        {"getCurrentAlbumArtDelayed", nullptr, "{'success':false}"},
        {"playFirst", nullptr, "{'success':false}"},
        {"play", nullptr, "{'success':false}"},
        {"pause", nullptr, "{'success':false}"},
        {"playPause", nullptr, "{'success':false}"},
        {"next", nullptr, "{'success':false}"},
        {"previous", nullptr, "{'success':false}"},
        {"selectBrowseItem", nullptr, "none"},
        {"selectBrowseItem", "{'itemId':4}", "'text'"},
        {"selectBrowseBack", nullptr, "'text'"},
        {"filterBrowseList", "{'searchText':'a'}", "'text'"},
        {"fastForwardSong", "{'enable':true}", "{'enabled':false}"},
        {"rewindSong", nullptr, "{'enabled':false}"},
        {"resetBrowseList", nullptr, "{'resetSuccess':false}"},
        {"isTrackPaused", nullptr, "{'isPaused':false}"},
        {"getSongList", nullptr, "none"},
        {"getNextAlphaNumericIndex", "{'startIndex':0}", "{'itemIndex':0}"},
        {"getPrevAlphaNumericIndex", "{'startIndex':0}", "{'itemIndex':0}"},
        {"getHasPlayableData", nullptr, "{'hasPlayableData':false}"},
        {"exit", nullptr, "'text'"},
    };
    const Json::Value list = scene.client.Result("getBrowseList");
    EXPECT_TRUE(list["isRootCategory"].asBool());
    EXPECT_FALSE(list["categoryItems"].isNull());
    for (const Exchange& exchange : exchanges)
        ExpectReply(scene.client, exchange);
}

TEST(MethodsTest, AllAnswerWithAPlayer) {
    Scene scene;
    scene.PlugPlayer();
    const char* const success = "{'success':true}";
    const char* const page = "{'startIndex':0,'itemCount':3}";
    const Exchange exchanges[] = {
        {"getHasPlayableData", nullptr, "{'hasPlayableData':true}"},
        {"playFirst", nullptr, success},
        {"play", nullptr, "null"},
        {"getCurrentTrackInfo", nullptr, kTrackInfo},
        {"pause", nullptr, success},
        {"isTrackPaused", nullptr, "{'isPaused':true}"},
        {"pause", nullptr, "{'success':false}"},
        {"play", nullptr, success},
        {"playPause", nullptr, success},
        {"next", nullptr, success},
        {"previous", nullptr, success},
        {"fastForwardSong", "{'enable':true}", "{'enabled':true}"},
        {"fastForwardSong", nullptr, "{'enabled':true}"},
        {"rewindSong", "{'enable':true}", "{'enabled':true}"},
        {"rewindSong", "{'enable':false}", "{'enabled':true}"},
        {"getCurrentAlbumArt", nullptr, "{'albumArt':'text','imageHeight':0,'imageWidth':0}"},
        {"getCurrentAlbumArtDelayed", nullptr, success},
        {"getBrowseList", nullptr,
         "{'categoryItems':[{'isSupported':true,'itemId':0,'itemName':'text'}],'currIndex':0,"
         "'isLastCategory':false,'isRootCategory':true,'totalCount':0}"},
        {"getSongList", nullptr,
         "{'categoryItems':[{'itemId':0,'itemName':'text'}],'isLastCategory':true,'isRootCategory':false}"},
        {"getSongList", nullptr, "none"},
        {"getBrowseList", page,
         "{'categoryItems':[{'itemId':0,'itemName':'text'}],'currIndex':0,'isLastCategory':true,"
         "'isRootCategory':false,'totalCount':0}"},
        {"getNextAlphaNumericIndex", "{'startIndex':0}", "{'itemIndex':0}"},
        {"getPrevAlphaNumericIndex", "{'startIndex':9}", "{'itemIndex':0}"},
        {"filterBrowseList", "{'searchText':'e'}", "'text'"},
        {"selectBrowseBack", nullptr, "'text'"},
        {"resetBrowseList", nullptr, "{'resetSuccess':true}"},
    };
    for (const Exchange& exchange : exchanges)
        ExpectReply(scene.client, exchange);
}

TEST(MethodsTest, SettingsAreThoseReadBack) {
    Scene scene;
    scene.PlugPlayer();
    RpcClient& client = scene.client;
    EXPECT_EQ(client.Result("setRepeatMode", Quoted("{'mode':'all'}"))["mode"], "all");
    EXPECT_EQ(client.Result("setRepeatMode")["mode"], "all");
    EXPECT_EQ(client.Result("setRepeatMode", Quoted("{'mode':'current'}"))["mode"], "current");
    EXPECT_EQ(client.Result("getRepeatMode")["mode"], "current");
    EXPECT_EQ(client.Result("setRepeatMode", Quoted("{'mode':'ALL'}"))["mode"], "off");
    EXPECT_EQ(client.Result("enableShuffle", Quoted("{'enable':true}"))["enabled"], true);
    EXPECT_EQ(client.Result("enableShuffle")["enabled"], true);
    scene.control.Fail("eDevMgriPodSetShuffleSetting", 52);
    EXPECT_EQ(client.Result("enableShuffle", Quoted("{'enable':false}"))["enabled"], true);
}

TEST(MethodsTest, CurrentTrackHasFixedPositionAndState) {
    Scene scene;
    scene.PlugPlayer();
    RpcClient& client = scene.client;
    client.Result("playFirst");
    client.Result("pause");
    const Json::Value info = client.Result("getCurrentTrackInfo")["trackInfo"];
    EXPECT_EQ(info["trackIndex"], -1);
    EXPECT_EQ(info["trackCount"], 1);
    EXPECT_EQ(info["isPlaying"], true);
    const auto isPaused = [](const Json::Value& params) { return params["trackInfo"]["isPlaying"] == false; };
    const std::string told = client.Notification("trackInfoNotification", isPaused);
    const Json::Value notified = ParseJson(told)["params"]["trackInfo"];
    EXPECT_EQ(notified["trackTitle"], info["trackTitle"]);
    EXPECT_EQ(notified["trackIndex"], 1);
    EXPECT_GT(notified["trackCount"].asInt(), 1);
}

TEST(MethodsTest, WhatCannotBeAnsweredIsAnErrorReply) {
    Scene scene;
    struct Case {
        const char* request;
        int code;
        const char* id;
    };
    const Case cases[] = {
        {"{'jsonrpc':'2.0','method':'setVolume','id':'x'}", -32601, "'x'"},
        {"{'jsonrpc':'2.0','method':'PLAY','id':1.5}", -32601, "1.5"},
        {"{'jsonrpc':'2.0','id':[7]}", -32600, "[7]"},
        {"{'method':'play','id':8}", -32600, "8"},
        {"[]", -32600, "null"},
        {"{'jsonrpc':'2.0','method':'setRepeatMode','params':[1],'id':9}", -32602, "9"},
        {"{'jsonrpc':'2.0','method':'enableShuffle','params':{'enable':{}},'id':10}", -32602, "10"},
        {"{'jsonrpc':'2.0',}", -32700, "null"},
    };
    for (const Case& one : cases) {
        std::string request(one.request);
        std::replace(request.begin(), request.end(), '\'', '"');
        const Json::Value reply = scene.client.Exchange(request + "\n");
        EXPECT_EQ(reply["error"]["code"].asInt(), one.code) << request << ToLine(reply);
        EXPECT_EQ(reply["id"], Quoted(one.id)) << request;
    }
    const Json::Value nameless = scene.client.Exchange(R"({"jsonrpc":"2.0","method":"isIpodConnected"})");
    EXPECT_EQ(nameless, Quoted("{'id':null,'jsonrpc':'2.0','result':{'connected':false}}"));
}

}  // namespace
}  // namespace EndToEnd
