#include "IpodControl/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "IpodControl/commands/Completion.h"
#include "IpodControl/commands/Output.h"
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

[[noreturn]] void Reject(std::string_view option, const std::string& why) {
    throw CLI::ValidationError(std::string(option), why);
}

template <typename Number>
std::optional<Number> WholeText(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional<Number>(number) : std::nullopt;
}

std::int64_t IntegerFrom(std::string_view option, const std::string& text, std::int64_t least,
                         std::int64_t most) {
    const auto number = WholeText<std::int64_t>(text);
    if (!number || *number < least || *number > most) {
        Reject(option, '"' + text + "\" is no whole number from " + std::to_string(least) + " to " +
                           std::to_string(most));
    }
    return *number;
}

std::chrono::milliseconds SecondsFrom(std::string_view option, const std::string& text) {
    constexpr double kMost = 1'000'000;
    const double seconds = WholeText<double>(text).value_or(0);
    if (!(seconds >= 0.001 && seconds <= kMost)) {
        Reject(option, '"' + text + "\" is no number of seconds from 0.001 to 1000000");
    }
    return std::chrono::milliseconds(std::llround(seconds * 1000));
}

/// `choices`: words with "|" between them.
void RequireChoice(std::string_view option, const std::string& text, const std::string& choices) {
    const auto known = CLI::detail::split(choices, '|');
    if (std::find(known.begin(), known.end(), text) == known.end()) {
        Reject(option, '"' + text + "\" is none of " + choices);
    }
}

const char* TypeName(ParameterKind kind) {
    switch (kind) {
        case ParameterKind::OnOff:
            return "on|off";
        case ParameterKind::RepeatMode:
            return "off|current|all";
        case ParameterKind::Integer:
            return "NUMBER";
        case ParameterKind::Text:
            break;
    }
    return "TEXT";
}

Json::Value ValueFrom(const Parameter& parameter, const std::string& text) {
    switch (parameter.kind) {
        case ParameterKind::Integer:
            return Json::Int64{IntegerFrom(parameter.shown, text, parameter.least, parameter.most)};
        case ParameterKind::OnOff:
            RequireChoice(parameter.shown, text, TypeName(parameter.kind));
            return text == "on";
        case ParameterKind::RepeatMode:
            RequireChoice(parameter.shown, text, TypeName(parameter.kind));
            return text;
        case ParameterKind::Text:
            break;
    }
    return text;
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

}  // namespace

CommandLine::CommandLine() : m_app("Controls the player through the service.", "ipodctl") {
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.get_formatter()->column_width(28);
    m_app.require_subcommand(1);
    m_app.fallthrough();
    AddGlobalOptions();
    m_app.footer(
        "Every method is also known by its name in the protocol, such as playPause.\n"
        "ipodctl COMMAND --help tells more, with an example.\n\n"
        "Exit status: 0 done; 1 the service said no, or the answer to a question is no; 2 what was typed\n"
        "cannot be carried out; 3 no service, or something else listens there.");
    AddSpecialCommands();
    for (const std::string_view group : kGroups) {
        for (const Method& method : Methods()) {
            if (method.group == group) {
                AddMethod(method);
            }
        }
    }
}

int CommandLine::Run(const std::vector<std::string>& arguments) {
    try {
        // The parser takes the words off the end.
        std::vector<std::string> words = Guarded(arguments);
        m_app.parse(words);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            m_app.exit(error);
            return kDone;
        }
        const auto extra = m_app.remaining();
        Complain(!extra.empty() && m_app.get_subcommands().empty()
                     ? "there is no command \"" + Unguarded(extra.front()) + "\". See ipodctl --help."
                     : CLI::detail::find_and_replace(error.what(), std::string(1, kGuard), "") +
                           ". See ipodctl --help.");
        return kUsage;
    }
    return m_chosen();
}

