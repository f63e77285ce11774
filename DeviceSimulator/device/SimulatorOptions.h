// What is asked of a simulated player: its devices, what they are like, their library, their covers.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManagerValues.h"
#include "DeviceSimulator/music/MusicChoice.h"

namespace DeviceSimulator {

class Library;

/// What an item's id is.
enum class ItemIds {
    Positions,  ///< its position in the list
    Stable,     ///< a number that it has in every list, and that is no position
};

/// In which size covers are delivered, whatever size is wanted.
enum class CoverSize {
    Stored,  ///< as they are
    Wanted,  ///< made smaller until they fit what is wanted
    Length,  ///< as they are, told as a height of 0 and a width of so many bytes
};

/// What makes one player behave unlike another. The defaults are what a phone does.
struct Character {
    MusicChoice music;
    std::optional<std::uint32_t> seed;  ///< of shuffle; none: another one each time
    std::optional<std::chrono::milliseconds> databaseBuildTime;
    ItemIds ids = ItemIds::Positions;
    std::uint32_t pageLimit = 0;  ///< most items that one call delivers; 0: any number
    CoverSize covers = CoverSize::Stored;
};

/// A device to plug in. What is left out gets a likely value.
struct DeviceDescription {
    std::uint32_t type = DEV_MGR_DEVICE_TYPE_IAP2_2WIRE;  ///< a DevMgrDeviceType
    std::optional<std::uint32_t> handle;                  ///< none: the next free one
    std::string name;                                     ///< empty: a name that fits the type
    std::optional<std::uint32_t> productId;
    std::optional<std::uint32_t> vendorId;
    std::uint32_t hub = 0;  ///< the handle of the hub that it hangs on; 0: none
    bool isLocked = false;  ///< only of a player: it waits to be unlocked before it lets itself be opened
    Character character{};
};

/// What becomes of every track's cover.
enum class ArtworkVariant {
    AsIs,
    None,       ///< the track has no cover
    Truncated,  ///< a JPEG cut in the middle
    NotJpeg,    ///< bytes that are no picture, reported as 640 x 640
    Narrow,     ///< 90 x 480 pixels
    Huge,       ///< 2000 x 2000 pixels
    Limit,      ///< 320 x 320 pixels: the highest that the service passes on as it stands
};

/// How the model runs. The defaults are those of a real player.
struct SimulatorOptions {
    std::chrono::milliseconds plugDelay{300};  ///< from registration to the device that is there at start
    std::chrono::milliseconds databaseBuildTime{1000};  ///< of an iAP2 device
    std::vector<DeviceDescription> devices;             ///< plugged in at start
    std::shared_ptr<const Library> library;             ///< null: the built-in one
};

}  // namespace DeviceSimulator
