// The markers of a JPEG, without decoding anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace JpegMarker {
constexpr std::uint8_t kPrefix = 0xFF;
constexpr std::uint8_t kStartOfFrameBaseline = 0xC0;  // behind it the extended one, then the progressive
constexpr std::uint8_t kStartOfFrameProgressive = 0xC2;
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;

bool IsStartOfFrame(std::uint8_t marker);
bool HasSegment(std::uint8_t marker);
}  // namespace JpegMarker

/// Goes from marker to marker as decoders do. What is not a marker is passed over, so the bits of a scan need
/// no reading. Refers to the bytes.
class JpegMarkerWalk {
  public:
    /// None when the bytes do not begin as a JPEG.
    static std::optional<JpegMarkerWalk> Begin(std::span<const std::uint8_t> bytes);

    /// The next one; 0 for a byte of a scan that looks like the prefix of a marker.
    std::optional<std::uint8_t> Next();
    /// Behind the length; what there is of it where the bytes end early.
    std::span<const std::uint8_t> TakeSegment();
    /// What lies behind the last marker or segment taken, in bytes.
    std::size_t Rest() const { return m_rest.size(); }

  private:
    explicit JpegMarkerWalk(std::span<const std::uint8_t> rest) : m_rest(rest) {}

    std::span<const std::uint8_t> m_rest;
};

/// Of a JPEG as it was delivered, with whatever behind it.
struct JpegExtent {
    std::size_t length = 0;    ///< up to and with its end marker; all bytes where it has none
    std::uint32_t width = 0;   ///< pixels, as its frame header has them; 0: none was found
    std::uint32_t height = 0;  ///< pixels
    bool isComplete = false;   ///< it has an end marker
};

/// None when `bytes` do not begin as a JPEG. The end of a small picture inside another's header is not taken
/// for the end. Linear in the number of bytes. Any thread.
std::optional<JpegExtent> MeasureJpeg(std::span<const std::uint8_t> bytes);

/// Of the two bytes at the front.
inline std::uint32_t BigEndian16(std::span<const std::uint8_t> bytes) {
    return std::uint32_t{bytes[0]} << 8 | bytes[1];
}
