#include "IpodControl/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/Completion.h"
#include "IpodControl/terminal/RunView.h"

namespace IpodControl {

namespace {

using Kind = ParameterKind;

constexpr Parameter kHost{"host", "--host", "NAME", "where the service is (default 127.0.0.1)"};
constexpr Parameter kPort = IntegerParameter("port", "--port", 1, 65535, "its port (default 8883)");
constexpr Parameter kTimeout{"timeout", "--timeout", "SECONDS",
                             "how long to wait for an answer (default 5), and for a state (30)",
                             Kind::Seconds};
constexpr Parameter kJson{"json", "--json", "", "print JSON, one value a line", Kind::Flag};
constexpr Parameter kColourless{"isColourless", "--no-colours", "",
                                "draw without colours, as the variable NO_COLOR asks for", Kind::Flag};
constexpr Parameter kNames{
    "names", "NAME", "",
    "a category, then an item of each list that opens; of equal ones name#2 is the second", Kind::Words};
constexpr Parameter kPlays{"plays", "--play", "", "play the last one, or the first song below it",
                           Kind::Flag};
constexpr Parameter kMost =
    IntegerParameter("most", "--count", 1, std::numeric_limits<std::int64_t>::max(), "end after so many");
constexpr Parameter kTime{"time", "--for", "SECONDS", "end after that time", Kind::Seconds};
constexpr Parameter kFile{"file", "FILE", "", "where to; - is standard output", Kind::Text, true};
constexpr Parameter kDelayed{"isDelayed", "--delayed", "", "do not ask for it at once", Kind::Flag};
constexpr Parameter kState{"state", "STATE", kWaitStates, "what to wait for", Kind::Choice, true};
constexpr Parameter kLines{"lines",    "JSON", "", "requests; - reads them from standard input",
                           Kind::Text, true};
constexpr Parameter kCommand{"command", "COMMAND", "", "the command"};
constexpr Parameter kShell{"shell", "SHELL", "bash|zsh|fish", "the shell", Kind::Choice, true};
constexpr Parameter kTyped{"typed", "WORD", "", "what is typed", Kind::Words};

constexpr const char* kFooter =
    "Every method is also known by its name in the protocol, such as playPause.\n"
    "ipodctl COMMAND --help tells more, with an example.\n\n"
    "Exit status: 0 done; 1 the service said no, or the answer to a question is no; 2 what was typed\n"
    "cannot be carried out; 3 no service, or something else listens there.";

/// The parser takes "[a,b]" apart where several words may stand, and does not let "--" end the options where
/// a subcommand has some; a name may look like anything. What stands behind this is not looked at.
constexpr char kGuard = '\x01';

/// In the parser's order, the last one first.
std::vector<std::string> Guarded(const std::vector<std::string>& words) {
    std::vector<std::string> guarded;
    bool isBehind = false;
    for (const std::string& word : words) {
        const bool isBracketed = word.size() > 1 && word.front() == '[' && word.back() == ']';
        if (isBehind || word != "--") {
            guarded.push_back(isBehind || isBracketed ? kGuard + word : word);
        }
        isBehind = isBehind || word == "--";
    }
    std::reverse(guarded.begin(), guarded.end());
    return guarded;
}

std::string Unguarded(const std::string& word) {
    return !word.empty() && word.front() == kGuard ? word.substr(1) : word;
}

[[noreturn]] void Reject(const Parameter& parameter, const std::string& text, const std::string& why) {
    throw CLI::ValidationError(std::string(parameter.shown), '"' + text + "\" is " + why);
}

template <typename Number>
std::optional<Number> WholeText(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional<Number>(number) : std::nullopt;
}

/// Throws a ValidationError, which the parser lets through.
Json::Value ValueFrom(const Parameter& parameter, const std::string& text) {
    if (parameter.kind == ParameterKind::Integer) {
        const auto number = WholeText<std::int64_t>(text);
        if (!number || *number < parameter.least || *number > parameter.most) {
            Reject(parameter, text,
                   "no whole number from " + std::to_string(parameter.least) + " to " +
                       std::to_string(parameter.most));
        }
        return Json::Int64{*number};
    }
    if (parameter.kind == ParameterKind::Seconds) {
        const double seconds = WholeText<double>(text).value_or(0);
        if (!(seconds >= 0.001 && seconds <= 1'000'000)) {
            Reject(parameter, text, "no number of seconds from 0.001 to 1000000");
        }
        return seconds;
    }
    const std::string type(parameter.type);
    const auto choices = CLI::detail::split(type, '|');
    if (choices.size() > 1 && std::find(choices.begin(), choices.end(), text) == choices.end()) {
        Reject(parameter, text, "none of " + type);
    }
    return parameter.kind == ParameterKind::OnOff ? Json::Value(text == "on") : text;
}

/// Of what Seconds took.
std::optional<std::chrono::milliseconds> TimeMember(const Json::Value& values, const char* name) {
    const Json::Value& seconds = Member(values, name);
    return seconds.isNull()
               ? std::nullopt
               : std::optional(std::chrono::milliseconds(std::llround(seconds.asDouble() * 1000)));
}

/// Of what Words took.
std::vector<std::string> WordsMember(const Json::Value& values, const char* name) {
    std::vector<std::string> words;
    for (const Json::Value& word : Member(values, name)) {
        words.push_back(word.asString());
    }
    return words;
}

/// The list of subcommands shows the first line of what each does, and the short names: the protocol's own
/// would fill it twice.
class HelpFormatter : public CLI::Formatter {
    std::string make_subcommand(const CLI::App* command) const override {
        std::string name = command->get_name();
        const auto& aliases = command->get_aliases();
        if (!aliases.empty() && FindMethod(aliases.front()) == nullptr) {
            name += ", " + aliases.front();
        }
        constexpr std::size_t kColumn = 44;
        std::ostringstream line;
        const std::string description = command->get_description();
        CLI::detail::format_help(line, name, description.substr(0, description.find('\n')), kColumn);
        return line.str();
    }
};

class CommandLine {
  public:
    CommandLine() : m_app("Controls the player through the service.", "ipodctl") {
        m_app.formatter(std::make_shared<HelpFormatter>());
        m_app.get_formatter()->column_width(28);
        m_app.require_subcommand(1);
        m_app.fallthrough();
        m_app.set_version_flag("--version", "ipodctl " IPODCTL_VERSION);
        AddOption(m_app, kHost, m_general).envname("IPODCTL_HOST");
        AddOption(m_app, kPort, m_general).envname("IPODCTL_PORT");
        AddOption(m_app, kTimeout, m_general);
        AddOption(m_app, kJson, m_general);
        m_app.footer(kFooter);
        AddCommands();
        AddHelp();
        for (const std::string_view group : kGroups) {
            for (const Method& method : Methods()) {
                if (method.group == group) {
                    AddMethod(method);
                }
            }
        }
    }

