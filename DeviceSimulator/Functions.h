// The device-manager functions by name, for whatever handles all of them alike: scripting, the record of
// calls, the stand-ins of a test.
#pragma once

// One X(function) a function of DeviceManager/DeviceManager.h.
#define DEVICE_MANAGER_FUNCTIONS(X)                  \
    X(eDevMgrRegisterProcess)                        \
    X(eDevMgrDeRegisterProcess)                      \
    X(eDevMgrAllocateSharedMemory)                   \
    X(eDevMgrDeAllocateSharedMemory)                 \
    X(eDevMgrGetNumDevices)                          \
    X(eDevMgrGetDeviceList)                          \
    X(eDevMgrOpenDevice)                             \
    X(eDevMgrCloseDevice)                            \
    X(eDevMgrGetiPodInfo)                            \
    X(eDevMgriPodSetMaxCurrent)                      \
    X(eDevMgriPodSetInternalBatteryChargeState)      \
    X(eDevMgriPodGetBatteryPowerState)               \
    X(eDevmgriPodGetVolume)                          \
    X(eDevmgriPodSetVolume)                          \
    X(eDevMgriPodGetNowPlayingAppname)               \
    X(eDevMgriPodStartBuildingDatabase)              \
    X(eDevMgriPodOpenMdBrowseSession)                \
    X(eDevMgriPodResetDatabase)                      \
    X(eDevMgriPodCloseMdBrowseSession)               \
    X(eDevMgriPodBrowseOneLevelBack)                 \
    X(eDevMgriPodMdGetCategories)                    \
    X(eDevMgriPodGetNumItems)                        \
    X(eDevMgriPodGetItems)                           \
    X(eDevMgriPodSelectCategorizedIndex)             \
    X(eDevMgriPodPlay)                               \
    X(eDevMgriPodPause)                              \
    X(eDevMgriPodStop)                               \
    X(eDevMgriPodFastForwardRewindStart)             \
    X(eDevMgriPodFastForwardRewindStop)              \
    X(eDevMgriPodPlayNextPreviousTrack)              \
    X(eDevMgriPodGetPlayStatus)                      \
    X(eDevMgriPodGetPlayingTrackElapsedAndTotaltime) \
    X(eDevMgriPodGetPlayingTrackMetaData)            \
    X(eDevMgriPodGetPlayingTrackAlbumArt)            \
    X(eDevMgriPodGetNumPlayingTracks)                \
    X(eDevMgriPodGetPlayingList)                     \
    X(eSelectNowPlayingIndex)                        \
    X(eDevMgriPodGetShuffleSetting)                  \
    X(eDevMgriPodSetShuffleSetting)                  \
    X(eDevMgriPodGetRepeatSetting)                   \
    X(eDevMgriPodSetRepeatSetting)
