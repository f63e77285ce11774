// A server with its thread, clients of every bad kind, and claims about what they cost the others.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/TcpServer.h"

namespace stress {

using Clock = std::chrono::steady_clock;

inline double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Prints a claim and its figure; counts those that do not hold.
inline int failures = 0;
inline void Claim(const char* what, double figure, const char* unit, double limit, bool isAtMost = true) {
    const bool holds = isAtMost ? figure <= limit : figure >= limit;
    failures += holds ? 0 : 1;
    std::printf("%-4s %-72s %10.1f %s (%s %.0f)\n", holds ? "ok" : "FAIL", what, figure, unit,
                isAtMost ? "at most" : "at least", limit);
    std::fflush(stdout);
}

inline const std::string kPing = "{\"jsonrpc\":\"2.0\",\"method\":\"ping\",\"id\":1}";

inline std::string Fill(std::size_t size) {
    return "{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"id\":2,\"params\":" + std::to_string(size) + "}";
}

class Server {
  public:
    Server() {
        kServerThread.Assert();
        Add("ping", &Server::Ping);
        Add("fill", &Server::FillText);
        m_tcp.SetCloseListener([this](const Json::Rpc::ClosedClient&) { ++closed; });
        if (!m_tcp.Bind() || !m_tcp.Listen()) {
            std::perror("bind");
            std::exit(2);
        }
        m_thread = std::thread([this] {
            kServerThread.Assert();
            for (; !m_stop; ++turns) {
                m_tcp.WaitMessage(-1);
            }
            m_tcp.Close();
        });
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        m_stop = true;
        m_tcp.Wake();
        m_thread.join();
    }

    Json::Rpc::TcpServer& Tcp() { return m_tcp; }
    bool HasClients(std::size_t count, int seconds = 20) const {
        const auto start = Clock::now();
        while (m_tcp.GetClients().size() != count && MillisecondsSince(start) < seconds * 1000) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return m_tcp.GetClients().size() == count;
    }

    bool HasClosed(int count, int seconds = 20) const {
        const auto start = Clock::now();
        while (closed < count && MillisecondsSince(start) < seconds * 1000) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return closed >= count;
    }

    std::atomic<long> turns{0};
    std::atomic<int> closed{0};

  private:
    void Add(const char* name, Json::Rpc::RpcMethod<Server>::Member member) {
        m_tcp.AddMethod(std::make_unique<Json::Rpc::RpcMethod<Server>>(*this, member, name));
    }
    bool Ping(const Json::Rpc::Request&, std::string& result) {
        result += "true";
        return true;
    }
    bool FillText(const Json::Rpc::Request& request, std::string& result) {
        result.append(1, '"').append(request.Params().asUInt() - 2, 'f').append(1, '"');
        return true;
    }

    Json::Rpc::TcpServer m_tcp{"127.0.0.1", 0};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class Client {
  public:
    explicit Client(const Server& server, int receiveBuffer = 0)
        : Client(const_cast<Server&>(server).Tcp().GetPort(), receiveBuffer) {}
    Client(std::uint16_t port, int receiveBuffer) {
        if (receiveBuffer > 0) {
            ::setsockopt(m_fd, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { Leave(); }

    bool Send(std::string_view text) const {
        return ::send(m_fd, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
    }
    bool TrySend(std::string_view text) const {
        return ::send(m_fd, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT) > 0;
    }
    void EndSending() const { ::shutdown(m_fd, SHUT_WR); }
    /// At most so many bytes; 0 at the end of the connection or when nothing comes for a while.
    std::size_t Read(std::size_t most, int patienceMs = 15000) {
        pollfd wait{m_fd, POLLIN, 0};
        if (::poll(&wait, 1, patienceMs) <= 0) {
            return 0;
        }
        std::string buffer(most, '\0');
        const ssize_t count = ::recv(m_fd, buffer.data(), most, 0);
        last.assign(buffer, 0, count > 0 ? static_cast<std::size_t>(count) : 0);
        return last.size();
    }
    /// Until so many line ends have come. Returns how many have.
    int ReadLines(int lines) {
        int seen = 0;
        while (seen < lines && Read(65536) > 0) {
            seen += static_cast<int>(std::count(last.begin(), last.end(), '\n'));
        }
        return seen;
    }
    /// The time of a request and its answer, in ms.
    double RoundTrip() {
        const auto start = Clock::now();
        Send(kPing);
        return ReadLines(1) > 0 ? MillisecondsSince(start) : 1e9;
    }
    /// Closes with a reset, as a process does that is killed with unread input.
    void Kill() {
        const linger reset{1, 0};
        ::setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
        Leave();
    }
    void Leave() {
        if (m_fd >= 0) {
            ::close(m_fd);
            m_fd = -1;
        }
    }

    std::string last;

  private:
    int m_fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

/// The longest of the round trips that a client makes for so long.
inline double WorstRoundTrip(Client& client, int milliseconds) {
    double worst = 0;
    for (const auto start = Clock::now(); MillisecondsSince(start) < milliseconds;) {
        worst = std::max(worst, client.RoundTrip());
    }
    return worst;
}

/// What garbage and unfinished requests leave in memory.
void CheckMemory();

}  // namespace stress
