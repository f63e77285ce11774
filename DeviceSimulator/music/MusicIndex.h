// What is known of music files from earlier scans: a file that grows by a record for each change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/music/CoverFolder.h"
#include "DeviceSimulator/music/MusicFolderFiles.h"
#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// What is kept of a music file.
struct MusicRecord {
    std::uint32_t isMusic = 0;  ///< else the rest is empty, but for
    std::string failure;        ///< why it never will be read; empty: it holds no music
    TrackTags tags;             ///< well-formed UTF-8 throughout (see CleanName)
    CoverKey cover;             ///< of its own pictures
};

/// Any number of processes may read one; the first that opens it writes to it. What has been put is kept at
/// once, so that a scan that is cut short is not lost. One thread.
class MusicIndex {
  public:
    /// The index in `folder`, which is made where it is missing; what is damaged of it, or of another
    /// version, is started over. An empty folder is for none.
    explicit MusicIndex(const std::filesystem::path& folder);

    /// Why nothing is written to it, or it cannot be had at all; empty: nothing is wrong.
    const std::string& Problem() const { return m_problem; }

    /// What is known of a file as it is, unless its cover has gone.
    std::optional<MusicRecord> Find(const FoundFile& file);
    void Put(const FoundFile& file, const MusicRecord& record);
    /// Those of its records, and others that are kept with them; never null.
    const std::shared_ptr<CoverFolder>& Covers() const { return m_covers; }
    /// Forgets what has been written over, the covers that no file has any more and, where `folder` is not
    /// empty, the files below it that nobody has asked for; from then on nothing is found, and another
    /// process may write. False when not everything could be written.
    bool Close(const std::string& folder);

  private:
    struct Known {
        std::string_view rest;  ///< of the record, in m_text
        bool isWanted = false;
    };

    bool OpenForWriting();
    void StartOver(std::size_t good);
    std::size_t Load();
    void Append(std::string_view bytes);
    void Tidy();
    void Rewrite();

    const std::filesystem::path m_path;
    std::string m_problem;
    std::shared_ptr<CoverFolder> m_covers;
    Descriptor m_lock;
    Descriptor m_file;                                    // to be written to
    std::string m_text;                                   // all of the file
    std::unordered_map<std::string_view, Known> m_known;  // by path, in m_text
    std::size_t m_records = 0;                            // in m_text
    bool m_isChanged = false;
    bool m_hasFailed = false;
};

}  // namespace DeviceSimulator
