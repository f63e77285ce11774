#include "IpodControl/terminal/ViewLoop.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <utility>

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::seconds kRetryPause(1);

bool IsReadable(const pollfd& entry) {
    return (entry.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
}

}  // namespace

ViewLoop::ViewLoop(const ViewOptions& options, Terminal& terminal, SignalDescriptor& signals)
    : m_options(options), m_terminal(terminal), m_signals(signals) {}

int ViewLoop::Run() {
    while (m_ending == 0 && !m_model.WantsToQuit()) {
        m_model.SetTime(std::chrono::steady_clock::now());
        ConnectWhenDue();
        m_model.SetListRows(ListRows(m_terminal.Extent(), m_model));
        SendLines();
        Show();
        Wait();
    }
    Leave();
    return m_ending == 0 ? 0 : 128 + m_ending;
}

void ViewLoop::Show() {
    Canvas canvas(m_terminal.Extent(), m_terminal.Characters());
    Draw(canvas, m_model, {m_terminal.Colours(), ToText(m_options.endpoint)});
    m_terminal.Show(canvas);
}

void ViewLoop::SendLines() {
    for (const std::string& line : m_model.TakeLines()) {
        if (!m_wire.IsOpen()) {
            return;
        }
        if (const auto sent = m_wire.Send(line); !sent) {
            Lose(sent.Why());
        }
    }
}

std::optional<Deadline> ViewLoop::NextWake() const {
    const auto wake = m_model.NextWake();
    const bool isToConnect = !m_wire.IsOpen() && !m_connector.IsRunning();
    return isToConnect ? std::min(wake.value_or(m_retry), m_retry) : wake;
}

void ViewLoop::Wait() {
    std::array<pollfd, 3> others{{
        {STDIN_FILENO, POLLIN, 0},
        {m_signals.Get(), POLLIN, 0},
        {m_connector.Descriptor(), POLLIN, 0},
    }};
    const auto& [keys, signals, connection] = others;
    const auto messages = m_wire.Wait(NextWake(), others);
    m_model.SetTime(std::chrono::steady_clock::now());
    if (IsReadable(signals)) {
        ReadSignals();
    }
    if (!messages) {
        Lose(messages.Why());
    } else {
        for (const Message& message : *messages) {
            m_model.Take(message);
        }
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

void ViewLoop::ReadKeys() {
    for (const Key& key : m_terminal.ReadKeys()) {
        m_model.Press(key);
        if (key.kind == KeyKind::Redraw) {
            m_terminal.Redraw();
        }
        SendLines();
    }
}

void ViewLoop::ReadSignals() {
    while (const int number = m_signals.Take()) {
        if (number == SIGWINCH) {
            m_terminal.Resize();
        } else {
            m_ending = number;
        }
    }
}

void ViewLoop::ConnectWhenDue() {
    if (m_wire.IsOpen() || m_connector.IsRunning() || std::chrono::steady_clock::now() < m_retry) {
        return;
    }
    if (const auto started = m_connector.Start(m_options.endpoint, m_options.timeout); !started) {
        Lose(started.Why());
    }
}

void ViewLoop::TakeConnection() {
    auto connection = m_connector.Take();
    if (!connection) {
        Lose(connection.Why());
        return;
    }
    m_wire = std::move(*connection);
    m_model.Connected();
}

void ViewLoop::Lose(const Problem& problem) {
    m_wire.Close();
    m_retry = std::chrono::steady_clock::now() + kRetryPause;
    m_model.Disconnected(problem.text);
}

/// What the view takes back has arrived once the service closes the connection.
void ViewLoop::Leave() {
    constexpr std::chrono::milliseconds kPatience(500);
    m_model.Leave();
    SendLines();
    const Deadline end = In(kPatience);
    bool isOpen = m_wire.IsOpen() && m_wire.EndSending();
    while (isOpen && std::chrono::steady_clock::now() < end) {
        isOpen = static_cast<bool>(m_wire.Wait(end));
    }
}

}  // namespace IpodControl::PlayerView
