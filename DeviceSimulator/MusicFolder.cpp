#include <glib.h>

#include <iostream>
#include <map>
#include <string>
#include <unordered_map>

#include "DeviceSimulator/Library.h"
#include "DeviceSimulator/LibraryBuilder.h"
#include "DeviceSimulator/MusicFolderFiles.h"
#include "DeviceSimulator/MusicFolderPlaylist.h"
#include "DeviceSimulator/MusicFolderTags.h"
#include "DeviceSimulator/PictureCover.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

/// Covers by the pictures that they were made of, so that the one that is in all files of an album, or of a
/// series of albums, is decoded once and kept once.
class Covers {
  public:
    std::shared_ptr<const Picture> Get(const std::vector<std::uint8_t>& picture) {
        const std::unique_ptr<char, decltype(&g_free)> checksum(
            g_compute_checksum_for_data(G_CHECKSUM_SHA256, picture.data(), picture.size()), g_free);
        const auto [place, isNew] = m_covers.try_emplace(checksum.get());
        if (isNew) {
            place->second = MakeCover(picture);
        }
        return place->second;
    }

  private:
    std::unordered_map<std::string, std::shared_ptr<const Picture>> m_covers;
};

class Scan {
  public:
    std::unique_ptr<Library> Run(const fs::path& folder) {
        const MusicFolderFiles files = FindMusicFiles(folder);
        for (const std::string& error : files.errors) {
            std::cerr << error << '\n';
        }
        for (const fs::path& path : files.music) {
            AddFile(path);
        }
        for (const fs::path& path : files.playlists) {
            AddPlaylist(path);
        }
        if (m_builder.TrackCount() == 0 && files.errors.empty()) {
            std::cerr << "No music in " << PathText(folder) << '\n';
        }
        return m_builder.BuildWithSetCovers();
    }

  private:
    void AddFile(const fs::path& path) {
        const auto file = ReadMusicFile(path);
        if (!file) {
            std::cerr << "Cannot read as music: " << PathText(path) << '\n';
            return;
        }
        const auto added = m_builder.Add(file->tags, path.native());
        m_tracks.emplace(ComparablePath(path), added.track);
        for (const auto& picture : file->pictures) {
            if (m_builder.HasCover(added.album)) {
                return;
            }
            m_builder.SetCover(added.album, m_covers.Get(picture));
        }
    }

    void AddPlaylist(const fs::path& path) {
        const std::string text = ReadPlaylist(path);
        std::vector<std::uint32_t> tracks;
        for (const std::string_view entry : PlaylistEntries(text)) {
            for (const fs::path& candidate : EntryPaths(path, entry)) {
                if (const auto found = m_tracks.find(candidate); found != m_tracks.end()) {
                    tracks.push_back(found->second);
                    break;
                }
            }
        }
        m_builder.AddPlaylist(CleanName(path.stem().native()), std::move(tracks));
    }

    LibraryBuilder m_builder;
    Covers m_covers;
    std::map<fs::path, std::uint32_t> m_tracks;
};

}  // namespace

std::unique_ptr<Library> ScanMusicFolder(const fs::path& folder) {
    return Scan().Run(folder);
}

}  // namespace DeviceSimulator
