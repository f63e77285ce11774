// Where the covers of a library are kept.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/music/Picture.h"

namespace DeviceSimulator {

/// In place of a cover's number.
constexpr std::uint32_t kNoCover = UINT32_MAX;

/// Files in a folder, each named after the digest of its bytes, so that any number of processes may share it;
/// in memory what cannot be written there. One thread fills it; afterwards any thread may read.
class CoverFolder {
  public:
    /// `folder` is empty for none. Nothing is written to one that is not `isWritable`.
    CoverFolder(std::filesystem::path folder, bool isWritable);

    /// The number that the cover has in this object, kNoCover where it is none or not there.
    std::uint32_t Number(const CoverKey& cover);
    /// Keeps its bytes, so that it is there.
    void Keep(const CoverKey& cover, std::string_view bytes);
    /// Null when it cannot be read, or is not what was kept.
    std::shared_ptr<const Picture> Read(std::uint32_t number) const;

    /// Removes the covers that nobody has.
    void RemoveOthers(const std::unordered_set<std::string>& digests) const;

  private:
    std::filesystem::path FileOf(const std::string& digest) const;
    bool IsThere(const std::string& digest) const;

    const std::filesystem::path m_folder;
    const bool m_isWritable;
    std::vector<CoverKey> m_covers;  // by number
    std::unordered_map<std::string, std::uint32_t> m_numbers;
    std::unordered_map<std::string, std::string> m_inMemory;  // by digest
};

}  // namespace DeviceSimulator
