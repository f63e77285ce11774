#include "IpodService/JpegCost.h"

#include <algorithm>

namespace {

// What is let through takes 0.4 s of a machine that may be ten times as fast as a unit, and 60 MB at most.
// The thread that decodes is the one that answers clients.

/// 8192 x 8192, line by line.
constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 26;
/// Shrinking holds a strip of lines, which takes 1.8 kB for each pixel of width.
constexpr u32 kMostWidth = 1 << 14;
/// 48 MB. That is 16 million pixels with halved colours and 8 million with whole ones.
constexpr std::uint64_t kMostHeldCoefficients = std::uint64_t{24} << 20;
/// Over all scans. The largest picture may have ten, which is what encoders make, a smaller one more.
constexpr std::uint64_t kMostVisitedCoefficients = kMostHeldCoefficients * 10;

constexpr u8 kMarkerPrefix = 0xFF;
constexpr u8 kFirstWithSegment = 0xC0;      // of the codes below, only reserved ones and TEM exist
constexpr u8 kStartOfFrameBaseline = 0xC0;  // behind it the extended one, then the progressive
constexpr u8 kStartOfFrameProgressive = 0xC2;
constexpr u8 kDefineHuffmanTables = 0xC4;
constexpr u8 kJpegExtension = 0xC8;
constexpr u8 kDefineArithmeticCoding = 0xCC;
constexpr u8 kLastStartOfFrame = 0xCF;
constexpr u8 kRestart0 = 0xD0;
constexpr u8 kStartOfImage = 0xD8;
constexpr u8 kEndOfImage = 0xD9;
constexpr u8 kStartOfScan = 0xDA;

bool IsStartOfFrame(u8 marker) {
    return marker >= kStartOfFrameBaseline && marker <= kLastStartOfFrame && marker != kDefineHuffmanTables &&
           marker != kJpegExtension && marker != kDefineArithmeticCoding;
}

bool HasSegment(u8 marker) {
    return marker >= kFirstWithSegment && (marker < kRestart0 || marker > kEndOfImage);
}

u32 BigEndian16(std::span<const u8> bytes) {
    return u32{bytes[0]} << 8 | bytes[1];
}

/// Goes from marker to marker as decoders do. What is not a marker is passed over, so the bits of a scan need
/// no reading.
class MarkerWalk {
  public:
    explicit MarkerWalk(std::span<const u8> bytes) : m_rest(bytes) {}

    /// 0 for a byte of a scan that looks like the prefix of a marker.
    std::optional<u8> Next() {
        const auto prefix = std::find(m_rest.begin(), m_rest.end(), kMarkerPrefix);
        const auto code = std::find_if(prefix, m_rest.end(), [](u8 byte) { return byte != kMarkerPrefix; });
        if (code == m_rest.end()) {
            return std::nullopt;
        }
        m_rest = {code + 1, m_rest.end()};
        return *code;
    }

    /// Behind the length; what there is of it where the bytes end early.
    std::span<const u8> TakeSegment() {
        if (m_rest.size() < 2) {
            m_rest = {};
            return {};
        }
        const std::size_t length = std::clamp<std::size_t>(BigEndian16(m_rest), 2, m_rest.size());
        const std::span<const u8> segment = m_rest.subspan(2, length - 2);
        m_rest = m_rest.subspan(length);
        return segment;
    }

  private:
    std::span<const u8> m_rest;
};

constexpr std::size_t kFrameHeaderBytes = 6;     // precision, height, width, number of components
constexpr std::size_t kFrameComponentBytes = 3;  // id, sampling factors, table
constexpr u8 kMostSampling = 4;

struct Sampling {
    u32 across = 1;
    u32 down = 1;
};

struct Frame {
    bool isProgressive = false;
    u32 width = 0;
    u32 height = 0;
    u8 componentCount = 0;
    std::uint64_t coefficients = 0;
};

Sampling SamplingOf(std::span<const u8> segment, std::size_t component) {
    const u8 both = segment[kFrameHeaderBytes + component * kFrameComponentBytes + 1];
    return {u32{both} >> 4, u32{both} & 15U};
}

/// Blocks of 8 in a direction, filled up to whole groups as decoders store them.
std::uint64_t Blocks(u32 pixels, u32 sampling, u32 mostSampling) {
    const std::uint64_t blocks = (pixels * sampling + 8 * mostSampling - 1) / (8 * mostSampling);
    return (blocks + sampling - 1) / sampling * sampling;
}

std::uint64_t CountCoefficients(const Frame& frame, std::span<const u8> segment) {
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

bool IsSamplingValid(std::span<const u8> segment, u8 componentCount) {
    for (std::size_t i = 0; i < componentCount; ++i) {
        const Sampling sampling = SamplingOf(segment, i);
        if (std::min(sampling.across, sampling.down) == 0 ||
            std::max(sampling.across, sampling.down) > kMostSampling) {
            return false;
        }
    }
    return true;
}

std::optional<Frame> ReadFrame(u8 marker, std::span<const u8> segment) {
    constexpr u8 kPrecision = 8;
    if (marker > kStartOfFrameProgressive || segment.size() < kFrameHeaderBytes || segment[0] != kPrecision) {
        return std::nullopt;
    }
    Frame frame{marker == kStartOfFrameProgressive, BigEndian16(segment.subspan(3)),
                BigEndian16(segment.subspan(1)), segment[5]};
    if (frame.width == 0 || frame.height == 0 || frame.componentCount == 0 ||
        segment.size() != kFrameHeaderBytes + frame.componentCount * kFrameComponentBytes ||
        !IsSamplingValid(segment, frame.componentCount)) {
        return std::nullopt;
    }
    frame.coefficients = CountCoefficients(frame, segment);
    return frame;
}

std::optional<Frame> FindFrame(MarkerWalk& walk) {
    while (const std::optional<u8> marker = walk.Next()) {
        if (*marker == kEndOfImage || *marker == kStartOfScan) {
            return std::nullopt;
        }
        if (!HasSegment(*marker)) {
            continue;
        }
        const std::span<const u8> segment = walk.TakeSegment();
        if (IsStartOfFrame(*marker)) {
            return ReadFrame(*marker, segment);
        }
    }
    return std::nullopt;
}

/// Segments between scans are passed over whole: their bytes may look like markers.
JpegCost CountScans(MarkerWalk& walk, const Frame& frame) {
    JpegCost cost{frame.width, frame.height, frame.coefficients, 0};
    for (auto marker = walk.Next(); marker && *marker != kEndOfImage; marker = walk.Next()) {
        if (!HasSegment(*marker)) {
            continue;
        }
        const std::span<const u8> segment = walk.TakeSegment();
        if (*marker != kStartOfScan) {
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

bool JpegCost::IsAffordable() const {
    return width <= kMostWidth && std::uint64_t{width} * height <= kMostPixels &&
           heldCoefficients <= kMostHeldCoefficients && heldCoefficients * scans <= kMostVisitedCoefficients;
}

std::optional<JpegCost> ReadJpegCost(std::span<const u8> bytes) {
    if (bytes.size() < 2 || bytes[0] != kMarkerPrefix || bytes[1] != kStartOfImage) {
        return std::nullopt;
    }
    MarkerWalk walk(bytes.subspan(2));
    const std::optional<Frame> frame = FindFrame(walk);
    if (!frame) {
        return std::nullopt;
    }
    const JpegCost cost = CountScans(walk, *frame);
    return cost.scans > 0 ? std::optional(cost) : std::nullopt;
}
