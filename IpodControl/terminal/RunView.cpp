// Brings keys, messages, signals and time to the model, and the model to the terminal.
#include "IpodControl/terminal/RunView.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "IpodControl/terminal/Connector.h"
#include "IpodControl/terminal/Terminal.h"
#include "IpodControl/view/View.h"
#include "IpodControl/view/ViewModel.h"
#include "ServiceUtil/SignalDescriptor.h"

namespace IpodControl {

namespace {

using namespace PlayerView;

class ViewLoop {
  public:
    ViewLoop(const ViewOptions& options, Terminal& terminal, SignalDescriptor& signals)
        : m_options(options), m_terminal(terminal), m_signals(signals) {}

    /// Until the person quits or a signal ends it; the exit status.
    int Run() {
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

  private:
    void Show() {
        Canvas canvas(m_terminal.Extent(), m_terminal.Characters());
        Draw(canvas, m_model, {m_terminal.Colours(), ToText(m_options.endpoint)});
        m_terminal.Show(canvas);
    }

    void SendLines() {
        for (const std::string& line : m_model.TakeLines()) {
            if (!m_wire.IsOpen()) {
                return;
            }
            if (const auto sent = m_wire.Send(line); !sent) {
                Lose(sent.Why());
            }
        }
    }

    std::optional<Deadline> NextWake() const {
        const auto wake = m_model.NextWake();
        const bool isToConnect = !m_wire.IsOpen() && !m_connector.IsRunning();
        return isToConnect ? std::min(wake.value_or(m_retry), m_retry) : wake;
    }

    void Wait() {
        std::array<pollfd, 3> others{{
            {STDIN_FILENO, POLLIN, 0},
            {m_signals.Get(), POLLIN, 0},
            {m_connector.Descriptor(), POLLIN, 0},
        }};
        const auto& [keys, signals, connection] = others;
        const auto messages = m_wire.Wait(NextWake(), others);
        m_model.SetTime(std::chrono::steady_clock::now());
        if (signals.revents != 0) {
            ReadSignals();
        }
        if (!messages) {
            Lose(messages.Why());
        } else {
            for (const Message& message : *messages) {
                m_model.Take(message);
            }
        }
        if (connection.revents != 0) {
            TakeConnection();
        }
        if (keys.revents != 0) {
            ReadKeys();
        }
        // The terminal has gone: nobody can see it or quit any more.
        if ((keys.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
            m_ending = SIGHUP;
        }
    }

    void ReadKeys() {
        for (const char32_t key : m_terminal.ReadKeys()) {
            m_model.Press(key);
            if (key == kRedraw) {
                m_terminal.Redraw();
            }
            SendLines();
        }
    }

    void ReadSignals() {
        while (const int number = m_signals.Take()) {
            if (number == SIGWINCH) {
                m_terminal.Resize();
            } else {
                m_ending = number;
            }
        }
    }

    void ConnectWhenDue() {
        if (m_wire.IsOpen() || m_connector.IsRunning() || std::chrono::steady_clock::now() < m_retry) {
            return;
        }
        if (const auto started = m_connector.Start(m_options.endpoint, m_options.timeout); !started) {
            Lose(started.Why());
        }
    }

    void TakeConnection() {
        auto connection = m_connector.Take();
        if (!connection) {
            Lose(connection.Why());
            return;
        }
        m_wire = std::move(*connection);
        m_model.Connected();
    }

    void Lose(const Problem& problem) {
        constexpr std::chrono::seconds kRetryPause(1);
        m_wire.Close();
        m_retry = std::chrono::steady_clock::now() + kRetryPause;
        m_model.Disconnected(problem.text);
    }

    /// What the view takes back has arrived once the service closes the connection.
    void Leave() {
        constexpr std::chrono::milliseconds kPatience(500);
        m_model.Leave();
        SendLines();
        const Deadline end = In(kPatience);
        bool isOpen = m_wire.IsOpen() && m_wire.EndSending();
        while (isOpen && std::chrono::steady_clock::now() < end) {
            isOpen = static_cast<bool>(m_wire.Wait(end));
        }
    }

    const ViewOptions& m_options;
    Terminal& m_terminal;
    SignalDescriptor& m_signals;
    ViewModel m_model;
    Connector m_connector;
    Wire m_wire;
    Time m_retry{};
    int m_ending = 0;  // the signal that ends it
};

int Say(const std::string& sentence, int status) {
    std::fprintf(stderr, "%s\n", sentence.c_str());
    return status;
}

}  // namespace

int RunView(const ViewOptions& options) {
    constexpr int kFailed = 1;
    constexpr int kNoTerminal = 2;
    try {
        // Before ncurses takes them for itself, and until it has left the terminal.
        const auto signals = SignalDescriptor::Open({SIGWINCH, SIGTERM, SIGHUP, SIGINT});
        if (!signals) {
            return Say(std::string("The player view cannot wait for signals: ") + std::strerror(errno),
                       kFailed);
        }
        std::string why;
        const auto terminal = Terminal::Open(options.hasColours, why);
        return terminal ? ViewLoop(options, *terminal, *signals).Run() : Say(why, kNoTerminal);
    } catch (const std::exception& failure) {
        return Say(std::string("The player view has failed: ") + failure.what(), kFailed);
    }
}

}  // namespace IpodControl
