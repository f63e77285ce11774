#include "IpodControl/commands/Completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

#include "IpodControl/commands/Output.h"

namespace IpodControl {

namespace {

using Words = std::vector<std::string>;

void Print(const std::string& word, const std::string& meaning, const std::string& begin) {
    if (word.starts_with(begin)) {
        PrintLine(meaning.empty() ? word : word + '\t' + meaning.substr(0, meaning.find('\n')));
    }
}

/// "a|b" as the type of an option: its choices.
void PrintChoices(const CLI::Option& option, const std::string& begin) {
    const std::string type = option.get_type_name();
    for (const std::string& choice : CLI::detail::split(type, '|')) {
        if (choice != type) {
            Print(choice, "", begin);
        }
    }
}

/// The protocol's own names are taken, and not offered beside those of the shell's kind.
bool IsOffered(const std::string& name) {
    return std::none_of(name.begin(), name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

void PrintCommands(const CLI::App& app, const std::string& begin) {
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        Words names{command->get_name()};
        names.insert(names.end(), command->get_aliases().begin(), command->get_aliases().end());
        for (const std::string& name : names) {
            if (IsOffered(name) && !command->get_group().empty()) {
                Print(name, command->get_description(), begin);
            }
        }
    }
}

void PrintOptions(const CLI::App& app, const std::string& begin) {
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_positional()) {
            Print("--" + option->get_lnames().front(), option->get_description(), begin);
        }
    }
}

/// What has been typed, as far as the last word depends on it.
struct Typed {
    const CLI::App* command = nullptr;
    const CLI::Option* waiting = nullptr;  ///< its value is the last word
    Words arguments;                       ///< of the command
};

const CLI::Option* FindOption(const CLI::App& app, const CLI::App* command, const std::string& name) {
    const CLI::Option* const option = command != nullptr ? command->get_option_no_throw(name) : nullptr;
    return option != nullptr ? option : app.get_option_no_throw(name);
}

Typed Read(const CLI::App& app, const Words& before) {
    Typed typed;
    for (const std::string& word : before) {
        if (typed.waiting != nullptr) {
            typed.waiting = nullptr;
        } else if (word.starts_with("-")) {
            const CLI::Option* const option = FindOption(app, typed.command, word);
            typed.waiting = option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
        } else if (typed.command == nullptr) {
            typed.command = FindCommand(app, word);
        } else {
            typed.arguments.push_back(word);
        }
    }
    return typed;
}

void PrintArguments(const CLI::App& app, const Typed& typed, const std::string& begin,
                    const NamesInLibrary& namesInLibrary) {
    if (typed.command->get_name() == "browse") {
        for (const std::string& name : namesInLibrary(typed.arguments, begin)) {
            PrintLine(name);
        }
    } else if (typed.command->get_name() == "help") {
        PrintCommands(app, begin);
    } else {
        const auto positionals =
            typed.command->get_options([](const CLI::Option* option) { return option->get_positional(); });
        if (typed.arguments.size() < positionals.size()) {
            PrintChoices(*positionals[typed.arguments.size()], begin);
        }
    }
}

constexpr const char* kBash = R"sh(# bash completion for ipodctl
_ipodctl() {
    local words=("${COMP_WORDS[@]:1:COMP_CWORD}") current i candidate
    # As the shell would read them: quotes and backslashes are no part of a name.
    for i in "${!words[@]}"; do words[i]=${words[i]#[\'\"]}; words[i]=${words[i]%[\'\"]}; words[i]=${words[i]//\\/}; done
    current=${COMP_WORDS[COMP_CWORD]}
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        case $current in
            \'*) COMPREPLY+=("${candidate//\'/\'\\\'\'}") ;;
            \"*) COMPREPLY+=("$candidate") ;;
            *) COMPREPLY+=("$(printf %q "$candidate")") ;;
        esac
    done < <(ipodctl complete -- "${words[@]}" 2>/dev/null)
    if [[ ${#COMPREPLY[@]} -eq 0 && " ${words[*]} " == *" art "* ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames
    fi
}
complete -F _ipodctl ipodctl)sh";

constexpr const char* kZsh = R"sh(#compdef ipodctl

_ipodctl() {
    local -a names shown
    local line
    for line in "${(@f)$(ipodctl complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)}"; do
        [ -n "$line" ] || continue
        names+=("${line%%$'\t'*}")
        shown+=("${line/$'\t'/  -- }")
    done
    if (( $#names )); then
        compadd -M 'm:{a-zA-Z}={A-Za-z}' -l -d shown -a names
    elif (( ${words[(I)art]} )); then
        _files
    fi
}

if [ "$funcstack[1]" = _ipodctl ]; then
    _ipodctl "$@"
else
    compdef _ipodctl ipodctl
fi)sh";

constexpr const char* kFish = R"sh(# fish completion for ipodctl
function __ipodctl_candidates
    set -l words (commandline -opc) (commandline -ct | string unescape)
    ipodctl complete -- $words[2..-1] 2>/dev/null
end
complete -c ipodctl -f -a '(__ipodctl_candidates)'
complete -c ipodctl -n '__fish_seen_subcommand_from art' -F)sh";

}  // namespace

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
    const auto found =
        app.get_subcommands([&name](const CLI::App* command) { return command->check_name(name); });
    return found.empty() ? nullptr : found.front();
}

void PrintCompletionScript(const std::string& shell) {
    PrintLine(shell == "bash" ? kBash : shell == "zsh" ? kZsh : kFish);
}

void PrintCandidates(const CLI::App& app, const Words& words, const NamesInLibrary& namesInLibrary) {
    const std::string begin = words.empty() ? "" : words.back();
    const Typed typed = Read(app, words.empty() ? words : Words(words.begin(), words.end() - 1));
    if (typed.waiting != nullptr) {
        PrintChoices(*typed.waiting, begin);
    } else if (begin.starts_with("-")) {
        if (typed.command != nullptr) {
            PrintOptions(*typed.command, begin);
        }
        PrintOptions(app, begin);
    } else if (typed.command == nullptr) {
        PrintCommands(app, begin);
    } else {
        PrintArguments(app, typed, begin, namesInLibrary);
    }
}

}  // namespace IpodControl
