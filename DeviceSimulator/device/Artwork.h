// Covers as some players have them, and how they reach a process: in its shared block.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// What `variant` makes of the track's own cover (null: it has none). Any thread.
std::shared_ptr<const Picture> ApplyArtworkVariant(ArtworkVariant variant,
                                                   std::shared_ptr<const Picture> cover,
                                                   const TrackInfo& track);

/// `cover` in its own proportions, with neither side above that of `wanted`; as it is where it fits already,
/// is no picture or is null. Any thread.
std::shared_ptr<const Picture> FitCover(std::shared_ptr<const Picture> cover, PictureSize wanted);

/// Writes `picture` (null: the track has none) to the start of `block` and zeros behind it, as far as its
/// size or the block goes. `size` is written on success only.
DevMgrResult DeliverPicture(const Picture* picture, std::span<std::uint8_t> block, PictureSize& size);

}  // namespace DeviceSimulator
