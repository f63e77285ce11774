#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "DeviceSimulator/control/ControlServer.h"
#include "ScratchFolder.h"
#include "ServiceUtil/LocalSocket.h"
#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

class Connection {
  public:
    explicit Connection(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const LocalAddress address = LocalAddressOf(path).value();
        EXPECT_EQ(connect(m_socket.Get(), address.Generic(), address.length), 0);
        const timeval limit{10, 0};
        setsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    }

    void Send(const std::string& text) { send(m_socket.Get(), text.data(), text.size(), MSG_NOSIGNAL); }

    /// Without its line end; empty at the end of the connection.
    std::string ReadLine() {
        std::string line;
        char byte = 0;
        while (recv(m_socket.Get(), &byte, 1, 0) == 1 && byte != '\n') {
            line += byte;
        }
        return line;
    }

  private:
    Descriptor m_socket;
};

class ControlTest : public SimulatorTest {
  protected:
    const ScratchFolder folder;
    const std::string path = folder.Path() / "control";
    std::unique_ptr<ControlServer> server = ControlServer::Open(path);
};

TEST_F(ControlTest, SaysWhatIsWrongAndChangesNothing) {
    OpenPlayer();
    const std::pair<std::string, std::string> cases[] = {
        {"nonsense", "not a JSON object"},
        {"{} {}", "not a JSON object"},
        {std::string(5000, '['), "tack"},
        {"{}", "'command' must be one of artwork, busy"},
        {"{'command':'plug','tpye':'iap'}", "'tpye' is no member"},
        {"{'command':'plug','':0}", "'' is no member"},
        {"{'command':'plug','handle':-1}", "'handle' must be a number"},
        {"{'command':'plug','type':'toaster'}", "such as 'iap2'"},
        {"{'command':'plug','type':'stick','locked':true}", "only a player"},
        {"{'command':'plug','hub':1}", "no hub has handle 1"},
        {"{'command':'plug','type':'hub','handle':7,'hub':7}", "no hub has handle 7"},
        {"{'command':'plug','devices':[{},{'handle':1}]}", "handle 1 is taken"},
        {"{'command':'plug','devices':[{'handle':7},{'handle':7}]}", "handle 7 is taken"},
        {"{'command':'plug','devices':[{},{'nam':''}]}", "'devices'[1]: 'nam' is no member"},
        {"{'command':'plug','devices':[{}],'name':''}", "'name' stands in 'devices'"},
        {"{'command':'unplug','handles':[1,6]}", "no device has handle 6"},
        {"{'command':'fail','call':'eDevMgriPodFly','code':1}", "'call' must name"},
        {"{'command':'event','words':[1,2,3,4,5,6,7]}", "1 to 6 numbers"},
        {"{'command':'event','name':'play-tune'}", "no event's name"},
        {"{'command':'wait','call':'eDevMgriPodStop','timeout':1}", "was not called 1 times"},
        {"{'command':'wait','call':'eDevMgriPodStop','timeout':600001}", "at most 600000"},
        {"{'command':'player'}", "must say what"},
        {"{'command':'player','do':'next','shuffle':'on'}", "one of off, tracks, albums"},
        {"{'command':'player','do':'next'}", "the player is stopped"},
        {"{'command':'player','do':'play','handle':9}", "no player has handle 9"},
        {"{'command':'queue','tracks':[24]}", "names track 24 of 24"},
        {"{'command':'queue','tracks':['Title 99']}", "'Title 99', which"},
        {"{'command':'queue','tracks':[1,2],'position':2}", "'position' must be below 2"},
        {"{'command':'sound','capture':'gone'}", "DEVICE_SIMULATOR_AUDIO is not set"},
    };
    for (const auto& [line, error] : cases) {
        std::string answer = Do(line)["error"].asString();
        std::replace(answer.begin(), answer.end(), '"', '\'');
        EXPECT_NE(answer.find(error), std::string::npos) << line.substr(0, 60) << answer;
    }
    EXPECT_EQ(TakeEventText(), "");
    EXPECT_EQ(Do("{'command':'devices'}")["devices"].size(), 1U);
    EXPECT_EQ(Do("{'command':'help','about':'unplug'}")["commands"][0]["members"].size(), 3U);
}

