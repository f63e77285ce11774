// What decoding a JPEG takes, told from its markers before anything is decoded.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

/// What decoding may take. What these let through takes 0.4 s of a machine that may be ten times as fast as a
/// unit, and 60 MB at most.
struct JpegLimits {
    /// 8192 x 8192, line by line.
    std::uint64_t pixels = std::uint64_t{1} << 26;
    /// Pixels. Shrinking holds some lines.
    std::uint32_t width = 1 << 14;
    /// 48 MB. That is 16 million pixels with halved colours and 8 million with whole ones.
    std::uint64_t heldCoefficients = std::uint64_t{24} << 20;
};

struct JpegCost {
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0;
    /// What the decoder holds at once, 2 bytes each. 0 for a picture that is decoded line by line: one whose
    /// only scan has all of its components.
    std::uint64_t heldCoefficients = 0;
    std::uint32_t scans = 0;       ///< not below what a decoder finds; each may visit every held coefficient
    std::uint32_t components = 0;  ///< 1: grey, 3: colours, 4: for print

    /// Whether the thread that decodes can spare the time, and a unit the memory.
    bool IsAffordable(const JpegLimits& limits = {}) const;
};

/// None when the bytes are no JPEG up to its first scan, or one of a kind that is not decoded here: only
/// Huffman coding of 8-bit samples is, baseline, extended or progressive. Arithmetic coding is left out
/// because a few bytes of it stand for any amount of work; lossless, hierarchical and 12-bit pictures because
/// the decoder does not know them. Linear in the number of bytes. Any thread.
std::optional<JpegCost> ReadJpegCost(std::span<const std::uint8_t> bytes);
