// The values of the device-manager interface, each under its one name: what the functions return, take and
// give, and what the events carry. DeviceManager.h says where each is used.
//
// C11 or C++20. The service writes every value into its log by name; what else it does with one stands beside
// it. A value without a comment is logged and nothing more.
#ifndef DEVICE_MANAGER_VALUES_H
#define DEVICE_MANAGER_VALUES_H

/// What every function returns. All but DEV_MGR_SUCCESS are failures, which the service logs and mostly
/// treats alike: the call is not repeated, and a client is told that its request failed. The comments give
/// the codes that fit the functions of DeviceManager.h, and what the service makes of the few that it tells
/// apart.
enum DevMgrResult {
    DEV_MGR_RESULT_NONE = 0,  ///< never to be returned; for a picture it would count as success without one
    DEV_MGR_SUCCESS = 1,      ///< the only success
    DEV_MGR_NOT_READY = 2,    ///< still starting; registration and discovery are repeated
    DEV_MGR_PROCESS_ALREADY_REGISTERED = 3,
    DEV_MGR_NO_MORE_PROCESS_ALLOWED = 4,     ///< registration: too many processes
    DEV_MGR_PROCESS_REGISTRY_FAILED = 5,     ///< registration: any other reason
    DEV_MGR_PROCESS_NOT_REGISTERED = 6,      ///< any function: no process has this handle
    DEV_MGR_PROCESS_DE_REGISTRY_FAILED = 7,  ///< deregistration; the process then counts as registered still
    DEV_MGR_INVALID_PROCESS_HANDLE = 8,
    DEV_MGR_ERROR_DEVICE_OPENED = 9,
    DEV_MGR_DEVICE_ERROR = 10,
    DEV_MGR_DEVICE_NOT_OPENED = 11,      ///< any function of an open device: this process has not opened it
    DEV_MGR_DEVICE_OPEN_FAILED = 12,     ///< opening; the next device of the list is tried
    DEV_MGR_DEVICE_ALREADY_OPENED = 13,  ///< opening: this process has it open
    DEV_MGR_DEVICE_BUSY = 14,
    DEV_MGR_DEVICE_NOT_READY = 15,  ///< opening: locked, or not authenticated yet; tried again
    DEV_MGR_MAX_DEVICES_OPENED_ALREADY = 16,
    DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE = 17,  ///< or by the library
    DEV_MGR_FS_BROWSE_SESSION_NOT_OPENED = 18,
    DEV_MGR_FS_BROWSE_SESSION_ALREADY_OPENED = 19,
    DEV_MGR_OPEN_FS_BROWSE_SESSION_FAILED = 20,
    DEV_MGR_OPEN_MULTIPLE_FS_BROWSE_SESSION_NOT_SUPPORTED_BY_DEVICE = 21,
    DEV_MGR_FS_ALREADY_ON_ROOT = 22,
    DEV_MGR_INVALID_FS_BROWSE_SESSION = 23,
    DEV_MGR_PL_BROWSE_SESSION_NOT_OPENED = 24,
    DEV_MGR_PL_BROWSE_SESSION_ALREADY_OPENED = 25,
    DEV_MGR_OPEN_PL_BROWSE_SESSION_FAILED = 26,
    DEV_MGR_OPEN_MULTIPLE_PL_BROWSE_SESSION_NOT_SUPPORTED_BY_DEVICE = 27,
    DEV_MGR_PL_ALREADY_ON_ROOT = 28,
    DEV_MGR_INVALID_PL_BROWSE_SESSION = 29,
    DEV_MGR_NO_BROWSE_SESSION_OPENED = 30,
    DEV_MGR_INVALID_FILE_TYPES = 31,
    DEV_MGR_INVALID_FILE_INDEX = 32,
    DEV_MGR_INVALID_FOLDER_INDEX = 33,
    DEV_MGR_MAX_MUSIC_FILES_OPENED_ALREADY = 34,
    DEV_MGR_MAX_IMAGE_FILES_OPENED_ALREADY = 35,
    DEV_MGR_MAX_FILES_OPENED_ALREADY = 36,
    DEV_MGR_FILE_NOT_OPEN = 37,
    DEV_MGR_INVALID_FILE_HANDLE = 38,
    DEV_MGR_INVALID_FILE_MODE = 39,
    DEV_MGR_INVALID_FOLDER_HANDLE = 40,
    DEV_MGR_FILE_READ_NOT_SUPPORTED = 41,
    DEV_MGR_INVALID_OFFSET = 42,
    DEV_MGR_INVALID_FILE_PUID = 43,
    DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED = 44,      ///< browsing functions
    DEV_MGR_MD_BROWSE_SESSION_ALREADY_OPENED = 45,  ///< eDevMgriPodOpenMdBrowseSession
    DEV_MGR_OPEN_MD_BROWSE_SESSION_FAILED = 46,     ///< eDevMgriPodOpenMdBrowseSession: any other reason
    DEV_MGR_OPEN_MULTIPLE_MD_BROWSE_SESSION_NOT_SUPPORTED_BY_DEVICE = 47,
    DEV_MGR_INVALID_MD_BROWSE_SESSION = 48,
    DEV_MGR_INVALID_BASE_CATEGORY = 49,       ///< a parent category that is none
    DEV_MGR_INVALID_CATEGORY_SELECTION = 50,  ///< a category that is none, or that cannot be selected here
    DEV_MGR_ALREADY_ON_TOP_LEVEL = 51,        ///< eDevMgriPodBrowseOneLevelBack
    DEV_MGR_INVALID_DEVICE_HANDLE = 52,  ///< any function with a device handle: it is 0, or no device has it
    DEV_MGR_DEVICE_NOT_MOUNTED = 53,     ///< opening: a reader without a medium
    DEV_MGR_DEVICE_NOT_RESPONDING = 54,  ///< any function: the device does not answer
    DEV_MGR_DEVICE_DISCONNECTED = 55,    ///< any function: the device went while it was being asked
    DEV_MGR_INVALID_COMMAND = 56,
    DEV_MGR_WRONG_PARAMS = 57,  ///< a null pointer; a mode or direction that is none; `reserved` not 0
    DEV_MGR_COMMAND_NOT_SUPPORTED = 58,
    DEV_MGR_MQ_ERROR = 59,
    DEV_MGR_MEMORY_ERROR = 60,                 ///< no memory, or no more blocks
    DEV_MGR_WROG_SHARED_MEMORY = 61,           ///< no such block of this process
    DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY = 62,  ///< a size that cannot be had; a picture larger than the block
    DEV_MGR_SOCK_OPEN_FAILED = 63,
    DEV_MGR_SOCK_READ_FAILED = 64,
    DEV_MGR_SOCK_WRITE_FAILED = 65,
    DEV_MGR_SOCK_CLOSE_FAILED = 66,
    DEV_MGR_THREAD_ERROR = 67,
    DEV_MGR_MTP_ARTWORK_NOT_PRESENT_ERROR = 68,
    DEV_MGR_MTP_FILE_UNSUPPORTED_BY_MTP_DEVICE = 69,
    DEV_MGR_IAP_IPOD_IN_STOP_STATE = 70,  ///< pause, skip, seek: nothing plays. Play: no tracks
    DEV_MGR_IAP_ARTWORK_NOT_SUPPORTED_BY_IPOD_ERROR = 71,  ///< album art: there will be none
    DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR = 72,  ///< album art: there will be none; the track has no picture
    DEV_MGR_IAP_ARTWORK_READ_ERROR = 73,         ///< album art: there will be none
    DEV_MGR_IAP_NOT_PLAYING_ERROR = 74,          ///< art: there will be none. Metadata, times: nothing plays
    DEV_MGR_IAP_FILE_NOT_PRESENT_ERROR = 75,
    DEV_MGR_IAP_FILE_OPEN_FAILED = 76,
    DEV_MGR_IAP_FILE_READ_FAILED = 77,
    DEV_MGR_IAP_TAGGING_NOT_SUPPORTED_BY_IPOD = 78,
    DEV_MGR_IAP_TAGGING_WRONG_FEATURE_SELECTION = 79,
    DEV_MGR_IAP_TAGGING_WRONG_FILE_OPTION_SELECTION = 80,
    DEV_MGR_IAP_TAGGING_FILE_OPEN_FAILED = 81,
    DEV_MGR_IAP_TAGGING_FILE_CLOSE_FAILED = 82,
    DEV_MGR_IAP_TAGGING_FILE_ALREADY_OPENED = 83,
    DEV_MGR_IAP_TAGGING_INVALID_TAG_FILE_HANDLE = 84,
    DEV_MGR_IAP_TAGGING_FILE_WRITE_FAILED = 85,
    DEV_MGR_IAP_TAGGING_WRONG_DATA_SIZE_FOR_WRITE = 86,
    DEV_MGR_IAP_OUT_NOT_SUPPORTED = 87,
    DEV_MGR_IAP_OUT_NOT_SELECTED = 88,
    DEV_MGR_IAP_OUT_WRONG_SOURCE_SELECTION = 89,
    DEV_MGR_IAP_OUT_WRONG_BUTTON_SELECTION = 90,
    DEV_MGR_IAP_APP_COMM_NOT_SUPPORTED = 91,
    DEV_MGR_IAP_APP_LAUNCH_FROM_ACCESSORY_NOT_SUPPORTED = 92,
    DEV_MGR_IAP_APP_NOT_KNOWN = 93,
    DEV_MGR_IAP_APP_BUSY = 94,  ///< four queries are repeated until another code comes
    DEV_MGR_IAP_APP_ALREADY_LAUNCHED = 95,
    DEV_MGR_IAP_APP_LAUNCH_FAILED = 96,
    DEV_MGR_IAP_APP_LAUNCH_WAITED = 97,
    DEV_MGR_IAP_APP_NOT_LAUNCHED = 98,
    DEV_MGR_IAP_APP_WRITE_FAILED = 99,
    DEV_MGR_IAP_INVALID_INDEX = 100,  ///< a position or id beyond the list
    DEV_MGR_IAP_IPOD_LINGO_NOT_SUPPORTED = 101,
    DEV_MGR_IAP_DB_BUILDING_FAILED = 102,       ///< the device is then browsed without one
    DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS = 103,  ///< a second build, or a browse session, while one is running
    DEV_MGR_IAP_STOPPING_DB_BUILD_FAILED = 104,
    DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS = 105,  ///< album art: ask again
    DEV_MGR_UNKNOWN_FAILURE = 106                        ///< whatever has no code of its own
};

