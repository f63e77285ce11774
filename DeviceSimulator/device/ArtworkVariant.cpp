#include "DeviceSimulator/device/ArtworkVariant.h"

#include <algorithm>
#include <array>
#include <utility>

#include "DeviceSimulator/music/CoverDrawing.h"

namespace DeviceSimulator {

namespace {

constexpr std::array<std::pair<std::string_view, ArtworkVariant>, 7> kWords{{
    {"as-is", ArtworkVariant::AsIs},
    {"none", ArtworkVariant::None},
    {"truncated", ArtworkVariant::Truncated},
    {"not-jpeg", ArtworkVariant::NotJpeg},
    {"narrow", ArtworkVariant::Narrow},
    {"huge", ArtworkVariant::Huge},
    {"limit", ArtworkVariant::Limit},
}};

std::shared_ptr<const Picture> Draw(PictureSize size, const TrackInfo& track) {
    return DrawPicture(size, track.album, track.artist);
}

// Half of the bytes, still reported at its full size.
std::shared_ptr<const Picture> Truncate(std::shared_ptr<const Picture> cover, const TrackInfo& track) {
    const auto whole = cover != nullptr ? std::move(cover) : Draw({640, 640}, track);
    if (whole == nullptr) {
        return nullptr;
    }
    Picture half = *whole;
    half.bytes.resize(half.bytes.size() / 2);
    return std::make_shared<const Picture>(std::move(half));
}

std::shared_ptr<const Picture> MakeRubbish() {
    Picture rubbish{std::vector<std::uint8_t>(10000), 640, 640};
    std::uint32_t state = 1;
    std::generate(rubbish.bytes.begin(), rubbish.bytes.end(), [&] {
        state = state * 1664525u + 1013904223u;
        return static_cast<std::uint8_t>(state >> 24);
    });
    return std::make_shared<const Picture>(std::move(rubbish));
}

}  // namespace

std::shared_ptr<const Picture> ApplyArtworkVariant(ArtworkVariant variant,
                                                   std::shared_ptr<const Picture> cover,
                                                   const TrackInfo& track) {
    switch (variant) {
        case ArtworkVariant::None:
            return nullptr;
        case ArtworkVariant::Truncated:
            return Truncate(std::move(cover), track);
        case ArtworkVariant::NotJpeg:
            return MakeRubbish();
        case ArtworkVariant::Narrow:
            return Draw({90, 480}, track);
        case ArtworkVariant::Huge:
            return Draw({2000, 2000}, track);
        case ArtworkVariant::Limit:
            return Draw({320, 320}, track);
        case ArtworkVariant::AsIs:
            break;
    }
    return cover;
}

std::optional<ArtworkVariant> FindArtworkVariant(std::string_view word) {
    const auto found =
        std::find_if(kWords.begin(), kWords.end(), [&](const auto& entry) { return entry.first == word; });
    return found != kWords.end() ? std::optional(found->second) : std::nullopt;
}

std::string_view ArtworkVariantWord(ArtworkVariant variant) {
    const auto found = std::find_if(kWords.begin(), kWords.end(),
                                    [&](const auto& entry) { return entry.second == variant; });
    return found != kWords.end() ? found->first : std::string_view{};
}

std::string_view ArtworkVariantWords() {
    return "as-is, none, truncated, not-jpeg, narrow, huge, limit";
}

}  // namespace DeviceSimulator
