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

template <typename Number>
std::optional<Number> WholeText(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional<Number>(number) : std::nullopt;
}

std::int64_t IntegerFrom(const std::string& text, std::int64_t least, std::int64_t most) {
    const auto number = WholeText<std::int64_t>(text);
    if (!number || *number < least || *number > most) {
        throw CLI::ValidationError('"' + text + "\" is no whole number from " + std::to_string(least) +
                                   " to " + std::to_string(most));
    }
    return *number;
}

std::chrono::milliseconds SecondsFrom(const std::string& text) {
    constexpr double kMost = 1'000'000;
    const double seconds = WholeText<double>(text).value_or(0);
    if (!(seconds >= 0.001 && seconds <= kMost)) {
        throw CLI::ValidationError('"' + text + "\" is no number of seconds from 0.001 to 1000000");
    }
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

/// `choices`: words with "|" between them.
std::string ChoiceFrom(const std::string& text, const std::string& choices) {
    const auto known = CLI::detail::split(choices, '|');
    if (std::find(known.begin(), known.end(), text) == known.end()) {
        throw CLI::ValidationError('"' + text + "\" is none of " + choices);
    }
    return text;
}

const char* TypeName(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::OnOff:
            return "on|off";
        case ParameterKind::RepeatMode:
            return "off|current|all";
        case ParameterKind::Integer:
            return "NUMBER";
        default:
            return "TEXT";
    }
}

