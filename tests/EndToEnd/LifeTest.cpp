// One life of a player: it comes, is browsed, plays, goes and comes again, with two clients watching.

#include <gtest/gtest.h>

#include <csignal>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

using Predicate = RpcClient::Predicate;

Predicate Is(const char* member, bool value) {
    return [=](const Json::Value& params) { return params[member] == value; };
}

std::string TitleOf(const std::string& trackInfo) {
    return ParseJson(trackInfo)["params"]["trackInfo"]["trackTitle"].asString();
}

Json::Value FirstItem(RpcClient& client) {
    const Json::Value page = client.Result("getBrowseList", Quoted("{'startIndex':0,'itemCount':10}"));
    EXPECT_FALSE(page["isRootCategory"].asBool());
    EXPECT_GT(page["totalCount"].asInt(), 0);
    return page["categoryItems"][0];
}

std::string Select(RpcClient& client, const Json::Value& itemId) {
    Json::Value params;
    params["itemId"] = itemId;
    return client.Result("selectBrowseItem", params).asString();
}

/// From the top through artists and albums down to a track, which plays.
void BrowseToTrack(RpcClient& client) {
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
    EXPECT_EQ(TitleOf(client.Notification(
                  "trackInfoNotification",
                  [](const Json::Value& params) { return params["trackInfo"]["isPlaying"] == true; })),
              track["itemName"].asString());
}

void ExpectEverySecondATime(RpcClient& client) {
    const auto timeOnly = [](const Json::Value& params) { return !params.isMember("trackDuration"); };
    const auto next = [&] {
        const std::string text = client.Notification("trackTimeNotification", timeOnly);
        return ParseJson(text)["params"]["trackTime"].asInt();
    };
    const int first = next();
    EXPECT_NEAR(next() - first, 1000, 900);
}

void SkipToNextTrack(RpcClient& client) {
    const std::string before = client.Result("getCurrentTrackInfo")["trackInfo"]["trackTitle"].asString();
    EXPECT_EQ(client.Result("next"), Quoted("{'success':true}"));
    client.Notification("trackInfoNotification", [&](const Json::Value& params) {
        const Json::Value& info = params["trackInfo"];
        return info["trackTitle"].asString() != before && info["trackIndex"].asInt() >= 1 &&
               info["trackDuration"].asInt() > 0;
    });
}

void PauseAndPlay(RpcClient& client) {
    EXPECT_EQ(client.Result("pause"), Quoted("{'success':true}"));
    client.Notification("trackPausedNotification", Is("isTrackPaused", true));
    EXPECT_EQ(client.Result("isTrackPaused"), Quoted("{'isPaused':true}"));
    EXPECT_EQ(client.Result("play"), Quoted("{'success':true}"));
    client.Notification("trackPausedNotification", Is("isTrackPaused", false));
}

TEST(LifeTest, PlayerComesPlaysGoesAndComesAgain) {
    Scene scene;
    RpcClient& client = scene.client;
    RpcClient watcher;
    watcher.Result("isIpodConnected");

    const std::uint32_t handle = scene.PlugPlayer("iap2");
    client.Notification("ipodConnectionNotification", Is("connected", true));
    scene.log.WaitFor("Database is getting build Percentage Completion =100\n");
    ASSERT_NO_FATAL_FAILURE(BrowseToTrack(client));
    ExpectEverySecondATime(client);
    SkipToNextTrack(client);
    PauseAndPlay(client);

    scene.control.Unplug(handle);
    const std::string gone = client.Notification("ipodConnectionNotification", Is("connected", false));
    EXPECT_EQ(watcher.Notification("ipodConnectionNotification", Is("connected", false)), gone);
    EXPECT_EQ(watcher.History(), client.History());
    EXPECT_EQ(client.Result("isIpodConnected"), Quoted("{'connected':false}"));
    EXPECT_EQ(client.Result("play"), Quoted("{'success':false}"));

    scene.PlugPlayer("iap");
    client.Notification("ipodConnectionNotification", Is("connected", true));
    EXPECT_EQ(client.Result("playFirst"), Quoted("{'success':true}"));
    EXPECT_EQ(scene.Stop(), 0);
    EXPECT_TRUE(watcher.Socket().WaitForHangUp());
}

// A device that is no player is opened, which succeeds, but never taken: every step reports it anew.
TEST(LifeTest, StickIsReportedButNotConnected) {
    constexpr std::uint32_t kSuccess = 1;
    Scene scene;
    scene.control.Fail("eDevMgrOpenDevice", kSuccess);  // the simulated one minds being opened twice
    scene.control.Plug("stick");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(scene.client.Result("isIpodConnected"), Quoted("{'connected':false}"));
        scene.client.Notification("ipodConnectionNotification", Is("connected", true));
    }
    EXPECT_EQ(scene.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
