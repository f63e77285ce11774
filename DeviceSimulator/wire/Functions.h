// The device-manager functions by name, for whatever handles all of them alike: the library and the player,
// scripting, the record of calls, the stand-ins of a test.
#pragma once

// One X(function, number of its parameters) a function of DeviceManager/DeviceManager.h. How its arguments
// travel follows from its signature.
#define DEVICE_MANAGER_FUNCTIONS(X)                     \
    X(eDevMgrRegisterProcess, 2)                        \
    X(eDevMgrDeRegisterProcess, 1)                      \
    X(eDevMgrAllocateSharedMemory, 3)                   \
    X(eDevMgrDeAllocateSharedMemory, 2)                 \
    X(eDevMgrGetNumDevices, 2)                          \
    X(eDevMgrGetDeviceList, 4)                          \
    X(eDevMgrOpenDevice, 2)                             \
    X(eDevMgrCloseDevice, 2)                            \
    X(eDevMgrGetiPodInfo, 3)                            \
    X(eDevMgriPodSetMaxCurrent, 3)                      \
    X(eDevMgriPodSetInternalBatteryChargeState, 3)      \
    X(eDevMgriPodGetBatteryPowerState, 3)               \
    X(eDevmgriPodGetVolume, 4)                          \
    X(eDevmgriPodSetVolume, 4)                          \
    X(eDevMgriPodGetNowPlayingAppname, 3)               \
    X(eDevMgriPodStartBuildingDatabase, 3)              \
    X(eDevMgriPodOpenMdBrowseSession, 3)                \
    X(eDevMgriPodResetDatabase, 2)                      \
    X(eDevMgriPodCloseMdBrowseSession, 2)               \
    X(eDevMgriPodBrowseOneLevelBack, 2)                 \
    X(eDevMgriPodMdGetCategories, 4)                    \
    X(eDevMgriPodGetNumItems, 6)                        \
    X(eDevMgriPodGetItems, 8)                           \
    X(eDevMgriPodSelectCategorizedIndex, 4)             \
    X(eDevMgriPodPlay, 2)                               \
    X(eDevMgriPodPause, 2)                              \
    X(eDevMgriPodStop, 2)                               \
    X(eDevMgriPodFastForwardRewindStart, 3)             \
    X(eDevMgriPodFastForwardRewindStop, 2)              \
    X(eDevMgriPodPlayNextPreviousTrack, 3)              \
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
