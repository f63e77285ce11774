#include "JsonRpc/TcpServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <malloc.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <utility>

#include "JsonRpc/ClientConnection.h"
#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/PendingSend.h"

namespace Json::Rpc {

namespace {

using Clock = std::chrono::steady_clock;
using Phase = ClientConnection::Phase;

constexpr SendPatience kResponsePatience{Limits::kResponseWait, Limits::kResponseStall};

union SocketAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

/// The address's length; 0 when the text is no numeric address.
socklen_t ParseAddress(const std::string& text, std::uint16_t port, SocketAddress& address) {
    address = {};
    if (::inet_pton(AF_INET, text.c_str(), &address.ipv4.sin_addr) == 1) {
        address.ipv4.sin_family = AF_INET;
        address.ipv4.sin_port = htons(port);
        return sizeof(address.ipv4);
    }
    address = {};
    if (::inet_pton(AF_INET6, text.c_str(), &address.ipv6.sin6_addr) == 1) {
        address.ipv6.sin6_family = AF_INET6;
        address.ipv6.sin6_port = htons(port);
        return sizeof(address.ipv6);
    }
    return 0;
}

bool IsTransient(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

void CloseDescriptor(int& fd) {
    if (fd >= 0) {
        ::close(std::exchange(fd, -1));
    }
}

int OpenSpareDescriptor() {
    return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

ssize_t SendResponse(std::shared_ptr<ClientConnection> client, std::string_view text) {
    PendingSend send(std::move(client), text);
    Complete({&send, 1}, kResponsePatience);
    return send.GetState() == PendingSend::State::Done ? static_cast<ssize_t>(text.size()) : -1;
}

}  // namespace

TcpServer::TcpServer(std::string address, std::uint16_t port)
    : m_address(std::move(address)), m_port(port), m_readBuffer(Limits::kReadBytesPerRound) {}

TcpServer::~TcpServer() {
    Close();
}

bool TcpServer::Bind() {
    SocketAddress address;
    const socklen_t length = ParseAddress(m_address, m_port, address);
    if (length == 0 || m_listener >= 0) {
        return false;
    }
    m_listener = ::socket(address.any.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    // A restart must not wait for the connections of the run before to time out.
    const int on = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
    if (::bind(m_listener, &address.any, length) != 0) {
        CloseDescriptor(m_listener);
        return false;
    }
    return true;
}

bool TcpServer::Listen() {
    if (::listen(m_listener, SOMAXCONN) != 0) {
        return false;
    }
    m_spareDescriptor = OpenSpareDescriptor();
    return true;
}

std::uint16_t TcpServer::GetPort() const {
    SocketAddress address{};
    socklen_t length = sizeof(address);
    if (::getsockname(m_listener, &address.any, &length) != 0) {
        return 0;
    }
    return ntohs(address.any.sa_family == AF_INET6 ? address.ipv6.sin6_port : address.ipv4.sin_port);
}

void TcpServer::WaitMessage(int milliseconds) {
    try {
        RemoveFinished();
        const int timeout = PreparePolls(milliseconds);
        const int ready = ::poll(m_polls.data(), static_cast<nfds_t>(m_polls.size()), timeout);
        if (ready < 0 && errno != EINTR) {
            ::poll(nullptr, 0,
                   static_cast<int>(Limits::kAcceptPause.count()));  // no memory for it: do not spin
        }
        if (ready >= 0) {
            ServeReady();
            RemoveFinished();
        }
    } catch (const std::exception&) {
        // Out of memory between two clients: what was not served is still there in the next round.
    }
}

/// Fills the list of what to wait for and returns how long.
int TcpServer::PreparePolls(int milliseconds) {
    m_polls.clear();
    if (m_acceptPaused && Clock::now() >= m_acceptAgain) {
        m_acceptPaused = false;
    }
    if (m_acceptPaused) {
        const int pause = static_cast<int>(Limits::kAcceptPause.count());
        milliseconds = milliseconds < 0 ? pause : std::min(milliseconds, pause);
    }
    m_polls.push_back({m_acceptPaused ? -1 : m_listener, POLLIN, 0});
    for (const Client& client : m_clients) {
        m_polls.push_back({client->hasBacklog ? -1 : client->Fd(), POLLIN, 0});
        milliseconds = client->hasBacklog ? 0 : milliseconds;
    }
    return milliseconds;
}

void TcpServer::ServeReady() {
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        if (m_polls[i + 1].revents != 0 || m_clients[i]->hasBacklog) {
            Serve(m_clients[i]);
        }
    }
    if (m_polls[0].revents != 0) {
        AcceptClients();
    }
}

void TcpServer::Serve(const Client& client) {
    try {
        if (client->phase == Phase::Draining) {
            Discard(*client);
            return;
        }
        if (!client->hasBacklog) {
            Receive(*client);
        }
        Dispatch(client);
    } catch (const std::exception&) {
        client->Shutdown();  // out of memory for what this client asks
        client->hasBacklog = false;
    }
}

void TcpServer::Receive(ClientConnection& client) {
    const ssize_t count = ::recv(client.Fd(), m_readBuffer.data(), m_readBuffer.size(), MSG_DONTWAIT);
    if (count > 0) {
        client.scanner.Append({m_readBuffer.data(), static_cast<std::size_t>(count)});
    } else if (count == 0) {
        client.scanner.End();
        client.phase = Phase::Ended;
    } else if (!IsTransient(errno)) {
        client.Shutdown();
    }
}

void TcpServer::Dispatch(const Client& client) {
    client->hasBacklog = false;
    for (int served = 0; served < Limits::kTextsPerRound; ++served) {
        const auto text = client->scanner.Next();
        if (!text) {
            client->phase = client->phase == Phase::Ended ? Phase::Finished : client->phase;
            return;
        }
        if (!Reply(client, *text)) {
            return;
        }
        if (text->kind == FramedText::Kind::TooLong) {
            client->CloseSending();
            client->phase = Phase::Draining;
            client->drainEnd = Clock::now() + Limits::kDrainTime;
            return;
        }
    }
    client->hasBacklog = true;
}

/// False when the client did not take it.
bool TcpServer::Reply(const Client& client, const FramedText& text) {
    std::string reply = Answer(text);
    const bool isTaken = SendResponse(client, reply) >= 0;
    if (reply.size() >= Limits::kTrimReplyBytes) {
        // A long list is built of hundreds of thousands of small blocks, which the allocator would keep.
        std::string().swap(reply);
        ::malloc_trim(0);
    }
    return isTaken;
}

void TcpServer::Discard(ClientConnection& client) {
    const ssize_t count = ::recv(client.Fd(), m_readBuffer.data(), m_readBuffer.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && !IsTransient(errno))) {
        client.phase = Phase::Finished;
    }
}

void TcpServer::RemoveFinished() {
    const auto isFinished = [](const Client& client) {
        if (client->phase == Phase::Draining) {
            return Clock::now() >= client->drainEnd;
        }
        return client->phase == Phase::Finished || client->IsDown();
    };
    if (std::any_of(m_clients.begin(), m_clients.end(), isFinished)) {
        const std::lock_guard lock(m_clientsMutex);
        std::erase_if(m_clients, isFinished);
    }
}

void TcpServer::AcceptClients() {
    for (int i = 0; i < Limits::kAcceptsPerRound; ++i) {
        const int fd = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0) {
            AddClient(fd);
        } else if (!RecoverFromAcceptError(errno)) {
            return;
        }
    }
}

/// True when there may be another client to accept.
bool TcpServer::RecoverFromAcceptError(int error) {
    if (error == EINTR || error == ECONNABORTED) {
        return true;
    }
    if (error == EMFILE || error == ENFILE) {
        error = RefuseWithSpareDescriptor();
    }
    if (error == 0 || IsTransient(error)) {
        return error == 0;
    }
    // The client stays in the queue and the listener ready, so polling it at once would spin.
    m_acceptPaused = true;
    m_acceptAgain = Clock::now() + Limits::kAcceptPause;
    return false;
}

/// Accepts and closes one client in the spare's place. Returns 0 or the error of accept.
int TcpServer::RefuseWithSpareDescriptor() {
    CloseDescriptor(m_spareDescriptor);
    int fd = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int error = fd >= 0 ? 0 : errno;
    CloseDescriptor(fd);
    m_spareDescriptor = OpenSpareDescriptor();
    return error;
}

void TcpServer::AddClient(int fd) {
    if (m_clients.size() >= Limits::kClients) {
        ::close(fd);
        return;
    }
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    auto client = std::make_shared<ClientConnection>(fd);
    const std::lock_guard lock(m_clientsMutex);
    m_clients.push_back(std::move(client));
}

std::vector<int> TcpServer::GetClients() const {
    const std::lock_guard lock(m_clientsMutex);
    std::vector<int> descriptors;
    descriptors.reserve(m_clients.size());
    for (const Client& client : m_clients) {
        if (!client->IsDown()) {
            descriptors.push_back(client->Fd());
        }
    }
    return descriptors;
}

TcpServer::Client TcpServer::FindClient(int fd) const {
    const std::lock_guard lock(m_clientsMutex);
    const auto found = std::find_if(m_clients.begin(), m_clients.end(),
                                    [fd](const Client& client) { return client->Fd() == fd; });
    return found != m_clients.end() ? *found : nullptr;
}

ssize_t TcpServer::Send(int fd, std::string_view text) {
    Client client = FindClient(fd);
    return client ? SendResponse(std::move(client), text) : -1;
}

std::size_t TcpServer::Broadcast(std::string_view text) {
    const std::lock_guard broadcast(m_broadcastMutex);
    std::vector<PendingSend> sends;
    {
        const std::lock_guard lock(m_clientsMutex);
        sends.reserve(m_clients.size());
        for (const Client& client : m_clients) {
            sends.emplace_back(client, text);
        }
    }
    Complete(sends, {Limits::kBroadcastWait, Limits::kBroadcastWait});
    return static_cast<std::size_t>(std::count_if(sends.begin(), sends.end(), [](const PendingSend& send) {
        return send.GetState() == PendingSend::State::Done;
    }));
}

void TcpServer::Close() {
    std::vector<Client> clients;
    {
        const std::lock_guard lock(m_clientsMutex);
        clients.swap(m_clients);
    }
    for (const Client& client : clients) {
        client->Shutdown();
    }
    CloseDescriptor(m_listener);
    CloseDescriptor(m_spareDescriptor);
}

}  // namespace Json::Rpc