Json::Value ValueFrom(const Parameter& parameter, const std::string& text) {
    switch (parameter.kind) {
        case ParameterKind::Integer:
            return Json::Int64{IntegerFrom(text, parameter.least, parameter.most)};
        case ParameterKind::OnOff:
            return ChoiceFrom(text, TypeName(parameter.kind)) == "on";
        case ParameterKind::RepeatMode:
            return ChoiceFrom(text, TypeName(parameter.kind));
        default:
            return text;
    }
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
        AddGlobalOptions();
        m_app.footer(
            "Every method is also known by its name in the protocol, such as playPause.\n"
            "ipodctl COMMAND --help tells more, with an example.\n\n"
            "Exit status: 0 done; 1 the service said no, or the answer to a question is no; 2 what was "
            "typed\n"
            "cannot be carried out; 3 no service, or something else listens there.");
        AddPlayer();
        Add("status", "Show connection, track, position and modes in one view.", "",
            [this] { return RunStatus(m_settings); });
        AddBrowse();
        AddWatch();
        AddArt();
        AddWait();
        AddRaw();
        AddHelp();
        AddCompletion();
        for (const std::string_view group : kGroups) {
            for (const Method& method : Methods()) {
                if (method.group == group) {
                    AddMethod(method);
                }
            }
        }
    }
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

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

    /// `run` gives back the exit status.
    CLI::App& Add(const std::string& name, const std::string& summary, const std::string& example,
                  std::function<int()> run) {
        CLI::App& command = *m_app.add_subcommand(name, summary);
        command.callback([this, run = std::move(run)] { m_chosen = run; });
        command.group("Commands");
        command.footer("Example:\n  ipodctl " + name + (example.empty() ? "" : " " + example) +
                       "\n\n--host, --port, --timeout and --json: see ipodctl --help.");
        return command;
    }

    /// `take` may throw a ValidationError, without the option's name.
    static CLI::Option& AddText(CLI::App& command, const std::string& name, const std::string& type,
                                const std::string& help, std::function<void(const std::string&)> take) {
        const auto takeTyped = [name, take = std::move(take)](const std::string& text) {
            try {
                take(Unguarded(text));
            } catch (const CLI::ValidationError& error) {
                throw CLI::ValidationError(name, error.what());
            }
        };
        return *command.add_option_function<std::string>(name, takeTyped, help)->type_name(type);
    }
    static CLI::Option& AddText(CLI::App& command, const std::string& name, const std::string& help,
                                std::string& word) {
        return AddText(command, name, "", help, [&word](const std::string& text) { word = text; });
    }

    void AddChoice(CLI::App& command, const std::string& name, const std::string& choices,
                   const std::string& help) {
        AddText(command, name, choices, help, [this, choices](const std::string& text) {
            m_word = ChoiceFrom(text, choices);
        }).required();
    }

    static void AddWords(CLI::App& command, const std::string& name, const std::string& help,
                         std::vector<std::string>& words) {
        command.add_option(name, words, help)->transform(Unguarded)->type_name("")->expected(0, -1);
    }

    void AddGlobalOptions() {
        m_app.set_version_flag("--version", "ipodctl " IPODCTL_VERSION);
        m_app.add_option("--host", m_settings.endpoint.host, "where the service is (default 127.0.0.1)")
            ->type_name("NAME")
            ->envname("IPODCTL_HOST");
        AddText(m_app, "--port", "NUMBER", "its port (default 8883)", [this](const std::string& text) {
            m_settings.endpoint.port = static_cast<std::uint16_t>(IntegerFrom(text, 1, 65535));
        }).envname("IPODCTL_PORT");
        AddText(m_app, "--timeout", "SECONDS",
                "how long to wait for an answer (default 5), and for a state (30)",
                [this](const std::string& text) { m_settings.givenTimeout = SecondsFrom(text); });
        m_app.add_flag("--json", m_settings.json, "print JSON, one value a line");
    }

    void AddMethod(const Method& method) {
        const std::string name = KebabCase(method.name);
        std::string summary(method.summary);
        summary.front() = static_cast<char>(summary.front() - 'a' + 'A');
        CLI::App& command = Add(name, summary + ".", std::string(method.example),
                                [this, &method] { return RunCall(m_settings, method, ParamsOf(method)); });
        command.group(std::string(method.group));
        if (!method.alias.empty()) {
            command.alias(std::string(method.alias));
        }
        if (name != method.name) {
            command.alias(std::string(method.name));
        }
        for (const Parameter* const parameter : {&method.first, &method.second}) {
            if (!parameter->name.empty()) {
                const auto take = [this, parameter](const std::string& text) {
                    m_params[std::string(parameter->name)] = ValueFrom(*parameter, text);
                };
                AddText(command, std::string(parameter->shown), TypeName(parameter->kind),
                        std::string(parameter->help), take)
                    .required(parameter->isRequired);
            }
        }
    }

    Json::Value ParamsOf(const Method& method) const {
        Json::Value params = m_params;
        for (const Parameter* const parameter : {&method.first, &method.second}) {
            const std::string name(parameter->name);
            if (!parameter->fallback.empty() && !params.isMember(name)) {
                params[name] = ValueFrom(*parameter, std::string(parameter->fallback));
            }
        }
        return params;
    }

    void AddPlayer() {
        CLI::App& command =
            Add("player",
                "Control the player in a full-screen view.\n"
                "It waits for the service, and waits again when that goes away. ? lists the keys.",
                "", [this] { return RunPlayer(); });
        command.add_flag("--no-colours", m_isColourless,
                         "draw without colours, as the variable NO_COLOR asks for");
    }

    int RunPlayer() const {
        const char* const noColour = std::getenv("NO_COLOR");
        const bool isForbidden = m_isColourless || (noColour != nullptr && *noColour != '\0');
        return RunView({m_settings.endpoint, m_settings.Timeout(), !isForbidden});
    }

    void AddBrowse() {
        CLI::App& command =
            Add("browse",
                "Walk the library by names, and show the list at the end.\n"
                "It begins at the root. Upper and lower case count only where both are there. All\n"
                "clients of the service share one browse position: this moves it, and leaves it at\n"
                "the end of the way.",
                "Artists \"The Tin Harbour\" \"Salt on the Wires\"",
                [this] { return RunBrowse(m_settings, m_browse); });
        AddWords(command, "NAME",
                 "a category, then an item of each list that opens; of equal ones name#2 is the second",
                 m_browse.names);
        command.add_flag("--play", m_browse.plays, "play the last one, or the first song below it");
    }

    void AddWatch() {
        CLI::App& command =
            Add("watch",
                "Show notifications as they come.\n"
                "It ends with Ctrl-C, exit status 0. When the service goes away, it waits until the\n"
                "service is back. On a terminal a line below shows how far the track has come.",
                "--json --count 10", [this] { return RunWatch(m_settings, m_watch); });
        AddText(command, "--count", "NUMBER", "end after so many", [this](const std::string& text) {
            m_watch.count = IntegerFrom(text, 1, std::numeric_limits<std::int64_t>::max());
        });
        AddText(command, "--for", "SECONDS", "end after that time",
                [this](const std::string& text) { m_watch.time = SecondsFrom(text); });
    }

    void AddArt() {
        CLI::App& command =
            Add("art",
                "Write the current track's picture, a JPEG, into a file.\n"
                "Where it is not there at once, this waits for the player to fetch it, as long as\n"
                "--timeout says.",
                "cover.jpg", [this] { return RunArt(m_settings, m_art); });
        AddText(command, "FILE", "where to; - is standard output", m_art.file).required();
        command.add_flag("--delayed", m_art.isDelayed, "do not ask for it at once");
    }

    void AddWait() {
        CLI::App& command =
            Add("wait",
                "Wait for a state of the player.\n"
                "Where the service is not up yet, it waits for that too. ready: the library can be\n"
                "browsed; track: there is a current one. Exit status 1 when the time is over, 3 when\n"
                "there is still no service then.",
                "ready --timeout 20", [this] { return RunWait(m_settings, m_word); });
        AddChoice(command, "STATE", kWaitStates, "what to wait for");
    }

    void AddRaw() {
        CLI::App& command = Add("raw",
                                "Send text as it stands, and print the answers as they come.\n"
                                "Exit status 1 when one of them is an error.",
                                "'{\"jsonrpc\":\"2.0\",\"method\":\"next\",\"id\":1}'",
                                [this] { return RunRaw(m_settings, m_word); });
        AddText(command, "JSON", "requests; - reads them from standard input", m_word).required();
    }

    void AddHelp() {
        CLI::App& command = Add("help", "Tell about this program, or what a command does, with an example.",
                                "browse", [this] { return RunHelp(); });
        AddText(command, "COMMAND", "the command", m_word);
    }

    int RunHelp() const {
        const CLI::App* const about = m_word.empty() ? &m_app : FindCommand(m_app, m_word);
        if (about == nullptr) {
            return RefuseCommand(m_word);
        }
        PrintText(about == &m_app
                      ? m_app.get_formatter()->make_help(about, m_app.get_name(), CLI::AppFormatMode::Normal)
                      : about->help(m_app.get_name()));
        return kDone;
    }

    void AddCompletion() {
        CLI::App& command = Add("completion", "Print what makes a shell complete this program's words.",
                                "bash > ~/.local/share/bash-completion/completions/ipodctl",
                                [this] { return PrintCompletionScript(m_word), kDone; });
        AddChoice(command, "SHELL", "bash|zsh|fish", "the shell");
        // What the scripts call: nobody types it.
        CLI::App& candidates =
            Add("complete", "Print what the last of these words can become.", "-- browse Art", [this] {
                PrintCandidates(m_app, m_words, [this](const auto& names, const auto& begin) {
                    return NamesBelow(m_settings, names, begin);
                });
                return kDone;
            });
        candidates.group("");
        AddWords(candidates, "WORD", "what is typed", m_words);
    }

    CLI::App m_app;
    Settings m_settings;
    Json::Value m_params;  // of the method, as typed
    BrowseOptions m_browse;
    WatchOptions m_watch;
    ArtOptions m_art;
    bool m_isColourless = false;       // the player view
    std::string m_word;                // of wait, raw, help and completion
    std::vector<std::string> m_words;  // of complete
    std::function<int()> m_chosen;
};

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments) {
    return CommandLine().Run(arguments);
}

}  // namespace IpodControl
