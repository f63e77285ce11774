// Notifications as they come.

#include <glib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

#include "IpodControl/DisplayText.h"
#include "IpodControl/Wire.h"
#include "IpodControl/commands/Commands.h"
#include "ServiceUtil/JsonText.h"
#include "ServiceUtil/SignalDescriptor.h"

namespace IpodControl {

namespace {

using std::chrono::milliseconds;

std::string Number(const Json::Value& value, std::string_view name) {
    return std::to_string(IntegerMember(value, name).value_or(0));
}

std::string TrackLine(const Json::Value& info) {
    std::string line = IsTrueMember(info, "isPlaying") ? "track     playing" : "track     not playing";
    line += "  " + Number(info, "trackIndex") + " of " + Number(info, "trackCount");
    for (const char* name : {"trackTitle", "trackArtist", "trackAlbum"}) {
        const std::string text = Harmless(TextMember(info, name));
        line += text.empty() ? "" : "  " + text;
    }
    return line + "  " + PositionText(info);
}

/// Without a line end.
std::string NotificationText(const Message& notification) {
    const std::string method = notification.Method();
    const Json::Value& params = notification.Params();
    if (method == "ipodConnectionNotification") {
        return IsTrueMember(params, "connected") ? "player    connected" : "player    disconnected";
    }
    if (method == "trackInfoNotification") {
        return TrackLine(Member(params, "trackInfo"));
    }
    if (method == "trackTimeNotification") {
        return "time      " + PositionText(params);
    }
    if (method == "trackPausedNotification") {
        return IsTrueMember(params, "isTrackPaused") ? "pause     paused" : "pause     playing";
    }
    if (method == "ipodAlbumArtNotification") {
        return "picture   " + PictureText(PictureIn(params)) + ", of track " + Number(params, "trackIndex");
    }
    return Harmless(method + " " + WriteJson(params));
}

/// "2026-11-21T06:30:00.123+0000", or its time of the day alone. Local time.
std::string TimeStamp(bool isWhole) {
    const std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> now(g_date_time_new_now_local(),
                                                                       g_date_time_unref);
    const std::string thousandths =
        std::to_string(1000 + g_date_time_get_microsecond(now.get()) / 1000).substr(1);
    const std::string format =
        isWhole ? "%Y-%m-%dT%H:%M:%S." + thousandths + "%z" : "%H:%M:%S." + thousandths;
    const std::unique_ptr<char, decltype(&g_free)> text(g_date_time_format(now.get(), format.c_str()),
                                                        g_free);
    return text.get();
}

/// Lines, and below them how far the track has come, where standard output is a terminal.
class Screen {
  public:
    explicit Screen(bool json) : m_json(json), m_hasProgress(!json && isatty(STDOUT_FILENO) != 0) {}
    ~Screen() { Clear(); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool HasProgress() const { return m_hasProgress; }

    /// False when nobody takes what is printed.
    bool Show(const Message& notification) {
        Follow(notification.Method(), notification.Params());
        Clear();
        if (m_json) {
            Json::Value line = notification.Whole();
            line.removeMember("jsonrpc");
            line["time"] = TimeStamp(true);
            PrintJson(line);
        } else if (!m_hasProgress || notification.Method() != "trackTimeNotification") {
            PrintLine(TimeStamp(false) + "  " + NotificationText(notification));
        }
        Draw();
        return FlushOutput();
    }

    void ForgetTrack() {
        m_track = {};
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
    struct Track {
        std::string title;
        std::int64_t elapsed = 0;   // ms
        std::int64_t duration = 0;  // ms; 0: unknown
        bool isKnown = false;
        bool isPaused = false;
    };

    void Follow(const std::string& method, const Json::Value& params) {
        if (method == "ipodConnectionNotification" && !IsTrueMember(params, "connected")) {
            m_track = {};
        } else if (method == "trackPausedNotification") {
            m_track.isPaused = IsTrueMember(params, "isTrackPaused");
        } else if (method == "trackInfoNotification" || method == "trackTimeNotification") {
            const bool isTrack = method == "trackInfoNotification";
            const Json::Value& times = isTrack ? Member(params, "trackInfo") : params;
            m_track.elapsed = IntegerMember(times, "trackTime").value_or(m_track.elapsed);
            m_track.duration = IntegerMember(times, "trackDuration").value_or(m_track.duration);
            if (isTrack) {
                m_track.title = Harmless(TextMember(times, "trackTitle"));
                m_track.isPaused = !IsTrueMember(times, "isPlaying");
            }
            m_track.isKnown = !isTrack || !m_track.title.empty();
        }
    }

    std::string ProgressLine() const {
        constexpr std::int64_t kBar = 30;
        std::string line = (m_track.isPaused ? "|| " : "> ") + ClockText(m_track.elapsed);
        if (m_track.duration > 0) {
            const auto done = static_cast<std::size_t>(
                std::clamp<std::int64_t>(m_track.elapsed / (m_track.duration / kBar + 1), 0, kBar));
            line += " [" + std::string(done, '=') + std::string(kBar - done, ' ') + "] " +
                    ClockText(m_track.duration);
        }
        return line + "  " + m_track.title;
    }

    void Draw() {
        winsize size{};
        if (m_hasProgress && m_track.isKnown && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
            // A line as wide as the terminal would wrap on some.
            PrintText(Shortened(ProgressLine(), std::max<std::size_t>(size.ws_col, 2) - 1));
            m_isDrawn = true;
        }
    }

    const bool m_json;
    const bool m_hasProgress;
    bool m_isDrawn = false;
    Track m_track;
};

class Watch {
  public:
    Watch(const Settings& settings, std::optional<std::int64_t> count, std::optional<milliseconds> time,
          SignalDescriptor& signals)
        : m_settings(settings),
          m_count(count),
          m_end(time ? std::optional(In(*time)) : std::nullopt),
          m_signals(signals),
          m_screen(settings.json) {}

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
            opened = m_wire.Send(RequestLine(
                1, {Request{m_screen.HasProgress() ? "getCurrentTrackInfo" : "isIpodConnected"}}));
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
            // Where this fails, the next step tries again.
            (void)Open(std::min(milliseconds(1000), m_settings.Timeout()));
        } else {
            Take(*messages);
            if (!m_isOver && !m_isGreeted && now >= m_greetingEnd) {
                Lose({ProblemKind::TimedOut, ToText(m_settings.endpoint) + " does not answer"});
            }
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
                m_isOver = m_count && --*m_count == 0;
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
    std::optional<std::int64_t> m_count;  // still to come
    const std::optional<Deadline> m_end;
    SignalDescriptor& m_signals;
    Screen m_screen;
    Wire m_wire;
    Deadline m_greetingEnd;
    bool m_isGreeted = false;
    bool m_hasEverAnswered = false;
    bool m_hasLost = false;
    bool m_isOver = false;
    int m_status = kDone;
};

}  // namespace

int RunWatch(const Settings& settings, std::optional<std::int64_t> count, std::optional<milliseconds> time) {
    const auto signals = SignalDescriptor::Open({SIGINT, SIGTERM});
    if (!signals) {
        Complain(std::string("cannot wait for signals: ") + std::strerror(errno) + ".");
        return kUsage;
    }
    return Watch(settings, count, time, *signals).Run();
}

}  // namespace IpodControl
