#include "DeviceSimulator/control/ControlServer.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <span>
#include <utility>

#include "DeviceSimulator/control/ControlCommands.h"
#include "DeviceSimulator/wire/Thread.h"
#include "ServiceUtil/LocalSocket.h"

namespace DeviceSimulator {

namespace {

/// Longer than this no client may keep an answer waiting.
constexpr timeval kSendTimeout{5, 0};
/// After a failed accept, for want of descriptors or memory.
constexpr int kAcceptPauseMs = 100;

/// A run that has ended leaves its socket behind; anything else at the path stays.
void RemoveStale(const std::string& path, const LocalAddress& address) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return;
    }
    const Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (probe.IsOpen() && connect(probe.Get(), address.Generic(), address.length) != 0 &&
        errno == ECONNREFUSED) {
        unlink(path.c_str());
    }
}

/// Made beside `path` and moved there, so that whoever sees it can connect.
Descriptor Listen(const std::string& path) {
    const std::string unready = path + ".new";
    const auto address = LocalAddressOf(path);
    const auto unreadyAddress = LocalAddressOf(unready);
    if (!address || !unreadyAddress) {
        return Descriptor{};
    }
    RemoveStale(path, *address);
    if (access(path.c_str(), F_OK) == 0) {
        errno = EADDRINUSE;
        return Descriptor{};
    }
    unlink(unready.c_str());
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    // The mode of the socket to be: set before bind, so that it never stands open to others.
    const bool isGood = listener.IsOpen() && fchmod(listener.Get(), S_IRUSR | S_IWUSR) == 0 &&
                        bind(listener.Get(), unreadyAddress->Generic(), unreadyAddress->length) == 0 &&
                        listen(listener.Get(), static_cast<int>(ControlServer::kMostClients)) == 0 &&
                        rename(unready.c_str(), path.c_str()) == 0;
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
    m_isStopping = true;
    shutdown(m_listener.Get(), SHUT_RDWR);
    m_thread.join();
    for (Client& client : m_clients) {
        shutdown(client.socket.Get(), SHUT_RDWR);
        client.thread.join();
    }
    unlink(m_path.c_str());
}

void ControlServer::Accept() {
    while (!m_isStopping) {
        Descriptor socket(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        Reap();
        if (socket.IsOpen()) {
            Admit(std::move(socket));
        } else if (errno != EINTR && !m_isStopping) {
            poll(nullptr, 0, kAcceptPauseMs);
        }
    }
}

void ControlServer::Admit(Descriptor socket) {
    const int fd = socket.Get();
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &kSendTimeout, sizeof(kSendTimeout));
    const std::lock_guard lock(m_mutex);
    if (m_clients.size() >= kMostClients && !DropSilentClient()) {
        SendText(fd, "{\"error\":\"too many clients\",\"ok\":false}\n");
        return;
    }
    Client& client = m_clients.emplace_back();
    client.socket = std::move(socket);
    client.lastHeard = ++m_heard;
    try {
        client.thread = StartThread("devmgr-control", [this, &client] {
            Serve(client);
            shutdown(client.socket.Get(), SHUT_RDWR);
            client.isDone = true;
        });
    } catch (const std::exception&) {
        m_clients.pop_back();
    }
}

void ControlServer::Serve(Client& client) {
    std::string pending;
    std::array<char, 4096> buffer;
    for (;; client.isBeingAnswered = false) {
        // Before what it has sent is taken, so that it counts as silent at no time in between.
        client.isBeingAnswered = recv(client.socket.Get(), buffer.data(), 1, MSG_PEEK) > 0;
        const ssize_t count = recv(client.socket.Get(), buffer.data(), buffer.size(), 0);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            // What a client sends last need not end in a line end.
            if (!pending.empty() && !client.isDropped && !m_isStopping) {
                client.isBeingAnswered = true;
                Answer(client, pending);
            }
            return;
        }
        pending.append(buffer.data(), static_cast<std::size_t>(count));
        if (!AnswerLines(client, pending)) {
            return;
        }
    }
}

bool ControlServer::AnswerLines(Client& client, std::string& pending) {
    std::size_t start = 0;
    for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n', start)) {
        if (!Answer(client, std::string_view(pending).substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    pending.erase(0, start);
    if (pending.size() > kLongestLine) {
        SendText(client.socket.Get(), "{\"error\":\"the line is too long\",\"ok\":false}\n");
        return false;
    }
    return true;
}

bool ControlServer::Answer(Client& client, std::string_view line) {
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
        return true;
    }
    const int socket = client.socket.Get();
    const std::string answer = AnswerControlLine(line, [&] { return m_isStopping || HasHungUp(socket); });
    const bool isSent = SendText(socket, answer + "\n");
    client.lastHeard = ++m_heard;
    return isSent;
}

bool ControlServer::DropSilentClient() {
    auto silent = m_clients.end();
    for (auto client = m_clients.begin(); client != m_clients.end(); ++client) {
        const bool isSilent = !HasSent(client->socket.Get()) && !client->isBeingAnswered;
        if (isSilent && (silent == m_clients.end() || client->lastHeard < silent->lastHeard)) {
            silent = client;
        }
    }
    if (silent == m_clients.end()) {
        return false;
    }
    silent->isDropped = true;
    shutdown(silent->socket.Get(), SHUT_RDWR);
    silent->thread.join();
    m_clients.erase(silent);
    return true;
}

void ControlServer::Reap() {
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_clients, [](Client& client) {
        const bool isDone = client.isDone;
        if (isDone) {
            client.thread.join();
        }
        return isDone;
    });
}

}  // namespace DeviceSimulator
