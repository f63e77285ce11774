// The events that the service tells apart.
#pragma once

#include "DeviceManager/DeviceManager.h"

namespace EventId {
inline constexpr u32 kDeviceManagerExited = 1;
inline constexpr u32 kDeviceConnected = 3;
inline constexpr u32 kDeviceDisconnected = 4;
inline constexpr u32 kPlayTime = 8;
inline constexpr u32 kPlayStarted = 9;
inline constexpr u32 kPlayPaused = 10;
inline constexpr u32 kPauseRemoved = 11;
inline constexpr u32 kPlayStopped = 12;
inline constexpr u32 kTrackChanged = 13;
inline constexpr u32 kFastForwardStarted = 14;
inline constexpr u32 kFastRewindStarted = 15;
inline constexpr u32 kFastForwardRewindStopped = 16;
inline constexpr u32 kSampleRate = 17;
inline constexpr u32 kAuthStarted = 18;
inline constexpr u32 kAuthSuccess = 19;
inline constexpr u32 kAuthFailure = 20;
inline constexpr u32 kSessionOpened = 21;
inline constexpr u32 kSessionClosed = 22;
inline constexpr u32 kDataReceived = 23;
inline constexpr u32 kAppBundleName = 26;
inline constexpr u32 kAppDisplayName = 27;
inline constexpr u32 kSessionSpaceAvailable = 28;
inline constexpr u32 kChargingInfo = 31;
inline constexpr u32 kShuffleSetting = 32;
inline constexpr u32 kRepeatSetting = 33;
inline constexpr u32 kPlayContext = 34;
inline constexpr u32 kAuthLocked = 35;
inline constexpr u32 kAuthUnlocked = 36;
inline constexpr u32 kDatabaseProgress = 37;
}  // namespace EventId