    int Run(const std::vector<std::string>& arguments) {
        try {
            m_app.parse(Guarded(arguments));
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
                m_app.exit(error);
                return kDone;
            }
            const auto extra = m_app.remaining();
            return !extra.empty() && m_app.get_subcommands().empty()
                       ? RefuseCommand(Unguarded(extra.front()))
                       : Refuse(CLI::detail::find_and_replace(error.what(), std::string(1, kGuard), ""));
        }
        m_settings.endpoint.host =
            Member(m_general, "host").isNull() ? m_settings.endpoint.host : TextMember(m_general, "host");
        m_settings.endpoint.port =
            static_cast<std::uint16_t>(IntegerMember(m_general, "port").value_or(m_settings.endpoint.port));
        m_settings.givenTimeout = TimeMember(m_general, "timeout");
        m_settings.json = IsTrueMember(m_general, "json");
        return m_chosen();
    }

  private:
    static int Refuse(const std::string& why) {
        Complain(why + ". See ipodctl --help.");
        return kUsage;
    }
    static int RefuseCommand(const std::string& name) {
        return Refuse("there is no command \"" + name + '"');
    }

    /// What is typed goes into `values`, under the parameter's name.
    static CLI::Option& AddOption(CLI::App& command, const Parameter& parameter, Json::Value& values) {
        const std::string name(parameter.name);
        const std::string shown(parameter.shown);
        const std::string help(parameter.help);
        if (parameter.kind == ParameterKind::Flag) {
            return *command.add_flag_callback(
                shown, [name, &values] { values[name] = true; }, help);
        }
        const bool isList = parameter.kind == ParameterKind::Words;
        const auto take = [parameter, name, isList, &values](const CLI::results_t& words) {
            if (!isList) {
                values[name] = ValueFrom(parameter, Unguarded(words.front()));
                return true;
            }
            for (const std::string& word : words) {
                values[name].append(ValueFrom(parameter, Unguarded(word)));
            }
            return true;
        };
        CLI::Option& option = *command.add_option(shown, take, help);
        option.type_name(std::string(parameter.type))->required(parameter.isRequired);
        return isList ? *option.expected(0, -1)->allow_extra_args() : option;
    }

    /// `run` gives back the exit status.
    CLI::App& Add(const std::string& name, const std::string& summary, const std::string& example,
                  const std::vector<Parameter>& parameters, const std::function<int()>& run) {
        CLI::App& command = *m_app.add_subcommand(name, summary);
        for (const Parameter& parameter : parameters) {
            if (!parameter.name.empty()) {
                AddOption(command, parameter, m_values);
            }
        }
        command.callback([this, parameters, run] {
            for (const Parameter& parameter : parameters) {
                const std::string value(parameter.name);
                if (!parameter.fallback.empty() && !m_values.isMember(value)) {
                    m_values[value] = ValueFrom(parameter, std::string(parameter.fallback));
                }
            }
            m_chosen = run;
        });
        command.group("Commands");
        command.footer("Example:\n  ipodctl " + name + (example.empty() ? "" : " " + example) +
                       "\n\n--host, --port, --timeout and --json: see ipodctl --help.");
        return command;
    }

