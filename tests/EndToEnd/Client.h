// A client of the service's port, or of the simulated player's control socket: both speak JSON by lines.
#pragma once

#include <json/json.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "ServiceUtil/Descriptor.h"
#include "tests/Support/Deadline.h"

namespace EndToEnd {

using std::chrono::milliseconds;
using TestSupport::Clock;
using TestSupport::In;
using TestSupport::kPatience;
using TestSupport::Require;
using TestSupport::WaitUntil;

inline constexpr const char* kLoopback = "127.0.0.1";

/// Of the service's port at a numeric address.
sockaddr_in ServiceAddress(const std::string& address);

/// A JSON value from its text with ' for ". Throws for what is none.
Json::Value Quoted(std::string text);
/// The text of a request, without a newline. `params`: as for Quoted.
std::string Request(const std::string& method, int id, const std::string& params = "null");

/// Every wait throws std::runtime_error at its deadline.
class Client {
  public:
    /// A TCP client of an address, or a client of the Unix socket at a path. Throws std::system_error when
    /// nobody listens.
    explicit Client(const std::string& address = kLoopback);
    /// The first one that gets through to an address or a path; `onFailure` is called after each that does
    /// not, and may throw.
    static Client Await(
        const std::string& address, const std::function<void()>& onFailure = [] {});

    /// The whole reply. `params`: as for Quoted.
    Json::Value Call(const std::string& method, const std::string& params = "null");
    /// The reply's "result".
    Json::Value Result(const std::string& method, const std::string& params = "null") {
        return Call(method, params)["result"];
    }
    /// Sends `text` and answers with the next line that is not a notification.
    Json::Value Exchange(std::string_view text);

    using Predicate = std::function<bool(const Json::Value& params)>;
    /// The parameters of the next notification with this name and with parameters that please; those before
    /// it are dropped.
    Json::Value Notification(
        const std::string& method, const Predicate& pleases = [](const Json::Value&) { return true; });

    /// What the peer takes of `bytes` until it hangs up.
    void Send(std::string_view bytes);
    /// Reads on, and drops what comes, until the peer hangs up.
    bool WaitForHangUp();
    void ShutDownSending() { shutdown(m_fd.Get(), SHUT_WR); }
    /// Hangs up with a reset instead of an orderly end.
    void Abort();

  private:
    /// Also keeps it when it is a notification.
    Json::Value NextMessage(Clock::time_point deadline);
    /// False at the end of the stream.
    bool Receive();

    Descriptor m_fd;
    std::string m_received;
    std::deque<Json::Value> m_notifications;  // that nobody has asked for yet
    int m_lastId = 0;
};

}  // namespace EndToEnd
