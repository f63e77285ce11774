// The connection to the service: lines out, messages in, and the one place where this room waits for them.
#pragma once

#include <poll.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "IpodControl/Message.h"
#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/Poll.h"

namespace IpodControl {

/// Where a service listens.
struct Endpoint {
    std::string host = "127.0.0.1";  ///< a name or an address
    std::uint16_t port = 8883;
};

inline std::string ToText(const Endpoint& endpoint) {
    const bool isSixth = endpoint.host.find(':') != std::string::npos;
    return (isSixth ? '[' + endpoint.host + ']' : endpoint.host) + ':' + std::to_string(endpoint.port);
}

enum class ProblemKind {
    NoConnection,   ///< nobody listens there, or the name means nothing
    Closed,         ///< the other side ended the connection
    TimedOut,       ///< nothing came in time
    NotTheService,  ///< what came is no JSON-RPC
};

struct Problem {
    ProblemKind kind = ProblemKind::Closed;
    std::string text;  ///< one sentence for a person, without a line end
};

/// A value, or why there is none.
template <typename T>
class [[nodiscard]] Outcome {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): returned as the value that it is
    Outcome(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    // NOLINTNEXTLINE(google-explicit-constructor)
    Outcome(Problem problem) : m_content(std::in_place_index<1>, std::move(problem)) {}

    explicit operator bool() const { return m_content.index() == 0; }
    T& operator*() { return std::get<0>(m_content); }
    const T& operator*() const { return std::get<0>(m_content); }
    T* operator->() { return &std::get<0>(m_content); }
    const T* operator->() const { return &std::get<0>(m_content); }
    /// Only of an outcome without a value.
    const Problem& Why() const { return std::get<1>(m_content); }

  private:
    std::variant<T, Problem> m_content;
};

/// For what has nothing to give back.
struct Done {};

/// One thread uses it. After a problem it is closed, and may be opened again.
class Wire {
  public:
    Wire() = default;
    /// Connects anew, which waits up to `deadline` (a name's look-up may take longer).
    Outcome<Done> Open(const Endpoint& endpoint, Deadline deadline);
    void Close() { *this = Wire(std::move(m_peer)); }
    bool IsOpen() const { return m_socket.IsOpen(); }

    /// Sends `line`, which has no line end of its own; what does not go at once is sent by Wait.
    Outcome<Done> Send(std::string_view line);
    bool HasUnsent() const { return !m_unsent.empty(); }
    /// Nothing more will be sent: once what is kept has gone, the service answers that and closes.
    Outcome<Done> EndSending();

    /// Waits until messages have come, until one of `others` is ready, as its `revents` then tell, or until
    /// `deadline`; a closed wire waits for the others alone. What has come is handed over: maybe nothing, and
    /// not everything at once when there is much. Text that is no JSON-RPC is a problem, told at its first
    /// byte where that says so; of what came before it nothing is lost: it is handed out first, and the
    /// problem at the next call.
    Outcome<std::vector<Message>> Wait(std::optional<Deadline> deadline, std::span<pollfd> others = {});

  private:
    explicit Wire(Endpoint peer) : m_peer(std::move(peer)) {}
    Problem Fail(ProblemKind kind, std::string text);
    Problem FailAsClosed();
    Outcome<Done> Flush();
    Outcome<std::vector<Message>> Receive();
    /// False when there is no more for now, or for good.
    bool ReadSome();
    Outcome<std::vector<Message>> TakeMessages();

    Endpoint m_peer;
    Descriptor m_socket;
    std::string m_unsent;
    std::string m_received;      // from the last line end on
    std::size_t m_searched = 0;  // of m_received: holds no line end
    bool m_hasEnded = false;
    bool m_endsSending = false;  // once m_unsent has gone
};

}  // namespace IpodControl
