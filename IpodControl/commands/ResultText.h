// Results as a person reads them.
#pragma once

#include <json/json.h>

#include <string>

#include "IpodControl/commands/Method.h"
#include "ServiceUtil/JpegMarkers.h"

namespace IpodControl {

/// Prints what `method` has brought; nothing where a person needs no word.
void PrintResult(const Method& method, const Json::Value& result, bool isDone);

/// The items of a list, one a line: id, name, and at the root what the player does not offer.
void PrintItems(const Json::Value& items);

/// "0:12 of 3:34", or without the second where the duration is unknown.
std::string PositionText(const Json::Value& trackInfo);

/// The size of the picture in an answer or a notification, or "none". By the picture itself: what is reported
/// beside it is another matter.
std::string PictureText(const Json::Value& picture);
/// "120 x 120, 2373 bytes"
std::string ExtentText(const JpegExtent& jpeg);

inline std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace IpodControl
