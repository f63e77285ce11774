#include "IpodControl/commands/ResultText.h"

#include "IpodControl/DisplayText.h"
#include "IpodControl/Message.h"
#include "ServiceUtil/Base64.h"

namespace IpodControl {

void PrintItems(const Json::Value& items) {
    Rows rows;
    for (Json::ArrayIndex i = 0; items.isArray() && i < items.size(); ++i) {
        auto& row = rows.emplace_back();
        row.push_back(std::to_string(IntegerMember(items[i], "itemId").value_or(-1)));
        row.push_back(TextMember(items[i], "itemName"));
        if (FlagMember(items[i], "isSupported") == false) {
            row.emplace_back("(not offered)");
        }
    }
    PrintTable(std::move(rows), true);
}

Rows TrackRows(const Json::Value& trackInfo) {
    if (TextMember(trackInfo, "trackTitle").empty()) {
        return {};
    }
    return {{"title", TextMember(trackInfo, "trackTitle")},
            {"artist", TextMember(trackInfo, "trackArtist")},
            {"album", TextMember(trackInfo, "trackAlbum")},
            {"position", PositionText(trackInfo)}};
}

std::string PositionText(const Json::Value& trackInfo) {
    const std::int64_t duration = IntegerMember(trackInfo, "trackDuration").value_or(0);
    const std::string elapsed = ClockText(IntegerMember(trackInfo, "trackTime").value_or(0));
    return duration > 0 ? elapsed + " of " + ClockText(duration) : elapsed;
}

Picture PictureIn(const Json::Value& params) {
    Picture picture{DecodeBase64(TextMember(params, "albumArt")).value_or(""), std::nullopt};
    picture.jpeg =
        MeasureJpeg({reinterpret_cast<const std::uint8_t*>(picture.bytes.data()), picture.bytes.size()});
    return picture;
}

std::string PictureText(const Picture& picture) {
    if (picture.bytes.empty()) {
        return "none";
    }
    if (!picture.jpeg) {
        return std::to_string(picture.bytes.size()) + " bytes, no JPEG";
    }
    return std::to_string(picture.jpeg->width) + " x " + std::to_string(picture.jpeg->height) + ", " +
           std::to_string(picture.jpeg->length) + " bytes";
}

}  // namespace IpodControl
