#include "IpodControl/commands/Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "IpodControl/DisplayText.h"
#include "ServiceUtil/Base64.h"
#include "ServiceUtil/JsonText.h"

namespace IpodControl {

void PrintText(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view line) {
    PrintText(line);
    std::fputc('\n', stdout);
}

void PrintJson(const Json::Value& value) {
    PrintLine(HarmlessJson(WriteJson(value)));
}

void Complain(std::string_view sentence) {
    std::fflush(stdout);
    const std::string line = "ipodctl: " + Harmless(sentence) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

int Complain(const Problem& problem) {
    Complain(problem.text + ".");
    return kNoService;
}

bool FlushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    Complain(std::string("cannot write the output: ") + std::strerror(errno) + ".");
    return false;
}

void PrintTable(Rows rows, bool isNumbered) {
    std::vector<std::size_t> widths;
    for (auto& row : rows) {
        std::transform(row.begin(), row.end(), row.begin(), Harmless);
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string room(widths[i] - DisplayWidth(row[i]), ' ');
            line += (i > 0 ? "  " : "") + (i == 0 && isNumbered ? room + row[i] : row[i] + room);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        PrintLine(line);
    }
}

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
