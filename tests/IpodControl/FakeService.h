// Something that listens where a service is expected, and says what a test wants it to.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>

#include "IpodControl/Client.h"

namespace IpodControl {

/// The next request on a connection; null when the client has gone.
inline Json::Value ReadRequest(int connection) {
    std::string line;
    for (char c = 0; recv(connection, &c, 1, 0) == 1 && c != '\n';)
        line += c;
    Json::Value request;
    Json::Reader().parse(line, request);
    return request;
}

/// False when the client has gone.
inline bool Send(int connection, std::string_view bytes) {
    return send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
}

/// Takes one client after the other, on a port of its own, and closes the connection when `acts` returns.
class FakeService {
  public:
    explicit FakeService(const std::function<void(int connection)>& acts) {
        socklen_t size = sizeof m_address;
        EXPECT_EQ(listen(m_listener, 1), 0);  // binds it as well
        EXPECT_EQ(getsockname(m_listener, reinterpret_cast<sockaddr*>(&m_address), &size), 0);
        m_thread = std::thread([this, acts] {
            for (int connection = 0; (connection = accept(m_listener, nullptr, nullptr)) >= 0;) {
                acts(connection);
                close(connection);
            }
        });
    }
    ~FakeService() {
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    std::uint16_t Port() const { return ntohs(m_address.sin_port); }

  private:
    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address{};
    std::thread m_thread;
};

}  // namespace IpodControl
