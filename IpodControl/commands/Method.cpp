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

constexpr Parameter kSetting{"enable", "STATE", "on|off", "without it the present setting is shown",
                             ParameterKind::OnOff};
constexpr Parameter kHeld{"enable", "STATE", "on|off", "on starts it, off ends it", ParameterKind::OnOff,
                          true};
constexpr Parameter kMode{"mode", "MODE", "off|current|all",
                          "what to repeat; without it the present mode is shown", ParameterKind::Choice};
constexpr Parameter kSearch{
    "searchText",        "TEXT", "TEXT", "what the names shall contain; '' takes the filter off",
    ParameterKind::Text, true};
constexpr Parameter kItem =
    IntegerParameter("itemId", "ITEM", kLeast, kMostId, "the item's id, as the list has it", "", true);
constexpr Parameter kFrom =
    IntegerParameter("startIndex", "START", kLeast, kMost, "the index to look from (default 0)", "0");
constexpr Parameter kStart = IntegerParameter(
    "startIndex", "--start", kLeast, kMost, "where to begin; below 0: from the list's end (default 0)", "0");
constexpr Parameter kCount =
    IntegerParameter("itemCount", "--count", 0, kMost, "how many (default 20), up to the list's end", "20");

constexpr std::array kMethods = {
    Method{"enableShuffle", "shuffle", kSettings, "switch shuffle, and show it",
           "the player has kept its own setting", Verdict::ReadBack, "enabled", Display::Setting, "", "on",
           kSetting},
    Method{"exit", "", kService, "end the service's server", "the service refused", Verdict::Word},
    Method{"fastForwardSong", "fast-forward", kPlayback, "start or end fast forward", kRefusal, Verdict::Flag,
           "enabled", Display::Nothing, "", "on", kHeld},
    Method{"filterBrowseList", "filter", kBrowsing, "narrow the present list to names with a text",
           "no list is open that could be narrowed", Verdict::Word, "", Display::Nothing, "", "lantern",
           kSearch},
    Method{"getBrowseList", "list", kBrowsing, "show a page of the present list", "there is no list",
           Verdict::Answered, "", Display::List, "", "--start 0 --count 20", kStart, kCount},
    Method{"getCurrentAlbumArt", "", kTrack, "ask for the track's picture and tell its size",
           "there is no picture (yet)", Verdict::NotEmpty, "albumArt", Display::Picture},
    Method{"getCurrentAlbumArtDelayed", "", kTrack, "have the picture sent to all clients once it is there",
           kRefusal},
    Method{"getCurrentTrackInfo", "track", kTrack, "show the current track", "there is none",
           Verdict::Answered, "", Display::Track},
    Method{"getHasPlayableData", "", kTrack, "tell whether the library has a track (0: yes, 1: no)",
           "there is nothing to play", Verdict::Flag, "hasPlayableData", Display::YesOrNo,
           "there is something to play"},
    Method{"getNextAlphaNumericIndex", "next-letter", kBrowsing, "show where the next initial letter begins",
           "no list is open", Verdict::NotNegative, "itemIndex", Display::Number, "", "12", kFrom},
    Method{"getPrevAlphaNumericIndex", "previous-letter", kBrowsing,
           "show the last item of the letter before", "no list is open", Verdict::NotNegative, "itemIndex",
           Display::Number, "", "12", kFrom},
    Method{"getRepeatMode", "", kSettings, "show what is repeated", "there is no mode", Verdict::Answered,
           "mode", Display::Setting},
    Method{"getSongList", "songs", kBrowsing, "open Songs from the root, and show all of them",
           "there are no songs, or another list is open (reset-browse-list first)", Verdict::Answered, "",
           Display::List},
    Method{"isIpodConnected", "", kService, "tell whether a player is connected (0: yes, 1: no)",
           "not connected", Verdict::Flag, "connected", Display::YesOrNo, "connected"},
    Method{"isShuffleEnabled", "", kSettings, "tell whether shuffle is on (0: yes, 1: no)", "off",
           Verdict::Flag, "enabled", Display::YesOrNo, "on"},
    Method{"isTrackPaused", "", kTrack, "tell whether the track is paused (0: yes, 1: no)", "not paused",
           Verdict::Flag, "isPaused", Display::YesOrNo, "paused"},
    Method{"next", "", kPlayback, "go to the next track", kRefusal},
    Method{"pause", "", kPlayback, "pause", "it is paused already"},
    Method{"play", "", kPlayback, "go on, or start the first track when stopped", kRefusal,
           Verdict::AnsweredOrNull, "success", Display::Played},
    Method{"playFirst", "", kPlayback, "start the library's first track", "the player holds no track"},
    Method{"playPause", "", kPlayback, "play when paused or stopped, else pause", kRefusal},
    Method{"previous", "", kPlayback, "go to the track's beginning, or to the previous track", kRefusal},
    Method{"resetBrowseList", "reset", kBrowsing, "go back to the root of the library", kNotThere,
           Verdict::Flag, "resetSuccess"},
    Method{"rewindSong", "rewind", kPlayback, "start or end rewind", kRefusal, Verdict::Flag, "enabled",
           Display::Nothing, "", "off", kHeld},
    Method{"selectBrowseBack", "back", kBrowsing, "go back to the list before", kNotThere, Verdict::Word},
    Method{"selectBrowseItem", "select", kBrowsing, "open an item of the present list, or play it",
           "there is no such item", Verdict::Word, "", Display::Selection, "", "32", kItem},
    Method{"setRepeatMode", "repeat", kSettings, "set what is repeated, and show it",
           "the player has kept its own mode", Verdict::ReadBack, "mode", Display::Setting, "", "all", kMode},
    Method{"start", "", kService, "let the player be heard", "a stream is there already, or cannot be made",
           Verdict::Word},
    Method{"stop", "", kService, "let the player be heard no more", "there is no stream", Verdict::Word},
};
static_assert(kMethods.size() == 29);

}  // namespace

std::span<const Method> Methods() {
    return kMethods;
}

const Method* FindMethod(std::string_view name) {
    const auto* const found = std::find_if(kMethods.begin(), kMethods.end(),
                                           [name](const Method& method) { return method.name == name; });
    return found != kMethods.end() ? found : nullptr;
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
