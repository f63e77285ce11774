#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "JsonRpc/TcpServer.h"
#include "tests/JsonRpc/TestMethods.h"

inline constexpr std::chrono::seconds kPatience{20};

/// Waits for something that other threads bring about. False when it does not happen.
inline bool Eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// A server on a port of its own, with its thread.
class RunningServer {
  public:
    RunningServer() {
        m_methods.AddTo(tcp);
        EXPECT_TRUE(tcp.Bind());
        EXPECT_TRUE(tcp.Listen());
        m_thread = std::thread([this] {
            while (!m_stop) {
                tcp.WaitMessage(20);
                ++rounds;
            }
            tcp.Close();
        });
    }
    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;
    ~RunningServer() { Stop(); }

    void Stop() {
        m_stop = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    bool HasClients(std::size_t count) {
        return Eventually([this, count] { return tcp.GetClients().size() == count; });
    }

    Json::Rpc::TcpServer tcp{"127.0.0.1", 0};
    std::atomic<int> rounds{0};

  private:
    TestMethods m_methods;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

/// A client that never waits for ever.
class TestClient {
  public:
    explicit TestClient(const RunningServer& server, int receiveBuffer = 0)
        : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (receiveBuffer > 0) {
            setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(server.tcp.GetPort());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;
    ~TestClient() { Close(); }

    void Send(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = send(m_fd, text.data(), text.size(), MSG_NOSIGNAL);
            if (count <= 0) {
                return;  // the server hung up; what it said first is what the test looks at
            }
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    /// The next line with its line end; less at the connection's end or when nothing comes.
    std::string ReadLine() {
        std::size_t searched = 0;
        std::size_t lineEnd = m_received.find('\n');
        while (lineEnd == std::string::npos) {
            searched = m_received.size();
            if (!Receive()) {
                return std::exchange(m_received, {});
            }
            lineEnd = m_received.find('\n', searched);
        }
        std::string line = m_received.substr(0, lineEnd + 1);
        m_received.erase(0, line.size());
        return line;
    }

    /// Reads so many bytes of the next line, or all that comes.
    void ReadAhead(std::size_t bytes) {
        const std::size_t wanted = m_received.size() + bytes;
        while (m_received.size() < wanted && Receive()) {
        }
    }

    /// True when the server closes the connection without another byte.
    bool SeesEnd() { return m_received.empty() && !Receive() && m_ended; }

    bool Answers() {
        Send("{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":1}\n");
        return ReadLine() == "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":null}\n";
    }

    void EndSending() const { shutdown(m_fd, SHUT_WR); }

    void Close() {
        if (m_fd >= 0) {
            close(m_fd);
            m_fd = -1;
        }
    }

  private:
    bool Receive() {
        pollfd wait{m_fd, POLLIN, 0};
        if (poll(&wait, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count())) <= 0) {
            return false;
        }
        char buffer[65536];
        const ssize_t count = recv(m_fd, buffer, sizeof(buffer), 0);
        m_ended = count <= 0;
        m_received.append(buffer, static_cast<std::size_t>(count > 0 ? count : 0));
        return count > 0;
    }

    int m_fd;
    bool m_ended = false;
    std::string m_received;
};
