// What is known of music files from earlier scans, in a database file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "DeviceSimulator/CoverStore.h"
#include "DeviceSimulator/LibraryBuilder.h"
#include "DeviceSimulator/MusicFolderFiles.h"
#include "DeviceSimulator/Sqlite.h"

namespace DeviceSimulator {

/// What a scan keeps of a file.
struct MusicFileRecord {
    FileStamp stamp;
    bool isMusic = false;  ///< else it could be read but not understood, and the rest is empty
    TrackTags tags;
    std::uint32_t cover = kNoCover;  ///< of its own pictures
};

/// Several processes may use one file; each has an object of its own, which any of its threads may call.
/// Everything written becomes lasting with Commit. After a failure nothing more is written, and Commit says
/// so.
class MusicCache final : public CoverStore {
  public:
    /// By path.
    using Files = std::unordered_map<std::string, MusicFileRecord>;

    /// The cache in `folder`, which is made where it is missing; one that is damaged or of another version is
    /// started over. Null, with the reason in `error`, when there can be none.
    static std::shared_ptr<MusicCache> Open(const std::filesystem::path& folder, std::string& error);

    /// All files known below `folder`, an absolute path; empty after a failure.
    Files FilesBelow(const std::string& folder);
    void Put(const std::string& path, const MusicFileRecord& file);
    void Remove(const std::string& path);
    /// False when anything could not be read or written: the database is then as it was before.
    bool Commit();
    bool HasFailed() const;
    /// What failed first.
    std::string Error() const;

    std::optional<std::uint32_t> Find(const std::string& digest) override;
    std::uint32_t Keep(const std::string& digest, const Picture& cover) override;
    std::shared_ptr<const Picture> Read(std::uint32_t cover) override;

  private:
    MusicCache(std::filesystem::path file, SqliteHandle database)
        : m_file(std::move(file)), m_database(std::move(database)) {}

    int Prepare();
    int PrepareStatements();
    bool BeginWriting();
    bool Check(int result);
    std::optional<std::uint32_t> NumberFrom(SqliteStatement& statement);

    const std::filesystem::path m_file;
    SqliteHandle m_database;
    mutable std::mutex m_mutex;  // guards all below, and the database
    SqliteStatement m_filesBelow;
    SqliteStatement m_putFile;
    SqliteStatement m_removeFile;
    SqliteStatement m_findCover;
    SqliteStatement m_keepCover;
    SqliteStatement m_readCover;
    bool m_isWriting = false;
    std::string m_error;
};

}  // namespace DeviceSimulator