/// words[0] of an event. DeviceManager.h has a table of the other words and of what the service does.
/// "Logged": nothing depends on the event, and a library may leave it out.
enum DevMgrEvent {
    DEV_MGR_EVENT_NONE = 0,                   ///< no event
    DEV_MGR_EVENT_DEVICE_MANAGER_EXITED = 1,  ///< no call can be made any more: the service stops
    DEV_MGR_EVENT_USB_OVERCURRENT_DETECTED = 2,
    DEV_MGR_EVENT_DEVICE_CONNECTED = 3,     ///< logged: devices are found by the list
    DEV_MGR_EVENT_DEVICE_DISCONNECTED = 4,  ///< the open device is closed and clients are told
    DEV_MGR_EVENT_IPOD_NOT_RESPONDING = 5,
    DEV_MGR_EVENT_DEVICE_MOUNT_SUCCESSFUL = 6,
    DEV_MGR_EVENT_DEVICE_MOUNT_FAILED = 7,
    DEV_MGR_EVENT_PLAY_TIME = 8,       ///< clients are told the time
    DEV_MGR_EVENT_PLAY_STARTED = 9,    ///< clients are told that it plays: at the start and after a pause
    DEV_MGR_EVENT_PLAY_PAUSED = 10,    ///< clients are told that it is paused
    DEV_MGR_EVENT_PAUSE_REMOVED = 11,  ///< logged: resuming is told by PLAY_STARTED
    DEV_MGR_EVENT_PLAY_STOPPED = 12,   ///< logged: clients learn of it when they ask
    DEV_MGR_EVENT_PLAY_TRACK_CHANGED = 13,  ///< what plays is queried and clients are told
    DEV_MGR_EVENT_FAST_FW_STARTED = 14,
    DEV_MGR_EVENT_FAST_RW_STARTED = 15,
    DEV_MGR_EVENT_FAST_FW_RW_STOPPED = 16,
    DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE = 17,  ///< a running audio stream is restarted
    DEV_MGR_EVENT_AUTH_STARTED = 18,
    DEV_MGR_EVENT_AUTH_SUCCESS = 19,
    DEV_MGR_EVENT_AUTH_FAILURE = 20,
    DEV_MGR_IPOD_APP_SESSION_OPENED = 21,
    DEV_MGR_IPOD_APP_SESSION_CLOSED = 22,
    DEV_MGR_IPOD_APP_DATA_RECEIVED = 23,
    DEV_MGR_EVENT_MAX_DEVICES_ALREADY_CONNECTED = 24,
    DEV_MGR_EVENT_MAX_WIRELESS_DEVICES_ALREADY_CONNECTED = 25,
    DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME = 26,
    DEV_MGR_IPOD_NOW_PLAYING_APP_DISPLAY_NAME = 27,
    DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE = 28,
    DEV_MGR_IPOD_ACCESSORY_SET_STATUS_CHANGE_NOTIFICATION = 29,
    DEV_MGR_IPOD_BLUETOOTH_CONNECTION_STATUS = 30,
    DEV_MGR_IPOD_CHARGING_INFO = 31,
    DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING = 32,       ///< logged: the mode is queried when it is wanted
    DEV_MGR_EVENT_IPOD_REPEAT_SETTING = 33,        ///< logged: the mode is queried when it is wanted
    DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING = 34,  ///< as a changed track, at once and again a second later
    DEV_MGR_EVENT_AUTH_LOCKED = 35,
    DEV_MGR_EVENT_AUTH_UNLOCKED = 36,
    DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO = 37,  ///< 100 or more: the database is built and browsing begins
    DEV_MGR_EVENT_LAST = 38                     ///< no event: one past the last
};

