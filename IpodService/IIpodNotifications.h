// What the manager reports to the service's clients, and the values that go with it.
#pragma once

#include <string>

#include "DeviceManager/DeviceManager.h"

/// Times of the playing track in the device's unit, milliseconds. Zeros when they could not be read.
struct TrackTimes {
    u32 elapsed = 0;
    u32 total = 0;
};

/// Where the playing track stands in the now-playing list. Zeros when it could not be read.
struct NowPlayingPosition {
    u32 index = 0;  ///< 0-based
    u32 count = 0;
};

/// Texts of the playing track, the device's own bytes. Empty when they could not be read.
struct TrackMetadata {
    std::string title;
    std::string album;
    std::string artist;
    std::string genre;
    std::string composer;
};

/// Receives the manager's reports. Each may come from the server thread or from the device manager's callback
/// thread, and waits for nobody.
class IIpodNotifications {
  public:
    virtual ~IIpodNotifications() = default;

    virtual void OnTrackInfo(bool isPlaying, const NowPlayingPosition& position,
                             const TrackMetadata& metadata, const TrackTimes& times) = 0;
    virtual void OnTrackTimes(const TrackTimes& times) = 0;
    virtual void OnTrackTime(u32 time) = 0;
    virtual void OnConnection(bool connected) = 0;
    /// `albumArt` is base64 text; `trackIndex` is 1-based and goes out as it is.
    virtual void OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) = 0;
    virtual void OnTrackPaused(bool paused) = 0;
};
