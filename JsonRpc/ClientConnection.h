#pragma once

#include <atomic>
#include <chrono>
#include <mutex>

#include "JsonRpc/MessageScanner.h"

namespace Json::Rpc {

/// One client's socket. Shared by the server's list and by whoever is sending to the client; the last one to
/// let go closes the descriptor, so its number never names another file while anyone still uses it.
class ClientConnection {
  public:
    /// How far the server thread has come with the client.
    enum class Phase {
        Serving,   ///< requests are read and answered
        Ended,     ///< the client has sent its last byte; what it asked for is still to be answered
        Draining,  ///< closed for sending, and what arrives is thrown away
        Finished,  ///< to be removed
    };

    /// Takes over the descriptor of a connected socket.
    explicit ClientConnection(int fd) : m_fd(fd) {}
    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;
    ~ClientConnection();

    int Fd() const { return m_fd; }

    /// True once nothing can be sent to the client any more. Any thread.
    bool IsDown() const { return m_isDown.load(); }

    /// Ends the connection in both directions; sends under way fail. Any thread.
    void Shutdown();

    /// Waits for a send under way, then ends the stream to the client: it can read what was sent and then
    /// sees the end. Any thread.
    void CloseSending();

    /// Held for as long as one message takes, so that messages of two threads never mix. Any thread.
    std::mutex& SendTurn() { return m_sendTurn; }

    /// Whether the thread whose turn it is waits for the client. Written by that thread, read by any.
    bool IsStalled() const { return m_isStalled.load(); }
    void SetStalled(bool isStalled) { m_isStalled.store(isStalled); }

    // Server thread only.
    MessageScanner scanner;
    Phase phase = Phase::Serving;
    bool hasBacklog = false;  ///< the scanner may hold texts that were not served in this round
    std::chrono::steady_clock::time_point drainEnd;

  private:
    const int m_fd;
    std::mutex m_sendTurn;
    std::atomic<bool> m_isDown{false};
    std::atomic<bool> m_isStalled{false};
};

}  // namespace Json::Rpc