TEST_F(ControlTest, SeveralDevicesComeAllOrNoneAndAHubTakesItsOwnAlong) {
    const Json::Value plugged =
        Do("{'command':'plug','devices':[{'type':'hub','handle':2},{'type':'stick','hub':2},{'hub':2},{}]}");
    EXPECT_EQ(plugged["handles"].size(), 4U);
    EXPECT_EQ(plugged["handles"][1], 1) << "the next free one";
    EXPECT_EQ(TakeEventText(),
              "device-connected=hub device-connected=stick device-connected=iap2 auth-started auth-success "
              "device-connected=iap2 auth-started auth-success");
    EXPECT_TRUE(IsDone("{'command':'unplug','handle':2}"));
    EXPECT_EQ(TakeEventText(), "device-disconnected=stick device-disconnected=iap2 device-disconnected=hub");
    EXPECT_TRUE(IsDone("{'command':'unplug','all':true}"));
    EXPECT_EQ(TakeEventText(), "device-disconnected=iap2");
    std::string devices = "{}";
    for (int i = 1; i < 126; ++i) {
        devices += ",{}";
    }
    EXPECT_TRUE(IsDone("{'command':'plug','devices':[" + devices + "]}"));
    TakeEvents(ph);
    EXPECT_FALSE(IsDone("{'command':'plug','devices':[{},{}]}")) << "more than a bus has addresses for";
    EXPECT_EQ(TakeEventText(), "") << "not even the first of them";
    EXPECT_TRUE(IsDone("{'command':'plug'}") && !IsDone("{'command':'plug'}"));
    TakeEvents(ph);
    EXPECT_TRUE(
        IsDone("{'command':'event','name':'DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE','words':[8000]}"));
    EXPECT_TRUE(IsDone("{'command':'event','name':'db-build-progress-info'}"));
    EXPECT_EQ(TakeEventText(), "new-track-sample-rate=8000 db-build-progress-info");
}

TEST_F(ControlTest, ALockedPlayerCanBeOpenedOnceItIsUnlocked) {
    const u32 handle = Do("{'command':'plug','locked':true}")["handle"].asUInt();
    EXPECT_EQ(TakeEventText(), "device-connected=iap2 auth-started auth-locked");
    EXPECT_EQ(eDevMgrOpenDevice(ph, handle), u32{DEV_MGR_DEVICE_NOT_READY});
    EXPECT_TRUE(IsDone("{'command':'unlock'}"));
    EXPECT_EQ(TakeEventText(), "auth-unlocked auth-success");
    EXPECT_EQ(eDevMgrOpenDevice(ph, handle), u32{DEV_MGR_SUCCESS});
    EXPECT_TRUE(IsDone("{'command':'lock'}") && IsDone("{'command':'lock'}"));
    const auto events = TakeEvents(ph);
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].words[5], handle);
    EXPECT_STREQ(events[0].text, "/dev/iap1");
    EXPECT_EQ(eDevMgriPodPlay(ph, handle), u32{DEV_MGR_SUCCESS});
    EXPECT_TRUE(Do("{'command':'status'}")["devices"][0]["locked"].asBool());
}

TEST_F(ControlTest, AThumbLeadsThePlayerAndItsQueue) {
    OpenPlayer();
    const Json::Value queue = Do("{'command':'queue','tracks':[5,'Title 03',5],'position':1,'start':2}");
    EXPECT_EQ(queue["tracks"][0]["title"], "Title 05");
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=3 play-track-changed new-track-sample-rate=48000 play-started");
    EXPECT_EQ(Title(), "Title 03");
    EXPECT_TRUE(IsDone("{'command':'queue','position':2}"));
    EXPECT_TRUE(IsDone("{'command':'player','do':'seek','to':9000,'repeat':'all'}"));
    EXPECT_FALSE(IsDone("{'command':'player','do':'seek','to':10001}"));
    EXPECT_EQ(TakeEventText(), "play-track-changed play-time=9000 repeat-setting=2");
    Pass(1s);
    const Json::Value player = Do("{'command':'status'}")["devices"][0]["player"];
    EXPECT_EQ(player["position"].toStyledString() + player["elapsed"].toStyledString(), "0\n0\n");
    EXPECT_EQ(player["track"]["title"].asString() + player["repeat"].asString(), "Title 05all");
    EXPECT_TRUE(IsDone("{'command':'player','do':'toggle'}") && IsDone("{'command':'player','do':'toggle'}"));
    EXPECT_EQ(TakeEventText(), "play-track-changed play-paused play-started");
}

TEST_F(ControlTest, OneOfSeveralPlayersIsMeantByHandleOrForBeingOpen) {
    EXPECT_TRUE(IsDone("{'command':'plug','devices':[{'handle':5},{'handle':6},{'type':'stick'}]}"));
    EXPECT_FALSE(IsDone("{'command':'player','do':'play'}")) << "two, and none of them is open";
    EXPECT_FALSE(IsDone("{'command':'unplug'}"));
    EXPECT_TRUE(IsDone("{'command':'lock','handle':5}"));
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh = 6), DEV_MGR_SUCCESS);
    TakeEvents(ph);
    EXPECT_TRUE(IsDone("{'command':'player','do':'play','shuffle':'tracks'}"));
    EXPECT_EQ(TakeEventText(),
              "play-context-setting=24 play-track-changed new-track-sample-rate=44100 play-started "
              "shuffle-setting=1 play-context-setting=24");
    EXPECT_TRUE(IsDone("{'command':'player','do':'seek','left':1500,'shuffle':'off'}"));
    EXPECT_FALSE(IsDone("{'command':'player','do':'seek','left':10001}"));
    EXPECT_EQ(TakeEventText(), "play-time=8500 shuffle-setting play-context-setting=24");
    for (const char* press : {"forward", "release", "rewind", "pause", "toggle", "stop"}) {
        EXPECT_TRUE(IsDone(std::string("{'command':'player','do':'") + press + "'}")) << press;
    }
    EXPECT_EQ(TakeEventText(),
              "fast-fw-started fast-fw-rw-stopped fast-rw-started fast-fw-rw-stopped play-paused "
              "play-started play-stopped");
    EXPECT_EQ(Do("{'command':'queue','start':22,'count':9}")["tracks"][1]["position"], 23);
    EXPECT_TRUE(IsDone("{'command':'queue','start':24}"));
    EXPECT_FALSE(IsDone("{'command':'queue','start':25}") || IsDone("{'command':'queue','count':1001}"));
    const Json::Value devices = Do("{'command':'status'}")["devices"];
    EXPECT_TRUE(devices[0]["locked"].asBool() && !devices[1]["locked"].asBool());
    EXPECT_EQ(devices[0]["openings"].asUInt() * 10 + devices[1]["openings"].asUInt(), 1U);
}

