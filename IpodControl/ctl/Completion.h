// Scripts that make a shell complete this program's words.
#pragma once

#include <CLI/App.hpp>
#include <string>

namespace IpodControl {

/// Prints the script for `shell`: bash, zsh or fish. Made from the subcommands and options that `app` has.
void PrintCompletion(const CLI::App& app, const std::string& shell);

}  // namespace IpodControl
