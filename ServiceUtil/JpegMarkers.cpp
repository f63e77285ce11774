#include "ServiceUtil/JpegMarkers.h"

#include <algorithm>
#include <cstring>

namespace JpegMarker {

namespace {

constexpr std::uint8_t kFirstWithSegment = 0xC0;  // of the codes below, only reserved ones and TEM exist
constexpr std::uint8_t kDefineHuffmanTables = 0xC4;
constexpr std::uint8_t kJpegExtension = 0xC8;
constexpr std::uint8_t kDefineArithmeticCoding = 0xCC;
constexpr std::uint8_t kLastStartOfFrame = 0xCF;
constexpr std::uint8_t kRestart0 = 0xD0;

}  // namespace

bool IsStartOfFrame(std::uint8_t marker) {
    return marker >= kStartOfFrameBaseline && marker <= kLastStartOfFrame && marker != kDefineHuffmanTables &&
           marker != kJpegExtension && marker != kDefineArithmeticCoding;
}

bool HasSegment(std::uint8_t marker) {
    return marker >= kFirstWithSegment && (marker < kRestart0 || marker > kEndOfImage);
}

}  // namespace JpegMarker

std::optional<JpegMarkerWalk> JpegMarkerWalk::Begin(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 2 || bytes[0] != JpegMarker::kPrefix || bytes[1] != JpegMarker::kStartOfImage) {
        return std::nullopt;
    }
    return JpegMarkerWalk(bytes.subspan(2));
}

std::optional<std::uint8_t> JpegMarkerWalk::Next() {
    // Nearly all of a picture lies between two prefixes: several times as quick as std::find.
    const void* const found =
        m_rest.empty() ? nullptr : std::memchr(m_rest.data(), JpegMarker::kPrefix, m_rest.size());
    if (found == nullptr) {
        return std::nullopt;
    }
    const auto prefix = m_rest.begin() + (static_cast<const std::uint8_t*>(found) - m_rest.data());
    const auto code =
        std::find_if(prefix, m_rest.end(), [](std::uint8_t byte) { return byte != JpegMarker::kPrefix; });
    if (code == m_rest.end()) {
        return std::nullopt;
    }
    m_rest = {code + 1, m_rest.end()};
    return *code;
}

std::span<const std::uint8_t> JpegMarkerWalk::TakeSegment() {
    if (m_rest.size() < 2) {
        m_rest = {};
        return {};
    }
    const std::size_t length = std::clamp<std::size_t>(BigEndian16(m_rest), 2, m_rest.size());
    const std::span<const std::uint8_t> segment = m_rest.subspan(2, length - 2);
    m_rest = m_rest.subspan(length);
    return segment;
}

std::optional<JpegExtent> MeasureJpeg(std::span<const std::uint8_t> bytes) {
    auto walk = JpegMarkerWalk::Begin(bytes);
    if (!walk) {
        return std::nullopt;
    }
    constexpr std::size_t kSizeBytes = 5;  // precision, height, width
    JpegExtent extent{bytes.size()};
    while (const auto marker = walk->Next()) {
        if (*marker == JpegMarker::kEndOfImage) {
            extent.length = bytes.size() - walk->Rest();
            extent.isComplete = true;
            break;
        }
        if (!JpegMarker::HasSegment(*marker)) {
            continue;
        }
        const auto segment = walk->TakeSegment();
        if (JpegMarker::IsStartOfFrame(*marker) && segment.size() >= kSizeBytes) {
            extent.height = BigEndian16(segment.subspan(1));
            extent.width = BigEndian16(segment.subspan(3));
        }
    }
    return extent;
}