void CommandLine::AddGlobalOptions() {
    m_app.set_version_flag("--version", "ipodctl " IPODCTL_VERSION);
    m_app.add_option("--host", m_settings.endpoint.host, "where the service is (default 127.0.0.1)")
        ->type_name("NAME")
        ->envname("IPODCTL_HOST");
    AddText(m_app, "--port", "NUMBER", "its port (default 8883)", [this](const std::string& text) {
        m_settings.endpoint.port = static_cast<std::uint16_t>(IntegerFrom("--port", text, 1, 65535));
    }).envname("IPODCTL_PORT");
    AddText(m_app, "--timeout", "SECONDS", "how long to wait for an answer (default 5), and for a state (30)",
            [this](const std::string& text) { m_settings.givenTimeout = SecondsFrom("--timeout", text); });
    m_app.add_flag("--json", m_settings.json, "print JSON, one value a line");
}

CLI::App& CommandLine::Add(const std::string& name, const std::string& summary, const std::string& example,
                           std::function<int()> run) {
    CLI::App& command = *m_app.add_subcommand(name, summary);
    command.callback([this, run = std::move(run)] { m_chosen = run; });
    command.group("Commands");
    command.footer("Example:\n  ipodctl " + name + (example.empty() ? "" : " " + example) +
                   "\n\n--host, --port, --timeout and --json: see ipodctl --help.");
    return command;
}

void CommandLine::AddMethod(const Method& method) {
    const std::string name = KebabCase(method.name);
    std::string summary(method.summary);
    summary.front() = static_cast<char>(summary.front() - 'a' + 'A');
    Json::Value& params = *m_params.emplace_back(std::make_unique<Json::Value>());
    CLI::App& command = Add(name, summary + ".", std::string(method.example),
                            [this, &method, &params] { return RunCall(m_settings, method, params); });
    command.group(std::string(method.group));
    if (!method.alias.empty()) {
        command.alias(std::string(method.alias));
    }
    if (name != method.name) {
        command.alias(std::string(method.name));
    }
    for (const Parameter& parameter : method.parameters) {
        if (!parameter.name.empty()) {
            AddParameter(command, parameter, params);
        }
    }
}

void CommandLine::AddParameter(CLI::App& command, const Parameter& parameter, Json::Value& params) {
    const std::string name(parameter.name);
    if (!parameter.fallback.empty()) {
        params[name] = ValueFrom(parameter, std::string(parameter.fallback));
    }
    AddText(
        command, std::string(parameter.shown), TypeName(parameter.kind), std::string(parameter.help),
        [&parameter, &params, name](const std::string& text) { params[name] = ValueFrom(parameter, text); })
        .required(parameter.isRequired);
}

void CommandLine::AddSpecialCommands() {
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
}

void CommandLine::AddPlayer() {
    CLI::App& command =
        Add("player",
            "Control the player in a full-screen view.\n"
            "It waits for the service, and waits again when that goes away. ? lists the keys.",
            "", [this] { return RunPlayer(); });
    command.add_flag("--no-colours", m_isColourless,
                     "draw without colours, as the variable NO_COLOR asks for");
}

int CommandLine::RunPlayer() const {
    const char* const noColour = std::getenv("NO_COLOR");
    const bool isForbidden = m_isColourless || (noColour != nullptr && *noColour != '\0');
    return RunView({m_settings.endpoint, m_settings.Timeout(), !isForbidden});
}

void CommandLine::AddBrowse() {
    CLI::App& command =
        Add("browse",
            "Walk the library by names, and show the list at the end.\n"
            "It begins at the root. Upper and lower case count only where both are there. All\n"
            "clients of the service share one browse position: this moves it, and leaves it at\n"
            "the end of the way.",
            "Artists \"The Tin Harbour\" \"Salt on the Wires\"", [this] {
                return RunBrowse(m_settings, {m_words, m_plays});
            });
    AddWords(command, "NAME",
             "a category, then an item of each list that opens; of equal ones name#2 is the second");
    command.add_flag("--play", m_plays, "play the last one, or the first song below it");
}

