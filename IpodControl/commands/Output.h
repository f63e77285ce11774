// What goes to the person or the script that called.
#pragma once

#include <json/json.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Wire.h"
#include "ServiceUtil/JpegMarkers.h"

namespace IpodControl {

enum ExitStatus : int {
    kDone = 0,
    kRefused = 1,    ///< the service said no, or what was waited for did not come
    kUsage = 2,      ///< what was typed cannot be carried out
    kNoService = 3,  ///< none there, or it does not answer as one
};

/// To standard output, as it is.
void PrintText(std::string_view text);
/// With a line end.
void PrintLine(std::string_view line);
void PrintJson(const Json::Value& value);
/// One sentence to standard error, as this program's.
void Complain(std::string_view sentence);
/// Complains, and answers with kNoService.
int Complain(const Problem& problem);
/// False when standard output does not take what was printed, which is then told.
bool FlushOutput();

using Rows = std::vector<std::vector<std::string>>;
/// In columns; a first column of numbers stands to the right. Cells are made harmless.
void PrintTable(Rows rows, bool isNumbered = false);

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
