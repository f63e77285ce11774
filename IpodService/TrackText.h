// A track at the JSON edge.
#pragma once

#include <cstdint>
#include <string>

#include "IpodService/IIpodNotifications.h"

struct TrackInfo {
    const TrackMetadata& metadata;
    const TrackTimes& times;
    std::int64_t index;
    u32 count;
    bool isPlaying;
};

/// Appends {"trackInfo": {...}}, its texts mended to well-formed UTF-8. Any thread.
void AppendTrackInfo(std::string& text, const TrackInfo& track);
