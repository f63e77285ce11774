#include "DeviceSimulator/music/MusicFolderFiles.h"

#include <glib.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

bool HasExtension(const fs::path& path, std::initializer_list<const char*> extensions) {
    const fs::path extension = path.extension();
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](const char* other) { return strcasecmp(extension.c_str(), other) == 0; });
}

FileStamp StampOf(const struct stat& status) {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return {std::int64_t{status.st_size},
            std::int64_t{status.st_mtim.tv_sec} * kNanoseconds + status.st_mtim.tv_nsec};
}

class Finder {
  public:
    MusicFolderFiles Find(const fs::path& folder) {
        Enter(folder);
        // Links last: of two ways to a folder it is the other that playlists name.
        while (!m_folders.empty() || !m_links.empty()) {
            auto& queue = m_folders.empty() ? m_links : m_folders;
            const fs::path next = std::move(queue.front());
            queue.pop_front();
            Enter(next);
        }
        std::sort(m_files.music.begin(), m_files.music.end(),
                  [](const FoundFile& a, const FoundFile& b) { return a.path < b.path; });
        std::sort(m_files.playlists.begin(), m_files.playlists.end());
        return std::move(m_files);
    }

  private:
    void List(const fs::path& folder) {
        std::vector<fs::directory_entry> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
             entry.increment(error)) {
            entries.push_back(*entry);
        }
        if (error) {
            m_files.errors.push_back("Cannot read the folder " + PathText(folder) + ": " + error.message());
            m_files.isComplete = false;
        }
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.path().native() < b.path().native(); });
        std::for_each(entries.begin(), entries.end(), [this](const auto& entry) { Take(entry); });
    }

    void Take(const fs::directory_entry& entry) {
        const fs::path& path = entry.path();
        if (path.filename().native().starts_with('.')) {
            return;
        }
        const bool isMusic = HasExtension(
            path, {".mp3", ".m4a", ".mp4", ".m4b", ".aac", ".flac", ".ogg", ".oga", ".opus", ".wav"});
        const bool isWanted = isMusic || HasExtension(path, {".m3u", ".m3u8"});
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0) {
            // What a link that leads nowhere might have been shows in its name, but not that of a loop.
            if (isWanted || errno == ELOOP) {
                m_files.errors.push_back("Cannot read " + PathText(path) + ": " +
                                         std::generic_category().message(errno));
            }
        } else if (S_ISDIR(status.st_mode)) {
            std::error_code error;
            (entry.is_symlink(error) ? m_links : m_folders).push_back(path);
        } else if (isWanted && !S_ISREG(status.st_mode)) {
            // A pipe or device would hold the reader up.
            m_files.errors.push_back("Not a regular file, left out: " + PathText(path));
        } else if (isMusic) {
            m_files.music.push_back({path.native(), StampOf(status)});
        } else if (isWanted) {
            m_files.playlists.push_back(path);
        }
    }

    /// Lists a folder, unless that has been done by another way.
    void Enter(const fs::path& folder) {
        struct stat status {};
        if (::stat(folder.c_str(), &status) != 0 || m_seen.emplace(status.st_dev, status.st_ino).second) {
            List(folder);
        } else {
            m_files.errors.push_back("A link to a folder that is read already, left out: " +
                                     PathText(folder));
        }
    }

    MusicFolderFiles m_files;
    std::deque<fs::path> m_folders;
    std::deque<fs::path> m_links;  // to folders
    std::set<std::pair<dev_t, ino_t>> m_seen;
};

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

MusicFolderFiles FindMusicFiles(const fs::path& folder) {
    return Finder().Find(folder);
}

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

std::string PathText(const fs::path& path) {
    return CleanName(path.native());
}

}  // namespace DeviceSimulator
