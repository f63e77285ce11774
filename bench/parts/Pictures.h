#pragma once

namespace Bench {

/// "picture/SIDE" and "picture/SIDE/floor" for sides from 321 to 2000 pixels.
void RegisterPictures();

}  // namespace Bench
