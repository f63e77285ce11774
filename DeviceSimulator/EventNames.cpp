#include "DeviceSimulator/EventNames.h"

#include <algorithm>
#include <array>
#include <string>

namespace DeviceSimulator {

namespace {

/// The first is event 1.
constexpr auto kWords = std::to_array<std::string_view>({"device-manager-exited",
                                                         "usb-overcurrent-detected",
                                                         "device-connected",
                                                         "device-disconnected",
                                                         "not-responding",
                                                         "device-mount-successful",
                                                         "device-mount-failed",
                                                         "play-time",
                                                         "play-started",
                                                         "play-paused",
                                                         "pause-removed",
                                                         "play-stopped",
                                                         "play-track-changed",
                                                         "fast-fw-started",
                                                         "fast-rw-started",
                                                         "fast-fw-rw-stopped",
                                                         "new-track-sample-rate",
                                                         "auth-started",
                                                         "auth-success",
                                                         "auth-failure",
                                                         "app-session-opened",
                                                         "app-session-closed",
                                                         "app-data-received",
                                                         "max-devices-already-connected",
                                                         "max-wireless-devices-already-connected",
                                                         "now-playing-app-bundle-name",
                                                         "now-playing-app-display-name",
                                                         "app-session-space-available",
                                                         "accessory-set-status-change-notification",
                                                         "bluetooth-connection-status",
                                                         "charging-info",
                                                         "shuffle-setting",
                                                         "repeat-setting",
                                                         "play-context-setting",
                                                         "auth-locked",
                                                         "auth-unlocked",
                                                         "db-build-progress-info"});

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
    const auto* found = std::find(kWords.begin(), kWords.end(), ToWord(name));
    if (found == kWords.end()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(found - kWords.begin()) + 1;
}

}  // namespace DeviceSimulator
