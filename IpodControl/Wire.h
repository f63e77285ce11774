// A connection to the service that never waits: lines out, messages in.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Endpoint.h"
#include "IpodControl/Message.h"
#include "IpodControl/Problem.h"

namespace IpodControl {

/// One thread uses it. After a problem it is closed, and may be opened again.
class Wire {
  public:
    Wire() = default;
    ~Wire() { Close(); }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    /// Connects anew; the only operation that waits, up to `deadline` (a name's look-up may take longer).
    Outcome<Done> Open(const Endpoint& endpoint, Deadline deadline);
    void Close();
    bool IsOpen() const { return m_socket >= 0; }
    /// Where this side of the connection stands, for a message.
    const Endpoint& Peer() const { return m_peer; }

    /// To poll for input, and for output while WantsToWrite().
    int Descriptor() const { return m_socket; }
    bool WantsToWrite() const { return !m_unsent.empty(); }

    /// Sends `line`, which has no line end of its own; what does not go at once is kept for Flush.
    Outcome<Done> Send(std::string_view line);
    Outcome<Done> Flush();
    /// Nothing more will be sent: once what is kept has gone, the service answers that and closes.
    Outcome<Done> EndSending();
    /// What has come. Text that is no JSON-RPC is a problem, told at its first byte where that says so; of
    /// what came before it nothing is lost: it is handed out first, and the problem at the next call.
    Outcome<std::vector<Message>> Receive();

  private:
    Problem Fail(ProblemKind kind, std::string text);
    /// False at the connection's end.
    Outcome<bool> ReadSome();
    Outcome<std::vector<Message>> TakeMessages();

    Endpoint m_peer;
    int m_socket = -1;
    std::string m_unsent;
    std::string m_received;      // from the last line end on
    std::size_t m_searched = 0;  // of m_received: holds no line end
    bool m_hasEnded = false;
    bool m_endsSending = false;  // once m_unsent has gone
};

}  // namespace IpodControl
