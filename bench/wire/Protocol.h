// The lines that go over the wire, in both directions. The floor answers with the service's own, byte for
// byte, so that both send as much.
#pragma once

#include <cstdint>
#include <string_view>

namespace Bench {

inline constexpr std::uint16_t kServicePort = 8883;
inline constexpr std::uint16_t kFloorPort = 8884;

inline constexpr std::string_view kRequest =
    "{\"jsonrpc\":\"2.0\",\"method\":\"isIpodConnected\",\"id\":1}\n";
inline constexpr std::string_view kReply = "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":{\"connected\":true}}\n";

/// In turn: each is a change, which every client is told.
inline constexpr std::string_view kPause = "{\"jsonrpc\":\"2.0\",\"method\":\"pause\",\"id\":1}\n";
inline constexpr std::string_view kPlay = "{\"jsonrpc\":\"2.0\",\"method\":\"play\",\"id\":1}\n";
inline constexpr std::string_view kChangeReply =
    "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":{\"success\":true}}\n";
inline constexpr std::string_view kNotification =
    "{\"jsonrpc\":\"2.0\",\"method\":\"trackPausedNotification\",\"params\":{\"isTrackPaused\":true}}\n";

/// 2.8 MB, as the quick player has it.
inline constexpr std::string_view kPictureRequest =
    "{\"jsonrpc\":\"2.0\",\"method\":\"getCurrentAlbumArt\",\"id\":1}\n";

}  // namespace Bench
