// How a cover reaches a process: into its shared block.
#pragma once

#include <cstdint>
#include <span>

#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/music/Picture.h"

namespace DeviceSimulator {

/// Writes `picture` (null: the track has none) to the start of `block` and zeros behind it, as far as its
/// size or the block goes. `size` is written on success only.
DevMgrResult DeliverPicture(const Picture* picture, std::span<std::uint8_t> block, PictureSize& size);

}  // namespace DeviceSimulator
