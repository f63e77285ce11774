// What makes a shell complete this program's words: the shell asks the program.
#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string>
#include <vector>

namespace IpodControl {

/// Null where there is no such subcommand.
const CLI::App* FindCommand(const CLI::App& app, const std::string& name);

/// Prints the script for `shell`: bash, zsh or fish.
void PrintCompletionScript(const std::string& shell);

/// The names that may follow `names` in the library and begin with `begin`.
using NamesInLibrary =
    std::function<std::vector<std::string>(const std::vector<std::string>& names, const std::string& begin)>;

/// Prints what the last of `words`, of which some may be typed, can become: one a line, with a tab and what
/// it means behind it where that is known. Made from the subcommands and options that `app` has.
void PrintCandidates(const CLI::App& app, const std::vector<std::string>& words,
                     const NamesInLibrary& namesInLibrary);

}  // namespace IpodControl
