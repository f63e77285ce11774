// What is known of music files from earlier scans: a file that grows by a record for each change.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "DeviceSimulator/music/CoverFolder.h"
#include "DeviceSimulator/music/MusicRecord.h"
#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// Any number of processes may read one; the first that opens it writes to it. What has been put is kept
/// within a second, so that a scan that is cut short is not lost. One thread.
class MusicIndex {
  public:
    /// The index in `folder`, which is made where it is missing; what is damaged of it, or of another
    /// version, is started over. Null, with the reason in `error`, when there can be none.
    static std::unique_ptr<MusicIndex> Open(const std::filesystem::path& folder, std::string& error);
    ~MusicIndex() { Flush(); }
    MusicIndex(const MusicIndex&) = delete;
    MusicIndex& operator=(const MusicIndex&) = delete;

    /// False: another process writes to it, or it may not be written to.
    bool IsWritable() const { return m_file.IsOpen(); }

    /// What is known of a file as it was at `stamp`.
    std::optional<MusicRecord> Find(const std::string& path, const FileStamp& stamp) const;
    void Put(const std::string& path, const MusicRecord& record);
    /// Writes what has been put; what is not written by then happens half a second later with the next Put.
    void Flush();
    /// Forgets the files below `folder` but those of `found` (all, where it is null), what has been written
    /// over, and the covers that no file has any more; from then on nothing is found, and another process may
    /// write. False when not everything could be written.
    bool Close(const std::string& folder, const std::unordered_set<std::string_view>* found,
               const CoverFolder& covers);

  private:
    using Clock = std::chrono::steady_clock;

    explicit MusicIndex(std::filesystem::path file) : m_path(std::move(file)) {}

    std::size_t Load();
    bool OpenForWriting();
    void Append(std::string_view path, std::string_view rest);
    void Tidy(const CoverFolder& covers);
    void Rewrite();

    const std::filesystem::path m_path;
    Descriptor m_lock;
    Descriptor m_file;   // to be written to
    std::string m_text;  // all of the file
    std::unordered_map<std::string_view, std::string_view>
        m_known;                // by path: the rest of the record, in m_text
    std::size_t m_records = 0;  // in m_text
    std::string m_unwritten;
    Clock::time_point m_flushed = Clock::now();
    bool m_isChanged = false;
    bool m_hasFailed = false;
};

}  // namespace DeviceSimulator
