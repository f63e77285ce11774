#include <json/json.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <thread>

#include "DeviceSimulator/ControlCommands.h"
#include "DeviceSimulator/ControlServer.h"
#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

class Connection {
  public:
    explicit Connection(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, path.c_str());
        EXPECT_EQ(connect(m_socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        const timeval limit{10, 0};
        setsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    }

    void Send(const std::string& text) { send(m_socket.Get(), text.data(), text.size(), MSG_NOSIGNAL); }
    void EndSending() { shutdown(m_socket.Get(), SHUT_WR); }

    /// Without its line end; empty at the end of the connection.
    std::string ReadLine() {
        std::string line;
        char byte = 0;
        while (recv(m_socket.Get(), &byte, 1, 0) == 1 && byte != '\n') {
            line += byte;
        }
        return line;
    }

    std::string Ask(const std::string& command) {
        Send(command + "\n");
        return ReadLine();
    }

  private:
    UniqueFd m_socket;
};

class ControlTest : public SimulatorTest {
  protected:
    ControlTest() {
        std::string name = (std::filesystem::temp_directory_path() / "simulator-XXXXXX").string();
        m_folder = mkdtemp(name.data());
        path = (m_folder / "control").string();
        server = ControlServer::Open(path);
    }
    ~ControlTest() override {
        server.reset();
        std::filesystem::remove_all(m_folder);
    }

    static Json::Value Parse(const std::string& text) {
        Json::Value value;
        std::istringstream(text) >> value;
        return value;
    }

    std::string path;
    std::unique_ptr<ControlServer> server;

  private:
    std::filesystem::path m_folder;
};

TEST_F(ControlTest, LeadsThePlayer) {
    ASSERT_NE(server, nullptr);
    Connection client(path);
    EXPECT_EQ(client.Ask(R"({"command":"plug","type":"iap","handle":9,"name":"Pl\u00e4yer"})"),
              R"({"handle":9,"ok":true})");
    ASSERT_EQ(eDevMgrOpenDevice(ph, 9), kSuccess);
    EXPECT_EQ(TakeEventText(), "3=14 18 19");
    EXPECT_EQ(client.Ask(R"({"command":"fail","call":"eDevMgriPodStop","code":94,"times":1})"),
              R"({"ok":true})");
    EXPECT_EQ(eDevMgriPodStop(ph, 9), 94U);
    EXPECT_EQ(client.Ask(R"({"command":"delay","call":"eDevMgriPodStop","milliseconds":1,"times":1})"),
              R"({"ok":true})");
    EXPECT_EQ(client.Ask(R"({"command":"event","words":[26,0,0,0,0,9],"texts":["app","second"]})"),
              R"({"ok":true})");
    const auto events = TakeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].words[5], 9U);
    EXPECT_STREQ(events[0].text + 4, "second");
    const Json::Value calls = Parse(client.Ask(R"({"command":"calls","call":"eDevMgriPodStop"})"))["calls"];
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0]["arguments"][1].asUInt(), 9U);
    EXPECT_EQ(calls[0]["result"].asUInt(), 94U);
    const Json::Value devices = Parse(client.Ask(R"({"command":"devices"})"))["devices"];
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_EQ(devices[0]["name"].asString(), "Pl\u00e4yer");
    EXPECT_EQ(client.Ask(R"({"command":"clear"})"), R"({"ok":true})");
    EXPECT_TRUE(Simulator::Instance().Calls().empty());
    EXPECT_EQ(client.Ask(R"({"command":"unplug"})"), R"({"ok":true})");
    EXPECT_EQ(eDevMgriPodStop(ph, 9), u32{kInvalidDeviceHandle});
}

