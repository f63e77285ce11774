// Covers in the size that is wanted.
#pragma once

#include <memory>

#include "DeviceSimulator/music/Picture.h"

namespace DeviceSimulator {

/// `cover` in its own proportions, with neither side above that of `wanted`; as it is where it fits already,
/// is no picture or is null. Any thread.
std::shared_ptr<const Picture> FitCover(std::shared_ptr<const Picture> cover, PictureSize wanted);

}  // namespace DeviceSimulator
