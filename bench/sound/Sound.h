// The sound through the service, its pipeline and the simulated sound card.
#pragma once

#include "tests/EndToEnd/Scene.h"

namespace Bench {

/// How soon the player's buttons are heard.
void MeasureLatency(int times);
/// What a stream at 44,100 Hz costs, what restarts leave behind, and whether it breaks while 8 clients ask as
/// fast as they are answered.
void MeasureStream(std::chrono::minutes loaded);

}  // namespace Bench
