// The covers of the pictures in music files.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"

namespace DeviceSimulator {

/// Covers go by the pictures that they are made of, so that the one that is in all files of an album is
/// decoded once and handed over once. One thread.
class CoverChoice {
  public:
    using Bytes = std::vector<std::uint8_t>;

    /// Gives `file` the cover of the first of `pictures` that can be decoded; with its bytes, unless a file
    /// before has had them.
    void Choose(std::vector<Bytes>& pictures, ScannedFile& file);

  private:
    const CoverKey& Find(const Bytes& picture, std::string& made);

    Bytes m_latest;  // the picture that came last, where it is not too large: most often the next file has it
    CoverKey m_latestCover;
    std::unordered_map<std::string, CoverKey> m_covers;  // by the picture's digest
};

}  // namespace DeviceSimulator
