// The covers of the pictures in a folder's music files.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "DeviceSimulator/CoverStore.h"

namespace DeviceSimulator {

/// Covers go by the pictures that they are made of, so that the one that is in all files of an album, or of a
/// series of albums, is decoded once and kept once.
class MusicFolderCovers {
  public:
    using Bytes = std::vector<std::uint8_t>;

    /// The picture that a reader of files came across last: most often the next file has it too.
    struct Latest {
        Bytes picture;
        std::uint32_t cover = kNoCover;
    };

    /// `store` outlives it.
    explicit MusicFolderCovers(CoverStore& store) : m_store(store) {}

    /// The cover of the first of `pictures` that can be decoded; kNoCover without one. Any thread may call,
    /// each with a `latest` of its own.
    std::uint32_t Choose(std::vector<Bytes> pictures, Latest& latest);

  private:
    std::uint32_t Get(const Bytes& picture);

    CoverStore& m_store;
    std::mutex m_mutex;  // held while a cover is made: a large one takes the memory that it takes once
    std::unordered_map<std::string, std::uint32_t> m_covers;  // by digest, under m_mutex
};

}  // namespace DeviceSimulator