TEST_F(ControlTest, SaysWhatIsWrong) {
    DeviceDescription device;
    device.handle = 5;
    Simulator::Instance().Plug(device);
    const std::pair<std::string, std::string> cases[] = {
        {"nonsense", "not a JSON object"},
        {"[1]", "not a JSON object"},
        {"{} {}", "not a JSON object"},
        {std::string(5000, '['), "tack"},
        {"{}", "\"command\" must be one of"},
        {R"({"command":"explode"})", "calls, clear, delay"},
        {R"({"command":"plug","tpye":"iap"})", "\"tpye\" is no member"},
        {R"({"command":"plug","type":"toaster"})", "\"type\" must be"},
        {R"({"command":"plug","handle":5})", "handle 5 is taken"},
        {R"({"command":"plug","handle":-1})", "\"handle\" must be a number"},
        {R"({"command":"unplug","handle":6})", "no device has handle 6"},
        {R"({"command":"fail","call":"eDevMgriPodPlay"})", "\"code\" must be a number"},
        {R"({"command":"fail","call":"eDevMgriPodFly","code":1})", "\"call\" must name"},
        {R"({"command":"delay","call":"eDevMgriPodPlay","milliseconds":"9"})", "\"milliseconds\" must"},
        {R"({"command":"event","words":[]})", "1 to 6 numbers"},
        {R"({"command":"event","words":[1,2,3,4,5,6,7]})", "1 to 6 numbers"},
        {R"({"command":"event","words":[1],"texts":[1]})", "array of texts"},
        {R"({"command":"clear","what":"all"})", "\"what\" must be"},
        {R"({"command":"wait","call":"eDevMgriPodStop","timeout":1})", "was not called 1 times"},
        {R"({"command":"wait","call":"eDevMgriPodStop","timeout":600001})", "at most 600000"},
    };
    for (const auto& [line, error] : cases) {
        const Json::Value answer = Parse(AnswerControlLine(line, [] { return false; }));
        EXPECT_FALSE(answer["ok"].asBool()) << line.substr(0, 60);
        EXPECT_NE(answer["error"].asString().find(error), std::string::npos) << answer;
    }
    EXPECT_EQ(Simulator::Instance().Calls("eDevMgriPodPlay").size(), 0U);
}

TEST_F(ControlTest, WaitsWhileOthersAreServed) {
    Connection waiter(path);
    Connection other(path);
    waiter.Send("{\"command\":\"wait\",\"call\":\"eDevMgriPodStop\",\"times\":2}");
    waiter.EndSending();
    EXPECT_EQ(other.Ask(R"({"command":"clear","what":"scripts"})"), R"({"ok":true})");
    eDevMgriPodStop(ph, 1);
    eDevMgriPodStop(ph, 1);
    EXPECT_EQ(waiter.ReadLine(), R"({"ok":true})");
    EXPECT_EQ(waiter.ReadLine(), "");
}

TEST_F(ControlTest, BadClientsStopNothing) {
    Connection hanging(path);
    hanging.Send("{\"command\":");
    Connection flood(path);
    flood.Send(std::string(ControlServer::kLongestLine + 4096, 'x'));
    EXPECT_NE(flood.ReadLine().find("too long"), std::string::npos);
    std::vector<std::unique_ptr<Connection>> crowd;
    for (std::size_t i = 0; i < ControlServer::kMostClients + 2; ++i) {
        crowd.push_back(std::make_unique<Connection>(path));
    }
    EXPECT_NE(crowd.back()->ReadLine().find("too many"), std::string::npos);
    crowd.clear();
    std::string answer;
    for (int i = 0; i < 100 && answer.find("true") == std::string::npos; ++i) {
        answer = Connection(path).Ask(R"({"command":"devices"})");
    }
    EXPECT_EQ(answer, R"({"devices":[],"ok":true})");
}

TEST_F(ControlTest, TheSocketIsPrivateAndReplacesOnlyADeadOne) {
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(ControlServer::Open(path), nullptr) << "somebody listens there";
    server.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
    {
        const UniqueFd dead(socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, path.c_str());
        ASSERT_EQ(bind(dead.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    server = ControlServer::Open(path);
    EXPECT_NE(server, nullptr);
    EXPECT_EQ(ControlServer::Open(std::string(200, 'x')), nullptr);
    EXPECT_EQ(ControlServer::Open("/nowhere/at/all"), nullptr);
}

}  // namespace
}  // namespace DeviceSimulator::Test
