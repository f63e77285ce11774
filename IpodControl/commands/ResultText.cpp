#include "IpodControl/commands/ResultText.h"

#include "IpodControl/DisplayText.h"
#include "IpodControl/JsonMembers.h"
#include "IpodControl/commands/Output.h"
#include "ServiceUtil/Base64.h"

namespace IpodControl {

namespace {

using Align = Table::Align;

/// The position in the play context and whether it plays are not in the answer, though members stand for
/// them.
void PrintTrack(const Json::Value& info) {
    if (TextMember(info, "trackTitle").empty()) {
        PrintLine("no current track");
        return;
    }
    Table table({Align::Left, Align::Left});
    table.Add({"title", TextMember(info, "trackTitle")});
    table.Add({"artist", TextMember(info, "trackArtist")});
    table.Add({"album", TextMember(info, "trackAlbum")});
    table.Add({"position", PositionText(info)});
    table.Print();
}

void PrintList(const Json::Value& result) {
    const Json::Value& items = Member(result, "categoryItems");
    PrintItems(items);
    if (IsTrueMember(result, "isRootCategory") || !IntegerMember(result, "totalCount")) {
        return;
    }
    PrintLine("(" + std::to_string(items.size()) + " of " +
              std::to_string(*IntegerMember(result, "totalCount")) + ", from " +
              std::to_string(IntegerMember(result, "currIndex").value_or(0)) + ")");
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
    const Json::Value& member = Member(result, method.member);
    if (method.display == Display::YesOrNo) {
        PrintLine(isDone ? method.yes : method.no);
    } else if (method.display == Display::Setting) {
        PrintSetting(member);
    } else if (!isDone) {
        return;
    } else if (method.display == Display::Number) {
        PrintLine(std::to_string(member.asInt64()));
    } else if (method.display == Display::Track) {
        PrintTrack(Member(result, "trackInfo"));
    } else if (method.display == Display::List) {
        PrintList(result);
    } else if (method.display == Display::Picture) {
        PrintLine(PictureText(result));
    } else if (method.display == Display::Selection) {
        PrintLine(result == "browsing" ? "open" : "playing");
    } else if (method.display == Display::Played && result.isNull()) {
        PrintLine("plays already");
    }
}

void PrintItems(const Json::Value& items) {
    if (!items.isArray()) {
        return;
    }
    Table table({Align::Right, Align::Left, Align::Left});
    for (const Json::Value& item : items) {
        std::vector<std::string> cells{std::to_string(IntegerMember(item, "itemId").value_or(-1)),
                                       TextMember(item, "itemName")};
        if (Member(item, "isSupported").isBool() && !IsTrueMember(item, "isSupported")) {
            cells.emplace_back("(not offered)");
        }
        table.Add(cells);
    }
    table.Print();
}

std::string PositionText(const Json::Value& trackInfo) {
    const std::int64_t duration = IntegerMember(trackInfo, "trackDuration").value_or(0);
    const std::string elapsed = ClockText(IntegerMember(trackInfo, "trackTime").value_or(0));
    return duration > 0 ? elapsed + " of " + ClockText(duration) : elapsed;
}

std::string PictureText(const Json::Value& picture) {
    const auto bytes = DecodeBase64(TextMember(picture, "albumArt"));
    if (!bytes || bytes->empty()) {
        return "none";
    }
    const auto jpeg = MeasureJpeg(BytesOf(*bytes));
    return jpeg ? ExtentText(*jpeg) : std::to_string(bytes->size()) + " bytes, no JPEG";
}

std::string ExtentText(const JpegExtent& jpeg) {
    return std::to_string(jpeg.width) + " x " + std::to_string(jpeg.height) + ", " +
           std::to_string(jpeg.length) + " bytes";
}

}  // namespace IpodControl
