// As little as a server can do: epoll, recv, send of a fixed line; to a change, the reply and a line to every
// client. What the service costs is told as a multiple of this. It knows nothing of JSON: requests are told
// apart by their length, and each comes in one piece.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "bench/wire/Protocol.h"

namespace {

void Check(bool isGood, const char* what) {
    if (!isGood) {
        std::perror(what);
        std::exit(1);
    }
}

class Floor {
  public:
    explicit Floor(const char* numericAddress) {
        const int on = 1;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(Bench::kFloorPort);
        Check(inet_pton(AF_INET, numericAddress, &address.sin_addr) == 1, "address");
        setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        Check(bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                  listen(m_listener, SOMAXCONN) == 0,
              "listen");
        Add(m_listener);
    }

    [[noreturn]] void Run() {
        std::array<epoll_event, 64> ready{};
        for (;;) {
            const int count = epoll_wait(m_epoll, ready.data(), static_cast<int>(ready.size()), -1);
            for (int i = 0; i < count; ++i) {
                const int fd = ready[static_cast<std::size_t>(i)].data.fd;
                fd == m_listener ? Accept() : Answer(fd);
            }
        }
    }

  private:
    void Add(int fd) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = fd;
        Check(epoll_ctl(m_epoll, EPOLL_CTL_ADD, fd, &event) == 0, "epoll_ctl");
    }
    void Accept() {
        const int fd = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            return;
        }
        const int on = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        Add(fd);
        m_clients.push_back(fd);
    }
    void Answer(int fd) {
        const ssize_t count = recv(fd, m_buffer.data(), m_buffer.size(), 0);
        if (count <= 0) {
            close(fd);
            std::erase(m_clients, fd);
        } else if (static_cast<std::size_t>(count) == Bench::kRequest.size()) {
            Send(fd, Bench::kReply);
        } else {
            Send(fd, Bench::kChangeReply);
            for (const int client : m_clients) {
                Send(client, Bench::kNotification);
            }
        }
    }
    static void Send(int fd, std::string_view line) { send(fd, line.data(), line.size(), MSG_NOSIGNAL); }

    const int m_epoll = epoll_create1(EPOLL_CLOEXEC);
    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    std::vector<int> m_clients;
    std::array<char, 4096> m_buffer{};
};

}  // namespace

int main(int count, char** words) {
    Floor(count > 1 ? words[1] : "127.0.0.1").Run();
}
