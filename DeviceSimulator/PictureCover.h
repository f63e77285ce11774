// Covers of pictures that music files hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "DeviceSimulator/Picture.h"

namespace DeviceSimulator {

/// What a player hands over at a time at most.
constexpr std::size_t kMaxCoverBytes = 2097152;

/// The bytes of a picture as a cover: a JPEG as it stands where its bytes stay within width * height * 2 and
/// kMaxCoverBytes; other JPEGs, and PNGs, as a new JPEG of at most 640 x 640 with the same aspect. Null when
/// they cannot be decoded or claim to be larger than is reasonable. Any thread may call.
std::shared_ptr<const Picture> MakeCover(std::span<const std::uint8_t> bytes);

}  // namespace DeviceSimulator
