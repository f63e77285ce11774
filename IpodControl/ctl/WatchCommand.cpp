// Notifications as they come.

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "IpodControl/ctl/Commands.h"
#include "IpodControl/ctl/Output.h"
#include "IpodControl/ctl/Text.h"
#include "IpodControl/ctl/WatchText.h"

namespace IpodControl {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// SIGINT and SIGTERM as something to poll. Once one has come, they are held back for good.
class StopSignals {
  public:
    StopSignals() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGINT);
        sigaddset(&m_signals, SIGTERM);
        sigprocmask(SIG_BLOCK, &m_signals, &m_before);
        m_descriptor = signalfd(-1, &m_signals, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    ~StopSignals() {
        // One that has come stays held back to the end of the process, and so does the next: timeout(1) sends
        // its signal to the process and then to its group.
        signalfd_siginfo info{};
        const bool hasCome = read(m_descriptor, &info, sizeof info) > 0;
        close(m_descriptor);
        if (!hasCome) {
            sigprocmask(SIG_SETMASK, &m_before, nullptr);
        }
    }
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    int Descriptor() const { return m_descriptor; }

  private:
    sigset_t m_signals{};
    sigset_t m_before{};
    int m_descriptor = -1;
};

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
    Watch(const Settings& settings, const WatchOptions& options)
        : m_settings(settings), m_options(options), m_screen(settings.json) {
        if (options.time) {
            m_end = Clock::now() + *options.time;
        }
    }

    int Run() {
        const auto opened = Open(m_settings.Timeout());
        if (!opened) {
            return Complain(opened.Why());
        }
        const StopSignals signals;
        while (!m_isOver) {
            if (!m_wire.IsOpen()) {
                WaitFor(signals, -1, kRetryPause);
                Reopen();
                continue;
            }
            if (WaitFor(signals, m_wire.Descriptor(), kNoPause)) {
                TakeMessages();
            }
        }
        return m_status;
    }

  private:
    static constexpr milliseconds kRetryPause{250};
    static constexpr milliseconds kNoPause{60'000};

    /// The service tells its notifications to whom it has accepted, so a request goes first. A person wants
    /// to see the track at once; a script, that waits for the next one, must not be told of this one.
    Outcome<Done> Open(milliseconds time) {
        auto opened = m_wire.Open(m_settings.endpoint, In(time));
        if (opened) {
            opened = m_wire.Send(
                RequestLine(1, m_screen.HasProgress() ? "getCurrentTrackInfo" : "isIpodConnected", {}));
        }
        m_isGreeted = false;
        m_greetingEnd = In(m_settings.Timeout());
        return opened;
    }

    void Reopen() {
        constexpr milliseconds kMost{1000};
        if (!m_isOver && !Open(std::min(kMost, m_settings.Timeout()))) {
            m_wire.Close();
        }
    }

    /// Waits for input of `descriptor`, a signal, or the end; true for input.
    bool WaitFor(const StopSignals& signals, int descriptor, milliseconds most) {
        auto end = Clock::now() + most;
        end = m_end ? std::min(end, *m_end) : end;
        end = descriptor >= 0 && !m_isGreeted ? std::min(end, m_greetingEnd) : end;
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
        pollfd entries[] = {
            {signals.Descriptor(), POLLIN, 0},
            {STDOUT_FILENO, 0, 0},
            {descriptor, static_cast<short>(POLLIN | (m_wire.WantsToWrite() ? POLLOUT : 0)), 0}};
        poll(entries, 3, static_cast<int>(std::clamp<decltype(left)>(left, 0, most.count())));
        // Whoever reads the output may have gone.
        m_isOver = m_isOver || entries[0].revents != 0 || entries[1].revents != 0 ||
                   (m_end && Clock::now() >= *m_end);
        if (!m_isOver && descriptor >= 0 && !m_isGreeted && Clock::now() >= m_greetingEnd) {
            Lose({ProblemKind::TimedOut, ToText(m_settings.endpoint) + " does not answer"});
        }
        return !m_isOver && m_wire.IsOpen() && entries[2].revents != 0;
    }

    void TakeMessages() {
        if (const auto flushed = m_wire.Flush(); !flushed) {
            Lose(flushed.Why());
            return;
        }
        auto messages = m_wire.Receive();
        if (!messages) {
            Lose(messages.Why());
            return;
        }
        for (const Message& message : *messages) {
            if (message.IsNotification()) {
                Take(message);
            } else {
                Greet();
            }
            if (m_isOver) {
                return;
            }
        }
    }

    void Take(const Message& notification) {
        if (!m_screen.Show(notification)) {
            m_status = kRefused;
            m_isOver = true;
        }
        m_isOver = m_isOver || (m_options.count && ++m_taken >= *m_options.count);
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
    std::optional<Clock::time_point> m_end;
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
    return Watch(settings, options).Run();
}

}  // namespace IpodControl
