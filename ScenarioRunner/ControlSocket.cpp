#include "ScenarioRunner/ControlSocket.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "ScenarioRunner/LineReader.h"

namespace ScenarioRunner {

using IpodControl::Done;
using IpodControl::Outcome;
using IpodControl::ProblemKind;

Outcome<Done> ControlSocket::Open(const std::string& path) {
    Close();
    m_path = path;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return Fail(ProblemKind::NoConnection, "is too long a path for a control socket");
    }
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0 || connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return Fail(ProblemKind::NoConnection,
                    std::string("is no control socket that answers: ") + std::strerror(errno));
    }
    const timeval patience{5, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    return Done{};
}

void ControlSocket::Close() {
    if (m_socket >= 0) {
        close(std::exchange(m_socket, -1));
    }
    m_received.clear();
}

Outcome<Done> ControlSocket::Send(std::string_view line) {
    std::string rest = std::string(line) + '\n';
    while (!rest.empty()) {
        const ssize_t sent = send(m_socket, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent > 0) {
            rest.erase(0, static_cast<std::size_t>(sent));
        } else if (errno != EINTR) {
            return Fail(ProblemKind::Closed, "has closed the connection");
        }
    }
    return Done{};
}

Outcome<std::vector<Json::Value>> ControlSocket::Receive() {
    std::array<char, 65536> bytes;
    const ssize_t count = recv(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
        return Fail(ProblemKind::Closed, "has closed the connection");
    }
    m_received.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    std::vector<Json::Value> answers;
    std::size_t begin = 0;
    for (auto end = m_received.find('\n'); end != std::string::npos; end = m_received.find('\n', begin)) {
        Json::Value answer;
        if (!ParseJson(std::string_view(m_received).substr(begin, end - begin), answer) ||
            !answer.isObject()) {
            return Fail(ProblemKind::NotTheService, "does not answer as a control socket does");
        }
        answers.push_back(std::move(answer));
        begin = end + 1;
    }
    m_received.erase(0, begin);
    return answers;
}

IpodControl::Problem ControlSocket::Fail(ProblemKind kind, const std::string& what) {
    Close();
    return {kind, m_path + ' ' + what};
}

}  // namespace ScenarioRunner
