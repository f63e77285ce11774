// The numbers of the device-manager interface: result codes, events, device types, modes.
#pragma once

#include <cstdint>

namespace DeviceSimulator {

/// The result codes that the simulated player answers with of its own.
enum Result : std::uint32_t {
    kSuccess = 1,
    kNoMoreProcesses = 4,
    kProcessNotRegistered = 6,
    kDeviceNotOpened = 11,
    kDeviceAlreadyOpened = 13,
    kDeviceNotReady = 15,
    kNotSupportedByDevice = 17,
    kSessionNotOpened = 44,
    kSessionAlreadyOpened = 45,
    kInvalidBaseCategory = 49,
    kInvalidCategory = 50,
    kAlreadyOnTopLevel = 51,
    kInvalidDeviceHandle = 52,
    kDeviceNotMounted = 53,
    kWrongParameters = 57,
    kMemoryError = 60,
    kWrongSharedMemory = 61,
    kWrongSharedMemorySize = 62,
    kInStopState = 70,
    kArtworkNotPresent = 72,
    kNotPlaying = 74,
    kAppBusy = 94,
    kInvalidIndex = 100,
    kDatabaseBuildInProgress = 103,
    kArtworkInProgress = 105,
    kUnknownFailure = 106
};

enum EventId : std::uint32_t {
    kDeviceConnected = 3,
    kDeviceDisconnected = 4,
    kPlayTime = 8,
    kPlayStarted = 9,
    kPlayPaused = 10,
    kPlayStopped = 12,
    kTrackChanged = 13,
    kFastForwardStarted = 14,
    kRewindStarted = 15,
    kSeekStopped = 16,
    kSampleRate = 17,
    kAuthenticationStarted = 18,
    kAuthenticationSucceeded = 19,
    kShuffleSetting = 32,
    kRepeatSetting = 33,
    kPlayContext = 34,
    kAuthenticationLocked = 35,
    kAuthenticationUnlocked = 36,
    kDatabaseProgress = 37
};

enum DeviceType : std::uint32_t {
    kStickFat32 = 2,
    kLastStick = 13,
    kIap = 14,
    kLastIap = 16,
    kIap2 = 17,
    kLastIap2 = 19,
    kMtp = 20,
    kLastMtp = 24,
    kUnknownDevice = 25,
    kHub = 26,
    kNoMedium = 27,
    kUnsupportedDevice = 28
};

constexpr bool IsStick(std::uint32_t type) {
    return type <= kLastStick;
}
constexpr bool IsIap2(std::uint32_t type) {
    return type >= kIap2 && type <= kLastIap2;
}
/// What the player functions work with.
constexpr bool IsPlayer(std::uint32_t type) {
    return type >= kIap && type <= kLastIap2;
}
/// What the device list shows; hubs and the like are only told of in events.
constexpr bool IsListed(std::uint32_t type) {
    return type <= kLastMtp;
}

enum class PlayState : std::uint32_t { Playing = 0, Paused = 1, Stopped = 2, FastForward = 3, Rewind = 4 };
enum class ShuffleMode : std::uint32_t { None = 0, Tracks = 1, Albums = 2 };
enum class RepeatMode : std::uint32_t { None = 0, One = 1, All = 2 };
enum class SeekDirection : std::uint32_t { Forward = 0, Rewind = 1 };
enum class SkipDirection : std::uint32_t { Next = 0, Previous = 1 };

}  // namespace DeviceSimulator
