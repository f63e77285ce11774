#include "IpodControl/commands/WatchText.h"

#include <sys/time.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

#include "IpodControl/DisplayText.h"
#include "IpodControl/JsonMembers.h"
#include "IpodControl/commands/ResultText.h"
#include "ServiceUtil/JsonText.h"

namespace IpodControl {

namespace {

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

}  // namespace

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
        return "picture   " + PictureText(params) + ", of track " + Number(params, "trackIndex");
    }
    return Harmless(method + " " + WriteJson(params));
}

std::string TimeStamp(StampStyle style) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const time_t seconds = now.tv_sec;
    tm local{};
    localtime_r(&seconds, &local);
    std::array<char, 40> day{};
    std::array<char, 16> zone{};
    std::array<char, 8> fraction{};
    std::strftime(day.data(), day.size(), style == StampStyle::Whole ? "%Y-%m-%dT%H:%M:%S" : "%H:%M:%S",
                  &local);
    std::snprintf(fraction.data(), fraction.size(), ".%03d", static_cast<int>(now.tv_usec / 1000 % 1000));
    if (style == StampStyle::Whole) {
        std::strftime(zone.data(), zone.size(), "%z", &local);
    }
    return std::string(day.data()) + fraction.data() + zone.data();
}

void Progress::Follow(const Message& notification) {
    const std::string method = notification.Method();
    const Json::Value& params = notification.Params();
    if (method == "ipodConnectionNotification" && !IsTrueMember(params, "connected")) {
        Forget();
    } else if (method == "trackPausedNotification") {
        m_isPaused = IsTrueMember(params, "isTrackPaused");
    } else if (method == "trackInfoNotification" || method == "trackTimeNotification") {
        const bool isTrack = method == "trackInfoNotification";
        const Json::Value& times = isTrack ? Member(params, "trackInfo") : params;
        m_elapsed = IntegerMember(times, "trackTime").value_or(m_elapsed);
        m_duration = IntegerMember(times, "trackDuration").value_or(m_duration);
        if (isTrack) {
            m_title = Harmless(TextMember(times, "trackTitle"));
            m_isPaused = !IsTrueMember(times, "isPlaying");
        }
        m_isKnown = !isTrack || !m_title.empty();
    }
}

std::string Progress::Line(std::size_t width) const {
    if (!m_isKnown) {
        return {};
    }
    std::string line = m_isPaused ? "|| " : "> ";
    line += ClockText(m_elapsed);
    if (m_duration > 0) {
        constexpr std::int64_t kBar = 30;
        const auto done = std::clamp<std::int64_t>(m_elapsed / (m_duration / kBar + 1), 0, kBar);
        line += " [" + std::string(static_cast<std::size_t>(done), '=') +
                std::string(static_cast<std::size_t>(kBar - done), ' ') + "] " + ClockText(m_duration);
    }
    return Shortened(line + "  " + m_title, width);
}

}  // namespace IpodControl
