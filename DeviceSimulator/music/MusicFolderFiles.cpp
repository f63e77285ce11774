#include "DeviceSimulator/music/MusicFolderFiles.h"

#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <initializer_list>
#include <set>
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

}  // namespace

MusicFolderFiles FindMusicFiles(const fs::path& folder) {
    return Finder().Find(folder);
}

std::string PathText(const fs::path& path) {
    return CleanName(path.native());
}

}  // namespace DeviceSimulator
