#include "JsonRpc/PendingSend.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "JsonRpc/ClientConnection.h"

namespace Json::Rpc {

namespace {

using Clock = std::chrono::steady_clock;

// How often to ask again for the turn that another thread holds.
constexpr std::chrono::milliseconds kTurnInterval{1};

bool AdvanceAll(std::span<PendingSend> sends) {
    bool anySent = false;
    for (PendingSend& send : sends) {
        anySent = (send.IsUnderWay() && send.Advance()) || anySent;
    }
    return anySent;
}

bool AnyUnderWay(std::span<const PendingSend> sends) {
    return std::any_of(sends.begin(), sends.end(), [](const PendingSend& send) { return send.IsUnderWay(); });
}

void WaitForRoom(std::span<const PendingSend> sends, std::chrono::nanoseconds atMost) {
    std::vector<pollfd> polls;
    for (const PendingSend& send : sends) {
        if (send.GetState() == PendingSend::State::NeedsRoom) {
            polls.push_back({send.Fd(), POLLOUT, 0});
        } else if (send.GetState() == PendingSend::State::NeedsTurn) {
            atMost = std::min<std::chrono::nanoseconds>(atMost, kTurnInterval);
        }
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(atMost);
    ::poll(polls.data(), static_cast<nfds_t>(polls.size()), static_cast<int>(wait.count()));
}

void FailThoseThatWaitForClients(std::span<PendingSend> sends) {
    for (PendingSend& send : sends) {
        if (send.WaitsForClient()) {
            send.Fail();
        }
    }
}

}  // namespace

PendingSend::PendingSend(std::shared_ptr<ClientConnection> client, std::string_view text)
    : m_client(std::move(client)), m_turn(m_client->SendTurn(), std::defer_lock), m_left(text) {}

bool PendingSend::Advance() {
    if (!m_turn.owns_lock() && !m_turn.try_lock()) {
        return false;
    }
    m_client->SetStalled(false);
    bool anySent = false;
    while (!m_left.empty()) {
        const ssize_t sent = m_client->IsDown() ? -1
                                                : ::send(m_client->Fd(), m_left.data(), m_left.size(),
                                                         MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0) {
            m_left.remove_prefix(static_cast<std::size_t>(sent));
            anySent = true;
        } else if (!m_client->IsDown() && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            m_state = State::NeedsRoom;
            m_client->SetStalled(true);
            return anySent;
        } else if (m_client->IsDown() || errno != EINTR) {
            Fail();
            return anySent;
        }
    }
    Finish(State::Done);
    return anySent;
}

void PendingSend::Fail() {
    m_client->Shutdown();
    Finish(State::Failed);
}

void PendingSend::Finish(State state) {
    m_state = state;
    if (m_turn.owns_lock()) {
        m_client->SetStalled(false);
        m_turn.unlock();
    }
}

bool PendingSend::WaitsForClient() const {
    return m_state == State::NeedsRoom || (m_state == State::NeedsTurn && m_client->IsStalled());
}

int PendingSend::Fd() const {
    return m_client->Fd();
}

void Complete(std::span<PendingSend> sends, const SendPatience& patience) {
    AdvanceAll(sends);
    const Clock::time_point start = Clock::now();
    Clock::time_point lastSent = start;
    while (AnyUnderWay(sends)) {
        const Clock::time_point now = Clock::now();
        const std::chrono::nanoseconds left =
            std::min(patience.total - (now - start), patience.stall - (now - lastSent));
        const bool isOver = left <= std::chrono::nanoseconds::zero();
        if (isOver) {
            FailThoseThatWaitForClients(sends);
        }
        if (AnyUnderWay(sends)) {
            WaitForRoom(sends, isOver ? kTurnInterval : left);
        }
        if (AdvanceAll(sends)) {
            lastSent = Clock::now();
        }
    }
}

}  // namespace Json::Rpc
