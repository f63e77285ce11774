// The device-manager functions by name and number, for whatever handles all of them alike: the library and
// the player, scripting, the record of calls, the stand-ins of a test.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>

// One X(function, number of its parameters) a function of DeviceManager/DeviceManager.h. All else about it
// follows from its signature.
#define DEVICE_MANAGER_SESSION_FUNCTIONS(X)        \
    X(eDevMgrRegisterProcess, 2)                   \
    X(eDevMgrDeRegisterProcess, 1)                 \
    X(eDevMgrAllocateSharedMemory, 3)              \
    X(eDevMgrDeAllocateSharedMemory, 2)            \
    X(eDevMgrGetNumDevices, 2)                     \
    X(eDevMgrGetDeviceList, 4)                     \
    X(eDevMgrOpenDevice, 2)                        \
    X(eDevMgrCloseDevice, 2)                       \
    X(eDevMgrGetiPodInfo, 3)                       \
    X(eDevMgriPodSetMaxCurrent, 3)                 \
    X(eDevMgriPodSetInternalBatteryChargeState, 3) \
    X(eDevMgriPodGetBatteryPowerState, 3)          \
    X(eDevmgriPodGetVolume, 4)                     \
    X(eDevmgriPodSetVolume, 4)                     \
    X(eDevMgriPodGetNowPlayingAppname, 3)
#define DEVICE_MANAGER_BROWSE_FUNCTIONS(X) \
    X(eDevMgriPodStartBuildingDatabase, 3) \
    X(eDevMgriPodOpenMdBrowseSession, 3)   \
    X(eDevMgriPodResetDatabase, 2)         \
    X(eDevMgriPodCloseMdBrowseSession, 2)  \
    X(eDevMgriPodBrowseOneLevelBack, 2)    \
    X(eDevMgriPodMdGetCategories, 4)       \
    X(eDevMgriPodGetNumItems, 6)           \
    X(eDevMgriPodGetItems, 8)              \
    X(eDevMgriPodSelectCategorizedIndex, 4)
#define DEVICE_MANAGER_PLAYBACK_FUNCTIONS(X) \
    X(eDevMgriPodPlay, 2)                    \
    X(eDevMgriPodPause, 2)                   \
    X(eDevMgriPodStop, 2)                    \
    X(eDevMgriPodFastForwardRewindStart, 3)  \
    X(eDevMgriPodFastForwardRewindStop, 2)   \
    X(eDevMgriPodPlayNextPreviousTrack, 3)
#define DEVICE_MANAGER_NOW_PLAYING_FUNCTIONS(X)         \
    X(eDevMgriPodGetPlayStatus, 3)                      \
    X(eDevMgriPodGetPlayingTrackElapsedAndTotaltime, 4) \
    X(eDevMgriPodGetPlayingTrackMetaData, 3)            \
    X(eDevMgriPodGetPlayingTrackAlbumArt, 5)            \
    X(eDevMgriPodGetNumPlayingTracks, 4)                \
    X(eDevMgriPodGetPlayingList, 5)                     \
    X(eSelectNowPlayingIndex, 3)                        \
    X(eDevMgriPodGetShuffleSetting, 3)                  \
    X(eDevMgriPodSetShuffleSetting, 3)                  \
    X(eDevMgriPodGetRepeatSetting, 3)                   \
    X(eDevMgriPodSetRepeatSetting, 3)
#define DEVICE_MANAGER_FUNCTIONS(X)      \
    DEVICE_MANAGER_SESSION_FUNCTIONS(X)  \
    DEVICE_MANAGER_BROWSE_FUNCTIONS(X)   \
    DEVICE_MANAGER_PLAYBACK_FUNCTIONS(X) \
    DEVICE_MANAGER_NOW_PLAYING_FUNCTIONS(X)

/// Defines `function` of `count` parameters: it returns what the function template behind them, such as
/// Call<7>, returns for its arguments.
#define DEVICE_MANAGER_DEFINE(function, count, ...)                                         \
    u32 function(DEVICE_MANAGER_EACH_##count(DEVICE_MANAGER_PARAMETER, function)) {         \
        return __VA_ARGS__(DEVICE_MANAGER_EACH_##count(DEVICE_MANAGER_ARGUMENT, function)); \
    }
#define DEVICE_MANAGER_PARAMETER(f, index) ::DeviceSimulator::ParameterOf<decltype(::f), index>::Type a##index
#define DEVICE_MANAGER_ARGUMENT(f, index) a##index
#define DEVICE_MANAGER_EACH_1(M, f) M(f, 0)
#define DEVICE_MANAGER_EACH_2(M, f) DEVICE_MANAGER_EACH_1(M, f), M(f, 1)
#define DEVICE_MANAGER_EACH_3(M, f) DEVICE_MANAGER_EACH_2(M, f), M(f, 2)
#define DEVICE_MANAGER_EACH_4(M, f) DEVICE_MANAGER_EACH_3(M, f), M(f, 3)
#define DEVICE_MANAGER_EACH_5(M, f) DEVICE_MANAGER_EACH_4(M, f), M(f, 4)
#define DEVICE_MANAGER_EACH_6(M, f) DEVICE_MANAGER_EACH_5(M, f), M(f, 5)
#define DEVICE_MANAGER_EACH_7(M, f) DEVICE_MANAGER_EACH_6(M, f), M(f, 6)
#define DEVICE_MANAGER_EACH_8(M, f) DEVICE_MANAGER_EACH_7(M, f), M(f, 7)

namespace DeviceSimulator {

template <typename Function, std::size_t kIndex>
struct ParameterOf;
template <typename Result, typename... Parameters, std::size_t kIndex>
struct ParameterOf<Result(Parameters...), kIndex> {
    using Type = std::tuple_element_t<kIndex, std::tuple<Parameters...>>;
};

enum class FunctionId : std::uint8_t {
#define DEVICE_SIMULATOR_ID(function, parameters) function,
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_ID)
#undef DEVICE_SIMULATOR_ID
};

inline constexpr auto kFunctionNames = std::to_array<std::string_view>({
#define DEVICE_SIMULATOR_NAME(function, parameters) #function,
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_NAME)
#undef DEVICE_SIMULATOR_NAME
});

inline constexpr std::size_t kFunctionCount = kFunctionNames.size();

constexpr std::size_t IndexOf(FunctionId function) {
    return static_cast<std::size_t>(function);
}

constexpr std::string_view NameOf(FunctionId function) {
    return kFunctionNames[IndexOf(function)];
}

constexpr std::optional<FunctionId> FindFunction(std::string_view name) {
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        if (kFunctionNames[i] == name) {
            return static_cast<FunctionId>(i);
        }
    }
    return std::nullopt;
}

}  // namespace DeviceSimulator
