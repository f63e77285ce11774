// A manager over the simulated player, with what it reports and logs at hand.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "DeviceSimulator/embedded/Simulator.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/IpodManager.h"
#include "IpodService/IpodRequestHandler.h"
#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Text.h"
#include "ServiceUtil/Logger.h"

using Texts = std::vector<std::string>;

/// Reports as short texts, for example "connected 1", in the order in which they came.
class RecordedNotifications : public IIpodNotifications {
  public:
    void OnTrackInfo(bool isPlaying, const NowPlayingPosition& position, const TrackMetadata& metadata,
                     const TrackTimes& times) override {
        Record("track ", isPlaying, ' ', position.index, '/', position.count, ' ', metadata.title, '|',
               metadata.album, '|', metadata.artist, ' ', times.elapsed, '/', times.total);
    }
    void OnTrackTimes(const TrackTimes& times) override { Record("times ", times.elapsed, '/', times.total); }
    void OnTrackTime(u32 time) override { Record("time ", time); }
    void OnConnection(bool connected) override { Record("connected ", connected); }
    void OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) override {
        Record("art ", albumArt.size(), ' ', width, 'x', height, ' ', trackIndex);
    }
    void OnTrackPaused(bool paused) override { Record("paused ", paused); }

    /// What came since the last time it was asked.
    Texts Take() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_texts, {});
    }

  private:
    template <typename... Parts>
    void Record(const Parts&... parts) {
        std::ostringstream text;
        (text << ... << parts);
        const std::lock_guard lock(m_mutex);
        m_texts.push_back(text.str());
    }

    std::mutex m_mutex;
    Texts m_texts;
};

/// A stand-in that answers `code` and does nothing else.
inline auto Answering(u32 code) {
    return [code](auto...) { return code; };
}

/// A stand-in that succeeds with `values` in its out parameters.
template <typename... Values>
auto Giving(Values... values) {
    return [=](u32, u32, Values*... out) {
        ((*out = values), ...);
        return DEV_MGR_SUCCESS;
    };
}

/// Takes the place of everything that needs a moment in the player: devices are there at once, databases are
/// built at once. Files are in a folder of the test's own, gone with it.
class ManagerTest : public testing::Test {
  protected:
    using Handler = CIpodRequestHandler;
    using Method = Json::Rpc::RpcMethod<Handler>::Member;

    explicit ManagerTest(std::string pictureModule = {}) {
        std::string pattern = std::filesystem::temp_directory_path() / "ipod-test-XXXXXX";
        m_folder = mkdtemp(pattern.data());
        CLogger::Instance().SetLevel(LogLevel::kAll);
        CLogger::Instance().Open((m_folder / "log").c_str());
        m_log.open(m_folder / "log");
        DeviceSimulator::SimulatorOptions options;
        options.plugDelay = options.databaseBuildTime = {};
        m_simulator.Reset(options);
        std::filesystem::create_directories(m_folder / "root");
        m_manager =
            std::make_unique<IpodManager>(&m_notifications, Folders(), nullptr, std::move(pictureModule));
    }
    ~ManagerTest() override {
        m_simulator.ClearScripts();
        m_simulator.SetStandIns({});
        if (m_manager->State() != ConnectionState::Unregistered) {
            m_manager->Shutdown();
        }
        m_manager.reset();
        CLogger::Instance().Close();
        CLogger::Instance().SetLevel(LogLevel::kOff);
        std::filesystem::remove_all(m_folder);
    }

    DeviceFolders Folders() const { return {m_folder / "iap2db", m_folder / "root"}; }

    u32 Plug(u32 type, const std::string& name = "") {
        DeviceSimulator::DeviceDescription device;
        device.type = type;
        device.name = name;
        return m_simulator.Plug(device);
    }
    /// Plugs a device in and steps the manager until it can browse.
    u32 Connect() {
        const u32 handle = Plug(DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
        EXPECT_TRUE(StepUntil(ConnectionState::BrowseReady));
        TakeLog();
        m_notifications.Take();
        m_simulator.ClearCalls();
        return handle;
    }
    /// False after too many steps.
    bool StepUntil(ConnectionState state) {
        for (int step = 0; step < 20 && m_manager->State() != state; ++step) {
            m_manager->UpdateConnection();
            m_simulator.Drain();
        }
        return m_manager->State() == state;
    }
    /// One event, handled before this returns.
    void Fire(std::initializer_list<u32> words, std::initializer_list<std::string_view> texts = {}) {
        m_simulator.Fire(DeviceSimulator::MakeEvent(words, texts));
        m_simulator.Drain();
    }
    void UseStandIns() { m_simulator.SetStandIns(m_standIns); }

    /// The device-manager calls since the last time it was asked, with their arguments behind the two
    /// handles: "eDevMgriPodSetMaxCurrent(1000)".
    Texts TakeCalls() {
        Texts calls;
        for (const DeviceSimulator::CallRecord& call : m_simulator.Calls()) {
            std::string text = call.name + '(';
            for (std::size_t i = 2; i < call.arguments.size(); ++i) {
                text += (i > 2 ? "," : "") + std::to_string(call.arguments[i]);
            }
            calls.push_back(text + ')');
        }
        m_simulator.ClearCalls();
        return calls;
    }
    /// Everything logged since the last time it was asked, each entry's message behind its level in brackets,
    /// for example "[WARN ] Return from ...\n".
    std::string TakeLog() {
        m_log.clear();
        const std::string text{std::istreambuf_iterator<char>(m_log), {}};
        static const std::regex head(
            R"(\[[-: \d]+\](\[[A-Z ]{5}\])\[[^\]\n]+\]\n\t)");  // with time and source
        return std::regex_replace(text, head, "$1 ");
    }
    /// The result of a request with these parameters; with ' for ".
    Json::Value Result(Method method, std::string params = "null") {
        std::replace(params.begin(), params.end(), '\'', '"');
        params = R"({"jsonrpc":"2.0","id":7,"method":"x","params":)" + params + "}";
        std::string text;
        EXPECT_TRUE((Handler(m_manager.get()).*method)(Json::Rpc::Request(params), text));
        return text.empty() ? Json::Value() : Json::Rpc::FromText(text);
    }

    DeviceSimulator::Simulator& m_simulator = DeviceSimulator::Simulator::Instance();
    DeviceSimulator::StandIns m_standIns;
    std::filesystem::path m_folder;
    std::ifstream m_log;
    RecordedNotifications m_notifications;
    std::unique_ptr<IpodManager> m_manager;
};
