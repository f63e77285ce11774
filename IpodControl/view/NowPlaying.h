// What plays: the track, the modes, the cover, and the keys' effects on them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "IpodControl/view/TrackClock.h"
#include "IpodControl/view/ViewContext.h"
#include "ServiceUtil/JpegImage.h"

namespace IpodControl::PlayerView {

enum class PlayState { Unknown, Stopped, Paused, Playing };
enum class Repeat { Unknown, Off, All, One };
enum class CoverState { None, Shown, Broken };

struct Track {
    std::string title;
    std::string artist;
    std::string album;
    std::int64_t index = 0;  ///< from 1
    std::int64_t count = 0;
    bool operator==(const Track&) const = default;
};

class NowPlaying {
  public:
    explicit NowPlaying(ViewContext& context) : m_context(context) {}

    /// Asks for everything.
    void Start();
    /// Nothing plays, and nothing is known. Without the service nothing of its stream either.
    void Stop(bool hasService);
    /// False when the notification is none about what plays.
    bool Take(const std::string& method, const Json::Value& params);
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

    PlayState State() const { return m_state; }
    const Track& Current() const { return m_track; }
    std::int64_t Position() const { return m_clock.At(m_context.now); }
    std::int64_t Duration() const { return m_clock.Duration(); }
    bool IsSeeking() const { return m_seekForward.has_value(); }
    std::optional<bool> Shuffle() const { return m_shuffle; }
    Repeat RepeatMode() const { return m_repeat; }
    /// The service tells nobody about its audio stream: known once it has been asked for or ended.
    std::optional<bool> Stream() const { return m_stream; }
    CoverState Cover() const { return m_coverState; }
    const RgbImage& CoverPicture() const { return m_cover; }

  private:
    /// `what` completes "The service refused to ...".
    void Ask(const char* method, Json::Value params, const char* what, const char* flag,
             std::function<void(bool)> took);
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
    PlayState m_state = PlayState::Unknown;
    Track m_track;
    TrackClock m_clock;
    std::optional<bool> m_seekForward;
    Time m_seekEnd{};
    Time m_heard{};  // a notification about what plays
    std::optional<bool> m_shuffle;
    Repeat m_repeat = Repeat::Unknown;
    std::optional<bool> m_stream;
    CoverState m_coverState = CoverState::None;
    RgbImage m_cover;
};

}  // namespace IpodControl::PlayerView
