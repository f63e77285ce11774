#include <json/json.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <sstream>

#include "DeviceSimulator/ControlCommands.h"
#include "DeviceSimulator/ControlServer.h"
#include "ScratchFolder.h"
#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    return address;
}

class Connection {
  public:
    explicit Connection(const std::string& path) : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const sockaddr_un address = AddressOf(path);
        EXPECT_EQ(connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
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
    UniqueFd m_socket;
};

class ControlTest : public SimulatorTest {
  protected:
    const ScratchFolder folder;
    const std::string path = folder.Path() / "control";
    std::unique_ptr<ControlServer> server = ControlServer::Open(path);
};

TEST_F(ControlTest, SaysWhatIsWrong) {
    const std::pair<std::string, std::string> cases[] = {
        {"nonsense", "not a JSON object"},
        {"{} {}", "not a JSON object"},
        {std::string(5000, '['), "tack"},
        {"{}", "\"command\" must be one of"},
        {R"({"command":"plug","tpye":"iap"})", "\"tpye\" is no member"},
        {R"({"command":"plug","handle":-1})", "\"handle\" must be a number"},
        {R"({"command":"unplug","handle":6})", "no device has handle 6"},
        {R"({"command":"fail","call":"eDevMgriPodFly","code":1})", "\"call\" must name"},
        {R"({"command":"event","words":[1,2,3,4,5,6,7]})", "1 to 6 numbers"},
        {R"({"command":"wait","call":"eDevMgriPodStop","timeout":1})", "was not called 1 times"},
        {R"({"command":"wait","call":"eDevMgriPodStop","timeout":600001})", "at most 600000"},
    };
    for (const auto& [line, error] : cases) {
        Json::Value answer;
        std::istringstream(AnswerControlLine(line, [] { return false; })) >> answer;
        EXPECT_FALSE(answer["ok"].asBool()) << line.substr(0, 60);
        EXPECT_NE(answer["error"].asString().find(error), std::string::npos) << answer;
    }
}

TEST_F(ControlTest, WaitingAndBadClientsStopNobodyElse) {
    Connection waiter(path);
    waiter.Send("{\"command\":\"wait\",\"call\":\"eDevMgriPodStop\",\"times\":2}\n");
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
        Connection client(path);
        client.Send("{\"command\":\"devices\"}\n");
        answer = client.ReadLine();
    }
    EXPECT_EQ(answer, R"({"devices":[],"ok":true})");
    eDevMgriPodStop(ph, 1);
    eDevMgriPodStop(ph, 1);
    EXPECT_EQ(waiter.ReadLine(), R"({"ok":true})");
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
        const sockaddr_un address = AddressOf(path);
        ASSERT_EQ(bind(dead.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    }
    server = ControlServer::Open(path);
    EXPECT_NE(server, nullptr);
    EXPECT_EQ(ControlServer::Open(std::string(200, 'x')), nullptr);
}

}  // namespace
}  // namespace DeviceSimulator::Test
