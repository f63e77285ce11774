#pragma once

#include <poll.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "JsonRpc/Server.h"

namespace Json::Rpc {

class ClientConnection;

/// JSON-RPC 2.0 over TCP: accepts clients, answers their requests, and sends them texts of the owner's own.
/// The server thread is the one that calls Bind, Listen, WaitMessage and Close; methods run there, inside
/// WaitMessage. No call throws for what a client does.
class TcpServer : public Server {
  public:
    /// The address is a numeric IPv4 or IPv6 text; with port 0 the system picks one.
    TcpServer(std::string address, std::uint16_t port);

    /// Closes what is open. No other thread may be inside a call.
    ~TcpServer() override;

    /// Binds the socket. False when the address is not valid or taken; may then be tried again. Server
    /// thread.
    bool Bind();

    /// Starts accepting; after Bind. False when another socket listens on the port already. Server thread.
    bool Listen();

    /// The port in use once bound, 0 before. Server thread, and any thread between Listen and Close.
    std::uint16_t GetPort() const;

    /// Waits until a client is ready, at most so many milliseconds (negative: for ever), serves all that are
    /// ready once and returns; a signal ends the wait early. Server thread.
    void WaitMessage(int milliseconds);

    /// The descriptors of the connected clients, oldest first. Any thread.
    std::vector<int> GetClients() const;

    /// Sends the text, whole, to one client; returns its length, or -1 when there is no such client or it did
    /// not take all of it within the limits of a response, in which case it has been disconnected. Any
    /// thread.
    ssize_t Send(int fd, std::string_view text);

    /// Sends the text to all clients at the same time, so that a slow one takes none of the others' time;
    /// those that did not take all of it within the limit of a broadcast have been disconnected. Returns how
    /// many clients got it. Any thread.
    std::size_t Broadcast(std::string_view text);

    /// Disconnects all clients and stops listening; again does nothing. Server thread, or any after its end.
    void Close();

  private:
    using Client = std::shared_ptr<ClientConnection>;

    Client FindClient(int fd) const;
    int PreparePolls(int milliseconds);
    void ServeReady();
    void Serve(const Client& client);
    void Receive(ClientConnection& client);
    void Dispatch(const Client& client);
    bool Reply(const Client& client, const FramedText& text);
    void Discard(ClientConnection& client);
    void RemoveFinished();
    void AcceptClients();
    bool RecoverFromAcceptError(int error);
    int RefuseWithSpareDescriptor();
    void AddClient(int fd);

    const std::string m_address;
    const std::uint16_t m_port;

    mutable std::mutex m_clientsMutex;  // never held across a system call on a socket
    std::vector<Client> m_clients;      // changed by the server thread, under the mutex; read there without
    std::mutex m_broadcastMutex;        // two broadcasts that wait for each other's turns would get nowhere

    // Server thread only.
    int m_listener = -1;
    int m_spareDescriptor = -1;  // let go to accept and refuse a client when descriptors have run out
    bool m_acceptPaused = false;
    std::chrono::steady_clock::time_point m_acceptAgain;
    std::vector<pollfd> m_polls;  // the listener, then the clients in their order
    std::vector<char> m_readBuffer;
};

}  // namespace Json::Rpc
