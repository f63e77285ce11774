#include "DeviceSimulator/control/EventNames.h"

#include <algorithm>
#include <vector>

#include "DeviceManager/DeviceManagerValues.h"

namespace DeviceSimulator {

namespace {

// The names are the enumerators' own: what is called otherwise does not compile.
#define DEVICE_SIMULATOR_EVENTS(...)              \
    constexpr DevMgrEvent kEvents[]{__VA_ARGS__}; \
    constexpr std::string_view kNames = #__VA_ARGS__;

DEVICE_SIMULATOR_EVENTS(
    DEV_MGR_EVENT_DEVICE_MANAGER_EXITED, DEV_MGR_EVENT_USB_OVERCURRENT_DETECTED,
    DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_EVENT_IPOD_NOT_RESPONDING,
    DEV_MGR_EVENT_DEVICE_MOUNT_SUCCESSFUL, DEV_MGR_EVENT_DEVICE_MOUNT_FAILED, DEV_MGR_EVENT_PLAY_TIME,
    DEV_MGR_EVENT_PLAY_STARTED, DEV_MGR_EVENT_PLAY_PAUSED, DEV_MGR_EVENT_PAUSE_REMOVED,
    DEV_MGR_EVENT_PLAY_STOPPED, DEV_MGR_EVENT_PLAY_TRACK_CHANGED, DEV_MGR_EVENT_FAST_FW_STARTED,
    DEV_MGR_EVENT_FAST_RW_STARTED, DEV_MGR_EVENT_FAST_FW_RW_STOPPED, DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE,
    DEV_MGR_EVENT_AUTH_STARTED, DEV_MGR_EVENT_AUTH_SUCCESS, DEV_MGR_EVENT_AUTH_FAILURE,
    DEV_MGR_IPOD_APP_SESSION_OPENED, DEV_MGR_IPOD_APP_SESSION_CLOSED, DEV_MGR_IPOD_APP_DATA_RECEIVED,
    DEV_MGR_EVENT_MAX_DEVICES_ALREADY_CONNECTED, DEV_MGR_EVENT_MAX_WIRELESS_DEVICES_ALREADY_CONNECTED,
    DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME, DEV_MGR_IPOD_NOW_PLAYING_APP_DISPLAY_NAME,
    DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE, DEV_MGR_IPOD_ACCESSORY_SET_STATUS_CHANGE_NOTIFICATION,
    DEV_MGR_IPOD_BLUETOOTH_CONNECTION_STATUS, DEV_MGR_IPOD_CHARGING_INFO, DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING,
    DEV_MGR_EVENT_IPOD_REPEAT_SETTING, DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, DEV_MGR_EVENT_AUTH_LOCKED,
    DEV_MGR_EVENT_AUTH_UNLOCKED, DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO)
#undef DEVICE_SIMULATOR_EVENTS

constexpr bool HasEveryEventInOrder() {
    int id = DEV_MGR_EVENT_NONE;
    for (const DevMgrEvent event : kEvents) {
        if (event != ++id) {
            return false;
        }
    }
    return id + 1 == DEV_MGR_EVENT_LAST;
}
static_assert(HasEveryEventInOrder());

/// The interface's own names have letters without case and no "-".
std::string ToWord(std::string_view name) {
    for (const std::string_view prefix : {"DEV_MGR_", "EVENT_", "IPOD_"}) {
        if (name.substr(0, prefix.size()) == prefix) {
            name.remove_prefix(prefix.size());
        }
    }
    std::string word;
    for (const char c : name) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        word += isCapital ? static_cast<char>(c - 'A' + 'a') : (c == '_' ? '-' : c);
    }
    return word;
}

/// By the events' numbers, from 1.
const std::vector<std::string>& Words() {
    static const auto* const kWords = [] {
        auto* const words = new std::vector<std::string>;
        for (std::size_t start = 0; start < kNames.size();) {
            const std::size_t end = std::min(kNames.find(", ", start), kNames.size());
            words->push_back(ToWord(kNames.substr(start, end - start)));
            start = end + 2;
        }
        return words;
    }();
    return *kWords;
}

}  // namespace

std::optional<std::uint32_t> FindEvent(std::string_view name) {
    const auto& words = Words();
    const auto found = std::find(words.begin(), words.end(), ToWord(name));
    return found == words.end() ? std::nullopt
                                : std::optional(static_cast<std::uint32_t>(found - words.begin()) + 1);
}

std::string EventWord(std::uint32_t id) {
    return id > DEV_MGR_EVENT_NONE && id < DEV_MGR_EVENT_LAST ? Words()[id - 1] : std::string();
}

}  // namespace DeviceSimulator
