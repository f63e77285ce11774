#include "IpodControl/ctl/Completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <vector>

#include "IpodControl/ctl/Output.h"

namespace IpodControl {

namespace {

using Words = std::vector<std::string>;
using CLI::detail::join;

struct Option {
    std::string name;  ///< "--start", or of a positional "FILE"
    std::string help;
    bool takesValue = false;
    bool isRepeated = false;
    Words choices;
    bool IsFile() const { return name == "FILE"; }
};

struct Command {
    Words names;
    std::string help;
    std::vector<Option> options;
    std::vector<Option> positionals;
};

/// The help's beginning, in one piece and without what a shell would take as its own.
std::string Brief(const std::string& help) {
    std::string brief = help.substr(0, help.find('\n'));
    while (!brief.empty() && brief.back() == '.') {
        brief.pop_back();
    }
    brief = CLI::detail::find_and_replace(brief, "''", "nothing");
    brief = CLI::detail::find_and_replace(brief, "'", "\u2019");
    for (const std::string_view dangerous : {"[", "]", ":", "\\", "\"", "`", "$"}) {
        brief = CLI::detail::find_and_replace(brief, std::string(dangerous), "");
    }
    return brief;
}

Option Described(const CLI::Option& option) {
    const bool isPositional = option.get_positional();
    const std::string type = option.get_type_name();
    return {option.get_name(isPositional), Brief(option.get_description()),
            option.get_items_expected_max() > 0, option.get_items_expected_max() > 1,
            type.find('|') != std::string::npos ? CLI::detail::split(type, '|') : Words()};
}

Command Described(const CLI::App& app) {
    Command command{{app.get_name()}, Brief(app.get_description()), {}, {}};
    command.names.insert(command.names.end(), app.get_aliases().begin(), app.get_aliases().end());
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            command.positionals.push_back(Described(*option));
        } else {
            Option described = Described(*option);
            // "-h,--help": the long name. Every command has it, and it is told of once.
            described.name = "--" + option->get_lnames().front();
            if (app.get_parent() == nullptr || described.name != "--help") {
                command.options.push_back(std::move(described));
            }
        }
    }
    return command;
}

std::vector<Command> Commands(const CLI::App& app) {
    std::vector<Command> commands;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back(Described(*command));
    }
    return commands;
}

/// The protocol's own names are taken, and not offered beside those of the shell's kind.
Words OfferedNames(const Command& command) {
    Words names;
    std::copy_if(command.names.begin(), command.names.end(), std::back_inserter(names), [](const auto& name) {
        return std::none_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
    });
    return names;
}

Words NamesOf(const std::vector<Option>& options, bool onlyWithValue = false) {
    Words names;
    for (const Option& option : options) {
        if (!onlyWithValue || option.takesValue) {
            names.push_back(option.name);
        }
    }
    return names;
}

// ---- bash: one function; the first word that is no option is the command.

void PrintBashCommand(const Command& command) {
    Words words = NamesOf(command.options);
    bool hasFile = false;
    for (const Option& positional : command.positionals) {
        words.insert(words.end(), positional.choices.begin(), positional.choices.end());
        hasFile = hasFile || positional.IsFile();
    }
    if (!words.empty() || hasFile) {
        PrintLine("        " + join(command.names, "|") + ") words='" + join(words, " ") + "'" +
                  (hasFile ? "; files=yes" : "") + " ;;");
    }
}

void PrintBash(const Command& all, const std::vector<Command>& commands) {
    Words names;
    std::vector<Option> options = all.options;
    for (const Command& command : commands) {
        const Words offered = OfferedNames(command);
        names.insert(names.end(), offered.begin(), offered.end());
        options.insert(options.end(), command.options.begin(), command.options.end());
    }
    Words valued = NamesOf(options, true);
    std::sort(valued.begin(), valued.end());
    valued.erase(std::unique(valued.begin(), valued.end()), valued.end());
    const std::string withValue = join(valued, "|");
    PrintLine(R"(# bash completion for ipodctl
_ipodctl() {
    local current=${COMP_WORDS[COMP_CWORD]} command='' words='' files='' i
    COMPREPLY=()
    case ${COMP_WORDS[COMP_CWORD-1]} in )" +
              withValue + R"() return ;; esac
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
            )" +
              withValue +
              R"() ((++i)) ;;
            -*) ;;
            *) command=${COMP_WORDS[i]}; break ;;
        esac
    done
    case $command in
        '') words=')" +
              join(names, " ") + "' ;;");
    for (const Command& command : commands) {
        PrintBashCommand(command);
    }
    PrintLine("    esac\n    words+=' " + join(NamesOf(all.options), " ") + "'");
    PrintLine(
        R"(    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current"; [ -z "$files" ] || compgen -f -- "$current")
    [ -z "$files" ] || compopt -o filenames
}
complete -F _ipodctl ipodctl)");
}

