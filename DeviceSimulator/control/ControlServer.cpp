#include "DeviceSimulator/control/ControlServer.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <span>
#include <utility>

#include "DeviceSimulator/control/ControlCommands.h"
#include "DeviceSimulator/wire/Thread.h"
#include "ServiceUtil/LocalSocket.h"
#include "ServiceUtil/Poll.h"

namespace DeviceSimulator {

namespace {

/// Longer than this no client may keep an answer waiting.
constexpr timeval kSendTimeout{5, 0};
/// After a failed accept, for want of descriptors or memory.
constexpr int kAcceptPauseMs = 100;

/// A run that has ended leaves its socket behind, which may go; anything else at the path stays.
bool IsFree(const std::string& path, const LocalAddress& address) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return true;
    }
    const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return S_ISSOCK(status.st_mode) && probe.IsOpen() &&
           connect(probe.Get(), address.Generic(), address.length) != 0 && errno == ECONNREFUSED;
}

/// Made beside `path` and moved there, so that whoever sees it can connect.
Descriptor Listen(const std::string& path) {
    const std::string unready = path + ".new";
    const auto address = LocalAddressOf(path);
    const auto unreadyAddress = LocalAddressOf(unready);
    if (!address || !unreadyAddress) {
        return Descriptor{};
    }
    if (!IsFree(path, *address)) {
        errno = EADDRINUSE;
        return Descriptor{};
    }
    unlink(unready.c_str());
    Descriptor listener = ListenLocally(*unreadyAddress, static_cast<int>(ControlServer::kMostClients));
    const bool isGood = listener.IsOpen() && rename(unready.c_str(), path.c_str()) == 0;
    return isGood ? std::move(listener) : Descriptor{};
}

bool SendText(int socket, std::string_view text) {
    return SendAll(socket, std::as_bytes(std::span(text)));
}

/// Whether it has sent what its thread has not taken yet.
bool HasSent(int socket) {
    int bytes = 0;
    return ioctl(socket, FIONREAD, &bytes) == 0 && bytes > 0;
}

/// Gone for good: one that has only closed its own half still wants its answer.
bool HasHungUp(int socket) {
    pollfd state{socket, 0, 0};
    return poll(&state, 1, 0) > 0;
}

}  // namespace

/// Read and answered by a thread of its own.
struct ControlServer::Client {
    enum class State { Silent, Answered, Dropped, Done };

    explicit Client(Descriptor connection)
        : socket(std::move(connection)), thread(StartThread("devmgr-control", [this] {
              Serve();
              shutdown(socket.Get(), SHUT_RDWR);
              state = State::Done;
          })) {}
    ~Client() {
        state = State::Dropped;
        shutdown(socket.Get(), SHUT_RDWR);
        thread.join();
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    void Serve();
    /// False when the connection is to be closed.
    bool AnswerLines(std::string& pending);
    bool Answer(std::string_view line);
    /// False, and nothing is changed, when it is not in `from`.
    bool Change(State from, State to) { return state.compare_exchange_strong(from, to); }

    const Descriptor socket;
    std::atomic<State> state{State::Silent};
    std::atomic<std::chrono::steady_clock::time_point> lastHeard{std::chrono::steady_clock::now()};
    std::thread thread;
};

std::unique_ptr<ControlServer> ControlServer::Open(const std::string& path) {
    Descriptor listener = Listen(path);
    if (!listener.IsOpen()) {
        std::fprintf(stderr, "device simulator: no control socket at %s: %s\n", path.c_str(),
                     std::strerror(errno));
        return nullptr;
    }
    return std::unique_ptr<ControlServer>(new ControlServer(std::move(listener), path));
}

ControlServer::ControlServer(Descriptor listener, std::string path)
    : m_listener(std::move(listener)),
      m_path(std::move(path)),
      m_thread(StartThread("devmgr-control", [this] { Accept(); })) {}

ControlServer::~ControlServer() {
    shutdown(m_listener.Get(), SHUT_RDWR);
    m_thread.join();
    m_clients.clear();
    unlink(m_path.c_str());
}

void ControlServer::Accept() {
    for (;;) {
        Descriptor socket(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!socket.IsOpen() && errno == EINVAL) {
            // Nobody listens any more.
            return;
        }
        if (!socket.IsOpen() && errno != EINTR) {
            poll(nullptr, 0, kAcceptPauseMs);
        }
        m_clients.remove_if([](const Client& client) { return client.state == Client::State::Done; });
        if (socket.IsOpen()) {
            Admit(std::move(socket));
        }
    }
}

void ControlServer::Admit(Descriptor socket) {
    setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &kSendTimeout, sizeof(kSendTimeout));
    if (m_clients.size() >= kMostClients && !DropSilentClient()) {
        SendText(socket.Get(), "{\"error\":\"too many clients\",\"ok\":false}\n");
        return;
    }
    try {
        m_clients.emplace_back(std::move(socket));
    } catch (const std::exception&) {
        // No thread can be had: the connection is closed.
    }
}

bool ControlServer::DropSilentClient() {
    for (;;) {
        auto silent = m_clients.end();
        for (auto client = m_clients.begin(); client != m_clients.end(); ++client) {
            const bool isSilent = client->state == Client::State::Silent && !HasSent(client->socket.Get());
            if (isSilent &&
                (silent == m_clients.end() || client->lastHeard.load() < silent->lastHeard.load())) {
                silent = client;
            }
        }
        if (silent == m_clients.end()) {
            return false;
        }
        // One that has just sent something is silent no longer.
        if (silent->Change(Client::State::Silent, Client::State::Dropped)) {
            m_clients.erase(silent);
            return true;
        }
    }
}

void ControlServer::Client::Serve() {
    std::string pending;
    std::array<char, 4096> buffer;
    for (bool isOpen = true; isOpen;) {
        pollfd entry{socket.Get(), POLLIN, 0};
        PollUntil({&entry, 1}, std::nullopt);
        // Before what it has sent is taken, so that it counts as silent at no time in between.
        if (!Change(State::Silent, State::Answered)) {
            return;
        }
        const ssize_t count = recv(socket.Get(), buffer.data(), buffer.size(), 0);
        // What a client sends last need not end in a line end.
        pending += count > 0 ? std::string_view(buffer.data(), static_cast<std::size_t>(count)) : "\n";
        isOpen = AnswerLines(pending) && count > 0 && Change(State::Answered, State::Silent);
    }
}

bool ControlServer::Client::AnswerLines(std::string& pending) {
    for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        if (!Answer(std::string_view(pending).substr(0, end))) {
            return false;
        }
        pending.erase(0, end + 1);
    }
    if (pending.size() > kLongestLine) {
        SendText(socket.Get(), "{\"error\":\"the line is too long\",\"ok\":false}\n");
        return false;
    }
    return true;
}

bool ControlServer::Client::Answer(std::string_view line) {
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
        return true;
    }
    const bool isSent =
        SendText(socket.Get(), AnswerControlLine(line, [this] { return HasHungUp(socket.Get()); }) + "\n");
    lastHeard = std::chrono::steady_clock::now();
    return isSent;
}

}  // namespace DeviceSimulator
