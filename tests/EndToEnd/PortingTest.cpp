// The service over the library that the porting guide shows.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {
namespace {

TEST(PortingTest, TheGuidesLibraryIsBrowsedAndPlays) {
    setenv("LD_LIBRARY_PATH", PORTING_LIBRARY_FOLDER, 1);
    ServiceProcess service;
    Client client = service.WaitForPort();
    service.WaitForMainLoop();
    Require("the player's music",
            [&] { return client.Result("getHasPlayableData")["hasPlayableData"].asBool(); });
    EXPECT_EQ(client.Result("selectBrowseItem", "{'itemId':32}"), "browsing");
    const Json::Value list =
        client.Result("getBrowseList", "{'startIndex':0,'itemCount':9}")["categoryItems"];
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[2]["itemName"], "Three");

    EXPECT_EQ(client.Result("playFirst")["success"], true);
    const auto isTrack = [](const char* title) {
        return [title](const Json::Value& params) { return params["trackInfo"]["trackTitle"] == title; };
    };
    client.Notification("trackInfoNotification", isTrack("One"));
    client.Notification("trackTimeNotification");
    client.Result("next");
    client.Notification("trackInfoNotification", isTrack("Two"));
    client.Result("pause");
    client.Notification("trackPausedNotification",
                        [](const Json::Value& params) { return params["isTrackPaused"].asBool(); });
    EXPECT_EQ(service.Stop(), 0);
    unsetenv("LD_LIBRARY_PATH");
}

}  // namespace
}  // namespace EndToEnd
