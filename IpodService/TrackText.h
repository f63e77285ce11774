// A track's texts at the JSON edge.
#pragma once

#include <json/json.h>

#include "IpodService/IIpodNotifications.h"
#include "ServiceUtil/Utf8.h"

/// {"trackTitle", "trackArtist", "trackAlbum"}, mended to well-formed UTF-8.
inline Json::Value TrackTextsToJson(const TrackMetadata& metadata) {
    constexpr std::size_t kFieldSize = sizeof(TrackMetadataRecord::title);
    Json::Value texts;
    texts["trackTitle"] = WellFormedUtf8(metadata.title, kFieldSize);
    texts["trackArtist"] = WellFormedUtf8(metadata.artist, kFieldSize);
    texts["trackAlbum"] = WellFormedUtf8(metadata.album, kFieldSize);
    return texts;
}