/// What a device is: in its record, and in words[1] of the events that tell of it. The service takes iAP and
/// iAP2 devices (14 to 19); it opens others that the list shows, without using them.
enum DevMgrDeviceType {
    DEV_MGR_DEVICE_TYPE_USB_FAT_12 = 0,  ///< 0 to 13: mass storage
    DEV_MGR_DEVICE_TYPE_USB_FAT_16 = 1,
    DEV_MGR_DEVICE_TYPE_USB_FAT_32 = 2,
    DEV_MGR_DEVICE_TYPE_USB_NTFS = 3,
    DEV_MGR_DEVICE_TYPE_USB_HFS_PLUS = 4,
    DEV_MGR_DEVICE_TYPE_USB_EXT2 = 5,
    DEV_MGR_DEVICE_TYPE_USB_EXT3 = 6,
    DEV_MGR_DEVICE_TYPE_SD_CARD_FAT_12 = 7,
    DEV_MGR_DEVICE_TYPE_SD_CARD_FAT_16 = 8,
    DEV_MGR_DEVICE_TYPE_SD_CARD_FAT_32 = 9,
    DEV_MGR_DEVICE_TYPE_SD_CARD_NTFS = 10,
    DEV_MGR_DEVICE_TYPE_SD_CARD_HFS_PLUS = 11,
    DEV_MGR_DEVICE_TYPE_SD_CARD_EXT2 = 12,
    DEV_MGR_DEVICE_TYPE_SD_CARD_EXT3 = 13,
    DEV_MGR_DEVICE_TYPE_IAP_2WIRE = 14,  ///< 14 to 16: iAP devices, browsed as soon as they are open
    DEV_MGR_DEVICE_TYPE_IAP_1WIRE = 15,
    DEV_MGR_DEVICE_TYPE_IAP_BT = 16,
    DEV_MGR_DEVICE_TYPE_IAP2_2WIRE = 17,  ///< 17 to 19: iAP2 devices, browsed once their database is built
    DEV_MGR_DEVICE_TYPE_IAP2_1WIRE = 18,
    DEV_MGR_DEVICE_TYPE_IAP2_BT = 19,
    DEV_MGR_DEVICE_TYPE_MTP_2WIRE = 20,  ///< 20 to 24: MTP devices
    DEV_MGR_DEVICE_TYPE_MTP_1WIRE_AAVT = 21,
    DEV_MGR_DEVICE_TYPE_MTP_1WIRE_CARDEA = 22,
    DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL = 23,
    DEV_MGR_DEVICE_TYPE_MTP_1WIRE_ZUNE = 24,
    DEV_MGR_DEVICE_TYPE_UNKNOWN = 25,  ///< 25 to 28: in events only, not in the list
    DEV_MGR_DEVICE_TYPE_HUB = 26,
    DEV_MGR_DEVICE_TYPE_NO_MEDIUM = 27,  ///< a card reader or the like, without a medium
    DEV_MGR_DEVICE_TYPE_UNSUPPORTED = 28,
    DEV_MGR_DEVICE_NONE = 29  ///< no device: one past the last
};

