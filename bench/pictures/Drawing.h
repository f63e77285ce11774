// Pictures to convert, and the work of converting them done with the JPEG library alone.
#pragma once

#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace Bench {

using Bytes = std::vector<u8>;

/// A square JPEG about as hard to code as a photograph. `seed`: another one, another picture.
Bytes DrawCover(int side, unsigned seed = 0);

/// The thumbnail of a square JPEG of `side` pixels: decoded at the scale that the service decodes it at,
/// averaged over boxes, encoded.
Bytes ConvertPlainly(const Bytes& jpeg);

}  // namespace Bench
