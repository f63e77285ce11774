// The device manager's numbers that the service compares against.
#pragma once

#include "DeviceManager/DeviceManager.h"

namespace ResultCode {
inline constexpr u32 kNone = 0;
inline constexpr u32 kSuccess = 1;
inline constexpr u32 kArtworkNotSupported = 71;
inline constexpr u32 kNotPlaying = 74;  ///< 71 to 74: there will be no artwork
inline constexpr u32 kAppBusy = 94;
inline constexpr u32 kUnknownFailure = 106;
}  // namespace ResultCode

/// What an operation that wraps one call answers: 0 for success, anything else is a failure.
constexpr i32 Outcome(u32 code) {
    return static_cast<i32>(ResultCode::kSuccess - code);
}

namespace PlayState {
inline constexpr u32 kPlaying = 0;
inline constexpr u32 kPaused = 1;
inline constexpr u32 kStopped = 2;
inline constexpr u32 kFastForward = 3;
inline constexpr u32 kFastRewind = 4;
inline constexpr u32 kUnknown = 5;
}  // namespace PlayState

namespace DeviceType {
inline constexpr u32 kFirstIap = 14;  ///< below: mass storage
inline constexpr u32 kLastIap = 16;
inline constexpr u32 kFirstIap2 = 17;
inline constexpr u32 kLastIap2 = 19;
inline constexpr u32 kMtpNormal = 23;
inline constexpr u32 kLastMtp = 24;
inline constexpr u32 kUnknown = 25;
inline constexpr u32 kHub = 26;
inline constexpr u32 kNoMedium = 27;
inline constexpr u32 kUnsupported = 28;

constexpr bool IsMassStorage(u32 type) {
    return type < kFirstIap;
}
constexpr bool IsIap(u32 type) {
    return type >= kFirstIap && type <= kLastIap;
}
constexpr bool IsIap2(u32 type) {
    return type >= kFirstIap2 && type <= kLastIap2;
}
}  // namespace DeviceType

/// Browse categories: single bits, or-ed together in a mask.
namespace Category {
inline constexpr u32 kNone = 0;
inline constexpr u32 kPlaylist = 2;
inline constexpr u32 kArtist = 4;
inline constexpr u32 kAlbum = 8;
inline constexpr u32 kGenre = 16;
inline constexpr u32 kTrack = 32;
inline constexpr u32 kComposer = 64;
inline constexpr u32 kAudiobook = 128;
inline constexpr u32 kPodcast = 256;
inline constexpr u32 kTopLevelQuery = 512;  ///< asks which categories the top level offers
inline constexpr u32 kIrreducible = 1024;   ///< stands for a mask that is no single category
}  // namespace Category