// ---- zsh

std::string ZshOption(const Option& option) {
    return "'" + option.name + '[' + option.help + ']' + (option.takesValue ? ": :" : "") + "'";
}

std::string ZshPositional(const Option& positional) {
    const std::string what = positional.IsFile()           ? "_files"
                             : !positional.choices.empty() ? '(' + join(positional.choices, " ") + ')'
                                                           : "";
    return (positional.isRepeated ? "'*:" : "'1:") + positional.help + ':' + what + "'";
}

void PrintZsh(const Command& all, const std::vector<Command>& commands) {
    PrintLine(
        "#compdef ipodctl\n\n_ipodctl() {\n    local -a commands options\n    local context state line\n"
        "    local curcontext=\"$curcontext\"\n    commands=(");
    for (const Command& command : commands) {
        for (const std::string& name : OfferedNames(command)) {
            PrintLine("        '" + name + ':' + command.help + "'");
        }
    }
    PrintLine("    )\n    options=(");
    for (const Option& option : all.options) {
        PrintLine("        " + ZshOption(option));
    }
    PrintLine(R"(    )
    _arguments -C $options '1: :->command' '*:: :->argument' && return
    case $state in
        command) _describe -t commands command commands ;;
        argument)
            case $words[1] in)");
    for (const Command& command : commands) {
        std::string line = "                " + join(command.names, "|") + ") _arguments $options";
        for (const Option& option : command.options) {
            line += ' ' + ZshOption(option);
        }
        for (const Option& positional : command.positionals) {
            line += ' ' + ZshPositional(positional);
        }
        PrintLine(line + " ;;");
    }
    PrintLine(R"(            esac
            ;;
    esac
}

if [ "$funcstack[1]" = _ipodctl ]; then
    _ipodctl "$@"
else
    compdef _ipodctl ipodctl
fi)");
}

// ---- fish: one line a word.

std::string FishOption(const Option& option) {
    return " -l " + option.name.substr(2) + (option.takesValue ? " -x" : "") + " -d '" + option.help + "'";
}

void PrintFish(const Command& all, const std::vector<Command>& commands) {
    PrintLine("# fish completion for ipodctl\ncomplete -c ipodctl -f");
    std::string known;
    for (const Option& option : all.options) {
        PrintLine("complete -c ipodctl" + FishOption(option));
        known += ' ' + option.name.substr(2) + (option.takesValue ? "=" : "");
    }
    // The shell's own test takes the value of an option in front for a command.
    PrintLine(
        "function __ipodctl_needs_command\n    set -l words (commandline -opc)\n    set -e words[1]\n"
        "    argparse -s" +
        known + " -- $words 2>/dev/null\n    or return\n    test (count $argv) -eq 0\nend");
    for (const Command& command : commands) {
        PrintLine("complete -c ipodctl -n __ipodctl_needs_command -a '" + join(OfferedNames(command), " ") +
                  "' -d '" + command.help + "'");
        const std::string given =
            "complete -c ipodctl -n '__fish_seen_subcommand_from " + join(command.names, " ") + "'";
        for (const Option& option : command.options) {
            PrintLine(given + FishOption(option));
        }
        for (const Option& positional : command.positionals) {
            if (positional.IsFile()) {
                PrintLine(given + " -F");
            } else if (!positional.choices.empty()) {
                PrintLine(given + " -a '" + join(positional.choices, " ") + "'");
            }
        }
    }
}

}  // namespace

void PrintCompletion(const CLI::App& app, const std::string& shell) {
    const Command all = Described(app);
    const std::vector<Command> commands = Commands(app);
    if (shell == "bash") {
        PrintBash(all, commands);
    } else if (shell == "zsh") {
        PrintZsh(all, commands);
    } else {
        PrintFish(all, commands);
    }
}

}  // namespace IpodControl