/// What eDevMgriPodGetPlayStatus tells. PLAYING and the two FAST ones are "playing" to clients. The method
/// playPause resumes what is PAUSED, starts the first track of the library when STOPPED, and pauses
/// otherwise.
enum DevMgrPlayState {
    E_DEVMGR_IPOD_PLAY_PLAYING = 0,
    E_DEVMGR_IPOD_PLAY_PAUSED = 1,
    E_DEVMGR_IPOD_PLAY_STOPPED = 2,  ///< nothing plays; also before anything has been played
    E_DEVMGR_IPOD_PLAY_FAST_FORWARD = 3,
    E_DEVMGR_IPOD_PLAY_FAST_REWIND = 4,
    E_DEVMGR_IPOD_PLAY_UNKNOWN = 5  ///< as good as a failed query
};

/// Shuffle settings. Clients switch between NONE and TRACKS; either of the others is "enabled" to them.
enum DevMgrShuffleMode {
    E_DEVMGR_IPOD_SHUFFLE_NONE = 0,
    E_DEVMGR_IPOD_SHUFFLE_TRACKS = 1,
    E_DEVMGR_IPOD_SHUFFLE_ALBUMS = 2
};

/// Repeat settings: to clients "off", "current", "all".
enum DevMgrRepeatMode {
    E_DEVMGR_IPOD_REPEAT_NONE = 0,
    E_DEVMGR_IPOD_REPEAT_ONE = 1,  ///< the current track over and over
    E_DEVMGR_IPOD_REPEAT_ALL = 2   ///< the now-playing list over and over
};

