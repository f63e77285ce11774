// Median time of a request and its reply over loopback, against a bare poll echo server in the same run.
//
//   bench_round_trip                this library's server with one trivial method
//   bench_round_trip --port 8883    isIpodConnected of the service that runs on that port

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <thread>
#include <vector>

#include "JsonRpc/TcpServer.h"
#include "bench/ConnectedMethod.h"
#include "bench/Loopback.h"

namespace {

constexpr int kWarmUp = 500;
constexpr int kRoundTripsPerBlock = 2000;
constexpr int kBlocks = 10;

/// poll, recv, send: as little as a server can do.
class EchoServer {
  public:
    EchoServer() : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = Loopback(0);
        socklen_t length = sizeof(address);
        if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(m_listener, 1) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            Die("echo server");
        }
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { Run(); });
    }
    EchoServer(const EchoServer&) = delete;
    EchoServer& operator=(const EchoServer&) = delete;
    ~EchoServer() { m_thread.join(); }

    std::uint16_t Port() const { return m_port; }

  private:
    void Run() const {
        const int fd = ::accept(m_listener, nullptr, nullptr);
        ::close(m_listener);
        SetNoDelay(fd);
        std::array<char, 4096> buffer;
        pollfd wait{fd, POLLIN, 0};
        while (::poll(&wait, 1, -1) >= 0) {
            const ssize_t count = ::recv(fd, buffer.data(), buffer.size(), 0);
            if (count <= 0 || ::send(fd, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL) < 0) {
                break;
            }
        }
        ::close(fd);
    }

    const int m_listener;
    std::uint16_t m_port = 0;
    std::thread m_thread;
};

class RpcServer {
  public:
    RpcServer() {
        m_method.AddTo(m_server);
        if (!m_server.Bind() || !m_server.Listen()) {
            Die("server");
        }
        m_thread = std::thread([this] {
            while (!m_stop) {
                m_server.WaitMessage(100);
            }
        });
    }
    RpcServer(const RpcServer&) = delete;
    RpcServer& operator=(const RpcServer&) = delete;
    ~RpcServer() {
        m_stop = true;
        m_thread.join();
    }

    std::uint16_t Port() const { return m_server.GetPort(); }

  private:
    ConnectedMethod m_method;
    Json::Rpc::TcpServer m_server{"127.0.0.1", 0};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

/// One request and its reply; notifications in between would count as the reply, so the service had better be
/// idle.
void RoundTrip(int fd) {
    if (::send(fd, kRequest.data(), kRequest.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(kRequest.size())) {
        Die("send");
    }
    std::array<char, 4096> buffer;
    for (;;) {
        const ssize_t count = ::recv(fd, buffer.data(), buffer.size(), 0);
        if (count <= 0) {
            Die("recv");
        }
        if (std::memchr(buffer.data(), '\n', static_cast<std::size_t>(count)) != nullptr) {
            return;
        }
    }
}

void Measure(int fd, std::vector<double>& microseconds) {
    for (int i = 0; i < kRoundTripsPerBlock; ++i) {
        const auto start = std::chrono::steady_clock::now();
        RoundTrip(fd);
        const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - start;
        microseconds.push_back(took.count());
    }
}

/// The two servers take turns, so that whatever else the machine does meets both.
void Compare(std::uint16_t echoPort, std::uint16_t port) {
    const int echo = Connect(echoPort);
    const int server = Connect(port);
    for (int i = 0; i < kWarmUp; ++i) {
        RoundTrip(echo);
        RoundTrip(server);
    }
    std::vector<double> echoTimes;
    std::vector<double> serverTimes;
    for (int block = 0; block < kBlocks; ++block) {
        Measure(echo, echoTimes);
        Measure(server, serverTimes);
    }
    ::close(echo);
    ::close(server);
    const double echoMedian = Median(echoTimes);
    const double serverMedian = Median(serverTimes);
    std::printf("echo server  median %6.1f us\nserver       median %6.1f us\nratio        %.2f\n", echoMedian,
                serverMedian, serverMedian / echoMedian);
}

}  // namespace

int main(int argc, char** argv) {
    const EchoServer echo;
    if (argc == 3 && std::string_view(argv[1]) == "--port") {
        Compare(echo.Port(), static_cast<std::uint16_t>(std::atoi(argv[2])));
        return 0;
    }
    const RpcServer server;
    Compare(echo.Port(), server.Port());
    return 0;
}
