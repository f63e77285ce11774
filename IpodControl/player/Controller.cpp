#include "IpodControl/player/Controller.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::seconds kRetryPause(1);

Time Now() {
    return std::chrono::steady_clock::now();
}

bool IsReadable(const pollfd& entry) {
    return (entry.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
}

}  // namespace

Controller::Controller(const PlayerOptions& options, Terminal& terminal, const Signals& signals)
    : m_options(options), m_terminal(terminal), m_signals(signals) {}

int Controller::Run() {
    while (m_ending == 0 && !m_model.WantsToQuit()) {
        m_model.SetTime(Now());
        ConnectWhenDue();
        m_model.SetListRows(ListRows(m_terminal.Extent(), m_model));
        SendLines();
        Show();
        Wait();
    }
    m_model.Leave();
    SendLines();
    return m_ending == 0 ? 0 : 128 + m_ending;
}

void Controller::Show() {
    Canvas canvas(m_terminal.Extent(), m_terminal.Characters());
    Draw(canvas, m_model, {m_terminal.Colours(), ToText(m_options.endpoint)});
    m_terminal.Show(canvas);
}

void Controller::SendLines() {
    for (const std::string& line : m_model.TakeLines()) {
        if (!m_wire) {
            return;
        }
        if (const auto sent = m_wire->Send(line); !sent) {
            Lose(sent.Why());
        }
    }
}

int Controller::PollTime() const {
    auto wake = m_model.NextWake();
    if (!m_wire && !m_connector.IsRunning()) {
        wake = std::min(wake.value_or(m_retry), m_retry);
    }
    if (!wake) {
        return -1;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*wake - Now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, 60'000));
}

void Controller::Wait() {
    const bool wantsToWrite = m_wire && m_wire->WantsToWrite();
    std::array<pollfd, 4> entries{{
        {STDIN_FILENO, POLLIN, 0},
        {m_signals.Descriptor(), POLLIN, 0},
        {m_wire ? m_wire->Descriptor() : -1, static_cast<short>(POLLIN | (wantsToWrite ? POLLOUT : 0)), 0},
        {m_connector.Descriptor(), POLLIN, 0},
    }};
    const auto& [keys, signals, messages, connection] = entries;
    poll(entries.data(), entries.size(), PollTime());
    m_model.SetTime(Now());
    if (IsReadable(signals)) {
        ReadSignals();
    }
    if ((messages.revents & POLLOUT) != 0) {
        if (const auto sent = m_wire->Flush(); !sent) {
            Lose(sent.Why());
        }
    }
    if (IsReadable(messages) && m_wire) {
        ReadMessages();
    }
    if (IsReadable(connection)) {
        TakeConnection();
    }
    if (IsReadable(keys)) {
        ReadKeys();
    }
    // The terminal has gone: nobody can see it or quit any more.
    if ((keys.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
        m_ending = SIGHUP;
    }
}

void Controller::ReadKeys() {
    for (const Key& key : m_terminal.ReadKeys()) {
        m_model.Press(key);
        if (key.kind == KeyKind::Redraw) {
            m_terminal.Redraw();
        }
        SendLines();
    }
}

void Controller::ReadSignals() {
    while (const int number = m_signals.Take()) {
        if (number == SIGWINCH) {
            m_terminal.Resize();
        } else {
            m_ending = number;
        }
    }
}

void Controller::ReadMessages() {
    auto messages = m_wire->Receive();
    if (!messages) {
        Lose(messages.Why());
        return;
    }
    for (const Message& message : *messages) {
        m_model.Take(message);
    }
}

void Controller::ConnectWhenDue() {
    if (!m_wire && !m_connector.IsRunning() && Now() >= m_retry) {
        m_connector.Start(m_options.endpoint, m_options.timeout);
    }
}

void Controller::TakeConnection() {
    auto connection = m_connector.Take();
    if (!connection) {
        Lose(connection.Why());
        return;
    }
    m_wire = std::move(*connection);
    m_model.Connected();
}

void Controller::Lose(const Problem& problem) {
    m_wire.reset();
    m_retry = Now() + kRetryPause;
    m_model.Disconnected(problem.text);
}

}  // namespace IpodControl::PlayerView
