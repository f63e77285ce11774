#include "IpodControl/commands/Method.h"

#include <algorithm>
#include <array>
#include <limits>

namespace IpodControl {

namespace {

constexpr std::string_view kPlayback = kGroups[0];
constexpr std::string_view kSettings = kGroups[1];
constexpr std::string_view kTrack = kGroups[2];
constexpr std::string_view kBrowsing = kGroups[3];
constexpr std::string_view kService = kGroups[4];

constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMostId = std::numeric_limits<std::uint32_t>::max();

constexpr std::string_view kRefusal = "the player refused";
constexpr std::string_view kNotThere = "there is nothing to browse";

constexpr Parameters Switch(std::string_view help, bool isRequired) {
    return {Parameter{"enable", "STATE", ParameterKind::OnOff, "", isRequired, 0, 0, help}};
}

constexpr Parameter Start(std::string_view shown, std::string_view help) {
    return {"startIndex", shown, ParameterKind::Integer, "0", false, kLeast, kMost, help};
}

constexpr Parameter kCount{"itemCount",
                           "--count",
                           ParameterKind::Integer,
                           "20",
                           false,
                           0,
                           kMost,
                           "how many (default 20), up to the list's end"};
constexpr Parameter kItem{
    "itemId", "ITEM", ParameterKind::Integer, "", true, kLeast, kMostId, "the item's id, as the list has it"};
constexpr Parameter kMode{"mode",
                          "MODE",
                          ParameterKind::RepeatMode,
                          "",
                          false,
                          0,
                          0,
                          "what to repeat; without it the present mode is shown"};
constexpr Parameter kSearch{"searchText",
                            "TEXT",
                            ParameterKind::Text,
                            "",
                            true,
                            0,
                            0,
                            "what the names shall contain; '' takes the filter off"};

constexpr Parameters kSetting = Switch("without it the present setting is shown", false);
constexpr Parameters kHeld = Switch("on starts it, off ends it", true);
constexpr Parameters kPage{Start("--start", "where to begin; below 0: from the list's end (default 0)"),
                           kCount};
constexpr Parameters kFrom{Start("START", "the index to look from (default 0)")};
constexpr Parameters kOneItem{kItem};
constexpr Parameters kOneMode{kMode};
constexpr Parameters kOneText{kSearch};

constexpr std::array kMethods = {
    Method{"enableShuffle", "shuffle", kSettings, "switch shuffle, and show it", "on", Verdict::ReadBack,
           "enabled", Display::Setting, "", "the player has kept its own setting", kSetting},
    Method{"exit", "", kService, "end the service's server", "", Verdict::Word, "", Display::Nothing, "",
           "the service refused"},
    Method{"fastForwardSong", "fast-forward", kPlayback, "start or end fast forward", "on", Verdict::Flag,
           "enabled", Display::Nothing, "", kRefusal, kHeld},
    Method{"filterBrowseList", "filter", kBrowsing, "narrow the present list to names with a text", "lantern",
           Verdict::Word, "", Display::Nothing, "", "no list is open that could be narrowed", kOneText},
    Method{"getBrowseList", "list", kBrowsing, "show a page of the present list", "--start 0 --count 20",
           Verdict::Answered, "", Display::List, "", "there is no list", kPage},
    Method{"getCurrentAlbumArt", "", kTrack, "ask for the track's picture and tell its size", "",
           Verdict::NotEmpty, "albumArt", Display::Picture, "", "there is no picture (yet)"},
    Method{"getCurrentAlbumArtDelayed", "", kTrack, "have the picture sent to all clients once it is there",
           "", Verdict::Flag, "success", Display::Nothing, "", kRefusal},
    Method{"getCurrentTrackInfo", "track", kTrack, "show the current track", "", Verdict::Answered, "",
           Display::Track, "", "there is none"},
    Method{"getHasPlayableData", "", kTrack, "tell whether the library has a track (0: yes, 1: no)", "",
           Verdict::Flag, "hasPlayableData", Display::YesOrNo, "there is something to play",
           "there is nothing to play"},
    Method{"getNextAlphaNumericIndex", "next-letter", kBrowsing, "show where the next initial letter begins",
           "12", Verdict::NotNegative, "itemIndex", Display::Number, "", "no list is open", kFrom},
    Method{"getPrevAlphaNumericIndex", "previous-letter", kBrowsing,
           "show the last item of the letter before", "12", Verdict::NotNegative, "itemIndex",
           Display::Number, "", "no list is open", kFrom},
    Method{"getRepeatMode", "", kSettings, "show what is repeated", "", Verdict::Answered, "mode",
           Display::Setting, "", "there is no mode"},
    Method{"getSongList", "songs", kBrowsing, "open Songs from the root, and show all of them", "",
           Verdict::Answered, "", Display::List, "",
           "there are no songs, or another list is open (reset-browse-list first)"},
    Method{"isIpodConnected", "", kService, "tell whether a player is connected (0: yes, 1: no)", "",
           Verdict::Flag, "connected", Display::YesOrNo, "connected", "not connected"},
    Method{"isShuffleEnabled", "", kSettings, "tell whether shuffle is on (0: yes, 1: no)", "", Verdict::Flag,
           "enabled", Display::YesOrNo, "on", "off"},
    Method{"isTrackPaused", "", kTrack, "tell whether the track is paused (0: yes, 1: no)", "", Verdict::Flag,
           "isPaused", Display::YesOrNo, "paused", "not paused"},
    Method{"next", "", kPlayback, "go to the next track", "", Verdict::Flag, "success", Display::Nothing, "",
           kRefusal},
    Method{"pause", "", kPlayback, "pause", "", Verdict::Flag, "success", Display::Nothing, "",
           "it is paused already"},
    Method{"play", "", kPlayback, "go on, or start the first track when stopped", "", Verdict::AnsweredOrNull,
           "success", Display::Played, "", kRefusal},
    Method{"playFirst", "", kPlayback, "start the library's first track", "", Verdict::Flag, "success",
           Display::Nothing, "", "the player holds no track"},
    Method{"playPause", "", kPlayback, "play when paused or stopped, else pause", "", Verdict::Flag,
           "success", Display::Nothing, "", kRefusal},
    Method{"previous", "", kPlayback, "go to the track's beginning, or to the previous track", "",
           Verdict::Flag, "success", Display::Nothing, "", kRefusal},
    Method{"resetBrowseList", "reset", kBrowsing, "go back to the root of the library", "", Verdict::Flag,
           "resetSuccess", Display::Nothing, "", kNotThere},
    Method{"rewindSong", "rewind", kPlayback, "start or end rewind", "off", Verdict::Flag, "enabled",
           Display::Nothing, "", kRefusal, kHeld},
    Method{"selectBrowseBack", "back", kBrowsing, "go back to the list before", "", Verdict::Word, "",
           Display::Nothing, "", kNotThere},
    Method{"selectBrowseItem", "select", kBrowsing, "open an item of the present list, or play it", "32",
           Verdict::Word, "", Display::Selection, "", "there is no such item", kOneItem},
    Method{"setRepeatMode", "repeat", kSettings, "set what is repeated, and show it", "all",
           Verdict::ReadBack, "mode", Display::Setting, "", "the player has kept its own mode", kOneMode},
    Method{"start", "", kService, "let the player be heard", "", Verdict::Word, "", Display::Nothing, "",
           "a stream is there already, or cannot be made"},
    Method{"stop", "", kService, "let the player be heard no more", "", Verdict::Word, "", Display::Nothing,
           "", "there is no stream"},
};
static_assert(kMethods.size() == 29);

constexpr auto kByName = [](const Method& left, const Method& right) { return left.name < right.name; };
static_assert(std::is_sorted(kMethods.begin(), kMethods.end(), kByName));

}  // namespace

std::span<const Method> Methods() {
    return kMethods;
}

const Method* FindMethod(std::string_view name) {
    const auto* const found =
        std::lower_bound(kMethods.begin(), kMethods.end(), name,
                         [](const Method& method, std::string_view wanted) { return method.name < wanted; });
    return found != kMethods.end() && found->name == name ? &*found : nullptr;
}

std::string KebabCase(std::string_view name) {
    std::string kebab;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') {
            kebab += '-';
            kebab += static_cast<char>(c - 'A' + 'a');
        } else {
            kebab += c;
        }
    }
    return kebab;
}

}  // namespace IpodControl
