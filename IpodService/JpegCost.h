// What decoding a JPEG takes, told from its markers before anything is decoded.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "DeviceManager/DeviceManager.h"

struct JpegCost {
    u32 width = 0;  ///< pixels
    u32 height = 0;
    /// What the decoder holds at once, 2 bytes each. 0 for a picture that is decoded line by line: one whose
    /// only scan has all of its components.
    std::uint64_t heldCoefficients = 0;
    u32 scans = 0;  ///< not below what a decoder finds; each may visit every held coefficient

    /// Whether the server thread can spare the time and a unit the memory.
    bool IsAffordable() const;
};

/// None when the bytes are no JPEG up to its first scan, or one of a kind that is not decoded here: only
/// Huffman coding of 8-bit samples is, baseline, extended or progressive. Arithmetic coding is left out
/// because a few bytes of it stand for any amount of work; lossless, hierarchical and 12-bit pictures because
/// the decoder does not know them. Linear in the number of bytes. Any thread.
std::optional<JpegCost> ReadJpegCost(std::span<const u8> bytes);
