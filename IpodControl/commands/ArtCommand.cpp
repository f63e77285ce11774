// The playing track's picture, into a file.

#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"

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
    if (TextMember(answer.result, "albumArt").empty()) {
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

/// The file is there whole or not at all. None when it is done, else why not.
std::optional<std::string> WriteBeside(const std::string& path, std::string_view bytes) {
    GError* error = nullptr;
    if (g_file_set_contents_full(path.c_str(), bytes.data(), static_cast<gssize>(bytes.size()),
                                 G_FILE_SET_CONTENTS_CONSISTENT, 0666, &error) != FALSE) {
        return std::nullopt;
    }
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, g_error_free);
    return error->message;
}

/// "-" is standard output. What is no regular file, such as a pipe, is written to as it is. None when it is
/// done, else why not.
std::optional<std::string> WriteFile(const std::string& path, std::string_view bytes) {
    struct stat present {};
    const bool isPiped = path == "-";
    if (!isPiped && (stat(path.c_str(), &present) != 0 || S_ISREG(present.st_mode))) {
        return WriteBeside(path, bytes);
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        isPiped ? stdout : std::fopen(path.c_str(), "we"), isPiped ? std::fflush : std::fclose);
    const bool isWritten = file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size() &&
                           std::fflush(file.get()) == 0;
    return isWritten ? std::nullopt : std::optional<std::string>(std::strerror(errno));
}

int Write(const Settings& settings, const std::string& file, const Picture& picture) {
    if (!picture.jpeg) {
        Complain("what the player delivers as its picture is no JPEG.");
        return kRefused;
    }
    const JpegExtent& jpeg = *picture.jpeg;
    if (const auto failure = WriteFile(file, std::string_view(picture.bytes).substr(0, jpeg.length))) {
        Complain("cannot write " + file + ": " + *failure + ".");
        return kUsage;
    }
    const std::string text =
        PictureText(picture) + (jpeg.isComplete ? "" : " (without an end marker: as delivered)");
    if (file == "-") {
        Complain("the picture: " + text + ".");
    } else if (settings.json) {
        Json::Value report;
        report["file"] = file;
        report["width"] = jpeg.width;
        report["height"] = jpeg.height;
        report["bytes"] = Json::UInt64{jpeg.length};
        PrintJson(report);
    } else {
        PrintLine(file + ": " + text);
    }
    return kDone;
}

}  // namespace

int RunArt(const Settings& settings, const std::string& file, bool isDelayed) {
    if (file == "-" && isatty(STDOUT_FILENO) != 0) {
        Complain("a picture is nothing for a terminal; name a file, or redirect the output.");
        return kUsage;
    }
    Client client(settings.endpoint, settings.Timeout());
    const Answer answer = GetPicture(client, settings, isDelayed);
    return answer.status == kDone ? Write(settings, file, PictureIn(answer.result))
                                  : Complain(client, answer);
}

}  // namespace IpodControl
