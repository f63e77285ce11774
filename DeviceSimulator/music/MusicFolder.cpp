#include <algorithm>
#include <cerrno>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "DeviceSimulator/music/LibraryBuilder.h"
#include "DeviceSimulator/music/MusicFolderFiles.h"
#include "DeviceSimulator/music/MusicIndex.h"
#include "DeviceSimulator/music/MusicReaders.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kMostSide = 65535;

void Clean(TrackTags& tags) {
    for (std::string* text :
         {&tags.title, &tags.artist, &tags.album, &tags.albumArtist, &tags.genre, &tags.composer}) {
        *text = CleanName(*text);
    }
}

/// What the media program says was made of bytes from anywhere.
bool IsSound(const CoverKey& cover) {
    constexpr std::size_t kDigestLength = 64;
    return cover.digest.size() == kDigestLength &&
           cover.digest.find_first_not_of("0123456789abcdef") == std::string::npos && cover.width > 0 &&
           cover.width <= kMostSide && cover.height > 0 && cover.height <= kMostSide;
}

bool IsSound(const std::string& picture, const CoverKey& cover) {
    return picture.starts_with("\xFF\xD8") && picture.size() <= kMostCoverBytes &&
           picture.size() <= std::uint64_t{2} * cover.width * cover.height;
}

class Scan {
  public:
    Scan(const fs::path& cache, const ScanOptions& options)
        : m_index(cache), m_options(options), m_builder(options.sorting) {
        if (!m_index.Problem().empty()) {
            std::cerr << "device simulator: what is read of the music is not kept in " + PathText(cache) +
                             ": " + m_index.Problem() + '\n';
        }
    }

    std::unique_ptr<Library> Run(const fs::path& folder) {
        const MusicFolderFiles files = FindMusicFiles(folder);
        m_lines = files.errors;
        ReadNew(files.music);
        FileUpTo(files.music, files.music.size());
        std::for_each(files.playlists.begin(), files.playlists.end(),
                      [this](const fs::path& path) { AddPlaylist(path); });
        // What could not be looked at, such as a disk that is not mounted, may come back.
        if (!m_index.Close(files.isComplete ? folder.native() : "")) {
            m_lines.emplace_back("not all of what was read of the music can be kept");
        }
        if (m_builder.TrackCount() == 0 && files.isComplete) {
            m_lines.push_back("No music in " + PathText(folder));
        }
        for (const std::string& line : m_lines) {
            std::cerr << "device simulator: " + line + '\n';
        }
        return m_builder.Build(m_index.Covers());
    }

  private:
    void ReadNew(const std::vector<FoundFile>& files) {
        std::vector<std::string> paths;
        std::vector<std::size_t> numbers;
        for (std::size_t i = 0; i < files.size(); ++i) {
            if (!m_index.Find(files[i])) {
                paths.push_back(files[i].path);
                numbers.push_back(i);
            }
        }
        MusicReading reading;
        reading.patience = m_options.patience;
        reading.tick = [&] { Tell(files.size()); };
        reading.take = [&](std::size_t read, ReadMusic music) {
            FileUpTo(files, numbers[read]);
            FileRead(files[numbers[read]], std::move(music));
            ++m_filed;
            Tell(files.size());
        };
        const std::string error = ReadMusicFiles(paths, reading);
        if (!error.empty()) {
            m_lines.push_back("no music can be read, for want of " + error);
        }
    }

    void Tell(std::size_t count) const {
        if (m_options.progress) {
            m_options.progress(static_cast<std::uint32_t>(m_filed * 99 / std::max<std::size_t>(count, 1)));
        }
    }

    /// Those that are known.
    void FileUpTo(const std::vector<FoundFile>& files, std::size_t end) {
        for (; m_filed < end; ++m_filed) {
            if (auto record = m_index.Find(files[m_filed])) {
                File(files[m_filed].path, std::move(*record));
            }
            if (m_filed % kFilesATick == 0) {
                Tell(files.size());
            }
        }
    }

    void FileRead(const FoundFile& found, ReadMusic read) {
        if (read.file.error != 0) {
            const int error = static_cast<int>(read.file.error);
            m_lines.push_back("Cannot read " + PathText(found.path) + ": " +
                              std::generic_category().message(error));
            return;
        }
        MusicRecord record{read.file.isMusic, std::move(read.failure), {}, {}};
        if (record.isMusic != 0) {
            record.tags = std::move(read.file.tags);
            record.cover = Keep(read.file);
        }
        m_index.Put(found, record);
        File(found.path, std::move(record));
    }

    CoverKey Keep(const ScannedFile& file) {
        if (!IsSound(file.cover)) {
            return {};
        }
        if (IsSound(file.picture, file.cover)) {
            m_index.Covers()->Keep(file.cover, file.picture);
        }
        return m_index.Covers()->Number(file.cover) != kNoCover ? file.cover : CoverKey();
    }

    void File(const std::string& path, MusicRecord record) {
        if (record.isMusic == 0) {
            m_lines.push_back(record.failure.empty()
                                  ? "Cannot read as music: " + PathText(path)
                                  : "Cannot read " + PathText(path) + ": " + record.failure);
            return;
        }
        Clean(record.tags);
        if (record.tags.title.empty()) {
            record.tags.title = CleanName(fs::path(path).stem().native());
        }
        m_tracks.emplace(path, m_builder.Add(record.tags, path, m_index.Covers()->Number(record.cover)));
    }

    void AddPlaylist(const fs::path& path) {
        std::vector<std::uint32_t> tracks;
        const bool isRead = ReadPlaylist(path, [&](const std::vector<fs::path>& candidates) {
            for (const fs::path& candidate : candidates) {
                if (const auto found = m_tracks.find(candidate.native()); found != m_tracks.end()) {
                    tracks.push_back(found->second);
                    return;
                }
            }
        });
        if (isRead) {
            m_builder.AddPlaylist(CleanName(path.stem().native()), std::move(tracks));
        } else {
            m_lines.push_back("Cannot read the playlist " + PathText(path));
        }
    }

    static constexpr std::size_t kFilesATick = 256;

    MusicIndex m_index;
    const ScanOptions& m_options;
    LibraryBuilder m_builder;
    std::size_t m_filed = 0;                                  // so many, from the first on
    std::unordered_map<std::string, std::uint32_t> m_tracks;  // by path
    std::vector<std::string> m_lines;
};

}  // namespace

std::unique_ptr<Library> ScanMusicFolder(const fs::path& folder, const fs::path& cache,
                                         const ScanOptions& options) {
    // A name of its own for every file, however the folder was named.
    fs::path root = ComparablePath(folder);
    if (!root.has_filename() && root.has_relative_path()) {
        root = root.parent_path();
    }
    return Scan(cache, options).Run(root);
}

}  // namespace DeviceSimulator
