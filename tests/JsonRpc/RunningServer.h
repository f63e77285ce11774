// A server with its thread, and clients that never wait for ever.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "JsonRpc/TcpServer.h"
#include "tests/JsonRpc/TestMethods.h"
#include "tests/Support/Deadline.h"

inline constexpr std::chrono::milliseconds kPatience{20000};

inline const std::string kEcho = "{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":1}";
inline const std::string kEchoReply = "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":null}\n";
inline const std::string kParseError =
    "{\"error\":{\"code\":-32700,\"message\":\"Parse error.\"},\"id\":null,\"jsonrpc\":\"2.0\"}\n";

using TestSupport::WaitUntil;

/// A server on a port of its own, with its thread.
class RunningServer {
  public:
    explicit RunningServer(const Json::Rpc::Limits& limits = {}) : tcp("127.0.0.1", 0, limits) {
        kServerThread.Assert();
        EXPECT_TRUE(tcp.Bind() && tcp.Listen());
        tcp.SetCloseListener([this](const Json::Rpc::ClosedClient& client) {
            m_lastReason = client.reason;
            ++m_closed;
        });
        m_thread = std::thread([this] {
            kServerThread.Assert();
            for (; !m_stop; ++rounds) {
                tcp.WaitMessage(-1);
            }
            tcp.Close();
        });
    }
    ~RunningServer() { Stop(); }

    void Stop() {
        m_stop = true;
        tcp.Wake();
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    bool HasClients(std::size_t count) {
        return WaitUntil([this, count] { return tcp.GetClients().size() == count; });
    }

    /// True when one more client has been disconnected, for this reason.
    bool HasClosed(Json::Rpc::CloseReason reason) {
        const int before = m_closedSeen++;
        return WaitUntil([&] { return m_closed > before; }) && m_lastReason == reason;
    }

    Json::Rpc::TcpServer tcp;
    std::atomic<int> rounds{0};

  private:
    TestMethods m_methods{tcp};
    std::atomic<int> m_closed{0};
    std::atomic<Json::Rpc::CloseReason> m_lastReason{};
    int m_closedSeen = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

/// A client that never waits for ever.
class TestClient {
  public:
    explicit TestClient(const RunningServer& server, int receiveBuffer = 1000000)
        : TestClient(server.tcp.GetPort(), receiveBuffer) {}
    explicit TestClient(std::uint16_t port, int receiveBuffer = 1000000) {
        setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;
    ~TestClient() { close(m_fd); }

    /// All of it, unless the server hangs up: what it said first is what most tests look at. False when it
    /// has.
    bool Send(std::string_view text) const { return send(m_fd, text.data(), text.size(), MSG_NOSIGNAL) >= 0; }
    void EndSending() const { shutdown(m_fd, SHUT_WR); }

    /// The next line with its line end; less at the connection's end or when nothing comes.
    std::string ReadLine() {
        std::size_t end = 0;
        while ((end = m_received.find('\n', end)) == std::string::npos) {
            end = m_received.size();
            if (!Receive()) {
                return std::exchange(m_received, {});
            }
        }
        std::string line = m_received.substr(0, end + 1);
        m_received.erase(0, line.size());
        return line;
    }

    /// Takes at least so many bytes off the connection, for a later ReadLine. False at its end.
    bool ReadAhead(std::size_t count) {
        for (count += m_received.size(); m_received.size() < count;) {
            if (!Receive()) {
                return false;
            }
        }
        return true;
    }

    /// True when the server closes the connection, in order and without another byte.
    bool SeesEnd() { return m_received.empty() && !Receive() && m_ended; }

    bool Answers() {
        Send(kEcho);
        return ReadLine() == kEchoReply;
    }

  private:
    bool Receive() {
        pollfd wait{m_fd, POLLIN, 0};
        if (poll(&wait, 1, static_cast<int>(kPatience.count())) <= 0) {
            return false;
        }
        char buffer[65536];
        const ssize_t count = recv(m_fd, buffer, sizeof(buffer), 0);
        m_ended = count == 0;
        m_received.append(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }

    const int m_fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    bool m_ended = false;
    std::string m_received;
};
