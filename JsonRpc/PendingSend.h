#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>

namespace Json::Rpc {

class ClientConnection;

/// How long clients may keep a message waiting: in all, and without a byte being taken.
struct SendPatience {
    std::chrono::nanoseconds total;
    std::chrono::nanoseconds stall;
};

/// One message on its way to one client. Belongs to one thread, which holds the client's turn from the first
/// byte to the last. The text must outlive it.
class PendingSend {
  public:
    enum class State {
        NeedsTurn,  ///< another thread's message is on its way to the client
        NeedsRoom,  ///< the client's buffer is full
        Done,
        Failed,
    };

    PendingSend(std::shared_ptr<ClientConnection> client, std::string_view text);

    /// Sends what can be sent without waiting. True when that was anything at all.
    bool Advance();

    /// Gives up: the connection is shut down, for a client must not be left with half a message.
    void Fail();

    State GetState() const { return m_state; }
    bool IsUnderWay() const { return m_state == State::NeedsTurn || m_state == State::NeedsRoom; }

    /// False while the one thing in the way is another thread's system call, which ends by itself.
    bool WaitsForClient() const;

    int Fd() const;

  private:
    void Finish(State state);

    std::shared_ptr<ClientConnection> m_client;
    std::unique_lock<std::mutex> m_turn;
    std::string_view m_left;
    State m_state = State::NeedsTurn;
};

/// Brings every message to Done or Failed, waiting for all the clients at the same time.
void Complete(std::span<PendingSend> sends, const SendPatience& patience);

}  // namespace Json::Rpc