TEST_F(ControlTest, BusyCallsAreCountedAndReleased) {
    OpenPlayer();
    const std::string next = Do("{'command':'calls','limit':0}")["next"].asString();
    EXPECT_TRUE(IsDone("{'command':'busy','call':'*'}"));
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), 94U);
    EXPECT_TRUE(IsDone("{'command':'busy','call':'eDevMgriPodPlay','times':0}"));
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    EXPECT_EQ(Do("{'command':'status'}")["scripts"].size(), kFunctionCount - 1);
    EXPECT_TRUE(IsDone("{'command':'clear','what':'scripts'}"));
    EXPECT_EQ(Status(), E_DEVMGR_IPOD_PLAY_PLAYING);
    const std::string since = ",'since':" + next;
    EXPECT_EQ(Do("{'command':'calls','limit':2" + since + "}")["calls"][0]["result"], 1);
    EXPECT_EQ(Do("{'command':'calls'" + since + "}")["calls"].size(), 3U);
    const std::string wait = "{'command':'wait','timeout':0,'call':'eDevMgriPodPlay'" + since;
    EXPECT_TRUE(IsDone(wait + ",'times':2}") && !IsDone(wait + ",'times':3}"));
}

TEST_F(ControlTest, TheSoundDevicesVanishReturnAndFalter) {
    setenv("DEVICE_SIMULATOR_AUDIO", folder.Path().c_str(), 1);
    EXPECT_EQ(Do("{'command':'sound','capture':'gone'}")["sound"]["playback"], "there");
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "capture.gone"));
    EXPECT_EQ(Do("{'command':'sound','capture':'there','playback':'gone'}")["sound"]["capture"], "there");
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "capture.gone"));
    Do("{'command':'sound','playback':'there','ppm':-250,'refuse':48000,'xrun':'capture'}");
    const auto sound = Do("{'command':'sound'}")["sound"];
    EXPECT_EQ(sound["ppm"], -250);
    EXPECT_EQ(sound["refuse"], 48000);
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "capture.xrun"));
    EXPECT_FALSE(IsDone("{'command':'sound','ppm':100001}"));
    EXPECT_EQ(Do("{'command':'sound','ppm':0,'refuse':0}")["sound"].size(), 2U);
    unsetenv("DEVICE_SIMULATOR_AUDIO");
}

TEST_F(ControlTest, WaitingAndBadClientsStopNobodyElse) {
    Connection waiter(path);
    waiter.Send("{\"command\":\"wait\",\"call\":\"eDevMgriPodStop\",\"times\":2}\n");
    Connection hanging(path);
    hanging.Send("{\"command\":");
    Connection flood(path);
    flood.Send(std::string(ControlServer::kLongestLine + 4096, 'x'));
    EXPECT_NE(flood.ReadLine().find("too long"), std::string::npos);
    // A crowd that says nothing gives way to who has something to say, one that waits does not.
    std::vector<std::unique_ptr<Connection>> crowd;
    for (std::size_t i = 0; i < ControlServer::kMostClients + 2; ++i) {
        crowd.push_back(std::make_unique<Connection>(path));
    }
    crowd.back()->Send("{\"command\":\"devices\"}\n");
    EXPECT_EQ(crowd.back()->ReadLine(), R"({"devices":[],"ok":true})");
    EXPECT_EQ(crowd.front()->ReadLine(), "");
    eDevMgriPodStop(ph, 1);
    eDevMgriPodStop(ph, 1);
    EXPECT_EQ(waiter.ReadLine(), R"({"ok":true})");
}

TEST_F(ControlTest, TheSocketIsPrivateAndReplacesOnlyADeadOne) {
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(ControlServer::Open(path), nullptr) << "somebody listens there";
    Connection waiter(path);
    waiter.Send("{\"command\":\"wait\",\"call\":\"eDevMgriPodStop\",\"timeout\":600000}\n");
    server.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
    {
        const Descriptor dead(socket(AF_UNIX, SOCK_STREAM, 0));
        const LocalAddress address = LocalAddressOf(path).value();
        ASSERT_EQ(bind(dead.Get(), address.Generic(), address.length), 0);
    }
    server = ControlServer::Open(path);
    EXPECT_NE(server, nullptr);
    EXPECT_EQ(ControlServer::Open(std::string(200, 'x')), nullptr);
}

}  // namespace
}  // namespace DeviceSimulator::Test
