#include <algorithm>
#include <atomic>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

#include "DeviceSimulator/Library.h"
#include "DeviceSimulator/LibraryBuilder.h"
#include "DeviceSimulator/MusicCache.h"
#include "DeviceSimulator/MusicFolderCovers.h"
#include "DeviceSimulator/MusicFolderFiles.h"
#include "DeviceSimulator/MusicFolderPlaylist.h"
#include "DeviceSimulator/MusicFolderTags.h"
#include "DeviceSimulator/WorkerThreads.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

/// So many files are read, side by side, before they are filed in their order.
constexpr std::size_t kBatch = 256;

/// A file on its way into the library.
struct ScannedFile {
    MusicFileRecord record;
    std::string error;  ///< why it cannot be read at present
    bool isNew = false;
};

ScannedFile ReadFile(const FoundFile& found, MusicFolderCovers& covers, MusicFolderCovers::Latest& latest) {
    ScannedFile scanned;
    scanned.isNew = true;
    scanned.record.stamp = found.stamp;
    try {
        if (auto file = ReadMusicFile(found.path, scanned.error)) {
            scanned.record.isMusic = true;
            scanned.record.tags = std::move(file->tags);
            scanned.record.cover = covers.Choose(std::move(file->pictures), latest);
        }
    } catch (const std::exception& exception) {
        scanned.error = exception.what();
    }
    return scanned;
}

class Scan {
  public:
    /// `cache` may be null.
    Scan(std::shared_ptr<MusicCache> cache, const LibraryProgress& progress)
        : m_cache(std::move(cache)), m_store(StoreFor(m_cache)), m_progress(progress) {}

    /// Null when the cache fails, and then nothing has been written to stderr.
    std::unique_ptr<Library> Run(const fs::path& folder) {
        const MusicFolderFiles files = FindMusicFiles(folder);
        m_lines = files.errors;
        if (m_cache != nullptr) {
            m_known = m_cache->FilesBelow(folder.native());
        }
        AddFiles(files.music);
        std::for_each(files.playlists.begin(), files.playlists.end(),
                      [this](const fs::path& path) { AddPlaylist(path); });
        if (!CloseCache(files)) {
            return nullptr;
        }
        if (m_builder.TrackCount() == 0 && files.isComplete) {
            m_lines.push_back("No music in " + PathText(folder));
        }
        for (const std::string& line : m_lines) {
            std::cerr << "device simulator: " + line + '\n';
        }
        return m_builder.BuildWithCovers(m_store);
    }

  private:
    static std::shared_ptr<CoverStore> StoreFor(const std::shared_ptr<MusicCache>& cache) {
        if (cache != nullptr) {
            return cache;
        }
        return std::make_shared<MemoryCovers>();
    }

    bool HasFailed() const { return m_cache != nullptr && m_cache->HasFailed(); }

    void AddFiles(std::span<const FoundFile> files) {
        for (std::size_t first = 0; first < files.size() && !HasFailed(); first += kBatch) {
            const auto batch = files.subspan(first, std::min(kBatch, files.size() - first));
            auto scanned = ScanBatch(batch);
            for (std::size_t i = 0; i < batch.size(); ++i) {
                AddFile(batch[i].path, scanned[i]);
            }
            if (m_progress) {
                m_progress(static_cast<std::uint32_t>((first + batch.size()) * 99 / files.size()));
            }
        }
    }

    std::vector<ScannedFile> ScanBatch(std::span<const FoundFile> files) {
        std::vector<ScannedFile> scanned(files.size());
        std::vector<std::size_t> unknown;
        for (std::size_t i = 0; i < files.size(); ++i) {
            auto known = m_known.extract(files[i].path);
            if (!known.empty() && known.mapped().stamp == files[i].stamp) {
                scanned[i].record = std::move(known.mapped());
            } else {
                unknown.push_back(i);
            }
        }
        std::atomic<std::size_t> next{0};
        RunOnThreads(unknown.size(), [&] {
            MusicFolderCovers::Latest latest;
            for (std::size_t i = next++; i < unknown.size(); i = next++) {
                scanned[unknown[i]] = ReadFile(files[unknown[i]], m_covers, latest);
            }
        });
        return scanned;
    }

    void AddFile(const std::string& path, const ScannedFile& scanned) {
        if (!scanned.error.empty()) {
            m_lines.push_back("Cannot read " + PathText(path) + ": " + scanned.error);
            return;
        }
        const MusicFileRecord& file = scanned.record;
        if (scanned.isNew && m_cache != nullptr) {
            m_cache->Put(path, file);
        }
        if (!file.isMusic) {
            m_lines.push_back("Cannot read as music: " + PathText(path));
            return;
        }
        const auto added = m_builder.Add(file.tags, path);
        m_tracks.emplace(path, added.track);
        if (file.cover != kNoCover && !m_builder.HasCover(added.album)) {
            m_builder.SetCover(added.album, file.cover);
        }
    }

    void AddPlaylist(const fs::path& path) {
        const auto text = ReadPlaylist(path);
        if (!text) {
            m_lines.push_back("Cannot read the playlist " + PathText(path));
            return;
        }
        std::vector<std::uint32_t> tracks;
        for (const std::string_view entry : PlaylistEntries(*text)) {
            for (const fs::path& candidate : EntryPaths(path, entry)) {
                if (const auto found = m_tracks.find(candidate.native()); found != m_tracks.end()) {
                    tracks.push_back(found->second);
                    break;
                }
            }
        }
        m_builder.AddPlaylist(CleanName(path.stem().native()), std::move(tracks));
    }

    /// Forgets what has vanished. False when the cache has failed.
    bool CloseCache(const MusicFolderFiles& files) {
        if (m_cache == nullptr) {
            return true;
        }
        // What could not be looked at, such as a disk that is not mounted, may come back.
        if (files.isComplete) {
            for (const auto& vanished : m_known) {
                m_cache->Remove(vanished.first);
            }
        }
        return m_cache->Commit();
    }

    const std::shared_ptr<MusicCache> m_cache;
    const std::shared_ptr<CoverStore> m_store;
    const LibraryProgress& m_progress;
    MusicFolderCovers m_covers{*m_store};
    MusicCache::Files m_known;  // not come across yet
    LibraryBuilder m_builder;
    std::unordered_map<std::string, std::uint32_t> m_tracks;  // by path
    std::vector<std::string> m_lines;
};

/// Null when the cache cannot be used.
std::unique_ptr<Library> ScanWithCache(const fs::path& folder, const fs::path& cacheFolder,
                                       const LibraryProgress& progress) {
    std::string error;
    if (auto cache = MusicCache::Open(cacheFolder, error)) {
        if (auto library = Scan(cache, progress).Run(folder)) {
            return library;
        }
        error = cache->Error();
    }
    std::cerr << "device simulator: the music cache in " + PathText(cacheFolder) + " is not used: " + error +
                     '\n';
    return nullptr;
}

}  // namespace

std::unique_ptr<Library> ScanMusicFolder(const fs::path& folder, const fs::path& cache,
                                         const LibraryProgress& progress) {
    // A name of its own for every file, however the folder was named.
    fs::path root = ComparablePath(folder);
    if (!root.has_filename() && root.has_relative_path()) {
        root = root.parent_path();
    }
    if (!cache.empty()) {
        if (auto library = ScanWithCache(root, cache, progress)) {
            return library;
        }
    }
    return Scan(nullptr, progress).Run(root);
}

}  // namespace DeviceSimulator