void CommandLine::AddWatch() {
    CLI::App& command =
        Add("watch",
            "Show notifications as they come.\n"
            "It ends with Ctrl-C, exit status 0. When the service goes away, it waits until the\n"
            "service is back. On a terminal a line below shows how far the track has come.",
            "--json --count 10", [this] { return RunWatch(m_settings, m_watch); });
    AddText(command, "--count", "NUMBER", "end after so many", [this](const std::string& text) {
        m_watch.count = IntegerFrom("--count", text, 1, std::numeric_limits<std::int64_t>::max());
    });
    AddText(command, "--for", "SECONDS", "end after that time",
            [this](const std::string& text) { m_watch.time = SecondsFrom("--for", text); });
}

void CommandLine::AddArt() {
    CLI::App& command =
        Add("art",
            "Write the current track's picture, a JPEG, into a file.\n"
            "Where it is not there at once, this waits for the player to fetch it, as long as\n"
            "--timeout says.",
            "cover.jpg", [this] { return RunArt(m_settings, m_art); });
    AddText(command, "FILE", "", "where to; - is standard output", [this](const std::string& file) {
        m_art.file = file;
    }).required();
    command.add_flag("--delayed", m_art.isDelayed, "do not ask for it at once");
}

void CommandLine::AddWait() {
    CLI::App& command =
        Add("wait",
            "Wait for a state of the player.\n"
            "Where the service is not up yet, it waits for that too. ready: the library can be\n"
            "browsed; track: there is a current one. Exit status 1 when the time is over, 3 when\n"
            "there is still no service then.",
            "ready --timeout 20", [this] { return RunWait(m_settings, m_word); });
    AddChoice(command, "STATE", kWaitStates, "what to wait for");
}

void CommandLine::AddRaw() {
    CLI::App& command = Add("raw",
                            "Send text as it stands, and print the answers as they come.\n"
                            "Exit status 1 when one of them is an error.",
                            "'{\"jsonrpc\":\"2.0\",\"method\":\"next\",\"id\":1}'",
                            [this] { return RunRaw(m_settings, m_word); });
    AddText(command, "JSON", "", "requests; - reads them from standard input",
            [this](const std::string& text) { m_word = text; })
        .required();
}

void CommandLine::AddHelp() {
    CLI::App& command = Add("help", "Tell about this program, or what a command does, with an example.",
                            "browse", [this] { return RunHelp(); });
    AddText(command, "COMMAND", "", "the command", [this](const std::string& text) { m_word = text; });
}

int CommandLine::RunHelp() const {
    const CLI::App* const about = m_word.empty() ? &m_app : FindCommand(m_app, m_word);
    if (about == nullptr) {
        Complain("there is no command \"" + m_word + "\". See ipodctl --help.");
        return kUsage;
    }
    PrintText(about == &m_app
                  ? m_app.get_formatter()->make_help(about, m_app.get_name(), CLI::AppFormatMode::Normal)
                  : about->help(m_app.get_name()));
    return kDone;
}

void CommandLine::AddCompletion() {
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
    AddWords(candidates, "WORD", "what is typed");
}

CLI::Option& CommandLine::AddText(CLI::App& command, const std::string& name, const std::string& type,
                                  const std::string& help,
                                  const std::function<void(const std::string&)>& take) {
    return *command
                .add_option_function<std::string>(
                    name, [take](const std::string& text) { take(Unguarded(text)); }, help)
                ->type_name(type);
}

void CommandLine::AddChoice(CLI::App& command, const std::string& name, const std::string& choices,
                            const std::string& help) {
    AddText(command, name, choices, help, [this, name, choices](const std::string& text) {
        m_word = text;
        RequireChoice(name, text, choices);
    }).required();
}

void CommandLine::AddWords(CLI::App& command, const std::string& name, const std::string& help) {
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [this](const std::vector<std::string>& words) {
                std::transform(words.begin(), words.end(), std::back_inserter(m_words), Unguarded);
            },
            help)
        ->type_name("")
        ->expected(0, -1);
}

}  // namespace IpodControl