/// words[2] of the connect event of a mass-storage device.
enum DevMgrMountStatus { DEV_MGR_MOUNT_PASSED = 6, DEV_MGR_MOUNT_FAILED = 7 };

/// The direction of eDevMgriPodFastForwardRewindStart.
enum DevMgrSeek { DEV_MGR_SEEK_FORWARD = 0, DEV_MGR_SEEK_REWIND = 1 };

/// The direction of eDevMgriPodPlayNextPreviousTrack.
enum DevMgrSkip { DEV_MGR_SKIP_NEXT = 0, DEV_MGR_SKIP_PREVIOUS = 1 };

/// Categories of a device's database: single bits, or-ed together in a mask. Browsing uses the six from
/// PLAYLIST to COMPOSER; the service offers AUDIOBOOK and PODCAST nowhere.
enum DevMgrCategory {
    DEV_MGR_CATEGORY_NONE = 0,  ///< as a mask: nothing follows
    DEV_MGR_CATEGORY_PLAYLIST = 2,
    DEV_MGR_CATEGORY_ARTIST = 4,
    DEV_MGR_CATEGORY_ALBUM = 8,
    DEV_MGR_CATEGORY_GENRE = 16,
    DEV_MGR_CATEGORY_TRACK = 32,
    DEV_MGR_CATEGORY_COMPOSER = 64,
    DEV_MGR_CATEGORY_AUDIOBOOK = 128,
    DEV_MGR_CATEGORY_PODCAST = 256,
    DEV_MGR_CATEGORY_TOP_LEVEL = 512  ///< asks eDevMgriPodMdGetCategories for the categories at the top
};

/// The parent category that, with parent index 0, stands for the whole library.
#define DEV_MGR_WHOLE_LIBRARY (-1)

#endif
