// Notifications as they come.

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "IpodControl/Wire.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/Output.h"
#include "IpodControl/commands/WatchText.h"
#include "ServiceUtil/SignalDescriptor.h"

namespace IpodControl {

namespace {

using std::chrono::milliseconds;

/// Lines, and below them the progress line where standard output is a terminal.
class Screen {
  public:
    explicit Screen(bool json) : m_json(json), m_hasProgress(!json && isatty(STDOUT_FILENO) != 0) {}
    ~Screen() { Clear(); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool HasProgress() const { return m_hasProgress; }

    /// False when nobody takes what is printed.
    bool Show(const Message& notification) {
        m_progress.Follow(notification);
        Clear();
        if (m_json) {
            Json::Value line = notification.Whole();
            line.removeMember("jsonrpc");
            line["time"] = TimeStamp(StampStyle::Whole);
            PrintJson(line);
        } else if (!m_hasProgress || notification.Method() != "trackTimeNotification") {
            PrintLine(TimeStamp(StampStyle::TimeOfDay) + "  " + NotificationText(notification));
        }
        Draw();
        return FlushOutput();
    }

    void ForgetTrack() {
        m_progress.Forget();
        Clear();
    }

    void Clear() {
        if (m_isDrawn) {
            std::fputs("\r\x1b[K", stdout);
            std::fflush(stdout);
            m_isDrawn = false;
        }
    }

  private:
    void Draw() {
        winsize size{};
        if (!m_hasProgress || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) {
            return;
        }
        // A line as wide as the terminal would wrap on some.
        const std::string line = m_progress.Line(std::max<std::size_t>(size.ws_col, 2) - 1);
        std::fputs(line.c_str(), stdout);
        m_isDrawn = !line.empty();
    }

    const bool m_json;
    const bool m_hasProgress;
    bool m_isDrawn = false;
    Progress m_progress;
};

class Watch {
  public:
    Watch(const Settings& settings, const WatchOptions& options, SignalDescriptor& signals)
        : m_settings(settings), m_options(options), m_signals(signals), m_screen(settings.json) {
        if (options.time) {
            m_end = In(*options.time);
        }
    }

    int Run() {
        const auto opened = Open(m_settings.Timeout());
        if (!opened) {
            return Complain(opened.Why());
        }
        while (!m_isOver) {
            Step();
        }
        return m_status;
    }

  private:
    static constexpr milliseconds kRetryPause{250};

    /// The service tells its notifications to whom it has accepted, so a request goes first. A person wants
    /// to see the track at once; a script, that waits for the next one, must not be told of this one.
    Outcome<Done> Open(milliseconds time) {
        auto opened = m_wire.Open(m_settings.endpoint, In(time));
        if (opened) {
            opened = m_wire.Send(
                RequestLine(1, {m_screen.HasProgress() ? "getCurrentTrackInfo" : "isIpodConnected"}));
        }
        m_isGreeted = false;
        m_greetingEnd = In(m_settings.Timeout());
        return opened;
    }

    /// Waits for messages, a signal, the reader of the output going away, or the end; where there is no
    /// service, until it is to be looked for again.
    void Step() {
        const bool isConnected = m_wire.IsOpen();
        std::optional<Deadline> until = m_end;
        if (!isConnected || !m_isGreeted) {
            const Deadline next = isConnected ? m_greetingEnd : In(kRetryPause);
            until = std::min(until.value_or(next), next);
        }
        std::array<pollfd, 2> others{{{m_signals.Get(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
        const auto messages = m_wire.Wait(until, others);
        const auto now = std::chrono::steady_clock::now();
        m_isOver = others[0].revents != 0 || others[1].revents != 0 || (m_end && now >= *m_end);
        if (m_isOver) {
            m_signals.Take();
        } else if (!messages) {
            Lose(messages.Why());
        } else if (!isConnected) {
            Reopen();
        } else {
            Take(*messages);
            if (!m_isOver && !m_isGreeted && now >= m_greetingEnd) {
                Lose({ProblemKind::TimedOut, ToText(m_settings.endpoint) + " does not answer"});
            }
        }
    }

    void Reopen() {
        constexpr milliseconds kMost{1000};
        if (!Open(std::min(kMost, m_settings.Timeout()))) {
            m_wire.Close();
        }
    }

    void Take(const std::vector<Message>& messages) {
        for (const Message& message : messages) {
            if (!message.IsNotification()) {
                Greet();
            } else if (!m_screen.Show(message)) {
                m_status = kRefused;
                m_isOver = true;
            } else {
                m_isOver = m_options.count && ++m_taken >= *m_options.count;
            }
            if (m_isOver) {
                return;
            }
        }
    }

    void Greet() {
        m_isGreeted = true;
        if (m_hasLost) {
            m_screen.Clear();
            Complain("the service on " + ToText(m_settings.endpoint) + " is back.");
        }
        m_hasLost = false;
        m_hasEverAnswered = true;
    }

    /// What has never answered is no service; one that goes may come back.
    void Lose(const Problem& problem) {
        m_wire.Close();
        m_screen.ForgetTrack();
        if (!m_hasEverAnswered) {
            m_status = Complain(problem);
            m_isOver = true;
        } else if (!m_hasLost) {
            Complain(problem.text + "; waiting for it to come back.");
        }
        m_hasLost = true;
    }

    const Settings& m_settings;
    const WatchOptions& m_options;
    SignalDescriptor& m_signals;
    std::optional<Deadline> m_end;
    Screen m_screen;
    Wire m_wire;
    Deadline m_greetingEnd;
    bool m_isGreeted = false;
    bool m_hasEverAnswered = false;
    bool m_hasLost = false;
    bool m_isOver = false;
    std::int64_t m_taken = 0;
    int m_status = kDone;
};

}  // namespace

int RunWatch(const Settings& settings, const WatchOptions& options) {
    const auto signals = SignalDescriptor::Open({SIGINT, SIGTERM});
    if (!signals) {
        Complain(std::string("cannot wait for signals: ") + std::strerror(errno) + ".");
        return kUsage;
    }
    return Watch(settings, options, *signals).Run();
}

}  // namespace IpodControl
