#include <glib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

#include "DeviceSimulator/music/LibraryText.h"
#include "DeviceSimulator/music/MusicFolderFiles.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxPlaylistBytes = 8U << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r";

/// Empty when `text` is UTF-8 already.
std::string FromWestern(const std::string& text) {
    const auto length = static_cast<gssize>(text.size());
    return g_utf8_validate(text.data(), length, nullptr) != FALSE
               ? std::string()
               : TakeGlibText(
                     g_convert(text.data(), length, "UTF-8", "WINDOWS-1252", nullptr, nullptr, nullptr));
}

std::vector<fs::path> EntryPaths(const fs::path& file, const std::string& entry) {
    std::vector<std::string> spellings{entry};
    for (std::string other :
         {FromWestern(entry), TakeGlibText(g_filename_from_uri(entry.c_str(), nullptr, nullptr))}) {
        if (!other.empty()) {
            spellings.push_back(std::move(other));
        }
    }
    if (entry.find('\\') != std::string::npos) {
        std::string separated = spellings.back();
        std::replace(separated.begin(), separated.end(), '\\', '/');
        spellings.push_back(std::move(separated));
    }
    std::vector<fs::path> paths;
    std::transform(
        spellings.begin(), spellings.end(), std::back_inserter(paths),
        [&file](const std::string& spelling) { return ComparablePath(file.parent_path() / spelling); });
    return paths;
}

}  // namespace

bool ReadPlaylist(const fs::path& file, const std::function<void(const std::vector<fs::path>&)>& take) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return false;
    }
    std::string text(kMaxPlaylistBytes, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    std::string_view rest(text.data(), static_cast<std::size_t>(stream.gcount()));
    if (rest.starts_with(kByteOrderMark)) {
        rest.remove_prefix(kByteOrderMark.size());
    }
    while (!rest.empty()) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        line = line.substr(0, line.find_last_not_of(kBlanks) + 1);
        if (!line.empty() && line.front() != '#') {
            take(EntryPaths(file, std::string(line)));
        }
    }
    return true;
}

fs::path ComparablePath(const fs::path& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return (error ? path : absolute).lexically_normal();
}

}  // namespace DeviceSimulator
