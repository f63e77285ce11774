#include "DeviceSimulator/control/EventNames.h"

#include <algorithm>
#include <array>

#include "DeviceManager/DeviceManagerValues.h"

namespace DeviceSimulator {

namespace {

struct EventName {
    std::uint32_t id;
    std::string_view name;
};

// The name is the enumerator's own: what is called otherwise does not compile.
#define DEVICE_SIMULATOR_EVENT(name) \
    { name, #name }
constexpr auto kEvents =
    std::to_array<EventName>({DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DEVICE_MANAGER_EXITED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_USB_OVERCURRENT_DETECTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DEVICE_CONNECTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DEVICE_DISCONNECTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_IPOD_NOT_RESPONDING),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DEVICE_MOUNT_SUCCESSFUL),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DEVICE_MOUNT_FAILED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PLAY_TIME),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PLAY_STARTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PLAY_PAUSED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PAUSE_REMOVED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PLAY_STOPPED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_PLAY_TRACK_CHANGED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_FAST_FW_STARTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_FAST_RW_STARTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_FAST_FW_RW_STOPPED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_AUTH_STARTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_AUTH_SUCCESS),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_AUTH_FAILURE),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_APP_SESSION_OPENED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_APP_SESSION_CLOSED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_APP_DATA_RECEIVED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_MAX_DEVICES_ALREADY_CONNECTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_MAX_WIRELESS_DEVICES_ALREADY_CONNECTED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_NOW_PLAYING_APP_DISPLAY_NAME),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_ACCESSORY_SET_STATUS_CHANGE_NOTIFICATION),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_BLUETOOTH_CONNECTION_STATUS),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_IPOD_CHARGING_INFO),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_IPOD_REPEAT_SETTING),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_AUTH_LOCKED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_AUTH_UNLOCKED),
                              DEVICE_SIMULATOR_EVENT(DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO)});
#undef DEVICE_SIMULATOR_EVENT

constexpr bool HasEveryEventInOrder() {
    std::uint32_t id = DEV_MGR_EVENT_NONE;
    for (const EventName& event : kEvents) {
        if (event.id != ++id) {
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

}  // namespace

std::optional<std::uint32_t> FindEvent(std::string_view name) {
    const std::string word = ToWord(name);
    const auto* found = std::find_if(kEvents.begin(), kEvents.end(),
                                     [&](const EventName& event) { return ToWord(event.name) == word; });
    return found == kEvents.end() ? std::nullopt : std::optional(found->id);
}

std::string EventWord(std::uint32_t id) {
    return id > DEV_MGR_EVENT_NONE && id < DEV_MGR_EVENT_LAST ? ToWord(kEvents[id - 1].name) : std::string();
}

}  // namespace DeviceSimulator
