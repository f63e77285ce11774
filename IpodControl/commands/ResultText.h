// Values in results and notifications as a person reads them.
#pragma once

#include <json/json.h>

#include <optional>
#include <string>

#include "IpodControl/commands/Output.h"
#include "ServiceUtil/JpegMarkers.h"

namespace IpodControl {

/// The items of a list, one a line: id, name, and at the root what the player does not offer.
void PrintItems(const Json::Value& items);

/// Title, artist, album and position; no rows where there is no track, as before the first one is chosen.
Rows TrackRows(const Json::Value& trackInfo);
/// "0:12 of 3:34", or without the second where the duration is unknown.
std::string PositionText(const Json::Value& trackInfo);

/// The picture in an answer or a notification.
struct Picture {
    std::string bytes;  ///< empty where there is none, or where it is no Base64
    std::optional<JpegExtent> jpeg;
};
Picture PictureIn(const Json::Value& params);
/// "120 x 120, 2373 bytes", or "none". By the picture itself: what is reported beside it is another matter.
std::string PictureText(const Picture& picture);

}  // namespace IpodControl
