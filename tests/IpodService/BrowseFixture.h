// A manager over a scripted player: category masks and lists of names.
#pragma once

#include <json/json.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "IpodService/IpodRequestHandler.h"
#include "tests/IpodService/ManagerFixture.h"

class BrowseFixture : public ManagerTest {
  protected:
    BrowseFixture() {
        DeviceSimulator::StandIns player;
        player.eDevMgriPodMdGetCategories = [this](u32, u32, u32 category, u32* mask) {
            *mask = masks[category];
            return ResultCode::kSuccess;
        };
        player.eDevMgriPodGetNumItems = [this](u32, u32, i32, u32, u32 category, u32* count) {
            *count = static_cast<u32>(names[category].size());
            return ResultCode::kSuccess;
        };
        player.eDevMgriPodGetItems = [this](u32, u32, i32, u32, u32 category, u32 start, u32* count,
                                            BrowseItem* items) {
            return Give(category, start, *count, items);
        };
        const auto succeed = [](u32, u32) { return ResultCode::kSuccess; };
        player.eDevMgriPodResetDatabase = player.eDevMgriPodCloseMdBrowseSession = succeed;
        player.eDevMgriPodBrowseOneLevelBack = succeed;
        player.eDevMgriPodOpenMdBrowseSession = [](u32, u32, u32) { return ResultCode::kSuccess; };
        player.eDevMgriPodSelectCategorizedIndex = [](u32, u32, u32, u32) { return ResultCode::kSuccess; };
        simulator.SetStandIns(std::move(player));
    }

    static constexpr u32 kIdsPerCategory = 100000;
    static u32 IdOf(u32 category, u32 position) { return category * kIdsPerCategory + position; }

    std::vector<std::int64_t> LastArguments(const char* function) const {
        const auto calls = simulator.Calls(function);
        return calls.empty() ? std::vector<std::int64_t>{} : calls.back().arguments;
    }
    std::size_t CallCount(const char* function) const { return simulator.Calls(function).size(); }

    /// Everything logged so far.
    const std::string& Log() { return m_logged += m_log.Take(); }

    Json::Value Answer(bool (CIpodRequestHandler::*method)(const Json::Value&, Json::Value&),
                       const std::string& params = "null") {
        Json::Value request;
        std::istringstream("{\"jsonrpc\":\"2.0\",\"id\":7,\"method\":\"x\",\"params\":" + params + "}") >>
            request;
        Json::Value response;
        EXPECT_TRUE((handler.*method)(request, response));
        EXPECT_EQ(response["jsonrpc"], "2.0");
        EXPECT_EQ(response["id"], 7);
        return response;
    }
    static std::vector<std::string> NamesOf(const Json::Value& response) {
        std::vector<std::string> list;
        for (const Json::Value& item : response["result"]["categoryItems"])
            list.push_back(item["itemName"].asString());
        return list;
    }

    std::map<u32, u32> masks = {{Category::kTopLevelQuery, 126},
                                {Category::kArtist, Category::kArtist | Category::kAlbum},
                                {Category::kAlbum, Category::kAlbum | Category::kTrack},
                                {Category::kTrack, Category::kTrack}};
    std::map<u32, std::vector<std::string>> names = {
        {Category::kArtist, {"Abba", "AC/DC", "The Beatles", "Blur"}},
        {Category::kAlbum, {"Help!", "Revolver"}},
        {Category::kTrack, {"Girl", "Michelle", "Run for Your Life", "Wait", "What Goes On"}}};
    DeviceSimulator::Simulator& simulator = m_simulator;
    IpodManager& manager = *m_manager;
    CIpodRequestHandler handler{m_manager.get()};

  private:
    u32 Give(u32 category, u32 start, u32 count, BrowseItem* items) {
        const std::vector<std::string>& list = names[category];
        EXPECT_GT(count, 0u);
        EXPECT_LE(start + count, list.size());
        for (u32 i = 0; i < count && start + i < list.size(); ++i) {
            list[start + i].copy(items[i].name, sizeof items[i].name);
            items[i].id = IdOf(category, start + i);
        }
        return ResultCode::kSuccess;
    }

    std::string m_logged;
};
