#include "IpodControl/ctl/Picture.h"

#include <array>
#include <cstdint>

namespace IpodControl {

namespace {

constexpr std::uint8_t kMarker = 0xFF;
constexpr std::uint8_t kStart = 0xD8;
constexpr std::uint8_t kEnd = 0xD9;
constexpr std::uint8_t kScan = 0xDA;

std::uint8_t Byte(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

std::size_t Number(std::string_view bytes, std::size_t at) {
    return static_cast<std::size_t>(Byte(bytes, at)) << 8 | Byte(bytes, at + 1);
}

bool IsRestart(std::uint8_t marker) {
    return marker >= 0xD0 && marker <= 0xD7;
}

/// Stands alone, without a length behind it.
bool IsBare(std::uint8_t marker) {
    return IsRestart(marker) || marker == 0x01 || marker == kStart;
}

/// The headers of frames; the codes among them that are none: tables, and one that is reserved.
bool IsFrame(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Where the next marker stands behind a scan's data, in which 0xFF is followed by 0 or by a restart's code.
std::size_t SkipScan(std::string_view bytes, std::size_t at) {
    for (; at + 1 < bytes.size(); ++at) {
        const std::uint8_t code = Byte(bytes, at + 1);
        if (Byte(bytes, at) == kMarker && code != 0 && code != kMarker && !IsRestart(code)) {
            return at;
        }
    }
    return bytes.size();
}

}  // namespace

std::optional<Jpeg> MeasureJpeg(std::string_view bytes) {
    if (bytes.size() < 2 || Byte(bytes, 0) != kMarker || Byte(bytes, 1) != kStart) {
        return std::nullopt;
    }
    Jpeg jpeg{bytes.size()};
    std::size_t at = 2;
    while (at + 1 < bytes.size() && Byte(bytes, at) == kMarker) {
        const std::uint8_t marker = Byte(bytes, at + 1);
        if (marker == kEnd) {
            jpeg.length = at + 2;
            jpeg.isComplete = true;
            break;
        }
        if (marker == kMarker || IsBare(marker)) {
            at += marker == kMarker ? 1 : 2;
            continue;
        }
        if (at + 4 > bytes.size()) {
            break;
        }
        const std::size_t length = Number(bytes, at + 2);
        if (IsFrame(marker) && at + 9 <= bytes.size()) {
            jpeg.height = Number(bytes, at + 5);
            jpeg.width = Number(bytes, at + 7);
        }
        at += 2 + length;
        at = marker == kScan ? SkipScan(bytes, at) : at;
    }
    return jpeg;
}

}  // namespace IpodControl
