// What plays: the track, the modes, the cover, and the keys' effects on them.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "IpodControl/view/ViewContext.h"
#include "ServiceUtil/JpegImage.h"

namespace IpodControl::PlayerView {

/// Where the playing track is, between what the service tells of it. In milliseconds.
class TrackClock {
  public:
    /// For a new track: `duration` 0 is unknown.
    void Start(std::int64_t position, std::int64_t duration, Time now) {
        SetDuration(duration);
        m_position = Sane(position);
        m_least = 0;
        m_since = now;
    }
    /// What the service says of the same track. Where it lags a little behind, the clock waits for it rather
    /// than step back.
    void Correct(std::int64_t position, Time now) {
        constexpr std::int64_t kLag = 1500;
        const std::int64_t shown = At(now);
        m_position = Sane(position);
        m_since = now;
        m_least = m_position < shown && shown - m_position <= kLag ? shown : 0;
    }
    void SetDuration(std::int64_t duration) { m_duration = Sane(duration); }
    void SetRunning(bool isRunning, Time now) {
        m_position = Unheld(now);
        m_since = now;
        m_isRunning = isRunning;
    }

    bool IsRunning() const { return m_isRunning; }
    std::int64_t Duration() const { return m_duration; }
    /// At most the duration, where that is known.
    std::int64_t At(Time now) const {
        const std::int64_t position = std::max(Unheld(now), m_least);
        return m_duration > 0 ? std::min(position, m_duration) : position;
    }

  private:
    static std::int64_t Sane(std::int64_t milliseconds) {
        // A week: what lies beyond is no time of a track.
        constexpr std::int64_t kLongest = 7LL * 24 * 3600 * 1000;
        return std::clamp<std::int64_t>(milliseconds, 0, kLongest);
    }
    std::int64_t Unheld(Time now) const {
        using std::chrono::milliseconds;
        return m_position +
               (m_isRunning ? std::chrono::duration_cast<milliseconds>(now - m_since).count() : 0);
    }

    std::int64_t m_duration = 0;
    std::int64_t m_position = 0;  // at m_since
    std::int64_t m_least = 0;
    Time m_since{};
    bool m_isRunning = false;
};

enum class PlayState { Unknown, Stopped, Paused, Playing };
enum class CoverState { None, Shown, Broken };

struct Track {
    std::string title;
    std::string artist;
    std::string album;
    std::int64_t index = 0;  ///< from 1
    std::int64_t count = 0;
    bool operator==(const Track&) const = default;
};

/// What is known of the player.
struct Playing {
    PlayState state = PlayState::Unknown;
    Track track;
    TrackClock clock;
    std::optional<bool> seeksForward;  ///< none: it does not seek
    std::optional<bool> shuffle;
    std::string repeat;  ///< "off", "current", "all"; empty: unknown
    /// The service tells nobody about its audio stream: known once it has been asked for or ended.
    std::optional<bool> stream;
    CoverState coverState = CoverState::None;
    RgbImage cover;

    /// Whether a track is known: a stopped player has none.
    bool HasTrack() const { return !track.title.empty() || clock.Duration() > 0; }
};

class NowPlaying {
  public:
    explicit NowPlaying(ViewContext& context) : m_context(context) {}

    /// Asks for everything.
    void Start();
    /// Nothing plays, and nothing is known. Without the service nothing of its stream either.
    void Stop(bool hasService);
    /// Does nothing where the notification is none about what plays.
    void Take(const std::string& method, const Json::Value& params);
    void Tick();
    /// When Tick has something to do, or the position moves on.
    std::optional<Time> NextWake() const;

    void PlayPause();
    void Skip(bool isForward);
    /// Held for as long as the key comes again and again.
    void Seek(bool isForward);
    void EndSeek();
    void ToggleShuffle();
    void NextRepeat();
    void ToggleStream();

    const Playing& Known() const { return m_known; }
    /// Of the track, in milliseconds.
    std::int64_t Position() const { return m_known.clock.At(m_context.now); }

  private:
    /// `what` completes "The service could not ..."; `took` gets the answer's `flag`.
    void Ask(const char* method, Json::Value params, const char* what, const char* flag,
             std::function<void(bool)> took);
    void Order(const char* method, const char* what, const std::function<void()>& done);
    void AskTrack();
    void AskModes();
    void AskPaused();
    void AskCover();
    void TakeTrack(const Json::Value& info);
    void TakeCover(const Json::Value& params);
    void SetState(PlayState state);
    void SendSeek(bool isForward, bool isOn);
    void TakeRepeat(const Reply& reply);

    ViewContext& m_context;
    Playing m_known;
    Time m_seekEnd{};
    Time m_heard{};  // a notification about what plays
};

}  // namespace IpodControl::PlayerView
