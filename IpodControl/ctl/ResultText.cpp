#include "IpodControl/ctl/ResultText.h"

#include "IpodControl/Base64.h"
#include "IpodControl/ClockText.h"
#include "IpodControl/Fields.h"
#include "IpodControl/ctl/Output.h"
#include "IpodControl/ctl/Picture.h"
#include "IpodControl/ctl/Text.h"

namespace IpodControl {

namespace {

using Align = Table::Align;

/// The position in the play context and whether it plays are not in the answer, though members stand for
/// them.
void PrintTrack(const Json::Value& info) {
    if (TextField(info, "trackTitle").empty()) {
        PrintLine("no current track");
        return;
    }
    Table table({Align::Left, Align::Left});
    table.Add({"title", TextField(info, "trackTitle")});
    table.Add({"artist", TextField(info, "trackArtist")});
    table.Add({"album", TextField(info, "trackAlbum")});
    table.Add({"position", PositionText(info)});
    table.Print();
}

void PrintList(const Json::Value& result) {
    const Json::Value& items = Field(result, "categoryItems");
    PrintItems(items);
    if (BoolField(result, "isRootCategory") || !IntegerField(result, "totalCount")) {
        return;
    }
    PrintLine("(" + std::to_string(items.size()) + " of " +
              std::to_string(*IntegerField(result, "totalCount")) + ", from " +
              std::to_string(IntegerField(result, "currIndex").value_or(0)) + ")");
}

void PrintSetting(const Json::Value& setting) {
    if (setting.isBool()) {
        PrintLine(setting.asBool() ? "on" : "off");
    } else if (setting.isString()) {
        PrintLine(Harmless(setting.asString()));
    }
}

}  // namespace

void PrintResult(const Method& method, const Json::Value& result, bool isDone) {
    const Json::Value& member = Field(result, std::string(method.member).c_str());
    if (method.view == View::YesOrNo) {
        PrintLine(isDone ? method.yes : method.no);
    } else if (method.view == View::Setting) {
        PrintSetting(member);
    } else if (!isDone) {
        return;
    } else if (method.view == View::Number) {
        PrintLine(std::to_string(member.asInt64()));
    } else if (method.view == View::Track) {
        PrintTrack(Field(result, "trackInfo"));
    } else if (method.view == View::List) {
        PrintList(result);
    } else if (method.view == View::Picture) {
        PrintLine(PictureText(result));
    } else if (method.view == View::Selection) {
        PrintLine(result == "browsing" ? "open" : "playing");
    } else if (method.view == View::Played && result.isNull()) {
        PrintLine("plays already");
    }
}

void PrintItems(const Json::Value& items) {
    if (!items.isArray()) {
        return;
    }
    Table table({Align::Right, Align::Left, Align::Left});
    for (const Json::Value& item : items) {
        std::vector<std::string> cells{std::to_string(IntegerField(item, "itemId").value_or(-1)),
                                       TextField(item, "itemName")};
        if (Field(item, "isSupported").isBool() && !BoolField(item, "isSupported")) {
            cells.emplace_back("(not offered)");
        }
        table.Add(cells);
    }
    table.Print();
}

std::string PositionText(const Json::Value& trackInfo) {
    const std::int64_t duration = IntegerField(trackInfo, "trackDuration").value_or(0);
    const std::string elapsed = ClockText(IntegerField(trackInfo, "trackTime").value_or(0));
    return duration > 0 ? elapsed + " of " + ClockText(duration) : elapsed;
}

std::string PictureText(const Json::Value& picture) {
    const auto bytes = DecodeBase64(TextField(picture, "albumArt"));
    if (!bytes || bytes->empty()) {
        return "none";
    }
    const auto jpeg = MeasureJpeg(*bytes);
    if (!jpeg) {
        return std::to_string(bytes->size()) + " bytes, no JPEG";
    }
    return std::to_string(jpeg->width) + " x " + std::to_string(jpeg->height) + ", " +
           std::to_string(jpeg->length) + " bytes";
}

}  // namespace IpodControl
