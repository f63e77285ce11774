// Covers as some players have them: none, broken ones, odd sizes.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// What `variant` makes of the track's own cover (null: it has none). Any thread.
std::shared_ptr<const Picture> ApplyArtworkVariant(ArtworkVariant variant,
                                                   std::shared_ptr<const Picture> cover,
                                                   const TrackInfo& track);

/// The variant of a word such as "truncated".
std::optional<ArtworkVariant> FindArtworkVariant(std::string_view word);

std::string_view ArtworkVariantWord(ArtworkVariant variant);

/// All words, for a message: "as-is, none, ...".
std::string_view ArtworkVariantWords();

}  // namespace DeviceSimulator
