// The service's methods as a shell user sees them: one table from which the subcommands, their help, what
// they send, what they print and how they end are made.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace IpodControl {

enum class ParameterKind { Text, Words, Flag, OnOff, Choice, Integer, Seconds };

/// Of a method, or of a subcommand of another kind.
struct Parameter {
    std::string_view name;   ///< of the value, for a method on the wire; empty: no parameter
    std::string_view shown;  ///< as it is typed: "ITEM" by its place, "--start" by its name
    std::string_view type;   ///< in the help; of OnOff and Choice the words, with "|" between them
    std::string_view help;
    ParameterKind kind = ParameterKind::Text;
    bool isRequired = false;
    std::string_view fallback = "";  ///< the value where none is typed; without one, it is left out
    std::int64_t least = 0;          ///< of an Integer
    std::int64_t most = 0;
};

constexpr Parameter IntegerParameter(std::string_view name, std::string_view shown, std::int64_t least,
                                     std::int64_t most, std::string_view help, std::string_view fallback = "",
                                     bool isRequired = false) {
    return {name, shown, "NUMBER", help, ParameterKind::Integer, isRequired, fallback, least, most};
}

/// What in a result means "done". An error object never does.
enum class Verdict {
    Answered,        ///< any result but null
    AnsweredOrNull,  ///< null too; else as Flag
    Flag,            ///< the member is true
    Word,            ///< not "failure"
    NotEmpty,        ///< the member is a text with something in it
    NotNegative,     ///< the member is a number from 0 on
    ReadBack,        ///< the member is what was sent, where something was
};

/// How a person is shown a result.
enum class Display { Nothing, YesOrNo, Setting, Number, Track, List, Picture, Selection, Played };

/// In the order of the help.
inline constexpr std::array<std::string_view, 5> kGroups = {"Playback", "Settings", "The current track",
                                                            "Browsing", "Service and audio"};

struct Method {
    std::string_view name;   ///< on the wire
    std::string_view alias;  ///< a short name, or empty
    std::string_view group;  ///< one of kGroups
    std::string_view summary;
    std::string_view no;  ///< YesOrNo: what is printed; else why it was refused, as a sentence's end
    Verdict verdict = Verdict::Flag;
    std::string_view member = "success";  ///< of the result, for `verdict` and `display`
    Display display = Display::Nothing;
    std::string_view yes = "";      ///< YesOrNo: what is printed
    std::string_view example = "";  ///< arguments
    Parameter first{};
    Parameter second{};
};

/// All of them, in the order of their names.
std::span<const Method> Methods();
/// Null when there is none of that name.
const Method* FindMethod(std::string_view name);

/// "playPause" as "play-pause".
std::string KebabCase(std::string_view name);

}  // namespace IpodControl