    void AddMethod(const Method& method) {
        const std::string name = KebabCase(method.name);
        std::string summary(method.summary);
        summary.front() = static_cast<char>(summary.front() - 'a' + 'A');
        CLI::App& command =
            Add(name, summary + ".", std::string(method.example), {method.first, method.second},
                [this, &method] { return RunCall(m_settings, method, m_values); });
        command.group(std::string(method.group));
        if (!method.alias.empty()) {
            command.alias(std::string(method.alias));
        }
        if (name != method.name) {
            command.alias(std::string(method.name));
        }
    }

    void AddCommands() {
        Add("player",
            "Control the player in a full-screen view.\n"
            "It waits for the service, and waits again when that goes away. ? lists the keys.",
            "", {kColourless}, [this] {
                const char* const noColour = std::getenv("NO_COLOR");
                const bool isForbidden =
                    IsTrueMember(m_values, kColourless.name) || (noColour != nullptr && *noColour != '\0');
                return RunView({m_settings.endpoint, m_settings.Timeout(), !isForbidden});
            });
        Add("status", "Show connection, track, position and modes in one view.", "", {},
            [this] { return RunStatus(m_settings); });
        Add("browse",
            "Walk the library by names, and show the list at the end.\n"
            "It begins at the root. Upper and lower case count only where both are there. All\n"
            "clients of the service share one browse position: this moves it, and leaves it at\n"
            "the end of the way.",
            "Artists \"The Tin Harbour\" \"Salt on the Wires\"", {kNames, kPlays}, [this] {
                return RunBrowse(m_settings, WordsMember(m_values, "names"), IsTrueMember(m_values, "plays"));
            });
        Add("watch",
            "Show notifications as they come.\n"
            "It ends with Ctrl-C, exit status 0. When the service goes away, it waits until the\n"
            "service is back. On a terminal a line below shows how far the track has come.",
            "--json --count 10", {kMost, kTime}, [this] {
                return RunWatch(m_settings, IntegerMember(m_values, "most"), TimeMember(m_values, "time"));
            });
        Add("art",
            "Write the current track's picture, a JPEG, into a file.\n"
            "Where it is not there at once, this waits for the player to fetch it, as long as\n"
            "--timeout says.",
            "cover.jpg", {kFile, kDelayed}, [this] {
                return RunArt(m_settings, TextMember(m_values, "file"), IsTrueMember(m_values, "isDelayed"));
            });
        Add("wait",
            "Wait for a state of the player.\n"
            "Where the service is not up yet, it waits for that too. ready: the library can be\n"
            "browsed; track: there is a current one. Exit status 1 when the time is over, 3 when\n"
            "there is still no service then.",
            "ready --timeout 20", {kState},
            [this] { return RunWait(m_settings, TextMember(m_values, "state")); });
        Add("raw",
            "Send text as it stands, and print the answers as they come.\n"
            "Exit status 1 when one of them is an error.",
            "'{\"jsonrpc\":\"2.0\",\"method\":\"next\",\"id\":1}'", {kLines},
            [this] { return RunRaw(m_settings, TextMember(m_values, "lines")); });
    }

    void AddHelp() {
        Add("help", "Tell about this program, or what a command does, with an example.", "browse", {kCommand},
            [this] {
                const std::string name = TextMember(m_values, "command");
                if (!name.empty() && FindCommand(m_app, name) == nullptr) {
                    return RefuseCommand(name);
                }
                return name.empty() ? RunCommandLine({"--help"}) : RunCommandLine({name, "--help"});
            });
        Add("completion", "Print what makes a shell complete this program's words.",
            "bash > ~/.local/share/bash-completion/completions/ipodctl", {kShell},
            [this] { return PrintCompletionScript(TextMember(m_values, "shell")), kDone; });
        // What the scripts call: nobody types it.
        Add("complete", "Print what the last of these words can become.", "-- browse Art", {kTyped}, [this] {
            PrintCandidates(m_app, WordsMember(m_values, "typed"),
                            [this](const auto& names, const auto& begin) {
                                return NamesBelow(m_settings, names, begin);
                            });
            return kDone;
        }).group("");
    }

    CLI::App m_app;
    Json::Value m_general;  // what is typed for every command
    Json::Value m_values;   // for the chosen one
    Settings m_settings;
    std::function<int()> m_chosen;
};

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments) {
    return CommandLine().Run(arguments);
}

}  // namespace IpodControl
