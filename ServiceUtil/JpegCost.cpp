#include "ServiceUtil/JpegCost.h"

#include <algorithm>

#include "ServiceUtil/JpegMarkers.h"

namespace {

/// Decoders visit every coefficient that they hold once a scan. The largest picture may have ten scans, which
/// is what encoders make, a smaller one more.
constexpr std::uint64_t kMostScansOfLargest = 10;

constexpr std::size_t kFrameHeaderBytes = 6;     // precision, height, width, number of components
constexpr std::size_t kFrameComponentBytes = 3;  // id, sampling factors, table
constexpr std::uint8_t kMostSampling = 4;

struct Sampling {
    std::uint32_t across = 1;
    std::uint32_t down = 1;
};

struct Frame {
    bool isProgressive = false;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint8_t componentCount = 0;
    std::uint64_t coefficients = 0;
};

Sampling SamplingOf(std::span<const std::uint8_t> segment, std::size_t component) {
    const std::uint8_t both = segment[kFrameHeaderBytes + component * kFrameComponentBytes + 1];
    return {std::uint32_t{both} >> 4, std::uint32_t{both} & 15U};
}

/// Blocks of 8 in a direction, filled up to whole groups as decoders store them.
std::uint64_t Blocks(std::uint32_t pixels, std::uint32_t sampling, std::uint32_t mostSampling) {
    const std::uint64_t blocks = (pixels * sampling + 8 * mostSampling - 1) / (8 * mostSampling);
    return (blocks + sampling - 1) / sampling * sampling;
}

std::uint64_t CountCoefficients(const Frame& frame, std::span<const std::uint8_t> segment) {
    Sampling most;
    for (std::size_t i = 0; i < frame.componentCount; ++i) {
        const Sampling sampling = SamplingOf(segment, i);
        most = {std::max(most.across, sampling.across), std::max(most.down, sampling.down)};
    }
    std::uint64_t coefficients = 0;
    for (std::size_t i = 0; i < frame.componentCount; ++i) {
        const Sampling sampling = SamplingOf(segment, i);
        coefficients += 64 * Blocks(frame.width, sampling.across, most.across) *
                        Blocks(frame.height, sampling.down, most.down);
    }
    return coefficients;
}

bool IsSamplingValid(std::span<const std::uint8_t> segment, std::uint8_t componentCount) {
    for (std::size_t i = 0; i < componentCount; ++i) {
        const Sampling sampling = SamplingOf(segment, i);
        if (std::min(sampling.across, sampling.down) == 0 ||
            std::max(sampling.across, sampling.down) > kMostSampling) {
            return false;
        }
    }
    return true;
}

std::optional<Frame> ReadFrame(std::uint8_t marker, std::span<const std::uint8_t> segment) {
    constexpr std::uint8_t kPrecision = 8;
    if (marker > JpegMarker::kStartOfFrameProgressive || segment.size() < kFrameHeaderBytes ||
        segment[0] != kPrecision) {
        return std::nullopt;
    }
    Frame frame{marker == JpegMarker::kStartOfFrameProgressive, BigEndian16(segment.subspan(3)),
                BigEndian16(segment.subspan(1)), segment[5]};
    if (frame.width == 0 || frame.height == 0 || frame.componentCount == 0 ||
        segment.size() != kFrameHeaderBytes + frame.componentCount * kFrameComponentBytes ||
        !IsSamplingValid(segment, frame.componentCount)) {
        return std::nullopt;
    }
    frame.coefficients = CountCoefficients(frame, segment);
    return frame;
}

std::optional<Frame> FindFrame(JpegMarkerWalk& walk) {
    while (const std::optional<std::uint8_t> marker = walk.Next()) {
        if (*marker == JpegMarker::kEndOfImage || *marker == JpegMarker::kStartOfScan) {
            return std::nullopt;
        }
        if (!JpegMarker::HasSegment(*marker)) {
            continue;
        }
        const std::span<const std::uint8_t> segment = walk.TakeSegment();
        if (JpegMarker::IsStartOfFrame(*marker)) {
            return ReadFrame(*marker, segment);
        }
    }
    return std::nullopt;
}

/// Segments between scans are passed over whole: their bytes may look like markers.
JpegCost CountScans(JpegMarkerWalk& walk, const Frame& frame) {
    JpegCost cost{frame.width, frame.height, frame.coefficients, 0, frame.componentCount};
    for (auto marker = walk.Next(); marker && *marker != JpegMarker::kEndOfImage; marker = walk.Next()) {
        if (!JpegMarker::HasSegment(*marker)) {
            continue;
        }
        const std::span<const std::uint8_t> segment = walk.TakeSegment();
        if (*marker != JpegMarker::kStartOfScan) {
            continue;
        }
        ++cost.scans;
        const bool hasAllComponents = !segment.empty() && segment[0] == frame.componentCount;
        if (cost.scans == 1 && hasAllComponents && !frame.isProgressive) {
            cost.heldCoefficients = 0;
        }
    }
    return cost;
}

}  // namespace

bool JpegCost::IsAffordable(const JpegLimits& limits) const {
    return width <= limits.width && std::uint64_t{width} * height <= limits.pixels &&
           heldCoefficients <= limits.heldCoefficients &&
           heldCoefficients * scans <= limits.heldCoefficients * kMostScansOfLargest;
}

std::optional<JpegCost> ReadJpegCost(std::span<const std::uint8_t> bytes) {
    auto walk = JpegMarkerWalk::Begin(bytes);
    const std::optional<Frame> frame = walk ? FindFrame(*walk) : std::nullopt;
    if (!frame) {
        return std::nullopt;
    }
    const JpegCost cost = CountScans(*walk, *frame);
    return cost.scans > 0 ? std::optional(cost) : std::nullopt;
}
