// A client of the service.
#pragma once

#include <json/json.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/EndToEnd/Socket.h"

namespace EndToEnd {

/// Throws std::runtime_error for text that is not JSON.
Json::Value ParseJson(const std::string& text);
std::string ToLine(const Json::Value& value);

/// The text of a request, without a newline.
std::string Request(const std::string& method, const Json::Value& id,
                    const Json::Value& params = Json::nullValue);

/// Every wait throws Timeout at its deadline.
class RpcClient {
  public:
    static constexpr const char* kLoopback = "127.0.0.1";

    explicit RpcClient(const std::string& address = kLoopback, int receiveBuffer = 0)
        : m_socket(LineSocket::ConnectTcp(address, receiveBuffer)) {}

    /// The whole reply. Notifications that come before it are kept.
    Json::Value Call(const std::string& method, const Json::Value& params = Json::nullValue);
    /// The reply's "result".
    Json::Value Result(const std::string& method, const Json::Value& params = Json::nullValue) {
        return Call(method, params)["result"];
    }
    /// Sends `text` and answers with the next line that is not a notification.
    Json::Value Exchange(std::string_view text);

    using Predicate = std::function<bool(const Json::Value& params)>;
    /// The text of the next notification with this name and with parameters that please; those before it are
    /// dropped.
    std::string Notification(
        const std::string& method, const Predicate& pleases = [](const Json::Value&) { return true; },
        milliseconds patience = kPatience);
    /// Every notification received on this connection so far.
    const std::vector<std::string>& History() const { return m_history; }

    LineSocket& Socket() { return m_socket; }

  private:
    /// Also keeps its text when it is a notification.
    Json::Value NextMessage(milliseconds patience);

    LineSocket m_socket;
    std::vector<std::string> m_history;
    std::size_t m_nextAsked = 0;  // in m_history
    int m_lastId = 0;
};

}  // namespace EndToEnd
