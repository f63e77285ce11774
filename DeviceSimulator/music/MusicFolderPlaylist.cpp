#include "DeviceSimulator/music/MusicFolderPlaylist.h"

#include <glib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <memory>

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMaxPlaylistBytes = 8U << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r";

std::string_view Trim(std::string_view line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

/// Empty when `text` is UTF-8 already.
std::string FromWestern(std::string_view text) {
    const auto length = static_cast<gssize>(text.size());
    if (g_utf8_validate(text.data(), length, nullptr) != FALSE) {
        return {};
    }
    const std::unique_ptr<char, decltype(&g_free)> converted(
        g_convert(text.data(), length, "UTF-8", "WINDOWS-1252", nullptr, nullptr, nullptr), g_free);
    return converted ? converted.get() : std::string();
}

/// Of a "file:" address; empty for anything else.
std::string FromAddress(const std::string& entry) {
    const std::unique_ptr<char, decltype(&g_free)> path(g_filename_from_uri(entry.c_str(), nullptr, nullptr),
                                                        g_free);
    return path ? path.get() : std::string();
}

}  // namespace

std::vector<std::string_view> PlaylistEntries(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    std::vector<std::string_view> entries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = Trim(text.substr(0, end));
        if (!line.empty() && line.front() != '#') {
            entries.push_back(line);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return entries;
}

std::vector<fs::path> EntryPaths(const fs::path& file, std::string_view entry) {
    std::vector<std::string> spellings{std::string(entry)};
    if (auto converted = FromWestern(entry); !converted.empty()) {
        spellings.push_back(std::move(converted));
    }
    if (auto path = FromAddress(spellings.front()); !path.empty()) {
        spellings.push_back(std::move(path));
    }
    if (entry.find('\\') != std::string_view::npos) {
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

std::optional<std::string> ReadPlaylist(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    std::string text(kMaxPlaylistBytes, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    text.shrink_to_fit();
    return text;
}

fs::path ComparablePath(const fs::path& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return (error ? path : absolute).lexically_normal();
}

}  // namespace DeviceSimulator
