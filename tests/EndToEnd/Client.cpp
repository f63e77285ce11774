#include "tests/EndToEnd/Client.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "ServiceUtil/JsonText.h"
#include "ServiceUtil/LocalSocket.h"

namespace EndToEnd {

namespace {

bool IsNotification(const Json::Value& value) {
    return value.isObject() && value.isMember("method");
}

Descriptor Connect(const std::string& address) {
    const bool isLocal = address.front() == '/';
    const std::optional<LocalAddress> path = LocalAddressOf(address);
    const sockaddr_in port = ServiceAddress(address);
    Descriptor fd(socket(isLocal ? AF_UNIX : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // A receive or a send that takes longer fails with EAGAIN.
    const timeval patience{
        std::chrono::duration_cast<std::chrono::seconds>(kPatience).count() * TEST_TIME_SCALE, 0};
    setsockopt(fd.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(fd.Get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (connect(fd.Get(), isLocal ? path->Generic() : reinterpret_cast<const sockaddr*>(&port),
                isLocal ? path->length : sizeof port) != 0)
        throw std::system_error(errno, std::generic_category(), "connect");
    return fd;
}

}  // namespace

sockaddr_in ServiceAddress(const std::string& address) {
    sockaddr_in result{};
    result.sin_family = AF_INET;
    result.sin_port = htons(8883);
    inet_pton(AF_INET, address.c_str(), &result.sin_addr);
    return result;
}

Json::Value Quoted(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    return ReadJson(text).value();
}

std::string Request(const std::string& method, int id, const std::string& params) {
    Json::Value request = Quoted("{'jsonrpc':'2.0'}");
    request["method"] = method;
    request["id"] = id;
    if (params != "null")
        request["params"] = Quoted(params);
    return WriteJson(request);
}

Client::Client(const std::string& address) : m_fd(Connect(address)) {}

Client Client::Await(const std::string& address, const std::function<void()>& onFailure) {
    std::optional<Client> client;
    Require("somebody who listens at " + address, [&] {
        try {
            client.emplace(address);
        } catch (const std::system_error&) {
            onFailure();
        }
        return client.has_value();
    });
    return std::move(*client);
}

Json::Value Client::Call(const std::string& method, const std::string& params) {
    const int id = ++m_lastId;
    Json::Value reply = Exchange(Request(method, id, params));
    if (reply["id"] != id)
        throw std::runtime_error("reply to another request: " + WriteJson(reply));
    return reply;
}

Json::Value Client::Exchange(std::string_view text) {
    Send(text);
    const Clock::time_point deadline = In(kPatience);
    for (;;) {
        Json::Value value = NextMessage(deadline);
        if (!IsNotification(value))
            return value;
    }
}

Json::Value Client::Notification(const std::string& method, const Predicate& pleases) {
    for (const Clock::time_point deadline = In(kPatience);; NextMessage(deadline)) {
        while (!m_notifications.empty()) {
            const Json::Value value = std::move(m_notifications.front());
            m_notifications.pop_front();
            if (value["method"] == method && pleases(value["params"]))
                return value["params"];
        }
    }
}

Json::Value Client::NextMessage(Clock::time_point deadline) {
    std::size_t end = 0;
    while ((end = m_received.find('\n')) == std::string::npos) {
        if (!Receive())
            throw std::runtime_error("the peer has hung up");
    }
    if (Clock::now() >= deadline)
        throw std::runtime_error("timed out waiting for a message");
    Json::Value value = ReadJson(std::string_view(m_received).substr(0, end)).value();
    m_received.erase(0, end + 1);
    if (IsNotification(value))
        m_notifications.push_back(value);
    return value;
}

void Client::Send(std::string_view bytes) {
    if (!SendAll(m_fd.Get(), std::as_bytes(std::span(bytes))) && errno == EAGAIN)
        throw std::runtime_error("timed out sending");
}

bool Client::WaitForHangUp() {
    const Clock::time_point deadline = In(kPatience);
    while (Clock::now() < deadline) {
        if (!Receive())
            return true;
        m_received.clear();
    }
    return false;
}

bool Client::Receive() {
    std::array<char, 65536> buffer;
    const ssize_t got = recv(m_fd.Get(), buffer.data(), buffer.size(), 0);
    if (got < 0 && errno == EAGAIN)
        throw std::runtime_error("timed out receiving; so far: " + m_received.substr(0, 200));
    if (got <= 0)
        return false;
    m_received.append(buffer.data(), static_cast<std::size_t>(got));
    return true;
}

void Client::Abort() {
    const linger reset{1, 0};
    setsockopt(m_fd.Get(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    m_fd = Descriptor();
}

}  // namespace EndToEnd
