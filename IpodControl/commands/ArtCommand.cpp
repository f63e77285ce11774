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
#include "IpodControl/commands/ResultText.h"
#include "ServiceUtil/Base64.h"

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

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// What is no regular file, such as a pipe, is written to as it is. The errno of what failed; 0: done.
int WriteInPlace(std::FILE* file, std::string_view bytes) {
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return isWritten && std::fflush(file) == 0 ? 0 : errno;
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

/// "-" is standard output. None when it is done, else why not.
std::optional<std::string> WriteFile(const std::string& path, std::string_view bytes) {
    struct stat present {};
    if (path != "-" && (stat(path.c_str(), &present) != 0 || S_ISREG(present.st_mode))) {
        return WriteBeside(path, bytes);
    }
    const std::unique_ptr<std::FILE, CloseFile> opened(path == "-" ? nullptr
                                                                   : std::fopen(path.c_str(), "we"));
    if (path != "-" && !opened) {
        return std::strerror(errno);
    }
    const int failure = WriteInPlace(opened ? opened.get() : stdout, bytes);
    return failure == 0 ? std::nullopt : std::optional<std::string>(std::strerror(failure));
}

void Report(const Settings& settings, const std::string& file, const JpegExtent& jpeg) {
    const bool isPiped = file == "-";
    if (settings.json && !isPiped) {
        Json::Value report;
        report["file"] = file;
        report["width"] = jpeg.width;
        report["height"] = jpeg.height;
        report["bytes"] = Json::UInt64{jpeg.length};
        PrintJson(report);
        return;
    }
    const std::string text =
        ExtentText(jpeg) + (jpeg.isComplete ? "" : " (without an end marker: as delivered)");
    isPiped ? Complain("the picture: " + text + ".") : PrintLine(file + ": " + text);
}

int Write(const Settings& settings, const std::string& file, const std::string& delivered) {
    const auto bytes = DecodeBase64(delivered);
    const auto jpeg = MeasureJpeg(BytesOf(bytes.value_or("")));
    if (!jpeg) {
        Complain("what the player delivers as its picture is no JPEG.");
        return kRefused;
    }
    if (const auto failure = WriteFile(file, std::string_view(*bytes).substr(0, jpeg->length))) {
        Complain("cannot write " + file + ": " + *failure + ".");
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
    return settings.WithService([&](Client& client) {
        const Answer answer = GetPicture(client, settings, options.isDelayed);
        return answer.status == kDone ? Write(settings, options.file, TextMember(answer.result, "albumArt"))
                                      : Complain(client, answer);
    });
}

}  // namespace IpodControl
