#include "DeviceSimulator/MusicFolderFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <set>
#include <utility>

#include "DeviceSimulator/LibraryText.h"
#include "DeviceSimulator/MusicFolderTags.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

std::optional<struct stat> StatusOf(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

bool IsPlaylist(const fs::path& path) {
    const fs::path extension = path.extension();
    return extension == ".m3u" || extension == ".m3u8" || extension == ".M3U" || extension == ".M3U8";
}

class Finder {
  public:
    MusicFolderFiles Find(const fs::path& folder) {
        Enter(folder);
        // Breadth first: of two ways to a folder the shorter one counts, which is seldom the link.
        while (!m_folders.empty()) {
            const fs::path next = std::move(m_folders.front());
            m_folders.pop_front();
            List(next);
        }
        std::sort(m_files.music.begin(), m_files.music.end());
        std::sort(m_files.playlists.begin(), m_files.playlists.end());
        return std::move(m_files);
    }

  private:
    void Enter(const fs::path& folder) {
        const auto status = StatusOf(folder);
        if (!status || m_seen.emplace(status->st_dev, status->st_ino).second) {
            m_folders.push_back(folder);
        }
    }

    void List(const fs::path& folder) {
        std::vector<fs::path> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
             entry.increment(error)) {
            entries.push_back(entry->path());
        }
        if (error) {
            m_files.errors.push_back("Cannot read the folder " + PathText(folder) + ": " + error.message());
        }
        std::sort(entries.begin(), entries.end());
        std::for_each(entries.begin(), entries.end(), [this](const fs::path& path) { Take(path); });
    }

    void Take(const fs::path& path) {
        if (path.filename().native().starts_with('.')) {
            return;
        }
        const auto status = StatusOf(path);
        if (status && S_ISDIR(status->st_mode)) {
            Enter(path);
        } else if (status && !S_ISREG(status->st_mode)) {
            return;  // a pipe or device would hold the reader up
        } else if (IsMusicFile(path)) {
            m_files.music.push_back(path);
        } else if (IsPlaylist(path)) {
            m_files.playlists.push_back(path);
        }
    }

    MusicFolderFiles m_files;
    std::deque<fs::path> m_folders;
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
