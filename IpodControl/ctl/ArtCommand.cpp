// The playing track's picture, into a file.

#include <unistd.h>

#include "IpodControl/Base64.h"
#include "IpodControl/Fields.h"
#include "IpodControl/ctl/Ask.h"
#include "IpodControl/ctl/Commands.h"
#include "IpodControl/ctl/FileWriter.h"
#include "IpodControl/ctl/Picture.h"

namespace IpodControl {

namespace {

/// The picture that comes as a notification once the player has fetched it.
Answer AwaitPicture(Client& client, const Settings& settings) {
    Answer answer = Ask(client, "getCurrentAlbumArtDelayed");
    if (answer.status != kDone) {
        return answer;
    }
    const auto notification = client.AwaitNotification("ipodAlbumArtNotification", In(settings.Timeout()));
    if (!notification) {
        return {kNoService, {}, notification.Why().text + "."};
    }
    if (!*notification) {
        return {kRefused, {}, "no picture has come: the track has none, or it takes longer (--timeout)."};
    }
    answer.result = (*notification)->Params();
    if (TextField(answer.result, "albumArt").empty()) {
        return {kRefused, {}, "the track has no picture."};
    }
    return answer;
}

Answer GetPicture(Client& client, const Settings& settings, bool isDelayed) {
    if (!isDelayed) {
        Answer answer = Ask(client, "getCurrentAlbumArt");
        if (answer.status != kRefused) {
            return answer;
        }
    }
    // The player may be fetching it still.
    return AwaitPicture(client, settings);
}

void Report(const Settings& settings, const std::string& file, const Jpeg& jpeg) {
    const bool isPiped = file == "-";
    if (settings.json && !isPiped) {
        Json::Value report;
        report["file"] = file;
        report["width"] = Json::UInt64{jpeg.width};
        report["height"] = Json::UInt64{jpeg.height};
        report["bytes"] = Json::UInt64{jpeg.length};
        PrintJson(report);
        return;
    }
    const std::string text = std::to_string(jpeg.width) + " x " + std::to_string(jpeg.height) + ", " +
                             std::to_string(jpeg.length) + " bytes" +
                             (jpeg.isComplete ? "" : " (without an end marker: as delivered)");
    isPiped ? Complain("the picture: " + text + ".") : PrintLine(file + ": " + text);
}

int Write(const Settings& settings, const std::string& file, const std::string& delivered) {
    const auto bytes = DecodeBase64(delivered);
    const auto jpeg = MeasureJpeg(bytes.value_or(""));
    if (!jpeg) {
        Complain("what the player delivers as its picture is no JPEG.");
        return kRefused;
    }
    if (const auto failure = WriteFile(file, std::string_view(*bytes).substr(0, jpeg->length))) {
        Complain(*failure);
        return kUsage;
    }
    Report(settings, file, *jpeg);
    return kDone;
}

}  // namespace

int RunArt(const Settings& settings, const ArtOptions& options) {
    if (options.file == "-" && isatty(STDOUT_FILENO) != 0) {
        Complain("a picture is nothing for a terminal; name a file, or redirect the output.");
        return kUsage;
    }
    Client client = settings.MakeClient();
    if (const auto connected = client.Connect(); !connected) {
        return Complain(connected.Why());
    }
    const Answer answer = GetPicture(client, settings, options.isDelayed);
    if (answer.status != kDone) {
        Complain(answer.complaint);
        return answer.status;
    }
    return Write(settings, options.file, TextField(answer.result, "albumArt"));
}

}  // namespace IpodControl
